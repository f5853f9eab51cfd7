#include "input/EdrLineParser.h"

#include "input/ParsedEdrs.h"
#include "registry/EdrDescriptionFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>

namespace host {

namespace {

using simdjson::ondemand::json_type;

constexpr int maxDepthOfIgnored = 64;
// How many members of the expected order may be missing before the next one is looked up.
constexpr int maxMissing = 4;

struct RecordKindName {
    std::string_view name;
    EDR::RecordKind kind;
};
constexpr std::array recordKinds = {
    RecordKindName{"HEADER", EDR::headerRecord},
    RecordKindName{"TRAILER", EDR::trailerRecord},
    RecordKindName{"DETAIL", EDR::detailRecord},
};

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

std::string lastPart(BAS::String const& path) {
    return std::string(path.view().substr(path.view().rfind('.') + 1));
}

std::string_view takeDigits(std::string_view& text) {
    auto const end =
        std::find_if(text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; });
    auto const digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

bool takeAnyOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// The JSON parser only checks numbers that it converts, and here the text is used.
bool isNumber(std::string_view text) {
    takeAnyOf(text, "-");
    auto const whole = takeDigits(text);
    if (whole.empty() || (whole.size() > 1 && whole.front() == '0')) {
        return false;
    }
    if (takeAnyOf(text, ".") && takeDigits(text).empty()) {
        return false;
    }
    if (takeAnyOf(text, "eE")) {
        takeAnyOf(text, "+-");
        if (takeDigits(text).empty()) {
            return false;
        }
    }
    return text.empty();
}

std::string_view numberText(simdjson::ondemand::value& value) {
    std::string_view token = value.raw_json_token();
    token = token.substr(0, token.find_last_not_of(" \t\r\n") + 1);
    if (!isNumber(token)) {
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

// Whether so many bytes are the same. Names are a few words, for which a call takes longer.
inline bool areSame(char const* a, char const* b, std::size_t size) {
    auto const isWordSame = [&](std::size_t at) {
        std::array<std::uint64_t, 2> words;
        std::memcpy(&words[0], a + at, sizeof words[0]);
        std::memcpy(&words[1], b + at, sizeof words[1]);
        return words[0] == words[1];
    };
    constexpr auto wordSize = sizeof(std::uint64_t);
    if (size < wordSize) {
        return std::memcmp(a, b, size) == 0;
    }
    // The last word overlaps the one before.
    auto const last = size - wordSize;
    std::size_t at = 0;
    while (at < last && isWordSame(at)) {
        at += wordSize;
    }
    return at >= last && isWordSame(last);
}

std::string withoutFullStop(std::string text) {
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

} // namespace

EdrLineParser::EdrLineParser(EDR::Description const& description)
    : descriptionM(description), layoutsM(description.blockKinds().size()) {
    for (std::uint32_t kind = 0; kind < layoutsM.size(); ++kind) {
        auto const& described = description.blockKinds()[kind];
        auto& members = layoutsM[kind].members;
        for (std::uint32_t field = 0; field < described.fields.size(); ++field) {
            members[lastPart(described.fields[field].path)].field = EDR::Index(kind, field);
        }
        for (auto const child : described.children) {
            members[lastPart(description.blockKinds()[child].path)].block = EDR::BlockIndex(child);
        }
    }
    layoutsM[EDR::Description::root().blockKind()].members[recordMember];
    for (auto& layout : layoutsM) {
        for (auto& [name, member] : layout.members) {
            member.name = name;
        }
    }
}

void EdrLineParser::parse(std::string_view line, ParsedEdrs& edrs) {
    newUnknownFieldsM.clear();
    pathM.clear();
    lineM = line;
    hasEscapesM = line.find('\\') != std::string_view::npos;
    documentM.reset();
    try {
        parseRecord(line, edrs);
    } catch (simdjson::simdjson_error const& error) {
        fail(error);
    }
}

void EdrLineParser::parseRecord(std::string_view line, ParsedEdrs& edrs) {
    edrs.begin(line);
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
    auto const objectNumber = ++objectsM;
    auto& layout = layoutsM[kind];
    auto* previous = &layout.beforeFirst;
    for (auto result : object) {
        auto&& entry = std::move(result).take_value();
        auto* const member = findMember(entry, layout, *previous);
        if (member == nullptr) {
            parseUnknown(entry.value(), kind);
        } else {
            requireFirst(member->seenIn, objectNumber);
            parseMember(entry.value(), *member, edrs);
            previous = member;
        }
        pathM.pop_back();
    }
}

// Inline, as are the functions that it calls for a field: this runs for every member of every EDR.
inline EdrLineParser::Member* EdrLineParser::findMember(simdjson::ondemand::field& entry,
                                                        BlockLayout& layout, Member& previous) {
    auto* const expected = previous.next;
    if (expected == nullptr || hasEscapesM || !isNamed(entry, *expected)) {
        return findOtherMember(entry, layout, previous);
    }
    pathM.push_back({expected->name, PathStep::noPosition});
    return expected;
}

// One that isn't the expected one.
EdrLineParser::Member* EdrLineParser::findOtherMember(simdjson::ondemand::field& entry,
                                                      BlockLayout& layout, Member& previous) {
    auto* later = hasEscapesM ? nullptr : previous.next;
    for (int missing = 0; later != nullptr && missing <= maxMissing; ++missing) {
        if (isNamed(entry, *later)) {
            pathM.push_back({later->name, PathStep::noPosition});
            return later;
        }
        later = later->next;
    }
    std::string_view const name = entry.unescaped_key();
    pathM.push_back({name, PathStep::noPosition});
    auto const found = layout.members.find(name);
    if (found == layout.members.end()) {
        return nullptr;
    }
    previous.next = &found->second;
    return previous.next;
}

// In a line without escapes.
inline bool EdrLineParser::isNamed(simdjson::ondemand::field const& entry,
                                   Member const& member) const {
    char const* const key = entry.key().raw();
    auto const end = member.name.size();
    return end < static_cast<std::size_t>(lineM.end() - key) && key[end] == '"' &&
           areSame(key, member.name.data(), end);
}

inline void EdrLineParser::parseMember(simdjson::ondemand::value& value, Member const& member,
                                       ParsedEdrs& edrs) {
    if (member.field.isValid()) {
        parseField(value, member.field, edrs);
    } else if (member.block.isValid()) {
        parseBlocks(value, member.block, edrs);
    } else {
        parseRecordKind(value, edrs);
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

inline void EdrLineParser::parseField(simdjson::ondemand::value& value, EDR::Index const& field,
                                      ParsedEdrs& edrs) {
    std::string_view const token = value.raw_json_token();
    if (token.starts_with('"') && !hasEscapesM) {
        static_cast<void>(value.get_raw_json_string().value()); // moves the parser past it
        edrs.setFieldInLine(field, token.substr(1, token.rfind('"') - 1));
    } else {
        parseOtherField(value, field, edrs);
    }
}

// Of a value other than a string without escapes.
void EdrLineParser::parseOtherField(simdjson::ondemand::value& value, EDR::Index const& field,
                                    ParsedEdrs& edrs) {
    switch (auto const type = value.type().value()) {
    case json_type::string:
        edrs.setField(field, value.get_string());
        return;
    case json_type::number:
        edrs.setFieldInLine(field, numberText(value));
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
    auto const found = std::find_if(recordKinds.begin(), recordKinds.end(),
                                    [&](RecordKindName const& each) { return each.name == name; });
    if (found == recordKinds.end()) {
        fail("expected \"HEADER\", \"TRAILER\" or \"DETAIL\"", at);
    }
    edrs.setRecordKind(found->kind);
}

void EdrLineParser::parseUnknown(simdjson::ondemand::value& value, std::uint32_t kind) {
    auto const name = pathM.back().name;
    auto& unknownNames = layoutsM[kind].unknownNames;
    if (unknownFieldsM < maxUnknownFields && unknownNames.find(name) == unknownNames.end()) {
        ++unknownFieldsM;
        unknownNames.emplace(name);
        newUnknownFieldsM.push_back(descriptionM.blockKinds()[kind].path.str() + "." +
                                    std::string(name));
    }
    passOver(value, 1);
}

void EdrLineParser::requireFirst(std::uint64_t& seenIn, std::uint64_t object) {
    if (seenIn == object) {
        fail("the member is given twice");
    }
    seenIn = object;
}

// Such as "CUST_A[0].DL[1].BALANCE_GROUP_ID".
std::string EdrLineParser::path() const {
    std::string path;
    for (auto const& step : pathM) {
        if (!path.empty()) {
            path += ".";
        }
        path += step.name;
        if (step.position != PathStep::noPosition) {
            path += "[" + std::to_string(step.position) + "]";
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
