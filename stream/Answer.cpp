#include "Answer.h"

#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/JsonText.h"

#include <fmt/format.h>
#include <simdjson.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace stream {

namespace {

constexpr char const* reportName = "the report of a command";

// So many bytes from there on; fewer only at the end of the file.
std::string readAt(host::FileDescriptor const& file, std::uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t done = 0;
    while (done < count) {
        auto const got = ::pread(file.number(), bytes.data() + done, count - done,
                                 static_cast<off_t>(offset + done));
        if (got < 0 && errno != EINTR) {
            throw host::fileStatus("ERR_FILE_NOT_READABLE", reportName, errno);
        }
        if (got == 0) {
            break;
        }
        done += got < 0 ? 0 : static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return bytes;
}

std::string numbersArray(std::vector<std::uint64_t> const& numbers) {
    return fmt::format("[{}]", fmt::join(numbers, ", "));
}

AnswerHead headOf(simdjson::dom::element const& document) {
    AnswerHead head;
    head.host = std::string(std::string_view(document["Host"]));
    for (auto const& number : document["Partitions"].get_array()) {
        head.partitions.push_back(std::uint64_t(number));
    }
    head.isFaultless = bool(document["Faultless"]);
    head.result = simdjson::minify(simdjson::dom::object(document["Result"]));
    head.checksum = std::uint64_t(document["Checksum"]);
    if (std::uint64_t bytes = 0; document["Bytes"].get(bytes) == simdjson::SUCCESS) {
        head.bytes = bytes;
    }
    return head;
}

} // namespace

std::string partitionsText(std::vector<std::uint64_t> const& partitions) {
    std::string text;
    for (std::size_t first = 0; first < partitions.size();) {
        auto last = first;
        while (last + 1 < partitions.size() && partitions[last + 1] == partitions[last] + 1) {
            ++last;
        }
        text += (text.empty() ? "" : ",") + std::to_string(partitions[first]);
        if (last > first) {
            text += "-" + std::to_string(partitions[last]);
        }
        first = last + 1;
    }
    return text;
}

std::string headText(AnswerHead const& head) {
    host::JsonMembers members = {{"Host", host::quotedText(head.host)},
                                 {"Partitions", numbersArray(head.partitions)},
                                 {"Faultless", host::jsonTruth(head.isFaultless)},
                                 {"Result", head.result},
                                 {"Checksum", std::to_string(head.checksum)}};
    if (head.bytes) {
        members.emplace_back("Bytes", std::to_string(*head.bytes));
    }
    return host::jsonObject(members);
}

AnswerHead parseHead(std::string const& text, std::uint64_t partitionCount) {
    AnswerHead head;
    try {
        simdjson::dom::parser parser;
        head = headOf(parser.parse(text));
    } catch (simdjson::simdjson_error const& error) {
        throw MessageError(fmt::format("its head can't be read: {}", error.what()));
    }
    auto const& partitions = head.partitions;
    bool const areInOrder = std::adjacent_find(partitions.begin(), partitions.end(),
                                               std::greater_equal<>()) == partitions.end();
    if (partitions.empty() || !areInOrder || partitions.back() >= partitionCount) {
        throw MessageError(fmt::format("its partitions are '{}', expected some of {} in order",
                                       fmt::join(partitions, ","), partitionCount));
    }
    return head;
}

std::optional<std::uint64_t> AnswerWindow::next() {
    if (nextM == messagesM || nextM >= hadM + mostOnTheWay) {
        return std::nullopt;
    }
    return nextM++;
}

void AnswerWindow::acknowledge(std::uint64_t had) {
    hadM = std::max(hadM, std::min(had, messagesM));
    nextM = std::max(nextM, hadM);
}

OutgoingAnswer::OutgoingAnswer(AnswerHead head, host::FileDescriptor report)
    : reportM(std::move(report)), headM(std::move(head)), windowM(0) {
    if (reportM.isOpen()) {
        std::uint64_t size = 0;
        for (auto piece = readAt(reportM, 0, pieceBytes); !piece.empty();
             piece = readAt(reportM, size, pieceBytes)) {
            headM.checksum = hashOf(piece, headM.checksum);
            size += piece.size();
        }
        headM.bytes = size;
    }
    windowM = AnswerWindow(headM.messages());
}

std::string OutgoingAnswer::message(std::uint64_t number) const {
    return number == 0 ? headText(headM) : readAt(reportM, (number - 1) * pieceBytes, pieceBytes);
}

void IncomingAnswer::add(std::uint64_t number, std::string_view bytes) {
    if (number != hadM || isWhole()) {
        return;
    }
    if (number > 0) {
        addPiece(bytes);
    } else {
        auto head = parseHead(std::string(bytes), partitionCountM);
        if (head.bytes) {
            fileM = makeFileM(head);
        }
        headM = std::move(head);
    }
    if (hadM + 1 == headM->messages()) {
        end();
    }
    ++hadM;
}

void IncomingAnswer::addPiece(std::string_view bytes) {
    auto const expected = std::min<std::uint64_t>(*headM->bytes - bytesM, pieceBytes);
    if (bytes.size() != expected) {
        throw MessageError(
            fmt::format("the piece {} has {} bytes, expected {}", hadM, bytes.size(), expected));
    }
    checksumM = hashOf(bytes, checksumM);
    bytesM += bytes.size();
    fileM->write(bytes);
}

void IncomingAnswer::end() {
    if (fileM == nullptr) {
        return;
    }
    if (checksumM != headM->checksum) {
        throw MessageError(fmt::format("the report has the checksum {:016x}, expected {:016x}",
                                       checksumM, headM->checksum));
    }
    fileM->flush();
    fileM->takePlace();
}

std::string IncomingAnswer::missing() const {
    if (!headM) {
        return "it hasn't come";
    }
    return hadM == headM->pieces()
               ? fmt::format("the piece {} of {} is missing", hadM, headM->pieces())
               : fmt::format("the pieces {} to {} of {} are missing", hadM, headM->pieces(),
                             headM->pieces());
}

std::optional<std::filesystem::path> IncomingAnswer::report() const {
    return isWhole() && fileM != nullptr ? std::optional(fileM->target()) : std::nullopt;
}

} // namespace stream
