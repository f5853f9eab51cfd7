#include "RW/RWLocaleSnapshot.h"

#include "RW/RWCString.h"
#include "RW/RWNumberText.h"

bool RWLocaleSnapshot::stringToNum(RWCString const& text, long* number) const {
    return rwTextToNumber(text.view(), *number);
}
