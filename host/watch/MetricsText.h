// The status of a host in the Prometheus text format, version 0.0.4.
#pragma once

#include "watch/HostStatus.h"

#include <string>

namespace host {

std::string metricsText(HostStatus const& status);

} // namespace host
