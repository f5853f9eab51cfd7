// What may have been meant by the path of a field or block that an EDR description lacks: the
// nearest name in the same block, as " (did you mean 'NAME'?)", or nothing.
#pragma once

#include <string>
#include <string_view>

namespace EDR {
class Description;
}

namespace host {

std::string missingFieldHint(EDR::Description const& description, std::string_view path);
std::string missingBlockHint(EDR::Description const& description, std::string_view path);
// For a name that may be of either.
std::string missingMemberHint(EDR::Description const& description, std::string_view path);

} // namespace host
