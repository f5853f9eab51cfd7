// A host's answer to a command to all hosts: messages numbered from 0, the first one a head that
// says how many there are, the others pieces of a report. The sender acknowledges how many it has
// in order; a few may be on the way.
#pragma once

#include "EdrMessage.h"
#include "PublishedSource.h"
#include "base/FileDescriptor.h"
#include "base/TemporaryFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stream {

inline constexpr std::size_t pieceBytes = std::size_t{512} * 1024; // of all pieces but the last
inline constexpr std::uint64_t mostOnTheWay = 8;                   // messages

// Such as "0-3,7", from numbers in order.
std::string partitionsText(std::vector<std::uint64_t> const& partitions);

struct AnswerHead {
    std::string host;
    std::vector<std::uint64_t> partitions; // in order
    bool isFaultless = false;
    std::string result;                      // a JSON object
    std::optional<std::uint64_t> bytes = {}; // of the report, if there is one
    std::uint64_t checksum = emptyHash;      // of the report

    std::uint64_t pieces() const noexcept {
        auto const count = bytes.value_or(0);
        return count / pieceBytes + (count % pieceBytes == 0 ? 0 : 1);
    }
    std::uint64_t messages() const noexcept { return 1 + pieces(); }
};

std::string headText(AnswerHead const& head);
// Throws a MessageError when it is no head, or names partitions that a stream of so many doesn't
// have.
AnswerHead parseHead(std::string const& text, std::uint64_t partitionCount);

// Which messages of an answer its host sends.
class AnswerWindow {
public:
    explicit AnswerWindow(std::uint64_t messages) : messagesM(messages) {}

    // The next one; nothing as long as enough are on the way.
    std::optional<std::uint64_t> next();
    // The sender has so many.
    void acknowledge(std::uint64_t had);
    // Those on the way count as lost.
    void repeat() noexcept { nextM = hadM; }

    std::uint64_t had() const noexcept { return hadM; }
    bool isDone() const noexcept { return hadM == messagesM; }

private:
    std::uint64_t messagesM;
    std::uint64_t hadM = 0;
    std::uint64_t nextM = 0;
};

// An answer on its way from its host.
class OutgoingAnswer {
public:
    // Takes over the report, of which it reads size and checksum. Throws a BAS::Status when it
    // can't be read.
    OutgoingAnswer(AnswerHead head, host::FileDescriptor report);

    // Both throw a BAS::Status when the report can't be read.
    std::string message(std::uint64_t number) const;
    AnswerWindow& window() noexcept { return windowM; }
    AnswerHead const& head() const noexcept { return headM; }

private:
    host::FileDescriptor reportM;
    AnswerHead headM;
    AnswerWindow windowM;
};

// An answer as its sender gets it, in a file that takes its place once the answer is whole.
class IncomingAnswer {
public:
    // Of a head with a report.
    using MakeFile = std::function<std::unique_ptr<host::TemporaryFile>(AnswerHead const&)>;

    IncomingAnswer(std::uint64_t partitionCount, MakeFile makeFile)
        : partitionCountM(partitionCount), makeFileM(std::move(makeFile)) {}

    // A message that isn't the next one is left out. Throws a MessageError when what came isn't
    // what the head says, and a BAS::Status when it can't be written.
    void add(std::uint64_t number, std::string_view bytes);

    // So many messages came, in order.
    std::uint64_t had() const noexcept { return hadM; }
    bool isWhole() const noexcept { return headM && hadM == headM->messages(); }
    // If it isn't whole.
    std::string missing() const;
    // Once it came.
    std::optional<AnswerHead> const& head() const noexcept { return headM; }
    // Where the report is, once it is whole.
    std::optional<std::filesystem::path> report() const;

private:
    void addPiece(std::string_view bytes);
    void end();

    std::uint64_t partitionCountM;
    MakeFile makeFileM;
    std::uint64_t hadM = 0;
    std::optional<AnswerHead> headM;
    std::unique_ptr<host::TemporaryFile> fileM;
    std::uint64_t bytesM = 0;
    std::uint64_t checksumM = emptyHash;
};

} // namespace stream
