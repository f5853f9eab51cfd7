#include "RW/RWDBConnection.h"

#include "RW/RWDBDatabase.h"

#include <soci/soci.h>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

constexpr std::string_view blanks = " \t\r\n";

// The place behind a parameter's value that begins there; a value may stand in single quotes, with
// a backslash before a quote inside.
std::size_t endOfValue(std::string_view text, std::size_t begin) {
    if (begin >= text.size() || text[begin] != '\'') {
        return std::min(text.find_first_of(blanks, begin), text.size());
    }
    std::size_t end = begin + 1;
    while (end < text.size() && text[end] != '\'') {
        end += text[end] == '\\' ? 2 : 1;
    }
    return std::min(end + 1, text.size());
}

// The text with the value of every password parameter covered.
std::string withoutSecrets(std::string text) {
    constexpr std::string_view secret = "pass";
    std::string lowered(text);
    std::transform(text.begin(), text.end(), lowered.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    // From the back, so that the places found before stay right.
    for (auto at = lowered.rfind(secret); at != std::string::npos;
         at = at == 0 ? std::string::npos : lowered.rfind(secret, at - 1)) {
        auto const nameEnd = lowered.find_first_of("= \t\r\n", at);
        auto const equals = lowered.find_first_not_of(blanks, nameEnd);
        if (equals == std::string::npos || lowered[equals] != '=') {
            continue;
        }
        auto const value = std::min(text.find_first_not_of(blanks, equals + 1), text.size());
        text.replace(value, endOfValue(text, value) - value, "***");
    }
    return text;
}

} // namespace

RWDBConnection::RWDBConnection(RWCString const& connectionString) {
    try {
        sessionM = std::make_shared<soci::session>(connectionString.str());
    } catch (std::exception const& error) {
        statusM = RWDBStatus("cannot open the database '" + withoutSecrets(connectionString.str()) +
                             "': " + withoutSecrets(error.what()));
    }
}

RWDBDatabase RWDBConnection::database() const {
    return RWDBDatabase(*this);
}
