// The messages of an answer to a command to all hosts as anybody may send them, each after a zero
// byte but the first. A piece that begins with '*' is filled up to the size of a whole one.
#include "Answer.h"
#include "CommandMessages.h"
#include "FuzzInput.h"
#include "base/PrivateDirectory.h"
#include "base/WholeFile.h"

namespace {

constexpr std::uint64_t partitionCount = 16;
constexpr char filled = '*';

std::filesystem::path const& directory() {
    static host::PrivateDirectory const made;
    return made.path();
}

void checkHead(stream::AnswerHead const& head) {
    auto const& partitions = head.partitions;
    fuzz::promise(!partitions.empty() && partitions.back() < partitionCount &&
                      std::is_sorted(partitions.begin(), partitions.end()),
                  "partitions of the stream in order");
    auto const again = stream::parseHead(stream::headText(head), partitionCount);
    fuzz::promise(again.host == head.host && again.partitions == partitions &&
                      again.isFaultless == head.isFaultless && again.result == head.result &&
                      again.bytes == head.bytes && again.checksum == head.checksum,
                  "a head that is written is read as it was");
}

void checkReport(stream::IncomingAnswer const& answer, std::filesystem::path const& file) {
    auto const report = answer.report();
    bool const isThere = std::filesystem::exists(file);
    fuzz::promise(report.has_value() == isThere, "a report is there once it is whole, only");
    if (isThere) {
        auto const text = host::readWholeFile(file);
        fuzz::promise(*report == file && text.size() == answer.head()->bytes &&
                          stream::hashOf(text) == answer.head()->checksum,
                      "a report is what its head says");
    }
}

// False once a message is refused.
bool add(stream::IncomingAnswer& answer, std::string const& data) {
    auto const message = stream::parseCommandMessage(data);
    if (!message) {
        return true;
    }
    std::string rest(message->rest);
    if (rest.starts_with(filled)) {
        rest.resize(stream::pieceBytes, filled);
    }
    auto const had = answer.had();
    bool const wasWhole = answer.isWhole();
    try {
        answer.add(message->number, rest);
    } catch (stream::MessageError const& error) {
        fuzz::promise(*error.what() != '\0', "a refusal says why");
        fuzz::promise(answer.had() == had && !answer.isWhole(), "what is refused isn't had");
        return false;
    }
    bool const isTaken = message->number == had && !wasWhole;
    fuzz::promise(answer.had() == had + (isTaken ? 1 : 0), "the next message is taken, no other");
    return true;
}

} // namespace

// What comes is taken in order, or refused with a reason; a report is kept only when it is what its
// head says.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const file = directory() / "report";
    {
        stream::IncomingAnswer answer(partitionCount, [&](auto const& /*head*/) {
            return std::make_unique<host::TemporaryFile>(file);
        });
        for (auto const& message : fuzz::pieces(fuzz::textOf(data, size), '\0')) {
            if (!add(answer, message)) {
                break;
            }
            fuzz::promise(!answer.isWhole() || answer.had() == answer.head()->messages(),
                          "a whole answer has all its messages");
            fuzz::promise(answer.isWhole() || !answer.missing().empty(),
                          "it is said what is missing");
        }
        if (answer.head()) {
            checkHead(*answer.head());
        }
        checkReport(answer, file);
    }
    std::filesystem::remove(file);
    fuzz::promise(std::filesystem::is_empty(directory()), "nothing else is left");
    return 0;
}
