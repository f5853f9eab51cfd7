#include "findings/FindingKinds.h"

#include <algorithm>

namespace reader {

std::array<FindingKind, 49> const findingKinds = {{
    {Kind::customerAbsent, "customer-absent", Severity::mismatch,
     "The account module does not know the event's customer identifier; check whether the customer "
     "is in CUSTOMER_IDENTIFIER and came after the host was started or its data last loaded."},
    {Kind::accountDiffers, "account-differs", Severity::mismatch,
     "The customer identifier belongs to another account than the event was rated for; check "
     "whether the identifier, such as a phone number, was given to another customer meanwhile."},
    {Kind::serviceAbsent, "service-absent", Severity::mismatch,
     "The account has no service of the number that the event has; check ACCOUNT_SERVICE, and "
     "where the EDR's product got its service from."},
    {Kind::serviceTypeDiffers, "service-type-differs", Severity::mismatch,
     "The account's service is of another type than the event says; check which of the two "
     "changed, "
     "ACCOUNT_SERVICE or the mapping before rating."},
    {Kind::planNotOfProduct, "plan-not-of-product", Severity::mismatch,
     "No product of the account for this service and event type has the rate plan that was used; "
     "check ACCOUNT_PRODUCT, and whether the customer changed tariffs."},
    {Kind::productNotValid, "product-not-valid", Severity::mismatch,
     "The account has products with the rate plan that was used, but none that is valid at the "
     "charging start; check the validity in ACCOUNT_PRODUCT against when the customer changed."},
    {Kind::ratePlanAbsent, "rate-plan-absent", Severity::mismatch,
     "The rate plan module does not hold the version that was used; check RATEPLAN, and which "
     "versions the dump says are in memory."},
    {Kind::ratePlanIdDiffers, "rate-plan-id-differs", Severity::mismatch,
     "The rate plan has another internal number in memory than in the event; check whether rating "
     "and this host were loaded from the same catalogue."},
    {Kind::ratePlanNotValid, "rate-plan-not-valid", Severity::mismatch,
     "The version of the rate plan that was used is not valid at the charging start; check which "
     "version should have been chosen, and the validity in RATEPLAN."},
    {Kind::priceModelNotOfEntry, "price-model-not-of-entry", Severity::mismatch,
     "No entry of the rate plan that matches the event leads to the price model that was used "
     "last; "
     "check RATEPLAN_ENTRY for the event's service code, class and impact category."},
    {Kind::priceModelAbsent, "price-model-absent", Severity::mismatch,
     "The price module does not hold a price model that was used; check PRICEMODEL, and whether "
     "the "
     "model came after the data were loaded."},
    {Kind::priceModelWithoutSteps, "price-model-without-steps", Severity::mismatch,
     "A price model that was used has no price at all; check PRICEMODEL_STEP, and the log for rows "
     "that were rejected."},
    {Kind::priceNotValid, "price-not-valid", Severity::mismatch,
     "A price model that was used has no price that is valid at the charging start; check the "
     "validities in PRICEMODEL_STEP."},
    {Kind::balanceGroupAbsent, "balance-group-absent", Severity::mismatch,
     "The balance module does not hold a balance group that the event names; check BALANCE_GROUP, "
     "and whether the group came after the data were loaded."},
    {Kind::balanceGroupOfOtherAccount, "balance-group-of-other-account", Severity::mismatch,
     "The balance group belongs neither to the event's account nor to the account that pays for "
     "it, "
     "or a sharing owner's group not to the owner; check who is charged, in BALANCE_GROUP."},
    {Kind::discountAbsent, "discount-absent", Severity::mismatch,
     "The discount module does not hold a discount that was used; check DISCOUNT_OBJECT, and the "
     "log for rows that were rejected."},
    {Kind::sponsorshipAbsent, "sponsorship-absent", Severity::mismatch,
     "The discount module does not hold a sponsorship that was used; check SPONSORSHIP_OBJECT, and "
     "the log for rows that were rejected."},
    {Kind::discountModelAbsent, "discount-model-absent", Severity::mismatch,
     "The discount module does not hold a discount model that was used; check DISCOUNT_MODEL, and "
     "whether the model was withdrawn."},
    {Kind::objectModelDiffers, "object-model-differs", Severity::mismatch,
     "A discount or sponsorship has another model in memory than in the event; check whether it "
     "was "
     "changed, in DISCOUNT_OBJECT or SPONSORSHIP_OBJECT."},
    {Kind::objectAccountDiffers, "object-account-differs", Severity::mismatch,
     "A discount or sponsorship belongs to another account in memory than in the event; check "
     "ACCOUNT_ID of the object, and whether it was moved."},
    {Kind::objectOwnerDiffers, "object-owner-differs", Severity::mismatch,
     "A shared discount or sponsorship has another owner in memory than in the event; check "
     "OWNER_ID of the object, and whether the group was changed."},
    {Kind::objectNotValid, "object-not-valid", Severity::mismatch,
     "A discount or sponsorship that was used is not valid at the charging start; check its "
     "validity against what rating was told."},
    {Kind::ownDiscountNotValid, "own-discount-not-valid", Severity::mismatch,
     "The account's purchase of a discount that was used is not valid at the charging start; check "
     "the validity in ACCOUNT_DISCOUNT."},
    {Kind::ownDiscountModelDiffers, "own-discount-model-differs", Severity::mismatch,
     "The account bought a discount that was used with another model than the event says; check "
     "MODEL_NAME in ACCOUNT_DISCOUNT."},
    {Kind::discountNotListed, "discount-not-listed", Severity::mismatch,
     "The account does not own a discount that the event has as its own; check ACCOUNT_DISCOUNT, "
     "and where rating got the discount from."},
    {Kind::differsBetweenFiles, "differs-between-files", Severity::mismatch,
     "Two dumps show the same object with different facts; check when their hosts loaded their "
     "data, and load both again."},
    {Kind::accountInactive, "account-inactive", Severity::suspicion,
     "The account is not active now, which says nothing about the time of the event; check when "
     "its "
     "status changed."},
    {Kind::serviceInactive, "service-inactive", Severity::suspicion,
     "The event's service is not active now; check when its status changed, and whether it may "
     "still be used."},
    {Kind::productInactive, "product-inactive", Severity::suspicion,
     "The account's products with the rate plan that was used are valid, but none is active now; "
     "check when they were closed."},
    {Kind::objectInactive, "object-inactive", Severity::suspicion,
     "A discount or sponsorship that was used is not active now; check when its status changed."},
    {Kind::ownDiscountInactive, "own-discount-inactive", Severity::suspicion,
     "The account's purchase of a discount that was used is not active now; check when its status "
     "changed."},
    {Kind::balanceNotValid, "balance-not-valid", Severity::suspicion,
     "A balance of the group is not valid at the charging start; check whether the event is "
     "charged "
     "to it, and the validity in BALANCE."},
    {Kind::overCreditLimit, "over-credit-limit", Severity::suspicion,
     "A balance is above its credit limit now; check whether the event should have been refused, "
     "or "
     "the limit was lowered later."},
    {Kind::noBalanceForImpact, "no-balance-for-impact", Severity::suspicion,
     "A price changes a balance that the event's balance group does not have; check whether it is "
     "made at first use, or the price model is meant for other customers."},
    {Kind::objectPurchasedLater, "object-purchased-later", Severity::suspicion,
     "A discount or sponsorship that was used was purchased after the charging start; check "
     "whether "
     "it may count for earlier events."},
    {Kind::priceGap, "price-gap", Severity::suspicion,
     "Between two price steps that are valid there are quantities without a price; check "
     "THRESHOLD_FROM and THRESHOLD_TO in PRICEMODEL_STEP."},
    {Kind::priceOverlap, "price-overlap", Severity::suspicion,
     "Two price steps that are valid both have a price for the same quantities; check "
     "THRESHOLD_FROM and THRESHOLD_TO in PRICEMODEL_STEP."},
    {Kind::entryPassedOver, "entry-passed-over", Severity::suspicion,
     "An entry of the rate plan that matches and comes before the one that was used was not "
     "charged; check whether its price model is optional."},
    {Kind::ownDiscountNotApplying, "own-discount-not-applying", Severity::suspicion,
     "The account owns a discount that was used, but for other services or event types; check "
     "SERVICE_ID and EVENT_TYPE in ACCOUNT_DISCOUNT."},
    {Kind::ratePlanLeft, "rate-plan-left", Severity::suspicion,
     "A rate plan stands above no price models, so it may be left from an earlier event of the "
     "same "
     "key; check the charge packets of the last EDR."},
    {Kind::emptyIdentifier, "empty-identifier", Severity::suspicion,
     "The event's key has no customer identifier, so events of several customers became one; check "
     "the EDR field that KWL_EDRC_FIELD names for the service."},
    {Kind::noService, "no-service", Severity::suspicion,
     "The event has no service; check INTERN_FOUND_PP_INDEX and the PRODUCT blocks of the EDR."},
    {Kind::noChargingStart, "no-charging-start", Severity::suspicion,
     "The event's charging start is missing or beyond the year 9999, so that no validity can be "
     "judged; check CHARGING_START_TIMESTAMP and UTC_TIME_OFFSET of the EDR."},
    {Kind::cutShort, "cut-short", Severity::suspicion,
     "The text ends within the event; check whether the disk was full or the dump still being "
     "written, and take it again."},
    {Kind::unplaced, "unplaced", Severity::suspicion,
     "Lines stand where the format has none, as when a value holds a line end; look at them in the "
     "dump itself and don't trust what stands beside them."},
    {Kind::noChargePacket, "no-charge-packet", Severity::note,
     "No charge packet of the event counts, so that there is neither rate plan nor price model; "
     "check RECORD_TYPE and RATEPLAN_TYPE against the registry's lists."},
    {Kind::noRuleForCategory, "no-rule-for-category", Severity::note,
     "A discount model that was used has no rule for the event's impact category; check "
     "DISCOUNT_RULE, and whether a discount was expected."},
    {Kind::sectionMissing, "section-missing", Severity::note,
     "A section of the dump has no text, as when its data module is not configured; check the "
     "plug-in's ...DataModule keys in the registry."},
    {Kind::severalPlans, "several-plans", Severity::note,
     "The event was charged by several rate plans, of which only the last is shown; judge the "
     "earlier price models against the EDR itself."},
}};

std::optional<Severity> severityOf(std::string_view name) {
    for (std::size_t i = 0; i < severityNames.size(); ++i) {
        if (severityNames[i] == name) {
            return static_cast<Severity>(i);
        }
    }
    return std::nullopt;
}

FindingKind const* findKind(std::string_view name) {
    auto const found = std::find_if(findingKinds.begin(), findingKinds.end(),
                                    [&](auto const& kind) { return kind.name == name; });
    return found == findingKinds.end() ? nullptr : &*found;
}

} // namespace reader
