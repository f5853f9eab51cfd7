// The kinds of findings: what doesn't fit between what an event says and what memory holds. One
// table; everything that lists, explains, sorts or counts kinds walks it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace reader {

enum class Severity : std::uint8_t { note, suspicion, mismatch };
inline constexpr std::array<std::string_view, 3> severityNames = {"note", "suspicion", "mismatch"};

constexpr std::string_view nameOf(Severity severity) {
    return severityNames[static_cast<std::size_t>(severity)];
}
std::optional<Severity> severityOf(std::string_view name);

// In the order of the table.
enum class Kind : std::uint8_t {
    customerAbsent,
    accountDiffers,
    serviceAbsent,
    serviceTypeDiffers,
    planNotOfProduct,
    productNotValid,
    ratePlanAbsent,
    ratePlanIdDiffers,
    ratePlanNotValid,
    priceModelNotOfEntry,
    priceModelAbsent,
    priceModelWithoutSteps,
    priceNotValid,
    balanceGroupAbsent,
    balanceGroupOfOtherAccount,
    discountAbsent,
    sponsorshipAbsent,
    discountModelAbsent,
    objectModelDiffers,
    objectAccountDiffers,
    objectOwnerDiffers,
    objectNotValid,
    ownDiscountNotValid,
    ownDiscountModelDiffers,
    discountNotListed,
    differsBetweenFiles,
    accountInactive,
    serviceInactive,
    productInactive,
    objectInactive,
    ownDiscountInactive,
    balanceNotValid,
    overCreditLimit,
    noBalanceForImpact,
    objectPurchasedLater,
    priceGap,
    priceOverlap,
    entryPassedOver,
    ownDiscountNotApplying,
    ratePlanLeft,
    emptyIdentifier,
    noService,
    noChargingStart,
    cutShort,
    unplaced,
    noChargePacket,
    noRuleForCategory,
    sectionMissing,
    severalPlans,
};

struct FindingKind {
    Kind kind;
    std::string_view name;
    Severity severity;
    std::string_view sentence; // what it means, and what to check next
};

extern std::array<FindingKind, 49> const findingKinds;

inline FindingKind const& about(Kind kind) {
    return findingKinds[static_cast<std::size_t>(kind)];
}
// Null when there is no kind of that name.
FindingKind const* findKind(std::string_view name);

} // namespace reader
