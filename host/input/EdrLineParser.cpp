#include "input/EdrLineParser.h"

#include "input/JsonNumber.h"
#include "input/ParsedEdrs.h"
#include "input/PlainEdrLine.h"

#include <new>

namespace host {

namespace {

using simdjson::ondemand::json_type;

constexpr int maxDepthOfIgnored = 64;

std::string_view typeName(json_type type) {
    switch (type) {
    case json_type::array:
        return "an array";
    case json_type::object:
        return "an object";
    case json_type::number:
        return "a number";
    case json_type::string:
        return "a string";
    case json_type::boolean:
        return "a boolean";
    case json_type::null:
        break;
    }
    return "null";
}

// The parser only checks numbers that it converts, and here the text is used.
std::string_view numberText(simdjson::ondemand::value& value) {
    std::string_view token = value.raw_json_token();
    token = token.substr(0, token.find_last_not_of(" \t\r\n") + 1);
    if (token.empty() || jsonNumberLength(token) != token.size()) {
        throw simdjson::simdjson_error(simdjson::NUMBER_ERROR);
    }
    return token;
}

void requireNull(simdjson::ondemand::value& value) {
    if (!value.is_null().value()) {
        throw simdjson::simdjson_error(simdjson::N_ATOM_ERROR);
    }
}

// Checks that an unused value is valid JSON.
void passOver(simdjson::ondemand::value& value, int depth) {
    if (depth > maxDepthOfIgnored) {
        throw simdjson::simdjson_error(simdjson::DEPTH_ERROR);
    }
    switch (value.type().value()) {
    case json_type::array:
        for (auto item : value.get_array()) {
            simdjson::ondemand::value element = item.value();
            passOver(element, depth + 1);
        }
        return;
    case json_type::object:
        for (auto result : value.get_object()) {
            auto&& member = std::move(result).take_value();
            static_cast<void>(member.unescaped_key().value());
            passOver(member.value(), depth + 1);
        }
        return;
    case json_type::number:
        numberText(value);
        return;
    case json_type::string:
        static_cast<void>(value.get_string().value());
        return;
    case json_type::boolean:
        static_cast<void>(value.get_bool().value());
        return;
    case json_type::null:
        requireNull(value);
    }
}

std::string withoutFullStop(std::string text) {
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

} // namespace

EdrLineParser::EdrLineParser(EDR::Description const& description)
    : descriptionM(description), membersM(description) {
}

void EdrLineParser::parse(std::string_view line, ParsedEdrs& edrs) {
    newUnknownFieldsM.clear();
    edrs.begin(line);
    if (parsePlainEdrLine(line, membersM, edrs)) {
        return;
    }
    edrs.drop();
    edrs.begin(line);
    pathM.clear();
    lineM = line;
    documentM.reset();
    try {
        parseRecord(line, edrs);
    } catch (simdjson::simdjson_error const& error) {
        fail(error);
    }
}

void EdrLineParser::parseRecord(std::string_view line, ParsedEdrs& edrs) {
    documentM =
        parserM
            .iterate(simdjson::padded_string_view(line.data(), line.size(), line.size() + padding))
            .value();
    auto& document = *documentM;
    // One message for all: the parser guesses the type by the first letter, even if the line isn't
    // JSON at all.
    if (document.type().value() != json_type::object) {
        fail("expected a JSON object, which begins with '{'");
    }
    simdjson::ondemand::object object = document.get_object();
    parseBlock(object, EDR::Description::root().blockKind(), edrs);
    if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
        fail("more text after the JSON object");
    }
}

void EdrLineParser::parseBlock(simdjson::ondemand::object& object, std::uint32_t kind,
                               ParsedEdrs& edrs) {
    auto const number = membersM.nextObject();
    for (auto result : object) {
        auto&& entry = std::move(result).take_value();
        std::string_view const name = entry.unescaped_key();
        pathM.push_back({name, std::nullopt});
        auto* const member = membersM.of(kind).find(name);
        if (member == nullptr) {
            noteUnknown(name, kind);
            passOver(entry.value(), 1);
        } else if (member->comesFirstIn(number)) {
            parseMember(entry.value(), *member, edrs);
        } else {
            fail("the member is given twice");
        }
        pathM.pop_back();
    }
}

void EdrLineParser::parseMember(simdjson::ondemand::value& value, EdrMember const& member,
                                ParsedEdrs& edrs) {
    switch (member.kind) {
    case EdrMember::Kind::field:
        parseField(value, member.field, edrs);
        return;
    case EdrMember::Kind::blocks:
        parseBlocks(value, member.block, edrs);
        return;
    case EdrMember::Kind::recordKind:
        parseRecordKind(value, edrs);
        return;
    case EdrMember::Kind::unknown:
        passOver(value, 1);
    }
}

void EdrLineParser::parseBlocks(simdjson::ondemand::value& value, EDR::BlockIndex const& block,
                                ParsedEdrs& edrs) {
    auto const type = value.type().value();
    if (type == json_type::null) {
        requireNull(value);
        return;
    }
    if (type != json_type::array) {
        fail("expected an array of objects, not " + std::string(typeName(type)));
    }
    std::size_t position = 0;
    for (auto item : value.get_array()) {
        pathM.back().position = position++;
        simdjson::ondemand::value element = item.value();
        if (auto const elementType = element.type().value(); elementType != json_type::object) {
            fail("expected an object, not " + std::string(typeName(elementType)));
        }
        edrs.addBlock(block);
        simdjson::ondemand::object object = element.get_object();
        parseBlock(object, block.blockKind(), edrs);
    }
}

void EdrLineParser::parseField(simdjson::ondemand::value& value, EDR::Index const& field,
                               ParsedEdrs& edrs) {
    switch (auto const type = value.type().value()) {
    case json_type::string:
        edrs.setField(field, value.get_string());
        return;
    case json_type::number:
        edrs.setField(field, numberText(value));
        return;
    case json_type::null:
        requireNull(value);
        return;
    default:
        fail("expected a string or a number, not " + std::string(typeName(type)));
    }
}

void EdrLineParser::parseRecordKind(simdjson::ondemand::value& value, ParsedEdrs& edrs) {
    std::string_view name;
    auto const at = column();
    if (value.type().value() == json_type::string) {
        name = value.get_string();
    }
    auto const kind = recordKindNamed(name);
    if (!kind) {
        fail("expected \"HEADER\", \"TRAILER\" or \"DETAIL\"", at);
    }
    edrs.setRecordKind(*kind);
}

void EdrLineParser::noteUnknown(std::string_view name, std::uint32_t kind) {
    if (unknownFieldsM < maxUnknownFields) {
        ++unknownFieldsM;
        membersM.of(kind).add(name);
        newUnknownFieldsM.push_back(descriptionM.blockKinds()[kind].path.str() + "." +
                                    std::string(name));
    }
}

// Such as "CUST_A[0].DL[1].BALANCE_GROUP_ID".
std::string EdrLineParser::path() const {
    std::string path;
    for (auto const& step : pathM) {
        if (!path.empty()) {
            path += ".";
        }
        path += step.name;
        if (step.position) {
            path += "[" + std::to_string(*step.position) + "]";
        }
    }
    return path;
}

std::optional<std::size_t> EdrLineParser::column() {
    char const* location = nullptr;
    if (!documentM || documentM->current_location().get(location) != simdjson::SUCCESS ||
        location < lineM.data() || location >= lineM.data() + lineM.size()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(location - lineM.data()) + 1;
}

void EdrLineParser::fail(simdjson::simdjson_error const& error) {
    if (error.error() == simdjson::MEMALLOC) {
        throw std::bad_alloc(); // the line may be good
    }
    auto const at = path();
    auto const reason = error.error() == simdjson::UTF8_ERROR
                            ? std::string("not valid UTF-8")
                            : "not valid JSON" + (at.empty() ? at : " at " + at) + ": " +
                                  withoutFullStop(error.what());
    // The parser is after a bad string, and before an object that isn't closed.
    bool const isColumnKnown = error.error() != simdjson::STRING_ERROR &&
                               error.error() != simdjson::INCOMPLETE_ARRAY_OR_OBJECT;
    throw EdrLineError(reason, isColumnKnown ? column() : std::nullopt);
}

void EdrLineParser::fail(std::string const& reason, std::optional<std::size_t> column) const {
    auto const at = path();
    throw EdrLineError(at.empty() ? reason : at + ": " + reason, column);
}

} // namespace host
