// EDRs that are parsed but not yet put into containers: the fields and blocks of each, in the order
// of the record. So another thread can parse ahead, while the containers stay with the pipeline and
// in its cache. The storage is reused; one thread uses it at a time.
#pragma once

#include "EDR/BlockIndex.h"
#include "EDR/Container.h"
#include "EDR/Index.h"
#include "input/InputPlace.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

class ParsedEdrs {
public:
    void clear() noexcept;

    // Adds an EDR, to which the next calls refer. The line must stay valid while fields are set:
    // texts within it aren't copied again.
    void begin(std::string_view line);
    void setRecordKind(EDR::RecordKind kind) noexcept { edrsM.back().kind = kind; }
    // In the order in which a container is filled.
    void addBlock(EDR::BlockIndex const& block);
    void setField(EDR::Index const& field, std::string_view text);
    // The line ends there.
    void end(InputPlace const& place) noexcept { edrsM.back().end = place; }
    // Removes the last EDR.
    void drop();

    std::size_t count() const noexcept { return edrsM.size(); }
    InputPlace const& endOf(std::size_t edr) const noexcept { return edrsM[edr].end; }
    void fill(EDR::Container& container, std::size_t edr) const;

private:
    // Of filling a container: a field, or a block of that kind.
    struct Step {
        std::uint32_t blockKind;
        std::uint32_t field;
        std::uint32_t textBegin;
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
    std::vector<Step> stepsM; // of all EDRs
    std::string textM;        // of all EDRs: the line, followed by the texts that aren't in it
    std::string_view lineM;   // of the last EDR, where it was read
};

// Inline, because it is called for every field.
inline void ParsedEdrs::setField(EDR::Index const& field, std::string_view text) {
    std::less_equal<char const*> const isUpTo;
    std::size_t begin = textM.size();
    if (isUpTo(lineM.data(), text.data()) && isUpTo(text.data(), lineM.data() + lineM.size())) {
        begin = edrsM.back().textBegin + static_cast<std::size_t>(text.data() - lineM.data());
    } else {
        textM.append(text);
    }
    stepsM.push_back({field.blockKind(), field.field(), static_cast<std::uint32_t>(begin),
                      static_cast<std::uint32_t>(text.size())});
}

} // namespace host
