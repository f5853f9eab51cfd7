// The parts of the page that are the same for every dump, as they stand in the sources.
#pragma once

#include <string_view>

namespace reader {

// With @NAME@ where the other parts and the data go.
extern std::string_view const pageFrame;
extern std::string_view const pageStyle;
extern std::string_view const pageScript;
// SHA-256 in hexadecimal digits.
extern std::string_view const pageStyleHash;
extern std::string_view const pageScriptHash;

} // namespace reader
