#include "PBC/ModuleReference.h"

namespace PBC {

BAS::String ModuleReference(BAS::String const& directory) {
    auto const lastDot = directory.view().rfind('.');
    return lastDot == std::string_view::npos ? directory
                                             : BAS::String(directory.view().substr(lastDot + 1));
}

} // namespace PBC
