#include "EdrInput.h"

#include "BAS/LogSink.h"
#include "MessageCatalogue.h"

namespace host {

namespace {

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";

// The line without what editors put in front of a file.
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

EdrInput::EdrInput(InputConfiguration const& input, PipelineConfiguration const& pipeline,
                   EDR::Description const& description, BAS::LogSink& log, Event const* stop,
                   InputPosition const& start)
    : pipelineM(pipeline.registeredName), nameM(input.file.string()),
      maxLineLengthM(pipeline.maxLineLength), logM(log), fileM(input.file, stop),
      linesM(fileM, maxLineLengthM, EdrLineParser::padding), parserM(description),
      rejectFileM(input.rejectFile, start.rejectedBytes) {
    while (linesM.offset() < start.bytes && linesM.nextLine()) {
        while (linesM.nextPiece()) {
        }
    }
}

bool EdrInput::next(EDR::Container& container) {
    while (linesM.nextLine()) {
        if (takeLine(container)) {
            return true;
        }
    }
    return false;
}

bool EdrInput::takeLine(EDR::Container& container) {
    if (linesM.isTooLong()) {
        rejectLine("the line is longer than " + std::to_string(maxLineLengthM) + " bytes");
        return false;
    }
    auto const text = jsonOf(linesM);
    if (isBlank(text)) {
        return false;
    }
    try {
        parserM.parse(text, container);
        reportUnknownFields();
        return true;
    } catch (EdrLineError const& error) {
        reportUnknownFields();
        auto const before = static_cast<std::size_t>(text.data() - linesM.raw().data());
        rejectLine(error.what(),
                   error.column() ? std::optional(before + *error.column()) : std::nullopt);
        return false;
    }
}

void EdrInput::rejectLine(std::string const& reason, std::optional<std::size_t> column) {
    auto const place =
        std::to_string(linesM.number()) + (column ? ":" + std::to_string(*column) : std::string());
    ++rejectedLinesM;
    do {
        rejectFileM.append(linesM.raw());
    } while (linesM.nextPiece());
    logM.write(makeStatus(BAS::Status::warning, pipelineM, "ERR_EDR_REJECTED",
                          {nameM, place, reason, rejectFileM.path().string()}));
}

void EdrInput::reportUnknownFields() {
    for (auto const& field : parserM.newUnknownFields()) {
        logM.write(makeStatus(BAS::Status::warning, pipelineM, "ERR_EDR_FIELD_UNKNOWN",
                              {nameM, std::to_string(linesM.number()), field}));
        if (++unknownFieldsM == EdrLineParser::maxUnknownFields) {
            logM.write(makeStatus(BAS::Status::warning, pipelineM, "ERR_EDR_FIELDS_UNKNOWN",
                                  {nameM, std::to_string(linesM.number()),
                                   std::to_string(EdrLineParser::maxUnknownFields)}));
        }
    }
}

} // namespace host
