// Parses the lines that EDRs usually come as, in a fraction of the time that a parser of any JSON
// takes: objects whose members the description knows, mostly in the order of earlier lines; in
// their values, no escapes, and no more white space than a blank after each comma and colon.
#pragma once

#include <string_view>

namespace host {

class EdrMembers;
class ParsedEdrs;

// Adds the line's blocks and fields to the last EDR, whose line it is; so many bytes after it may
// be read as a JSON parser needs. Returns false when the line isn't a plain one, right or wrong:
// the EDR is then incomplete.
bool parsePlainEdrLine(std::string_view line, EdrMembers& members, ParsedEdrs& edrs);

} // namespace host
