#include "findings/Finding.h"

namespace reader {

std::string sentenceOf(Finding const& finding) {
    auto sentence = finding.subject;
    if (!finding.says.empty()) {
        sentence += "; the event says: " + finding.says;
    }
    if (!finding.holds.empty()) {
        sentence += "; memory holds: " + finding.holds;
    }
    if (!finding.relation.empty()) {
        sentence += "; " + finding.relation;
    }
    return sentence;
}

} // namespace reader
