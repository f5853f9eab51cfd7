#include "input/PortionReader.h"

#include "base/MessageCatalogue.h"

namespace host {

namespace {

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

// The line without a byte order mark.
std::string_view jsonOf(LineReader const& lines) {
    auto text = lines.line();
    if (lines.number() == 1 && text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    return text;
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r") == std::string_view::npos;
}

} // namespace

PortionReader::PortionReader(InputConfiguration const& input, PipelineConfiguration const& pipeline,
                             EDR::Description const& description, Notification const* stop,
                             std::uint64_t start)
    : inputM(input), pipelineM(pipeline), fileM(input.file, input.descriptor, {stop, &abandonedM}),
      linesM(fileM, pipeline.maxLineLength, EdrLineParser::padding), parserM(description) {
    while (linesM.offset() < start && linesM.nextLine()) {
        while (linesM.nextPiece()) {
        }
    }
}

void PortionReader::read(InputPortion& portion) noexcept {
    portion.clear();
    try {
        do {
            readOn(portion);
        } while (!isComplete(portion));
    } catch (...) {
        portion.isLast = true;
        portion.failure = std::current_exception();
    }
    portion.end.offset = linesM.offset();
    portion.isPause = !portion.isLast && !linesM.hasLine() && !fileM.hasBytes();
    portion.bytesRead = fileM.bytesRead();
    portion.rejectedLines = rejectedLinesM;
}

bool PortionReader::isComplete(InputPortion const& portion) const {
    return portion.isLast || !portion.rejected.empty() || !portion.messages.empty() ||
           (portion.edrs.count() > 0 && !linesM.hasLine());
}

void PortionReader::readOn(InputPortion& portion) {
    if (!linesM.nextPiece() && !linesM.nextLine()) {
        portion.isLast = true;
    } else if (linesM.isTooLong()) {
        reject(portion,
               "the line is longer than " + std::to_string(pipelineM.maxLineLength) + " bytes");
    } else if (!isBlank(jsonOf(linesM))) {
        takeLine(portion);
    }
}

void PortionReader::takeLine(InputPortion& portion) {
    auto const text = jsonOf(linesM);
    try {
        parserM.parse(text, portion.edrs);
        portion.edrs.end({0, 0, linesM.offset()});
        reportUnknownFields(portion);
    } catch (EdrLineError const& error) {
        portion.edrs.drop();
        reportUnknownFields(portion);
        auto const before = static_cast<std::size_t>(text.data() - linesM.raw().data());
        reject(portion, error.what(),
               error.column() ? std::optional(before + *error.column()) : std::nullopt);
    }
}

// A long line comes piece by piece; the last one has the reason.
void PortionReader::reject(InputPortion& portion, std::string const& reason,
                           std::optional<std::size_t> column) {
    portion.rejected = linesM.raw();
    if (!linesM.isComplete()) {
        return;
    }
    ++rejectedLinesM;
    auto const place =
        std::to_string(linesM.number()) + (column ? ":" + std::to_string(*column) : std::string());
    portion.messages.push_back(
        makeStatus(BAS::Status::warning, pipelineM.registeredName, "ERR_EDR_REJECTED",
                   {inputM.file.string(), place, reason, inputM.rejectFile.string()}));
}

void PortionReader::reportUnknownFields(InputPortion& portion) {
    if (parserM.newUnknownFields().empty()) {
        return;
    }
    auto const& file = inputM.file.string();
    auto const line = std::to_string(linesM.number());
    for (auto const& field : parserM.newUnknownFields()) {
        portion.messages.push_back(makeStatus(BAS::Status::warning, pipelineM.registeredName,
                                              "ERR_EDR_FIELD_UNKNOWN", {file, line, field}));
        if (++unknownFieldsM == EdrLineParser::maxUnknownFields) {
            portion.messages.push_back(
                makeStatus(BAS::Status::warning, pipelineM.registeredName, "ERR_EDR_FIELDS_UNKNOWN",
                           {file, line, std::to_string(EdrLineParser::maxUnknownFields)}));
        }
    }
}

} // namespace host
