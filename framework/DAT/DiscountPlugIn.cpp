#include "DAT/DiscountPlugIn.h"

namespace DAT::Discount {

// Here and not inline, so that the type information is the framework's: one copy for all modules.
PlugIn::~PlugIn() = default;

} // namespace DAT::Discount
