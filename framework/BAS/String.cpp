#include "BAS/String.h"

#include "RW/RWNumberText.h"

namespace BAS {

RWLocaleSnapshot const String::localeCM;
String const NULL_STRING;

RWTValOrderedVector<String> String::split(char separator) const {
    RWTValOrderedVector<String> pieces;
    std::string_view rest = view();
    for (auto end = rest.find(separator); end != std::string_view::npos;
         end = rest.find(separator)) {
        pieces.append(String(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    pieces.append(String(rest));
    return pieces;
}

bool String::toNum(int& number) const {
    return rwTextToNumber(view(), number);
}

bool String::toNum(long& number) const {
    return rwTextToNumber(view(), number);
}

bool String::toNum(unsigned long& number) const {
    return rwTextToNumber(view(), number);
}

} // namespace BAS
