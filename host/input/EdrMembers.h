// The members that the JSON objects of EDRs have: of each block kind, those that the description
// knows, and unknown ones that were seen. The description must outlive it; one thread at a time
// uses it.
#pragma once

#include "EDR/BlockIndex.h"
#include "EDR/Container.h"
#include "EDR/Description.h"
#include "EDR/Index.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace host {

struct EdrMember {
    enum class Kind { unknown, field, blocks, recordKind };

    Kind kind = Kind::unknown;
    std::string quotedName; // not escaped
    EDR::Index field;       // valid for a field
    EDR::BlockIndex block;  // valid for blocks
    // The object that had this member last.
    std::uint64_t seenIn = 0;
    // The one that came after this one in an earlier object; null when it isn't known.
    EdrMember* next = nullptr;

    // Notes that the object has this member; false when it has it a second time, which is wrong
    // unless the member is unknown.
    bool comesFirstIn(std::uint64_t object) noexcept {
        return std::exchange(seenIn, object) != object || kind == Kind::unknown;
    }
};

// By its name in a line: "HEADER", "TRAILER" or "DETAIL".
std::optional<EDR::RecordKind> recordKindNamed(std::string_view name) noexcept;

class EdrMembers {
public:
    // Those of one block kind.
    class OfBlock {
    public:
        // Null when there is none of that name.
        EdrMember* find(std::string_view name) noexcept {
            auto const found = membersM.find(name);
            return found == membersM.end() ? nullptr : &found->second;
        }
        // Returns the one of that name, an unknown one when it is new. It stays where it is.
        EdrMember& add(std::string_view name) {
            auto& member = membersM[std::string(name)];
            member.quotedName = '"' + std::string(name) + '"';
            return member;
        }

        // Comes before the member that an object begins with.
        EdrMember beforeFirst;

    private:
        struct NameHash {
            using is_transparent = void;
            std::size_t operator()(std::string_view name) const noexcept {
                return std::hash<std::string_view>{}(name);
            }
        };
        std::unordered_map<std::string, EdrMember, NameHash, std::equal_to<>> membersM;
    };

    explicit EdrMembers(EDR::Description const& description);

    OfBlock& of(std::uint32_t blockKind) noexcept { return blocksM[blockKind]; }
    // A number for the next object, by which members know that they were seen in it; not 0.
    std::uint64_t nextObject() noexcept { return ++objectsM; }

private:
    std::vector<OfBlock> blocksM; // one for each block kind
    std::uint64_t objectsM = 0;
};

} // namespace host
