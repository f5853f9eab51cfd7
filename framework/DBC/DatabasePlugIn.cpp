#include "DBC/DatabasePlugIn.h"

#include <algorithm>

namespace DBC {

// Here and not inline, so that the type information is the framework's: one copy for all modules.
DatabasePlugIn::~DatabasePlugIn() = default;

BAS::String DatabasePlugIn::errorMessage(RWDBStatus const& status) {
    auto text = status.message().str();
    // Drivers end their texts with a line end and put more of them inside.
    text.erase(text.find_last_not_of("\r\n ") + 1);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace DBC
