#include "SecondFramework.h"

#include "BAS/Status.h"

#include <optional>

namespace second {

namespace {

struct Plan {
    std::size_t after;
    bool once;
    bool isCounting = false;
    bool hasThrown = false;
};
std::optional<Plan> plan;

} // namespace

BAS::String const& inBuffer(BAS::String const& text) {
    static BAS::String buffer;
    buffer = text;
    return buffer;
}

void throwStatus(std::size_t after, bool once) {
    plan = Plan{after, once};
}

bool stopThrowing() {
    bool const hasThrown = plan->hasThrown;
    plan.reset();
    return hasThrown;
}

void countFromHere() {
    if (plan) {
        plan->isCounting = true;
    }
}

void mayThrow() {
    if (!plan || !plan->isCounting || (plan->hasThrown && plan->once)) {
        return;
    }
    if (plan->after > 0) {
        --plan->after;
        return;
    }
    plan->hasThrown = true;
    throw BAS::Status("ERR_THROWN", BAS::Status::critical, "by the framework");
}

} // namespace second
