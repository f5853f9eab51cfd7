// Texts from outside, escaped for where they are shown.
#pragma once

#include <string>
#include <string_view>

namespace host {

// For one line of a log or a terminal: control characters escaped (\n, \r, \t, \x1b ...) and
// backslashes doubled, so that a text can neither begin a new line nor control a terminal. In a
// text that isn't valid UTF-8, all bytes beyond ASCII are escaped.
std::string printable(std::string_view text);

// Whether any character of the text controls rather than shows.
bool hasControlCharacter(std::string_view text);

// In double quotes, valid in JSON and YAML. In a text that isn't valid UTF-8, all bytes beyond
// ASCII become U+FFFD.
std::string quotedText(std::string_view text);

} // namespace host
