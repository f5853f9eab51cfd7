#include "DAT/RatingRateplanPlugIn.h"

namespace DAT::Rating {

// Here and not inline, so that the type information is the framework's: one copy for all modules.
RateplanPlugIn::~RateplanPlugIn() = default;

} // namespace DAT::Rating
