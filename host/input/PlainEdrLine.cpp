#include "input/PlainEdrLine.h"

#include "input/EdrMembers.h"
#include "input/JsonNumber.h"
#include "input/ParsedEdrs.h"

#include <simdjson.h>

#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace host {

namespace {

// How many members of the expected order may be missing before the next one is looked up.
constexpr int maxMissing = 4;

constexpr bool isBeyondAscii(char c) {
    return static_cast<signed char>(c) < 0;
}

constexpr bool isControl(char c) {
    return c >= '\0' && c < ' ';
}

// The first byte from there on that is more than an ASCII character of a string: a quote, a
// backslash, a control character, or a part of another character, which as a signed number is below
// all others. There must be one; up to 15 bytes after it are read.
inline char const* findSpecial(char const* at) {
#ifdef __SSE2__
    for (;; at += sizeof(__m128i)) {
        auto const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const*>(at));
        auto const quotes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
        auto const backslashes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
        auto const others = _mm_cmplt_epi8(bytes, _mm_set1_epi8(' '));
        auto const found = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(quotes, backslashes), others)));
        if (found != 0) {
            return at + std::countr_zero(found);
        }
    }
#else
    while (*at != '"' && *at != '\\' && !isControl(*at) && !isBeyondAscii(*at)) {
        ++at;
    }
    return at;
#endif
}

// The closing quote of a string whose characters begin there, the given one being the first beyond
// ASCII; null when it has an escape or isn't UTF-8.
char const* findClosingQuoteBeyondAscii(char const* characters, char const* at) {
    while (isBeyondAscii(*at)) {
        at = findSpecial(at + 1);
    }
    bool const isPlain = *at == '"' && simdjson::validate_utf8(
                                           characters, static_cast<std::size_t>(at - characters));
    return isPlain ? at : nullptr;
}

// Null also when the string has an escape or isn't valid.
inline char const* findClosingQuote(char const* characters) {
    auto const* const at = findSpecial(characters);
    if (*at == '"') {
        return at;
    }
    return isBeyondAscii(*at) ? findClosingQuoteBeyondAscii(characters, at) : nullptr;
}

// Whether the line has the text there, which has no control characters.
inline bool hasThere(char const* at, std::string_view text) {
    auto const hasWord = [&](std::size_t offset) {
        std::uint64_t words[2];
        std::memcpy(&words[0], at + offset, sizeof words[0]);
        std::memcpy(&words[1], text.data() + offset, sizeof words[1]);
        return words[0] == words[1];
    };
    // By words, for a call takes longer for the few bytes of a name.
    constexpr auto wordSize = sizeof(std::uint64_t);
    if (text.size() < wordSize) {
        return std::memcmp(at, text.data(), text.size()) == 0;
    }
    auto const lastWord = text.size() - wordSize;
    for (std::size_t offset = 0; offset < lastWord; offset += wordSize) {
        if (!hasWord(offset)) {
            return false;
        }
    }
    return hasWord(lastWord);
}

// A line that a control character follows, as its end does: nothing that is looked for is one, so
// that nothing is found after the line, and no function needs to compare with its end.
//
// Functions that take a part of the line move the position past it, or return false when it isn't
// there as a plain one. The position is passed on by value where a call may not be inlined, so that
// it stays in a register.
class PlainEdrLine {
public:
    PlainEdrLine(std::string_view line, EdrMembers& members, ParsedEdrs& edrs)
        : lineM(line), membersM(members), edrsM(edrs) {}

    bool parse() {
        auto const* const end = lineM.data() + lineM.size();
        return isControl(*end) &&
               afterObject(lineM.data(), EDR::Description::root().blockKind()) == end;
    }

private:
    // The position after the object or the array of blocks that begins there; null when it isn't
    // plain.
    char const* afterObject(char const* at, std::uint32_t blockKind);
    char const* afterBlocks(char const* at, EDR::BlockIndex const& block);

    static EdrMember* takeName(char const*& at, EdrMembers::OfBlock& members, EdrMember& previous);
    static EdrMember* lookUp(std::string_view name, EdrMembers::OfBlock& members,
                             EdrMember& previous);
    bool takeValue(char const*& at, EdrMember const& member);
    bool takeField(char const*& at, EdrMember const& member);
    bool takeRecordKind(char const*& at);
    static bool takeString(char const*& at, std::string_view& characters);
    bool takeNumber(char const*& at, std::string_view& number) const;
    static bool take(char const*& at, std::string_view text);
    static bool take(char const*& at, char c);
    static bool takeWithBlank(char const*& at, char c);

