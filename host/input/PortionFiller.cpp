#include "input/PortionFiller.h"

#include "base/MessageCatalogue.h"
#include "registry/EdrNameHints.h"

namespace host {

void PortionFiller::reportRejected(InputPortion& portion, LineOrigin const& origin,
                                   std::string const& reason, std::optional<std::size_t> column) {
    ++rejectedLinesM;
    auto const place = origin.place + (column ? ":" + std::to_string(*column) : std::string());
    portion.messages.push_back(makeStatus(BAS::Status::warning, pipelineM.registeredName,
                                          "ERR_EDR_REJECTED",
                                          {origin.input, place, reason, origin.rejectFile}));
}

void PortionFiller::reportUnknownFields(InputPortion& portion, LineOrigin const& origin) {
    for (auto const& field : parserM.newUnknownFields()) {
        portion.messages.push_back(makeStatus(
            BAS::Status::warning, pipelineM.registeredName, "ERR_EDR_FIELD_UNKNOWN",
            {origin.input, origin.place, field, missingMemberHint(parserM.description(), field)}));
    }
    if (!parserM.newUnknownFields().empty() &&
        parserM.unknownFields() == EdrLineParser::maxUnknownFields) {
        portion.messages.push_back(makeStatus(
            BAS::Status::warning, pipelineM.registeredName, "ERR_EDR_FIELDS_UNKNOWN",
            {origin.input, origin.place, std::to_string(EdrLineParser::maxUnknownFields)}));
    }
}

} // namespace host
