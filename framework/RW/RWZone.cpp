#include "RW/RWZone.h"

RWZone const& RWZone::utc() {
    static RWZone const zone(0);
    return zone;
}
