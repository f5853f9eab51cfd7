// What a plug-in threw, as a text for messages.
#pragma once

#include <string>

namespace host {

// The text of the exception that is being handled: a std::exception's, a BAS::Status's, or "an
// exception of an unknown type". Only within a catch block.
std::string currentExceptionText();

} // namespace host
