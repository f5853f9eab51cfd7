// Makes text from outside fit for one line of a log or a terminal.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text with its control characters escaped (\n, \r, \t, \x1b ...) and backslashes doubled, so
// that a text can neither begin a line of its own nor steer a terminal. Other bytes stay.
std::string printable(std::string_view text);

} // namespace host
