#include "run/ValueCounter.h"

namespace host {

void ValueCounter::count(std::string_view value) {
    if (auto const known = valuesM.find(value); known != valuesM.end()) {
        ++known->second;
    } else if (valuesM.size() < mostValues && value.size() <= longestValue) {
        valuesM.emplace(value, 1);
    } else {
        ++othersM;
    }
}

} // namespace host
