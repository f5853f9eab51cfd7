#include "input/PortionReader.h"

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
                             EdrLineParser& parser, Notification const* stop, std::uint64_t start)
    : inputM(input), maxLineLengthM(pipeline.maxLineLength),
      fileM(input.file, input.descriptor, {stop, &abandonedM}),
      linesM(fileM, pipeline.maxLineLength, EdrLineParser::padding), fillerM(pipeline, parser) {
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
    portion.rejectedLines = fillerM.rejectedLines();
}

bool PortionReader::isComplete(InputPortion const& portion) const {
    return portion.isLast || !portion.rejected.empty() || !portion.messages.empty() ||
           (portion.edrs.count() > 0 && !linesM.hasLine());
}

void PortionReader::readOn(InputPortion& portion) {
    if (!linesM.nextPiece() && !linesM.nextLine()) {
        portion.isLast = true;
    } else if (linesM.isTooLong()) {
        rejectLongLine(portion);
    } else if (!isBlank(jsonOf(linesM))) {
        takeLine(portion);
    }
}

void PortionReader::takeLine(InputPortion& portion) {
    fillerM.take(portion, jsonOf(linesM), linesM.raw(), {0, 0, linesM.offset()},
                 [&] { return origin(); });
}

// It comes piece by piece; the last one has the reason.
void PortionReader::rejectLongLine(InputPortion& portion) {
    portion.rejected = linesM.raw();
    if (linesM.isComplete()) {
        fillerM.reportRejected(portion, origin(),
                               "the line is longer than " + std::to_string(maxLineLengthM) +
                                   " bytes");
    }
}

LineOrigin PortionReader::origin() const {
    return {inputM.file.string(), std::to_string(linesM.number()), inputM.rejectFile.string()};
}

} // namespace host