    std::string_view lineM;
    EdrMembers& membersM;
    ParsedEdrs& edrsM;
};

char const* PlainEdrLine::afterObject(char const* at, std::uint32_t blockKind) {
    auto& members = membersM.of(blockKind);
    auto const object = membersM.nextObject();
    auto* previous = &members.beforeFirst;
    if (!take(at, '{')) {
        return nullptr;
    }
    do {
        auto* const member = takeName(at, members, *previous);
        if (member == nullptr || !member->comesFirstIn(object) || !takeWithBlank(at, ':') ||
            !takeValue(at, *member)) {
            return nullptr;
        }
        previous = member;
    } while (takeWithBlank(at, ','));
    return take(at, '}') ? at : nullptr;
}

char const* PlainEdrLine::afterBlocks(char const* at, EDR::BlockIndex const& block) {
    if (take(at, "null")) {
        return at;
    }
    if (!take(at, '[')) {
        return nullptr;
    }
    if (take(at, ']')) {
        return at;
    }
    do {
        edrsM.addBlock(block);
        at = afterObject(at, block.blockKind());
        if (at == nullptr) {
            return nullptr;
        }
    } while (takeWithBlank(at, ','));
    return take(at, ']') ? at : nullptr;
}

// Inline, as are the functions that it calls for a field: this runs for every member of every EDR.
inline EdrMember* PlainEdrLine::takeName(char const*& at, EdrMembers::OfBlock& members,
                                         EdrMember& previous) {
    auto* expected = previous.next;
    for (int missing = 0; expected != nullptr && missing <= maxMissing; ++missing) {
        if (take(at, expected->quotedName)) {
            return expected;
        }
        expected = expected->next;
    }
    std::string_view name;
    return takeString(at, name) ? lookUp(name, members, previous) : nullptr;
}

EdrMember* PlainEdrLine::lookUp(std::string_view name, EdrMembers::OfBlock& members,
                                EdrMember& previous) {
    auto* const found = members.find(name);
    if (found != nullptr) {
        previous.next = found;
    }
    return found;
}

inline bool PlainEdrLine::takeValue(char const*& at, EdrMember const& member) {
    switch (member.kind) {
    case EdrMember::Kind::field:
    case EdrMember::Kind::unknown:
        return takeField(at, member);
    case EdrMember::Kind::blocks:
        at = afterBlocks(at, member.block);
        return at != nullptr;
    case EdrMember::Kind::recordKind:
        return takeRecordKind(at);
    }
    return false;
}

inline bool PlainEdrLine::takeField(char const*& at, EdrMember const& member) {
    std::string_view text;
    if (!takeString(at, text) && !takeNumber(at, text)) {
        return take(at, "null");
    }
    if (member.kind == EdrMember::Kind::field) {
        edrsM.setFieldInLine(member.field, text);
    }
    return true;
}

bool PlainEdrLine::takeRecordKind(char const*& at) {
    std::string_view name;
    if (!takeString(at, name)) {
        return false;
    }
    auto const kind = recordKindNamed(name);
    if (kind) {
        edrsM.setRecordKind(*kind);
    }
    return kind.has_value();
}

inline bool PlainEdrLine::takeString(char const*& at, std::string_view& characters) {
    if (*at != '"') {
        return false;
    }
    auto const* const begin = at + 1;
    auto const* const end = findClosingQuote(begin);
    if (end == nullptr) {
        return false;
    }
    characters = {begin, static_cast<std::size_t>(end - begin)};
    at = end + 1;
    return true;
}

bool PlainEdrLine::takeNumber(char const*& at, std::string_view& number) const {
    number = lineM.substr(static_cast<std::size_t>(at - lineM.data()));
    number = number.substr(0, jsonNumberLength(number));
    at += number.size();
    return !number.empty();
}

inline bool PlainEdrLine::take(char const*& at, std::string_view text) {
    bool const isThere = hasThere(at, text);
    at += isThere ? text.size() : 0;
    return isThere;
}

inline bool PlainEdrLine::take(char const*& at, char c) {
    bool const isThere = *at == c;
    at += isThere ? 1 : 0;
    return isThere;
}

// The character, and a blank if there is one.
inline bool PlainEdrLine::takeWithBlank(char const*& at, char c) {
    if (!take(at, c)) {
        return false;
    }
    take(at, ' ');
    return true;
}

} // namespace

bool parsePlainEdrLine(std::string_view line, EdrMembers& members, ParsedEdrs& edrs) {
    return PlainEdrLine(line, members, edrs).parse();
}

} // namespace host
