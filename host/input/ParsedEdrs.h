// EDRs that are parsed but not yet put into containers: the fields and blocks of each, in the order
// of the record. So another thread can parse ahead, while the containers stay with the pipeline and
// in its cache. The storage is reused; one thread uses it at a time.
#pragma once

#include "EDR/BlockIndex.h"
#include "EDR/Container.h"
#include "EDR/Index.h"
#include "input/InputPlace.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class ParsedEdrs {
public:
    void clear() noexcept;

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
        std::uint32_t textBegin; // from the line's begin on
        std::uint32_t textSize;
    };
    struct Edr {
        EDR::RecordKind kind;
        std::size_t firstStep;
        std::size_t textBegin;
        InputPlace end;
    };

    static constexpr std::uint32_t noField = UINT32_MAX;

    std::vector<Edr> edrsM;
    std::vector<Step> stepsM;    // of all EDRs
    std::string textM;           // of all EDRs: the line, followed by the texts that aren't in it
    char const* lineM = nullptr; // of the last EDR, where it was read
};

// Inline, because it is called for nearly every field.
inline void ParsedEdrs::setFieldInLine(EDR::Index const& field, std::string_view text) {
    auto const begin = static_cast<std::size_t>(text.data() - lineM);
    stepsM.push_back(
        {field, static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(text.size())});
}

} // namespace host
