#include "DAT/RatingPricePlugIn.h"

namespace DAT::Rating {

// Here and not inline, so that the type information is the framework's: one copy for all modules.
PricePlugIn::~PricePlugIn() = default;

} // namespace DAT::Rating
