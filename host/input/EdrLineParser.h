// Reads EDRs from lines of JSON, one object a line: fields are named by the last part of their
// path, a block is an array of objects.
//
// One parser serves the inputs of one pipeline one after the other, each on one thread; it
// remembers which unknown fields it has seen. The description must outlive it.
#pragma once

#include "EDR/BlockIndex.h"
#include "EDR/Description.h"
#include "EDR/Index.h"

#include <simdjson.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace host {

class ParsedEdrs;

// Why a line is rejected, with the place in the JSON object if there is one.
class EdrLineError : public std::runtime_error {
public:
    EdrLineError(std::string const& reason, std::optional<std::size_t> column)
        : runtime_error(reason), columnM(column) {}

    // In bytes, counted from 1; nothing when it isn't known.
    std::optional<std::size_t> column() const noexcept { return columnM; }

private:
    std::optional<std::size_t> columnM;
};

class EdrLineParser {
public:
    static constexpr std::size_t padding = simdjson::SIMDJSON_PADDING;
    // How many unknown fields are reported; further ones are ignored silently.
    static constexpr std::size_t maxUnknownFields = 100;

    explicit EdrLineParser(EDR::Description const& description);

    EDR::Description const& description() const noexcept { return descriptionM; }

    // Appends the EDR of a line, after which padding bytes may be read. Throws an EdrLineError when
    // the line is rejected; the last EDR is then incomplete.
    void parse(std::string_view line, ParsedEdrs& edrs);

    // The paths of the unknown fields that were seen first in the last line.
    std::vector<std::string> const& newUnknownFields() const noexcept { return newUnknownFieldsM; }
    // How many there were in all, at most the limit.
    std::size_t unknownFields() const noexcept { return unknownFieldsM; }

private:
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const noexcept {
            return std::hash<std::string_view>{}(name);
        }
    };
    // A field, a block when the field isn't valid, or else the record's kind.
    struct Member {
        std::string_view name;
        EDR::Index field;
        EDR::BlockIndex block;
        // The object that had this member last.
        std::uint64_t seenIn = 0;
        // The one that came after this one in an earlier object; null when it isn't known.
        Member* next = nullptr;
    };
    struct BlockLayout {
        Member beforeFirst;
        std::unordered_map<std::string, Member, NameHash, std::equal_to<>> members;
        std::unordered_set<std::string, NameHash, std::equal_to<>> unknownNames;
    };
    // A member of an object; in a block's array, with the position there.
    struct PathStep {
        static constexpr std::size_t noPosition = SIZE_MAX;

        std::string_view name;
        std::size_t position;
    };

    void parseRecord(std::string_view line, ParsedEdrs& edrs);
    void parseBlock(simdjson::ondemand::object& object, std::uint32_t kind, ParsedEdrs& edrs);
    // Puts the member's name on the path; returns null when the description doesn't know it.
    Member* findMember(simdjson::ondemand::field& entry, BlockLayout& layout, Member& previous);
    Member* findOtherMember(simdjson::ondemand::field& entry, BlockLayout& layout,
                            Member& previous);
    bool isNamed(simdjson::ondemand::field const& entry, Member const& member) const;
    void parseMember(simdjson::ondemand::value& value, Member const& member, ParsedEdrs& edrs);
    void parseBlocks(simdjson::ondemand::value& value, EDR::BlockIndex const& block,
                     ParsedEdrs& edrs);
    void parseField(simdjson::ondemand::value& value, EDR::Index const& field, ParsedEdrs& edrs);
    void parseOtherField(simdjson::ondemand::value& value, EDR::Index const& field,
                         ParsedEdrs& edrs);
    void parseRecordKind(simdjson::ondemand::value& value, ParsedEdrs& edrs);
    void parseUnknown(simdjson::ondemand::value& value, std::uint32_t kind);
    void requireFirst(std::uint64_t& seenIn, std::uint64_t object);
    std::string path() const;
    // The column of the next value.
    std::optional<std::size_t> column();
    [[noreturn]] void fail(simdjson::simdjson_error const& error);
    [[noreturn]] void fail(std::string const& reason, std::optional<std::size_t> column) const;
    [[noreturn]] void fail(std::string const& reason) { fail(reason, column()); }

    EDR::Description const& descriptionM;
    simdjson::ondemand::parser parserM;
    // The present line; without a document as long as it doesn't look like JSON.
    std::string_view lineM;
    bool hasEscapesM = false; // without any, names and texts are views of the line
    std::optional<simdjson::ondemand::document> documentM;
    std::vector<BlockLayout> layoutsM; // one for each block kind
    std::uint64_t objectsM = 0;        // seen so far, to give each a number
    std::vector<PathStep> pathM;
    std::vector<std::string> newUnknownFieldsM;
    std::size_t unknownFieldsM = 0;
};

} // namespace host
