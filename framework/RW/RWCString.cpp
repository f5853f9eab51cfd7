#include "RW/RWCString.h"

#include <ostream>

std::ostream& operator<<(std::ostream& out, RWCString const& text) {
    out.width(0);
    return out << text.view();
}
