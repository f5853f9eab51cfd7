// Puts the lines of an input into portions: their EDRs, what can't be parsed, and messages about
// either. Used by one thread at a time.
#pragma once

#include "input/EdrLineParser.h"
#include "input/InputPortion.h"
#include "registry/Registry.h"

#include <optional>

namespace host {

// What messages say about where a line comes from.
struct LineOrigin {
    std::string input;
    std::string place;      // of the line in the input, to which its column is added
    std::string rejectFile; // which keeps the line
};

class PortionFiller {
public:
    // Both must outlive the filler; the parser is the pipeline's, and used by nobody else
    // meanwhile.
    PortionFiller(PipelineConfiguration const& pipeline, EdrLineParser& parser)
        : pipelineM(pipeline), parserM(parser) {}

    // Adds the EDR of a line that ends at the place, or rejects the line. The text, followed by the
    // padding of EdrLineParser, is within the raw line. The origin is called for messages. When it
    // throws, as without memory, the portion has no EDR of the line.
    template <class Origin>
    void take(InputPortion& portion, std::string_view text, std::string_view raw,
              InputPlace const& end, Origin const& origin) {
        auto const edrsBefore = portion.edrs.count();
        try {
            parserM.parse(text, portion.edrs);
            portion.edrs.end(end);
            if (!parserM.newUnknownFields().empty()) {
                reportUnknownFields(portion, origin());
            }
        } catch (EdrLineError const& error) {
            portion.edrs.keepFirst(edrsBefore);
            reportUnknownFields(portion, origin());
            auto const before = static_cast<std::size_t>(text.data() - raw.data());
            portion.rejected = raw;
            reportRejected(portion, origin(), error.what(),
                           error.column() ? std::optional(before + *error.column()) : std::nullopt);
        } catch (...) {
            portion.edrs.keepFirst(edrsBefore);
            throw;
        }
    }

    // Counts a line whose bytes are in the portion, and says why it is rejected.
    void reportRejected(InputPortion& portion, LineOrigin const& origin, std::string const& reason,
                        std::optional<std::size_t> column = std::nullopt);
    std::uint64_t rejectedLines() const noexcept { return rejectedLinesM; }

private:
    void reportUnknownFields(InputPortion& portion, LineOrigin const& origin);

    PipelineConfiguration const& pipelineM;
    EdrLineParser& parserM;
    std::uint64_t rejectedLinesM = 0;
};

} // namespace host
