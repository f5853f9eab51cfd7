#include "input/EdrMembers.h"

#include "registry/EdrDescriptionFile.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

struct RecordKindName {
    std::string_view name;
    EDR::RecordKind kind;
};
constexpr std::array recordKinds = {
    RecordKindName{"HEADER", EDR::headerRecord},
    RecordKindName{"TRAILER", EDR::trailerRecord},
    RecordKindName{"DETAIL", EDR::detailRecord},
};

std::string_view lastPart(BAS::String const& path) {
    return path.view().substr(path.view().rfind('.') + 1);
}

} // namespace

std::optional<EDR::RecordKind> recordKindNamed(std::string_view name) noexcept {
    auto const* const found =
        std::find_if(recordKinds.begin(), recordKinds.end(),
                     [&](RecordKindName const& each) { return each.name == name; });
    return found == recordKinds.end() ? std::nullopt : std::optional(found->kind);
}

EdrMembers::EdrMembers(EDR::Description const& description)
    : blocksM(description.blockKinds().size()) {
    of(EDR::Description::root().blockKind()).add(recordMember).kind = EdrMember::Kind::recordKind;
    for (std::uint32_t kind = 0; kind < blocksM.size(); ++kind) {
        auto const& described = description.blockKinds()[kind];
        for (std::uint32_t field = 0; field < described.fields.size(); ++field) {
            auto& member = of(kind).add(lastPart(described.fields[field].path));
            member.kind = EdrMember::Kind::field;
            member.field = EDR::Index(kind, field);
        }
        for (auto const child : described.children) {
            auto& member = of(kind).add(lastPart(description.blockKinds()[child].path));
            member.kind = EdrMember::Kind::blocks;
            member.block = EDR::BlockIndex(child);
        }
    }
}

} // namespace host
