// Reads EDRs from lines of JSON, one object a line: fields are named by the last part of their
// path, a block is an array of objects.
//
// One parser serves the inputs of one pipeline one after the other, each on one thread; it
// remembers which unknown fields it has seen. The description must outlive it.
#pragma once

#include "EDR/BlockIndex.h"
#include "EDR/Description.h"
#include "EDR/Index.h"
#include "input/EdrMembers.h"

#include <simdjson.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
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
    // A member of an object; in a block's array, with the position there.
    struct PathStep {
        std::string_view name;
        std::optional<std::size_t> position;
    };

    void parseRecord(std::string_view line, ParsedEdrs& edrs);
    void parseBlock(simdjson::ondemand::object& object, std::uint32_t kind, ParsedEdrs& edrs);
    void parseMember(simdjson::ondemand::value& value, EdrMember const& member, ParsedEdrs& edrs);
    void parseBlocks(simdjson::ondemand::value& value, EDR::BlockIndex const& block,
                     ParsedEdrs& edrs);
    void parseField(simdjson::ondemand::value& value, EDR::Index const& field, ParsedEdrs& edrs);
    void parseRecordKind(simdjson::ondemand::value& value, ParsedEdrs& edrs);
    void noteUnknown(std::string_view name, std::uint32_t kind);
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
    std::optional<simdjson::ondemand::document> documentM;
    EdrMembers membersM;
    std::vector<PathStep> pathM;
    std::vector<std::string> newUnknownFieldsM;
    std::size_t unknownFieldsM = 0;
};

} // namespace host
