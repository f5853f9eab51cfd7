// datadump html: a page of the events to look at and to attach to a ticket.
#pragma once

#include "program/Options.h"

namespace reader {

int writePage(Options const& options);

} // namespace reader
