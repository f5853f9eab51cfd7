#include "DBC/DatabasePlugIn.h"

#include <algorithm>

namespace DBC {

BAS::String DatabasePlugIn::errorMessage(RWDBStatus const& status) {
    auto text = status.message().str();
    // Drivers end their texts with a line end and put more of them inside.
    text.erase(text.find_last_not_of("\r\n ") + 1);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace DBC
