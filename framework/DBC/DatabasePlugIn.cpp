#include "DBC/DatabasePlugIn.h"

#include <algorithm>

namespace DBC {

// Here and not inline, so that the type information is the framework's: one copy for all modules.
DatabasePlugIn::~DatabasePlugIn() = default;

BAS::String DatabasePlugIn::errorMessage(RWDBStatus const& status) {
    auto text = status.message().str();
    // Drivers put line ends at the end of their texts and inside.
    text.erase(text.find_last_not_of("\r\n ") + 1);
    std::replace(text.begin(), text.end(), '\n', ' ');
    // Some put the name of one of their functions in front.
    auto const colon = text.find(": ");
    if (colon != std::string::npos && text.find("::") < colon && text.find(' ') > colon) {
        text.erase(0, colon + 2);
    }
    return text;
}

} // namespace DBC
