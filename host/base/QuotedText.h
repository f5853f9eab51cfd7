// Texts in the form that JSON and YAML both read.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text in double quotes, with what can't stand there escaped. Bytes that are no UTF-8 come out
// as U+FFFD.
std::string quotedText(std::string_view text);

} // namespace host
