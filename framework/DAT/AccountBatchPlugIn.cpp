#include "DAT/AccountBatchPlugIn.h"

namespace DAT::Account {

// Here and not inline, so that the type information is the framework's: one copy for all modules.
BatchPlugIn::~BatchPlugIn() = default;

} // namespace DAT::Account
