// EDRs that are parsed but not yet put into containers: the fields and blocks of each, in the order
// of the record. So another thread can parse ahead, while the containers stay with the pipeline and
// in its cache. The storage is reused; one thread uses it at a time.
#pragma once

#include "EDR/BlockIndex.h"
#include "EDR/Container.h"
#include "EDR/Index.h"
#include "input/InputPlace.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class ParsedEdrs {
public:
    void clear() noexcept;

    // Room for so many bytes, until the next call or the next line from elsewhere. A line that is
    // there is not copied.
    std::span<char> makeRoom(std::size_t size);
    // Of that room, and of the lines from elsewhere.
    std::size_t textSize() const noexcept { return linesEndM; }

    // Adds an EDR, to which the next calls refer. The line must stay valid while fields are set.
    void begin(std::string_view line);
    void setRecordKind(EDR::RecordKind kind) noexcept { edrsM.back().kind = kind; }
    // In the order in which a container is filled.
    void addBlock(EDR::BlockIndex const& block);
    void setField(EDR::Index const& field, std::string_view text);
    // With a text that is a part of the line, where it was given.
    void setFieldInLine(EDR::Index const& field, std::string_view text);
    // The line ends there.
    void end(InputPlace const& place) noexcept { edrsM.back().end = place; }
    // Removes all EDRs after the first so many.
    void keepFirst(std::size_t count);

    std::size_t count() const noexcept { return edrsM.size(); }
    InputPlace const& endOf(std::size_t edr) const noexcept { return edrsM[edr].end; }
    void fill(EDR::Container& container, std::size_t edr) const;

private:
    // Of filling a container: a field, or a block of that kind.
    struct Step {
        EDR::Index field;
        std::uint32_t textBegin; // from the line's begin on, or that of its own texts
        std::uint32_t textSize;
    };
    struct Edr {
        EDR::RecordKind kind;
        std::size_t firstStep;
        std::size_t lineBegin;
        std::size_t ownTextsBegin;
        InputPlace end;
    };

    static constexpr std::uint32_t noField = UINT32_MAX;
    static constexpr std::uint32_t ownText = std::uint32_t{1} << 31; // of Step::textBegin

    std::vector<Edr> edrsM;
    std::vector<Step> stepsM; // of all EDRs
    // The lines of all EDRs. What is after the end is from before: it needn't be filled with zeros
    // again and again.
    std::string linesM;
    std::size_t linesEndM = 0;
    std::string ownTextsM;       // of all EDRs: those that aren't in the line as they are
    char const* lineM = nullptr; // of the last EDR, where it was read
};

// Inline, because it is called for nearly every field.
inline void ParsedEdrs::setFieldInLine(EDR::Index const& field, std::string_view text) {
    auto const begin = static_cast<std::size_t>(text.data() - lineM);
    stepsM.push_back(
        {field, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(text.size())});
}

} // namespace host
