#include "generate/GeneratedEdrs.h"

#include "generate/GeneratedTime.h"

namespace host {

namespace {

constexpr std::int64_t day = 1'795'132'800; // 2026-11-20 00:00:00 UTC
constexpr std::uint64_t secondsOfDay = 86'400;
constexpr std::int64_t secondsOfMinute = 60;
constexpr std::uint64_t bytesOfMegabyte = 1'048'576;
constexpr std::uint32_t roamingChance = 6; // percent

std::string amountText(Money amount) {
    return fmt::format(FMT_COMPILE("{}.{:04}"), amount / 10'000, amount % 10'000);
}

bool isCalling(std::size_t service) {
    return service == telephony || service == message;
}

} // namespace

GeneratedEdrs::GeneratedEdrs(GeneratedCustomers const& customers, std::uint64_t seed,
                             GeneratedFile& file)
    : customersM(customers), jsonM(file), randomM(seed ^ 0x5DEECE66DULL),
      customerRanksM(customers.customers().size()), serviceRanksM(services.size()),
      networkRanksM(visitedNetworks.size()) {
}

void GeneratedEdrs::write(std::uint64_t details) {
    beginFileRecord("HEADER")
        .member("CREATION_TIMESTAMP", edrTime(day + static_cast<std::int64_t>(secondsOfDay)))
        .endObject()
        .endLine();
    for (std::uint64_t i = 0; i < details; ++i) {
        auto event = drawEvent();
        event.start = day + static_cast<std::int64_t>(i * secondsOfDay / details);
        writeDetail(i + 1, event);
    }
    beginFileRecord("TRAILER").member("TOTAL_RECORDS", details).endObject().endLine();
}

JsonWriter& GeneratedEdrs::beginFileRecord(std::string_view kind) {
    return jsonM.beginObject()
        .member("RECORD", kind)
        .member("NETWORK_SOURCE", "RATING1")
        .member("SEQUENCE_NUMBER", "000001");
}

GeneratedEdrs::Event GeneratedEdrs::drawEvent() {
    Event event;
    event.customer = customerRanksM(randomM);
    auto const drawn = serviceRanksM(randomM);
    if (customersM.customers()[event.customer].hasService[drawn]) {
        event.service = drawn;
    }
    if (event.service != content && randomM.isChance(roamingChance)) {
        event.network = &visitedNetworks[networkRanksM(randomM)];
        event.impactCategory = event.network->impactCategory;
    } else if (event.service == content) {
        event.impactCategory = randomM.isChance(70) ? "MUSIC" : "FILM";
    } else if (isCalling(event.service) && randomM.isChance(55)) {
        event.impactCategory = randomM.isChance(80) ? "ONNET" : "INTERNATIONAL";
    } else {
        event.impactCategory = "DOMESTIC";
    }
    drawUse(event);
    return event;
}

void GeneratedEdrs::drawUse(Event& event) {
    switch (event.service) {
    case telephony:
        event.duration = 3 + (1 + randomM.below(60)) * (1 + randomM.below(20));
        return;
    case data:
        event.duration = 30 + randomM.below(7200);
        event.sent = 1000 + std::uint64_t{randomM.below(4000)} * randomM.below(1000);
        event.received = event.sent + std::uint64_t{randomM.below(60'000)} * randomM.below(1000);
        return;
    case message:
        event.units = randomM.isChance(90) ? 1 : 2;
        return;
    default:
        event.units = 1;
    }
}

void GeneratedEdrs::collectGrants(Event const& event) {
    auto const& customer = customersM.customers()[event.customer];
    ownGrantsM.clear();
    for (std::size_t place = 0; place < customer.ownDiscounts; ++place) {
        addGrant(ownGrantsM, event, ownDiscountModels[customer.ownDiscountModels[place]],
                 ownDiscountId(event.customer, place), event.customer);
    }
    sharedGrantsM.clear();
    if (customer.sharingGroup) {
        auto const& group = customersM.groups()[*customer.sharingGroup];
        for (std::size_t place = 0; place < group.sharedDiscounts; ++place) {
            addGrant(sharedGrantsM, event, sharedDiscountModels[group.sharedDiscountModels[place]],
                     sharedDiscountId(*customer.sharingGroup, place), group.owner);
        }
    }
    sponsorshipsM.clear();
    if (customer.sponsor) {
        auto const& group = customersM.groups()[*customer.sponsor];
        addGrant(sponsorshipsM, event, sponsorshipModels[group.sponsorshipModel],
                 sponsorshipId(*customer.sponsor), group.owner);
    }
}

void GeneratedEdrs::addGrant(std::vector<Grant>& grants, Event const& event,
                             DiscountModel const& model, std::uint64_t id,
                             std::uint32_t owner) const {
    if (model.serviceCode == "*" || model.serviceCode == services[event.service].code) {
        grants.push_back({&model, id, owner});
    }
}

void GeneratedEdrs::writeDetail(std::uint64_t number, Event const& event) {
    collectGrants(event);
    jsonM.beginObject()
        .member("RECORD", "DETAIL")
        .member("RECORD_NUMBER", number)
        .member("NETWORK_SOURCE", services[event.service].source);
    writeParties(event);
    writeUse(event);
    writeCustomer(event);
    writeCharges(event);
    jsonM.endObject().endLine();
}

void GeneratedEdrs::writeParties(Event const& event) {
    jsonM.member("A_NUMBER", phoneNumber(event.customer));
    if (isCalling(event.service)) {
        jsonM.member("B_NUMBER",
                     event.impactCategory == "ONNET"
                         ? phoneNumber(customerRanksM(randomM))
                         : fmt::format("{}{:08}",
                                       event.impactCategory == "INTERNATIONAL" ? 4420 : 4930,
                                       randomM.below(100'000'000)));
    }
    if (event.service == content) {
        jsonM.member("USER_NAME", userName(event.customer));
        return;
    }
    jsonM.member("IMSI", subscriberNumber(event.customer))
        .member("CELL_ID",
                fmt::format(FMT_COMPILE("{}-{}"), 4000 + event.customer % 90, randomM.below(9)));
    if (event.network != &homeNetwork) {
        jsonM.member("VISITED_NETWORK", event.network->name);
    }
}

void GeneratedEdrs::writeUse(Event const& event) {
    auto const& service = services[event.service];
    bool const isRoaming = event.network != &homeNetwork;
    auto const localStart = event.start + event.network->utcOffsetMinutes * secondsOfMinute;
    jsonM.member("INTERN_SERVICE_CODE", service.code)
        .member("SERVICE_TYPE", service.type)
        .member("EVENT_TYPE", service.eventType)
        .member("CONNECT_SUB_TYPE", isRoaming ? "17" : "01")
        .member("CHARGING_START_TIMESTAMP", edrTime(localStart))
        .member("CHARGING_END_TIMESTAMP", edrTime(localStart + event.duration))
        .member("UTC_TIME_OFFSET", event.network->utcOffset);
    if (event.duration > 0) {
        jsonM.member("DURATION", event.duration);
    }
    if (event.service == data) {
        jsonM.member("VOLUME_SENT", event.sent).member("VOLUME_RECEIVED", event.received);
    }
    if (event.units > 0) {
        jsonM.member("NUMBER_OF_UNITS", event.units);
    }
    jsonM.reference("INTERN_BALANCE_GROUP_ID", balanceGroupId(event.customer))
        .member("ITEM_TAG", isRoaming ? "roaming" : service.itemTag)
        .member("OBJECT_CACHE_TYPE", "0");
}

void GeneratedEdrs::writeCustomer(Event const& event) {
    auto const& has = customersM.customers()[event.customer].hasService;
    std::size_t position = 0; // of the product that was rated
    for (std::size_t service = 0; service < event.service; ++service) {
        position += has[service] ? 1 : 0;
    }
    auto const account = accountId(event.customer);
    jsonM.beginArray("CUST_A")
        .beginObject()
        .reference("ACCOUNT_PARENT_ID", account)
        .member("ACCOUNT_NO", fmt::format(FMT_COMPILE("A-{}"), account))
        .member("CURRENCY", "EUR")
        .member("INTERN_FOUND_PP_INDEX", position);
    writeProducts(event);
    writeDiscounts(event);
    writeSponsor(event);
    jsonM.endObject().endArray();
}

void GeneratedEdrs::writeProducts(Event const& event) {
    auto const& customer = customersM.customers()[event.customer];
    auto const since = edrTime(static_cast<std::int64_t>(secondsOfDay) * customer.customerSince);
    jsonM.beginArray("PRODUCT");
    for (std::size_t service = 0; service < services.size(); ++service) {
        if (customer.hasService[service]) {
            jsonM.beginObject()
                .member("SERVICE_TYPE", services[service].type)
                .reference("SERVICE_ID", serviceId(event.customer, service))
                .member("PRODUCT_NAME", segments[customer.segment][service].product)
                .member("VALID_FROM", since)
                .endObject();
        }
    }
    jsonM.endArray();
}

void GeneratedEdrs::writeDiscounts(Event const& event) {
    if (ownGrantsM.empty() && sharedGrantsM.empty()) {
        return;
    }
    jsonM.beginArray("DL");
    if (!ownGrantsM.empty()) {
        writeDiscountOwner(ownGrantsM, "/account", accountId(event.customer));
    }
    if (!sharedGrantsM.empty()) {
        writeDiscountOwner(sharedGrantsM, "/group/sharing",
                           groupId(*customersM.customers()[event.customer].sharingGroup));
    }
    jsonM.endArray();
}

void GeneratedEdrs::writeDiscountOwner(std::vector<Grant> const& grants, std::string_view type,
                                       std::uint64_t ownerId) {
    auto const owner = grants.front().owner;
    jsonM.beginObject()
        .reference("BALANCE_GROUP_ID", balanceGroupId(owner))
        .reference("DISCOUNT_OWNER_ACCT_ID", accountId(owner))
        .reference("DISCOUNT_OWNER_ID", ownerId)
        .member("DISCOUNT_OWNER_TYPE", type)
        .beginArray("PD");
    for (auto const& grant : grants) {
        jsonM.beginObject()
            .member("DISCOUNT_MODEL", grant.model->name)
            .reference("DISCOUNT_ID", grant.id)
            .endObject();
    }
    jsonM.endArray().endObject();
}

void GeneratedEdrs::writeSponsor(Event const& event) {
    if (sponsorshipsM.empty()) {
        return;
    }
    auto const& sponsorship = sponsorshipsM.front();
    jsonM.beginArray("SL")
        .beginObject()
        .reference("BALANCE_GROUP_ID", balanceGroupId(sponsorship.owner))
        .reference("SPONSOR_OWNER_ACCT_ID", accountId(sponsorship.owner))
        .reference("SPONSOR_OWNER_ID", groupId(*customersM.customers()[event.customer].sponsor))
        .member("SPONSOR_OWNER_TYPE", "/group/sponsor")
        .beginArray("SD")
        .beginObject()
        .member("DISCOUNT_MODEL", sponsorship.model->name)
        .reference("SPONSORSHIP_ID", sponsorship.id)
        .endObject()
        .endArray()
        .endObject()
        .endArray();
}

void GeneratedEdrs::writeCharges(Event const& event) {
    auto const segment = customersM.customers()[event.customer].segment;
    jsonM.beginArray("ASS_CBD").beginObject().member("RECORD_TYPE", "981");
    auto const charged =
        writeChargePackets(event, "R", *findRateplan(segments[segment][event.service].rateplan));
    writeGrantedAmounts(charged);
    if (event.network != &homeNetwork) {
        jsonM.endObject().beginObject().member("RECORD_TYPE", "982");
        writeChargePackets(event, "W", *findRateplan(wholesaleRateplans[event.service]));
    }
    jsonM.endObject().endArray();
}

Money GeneratedEdrs::writeChargePackets(Event const& event, std::string_view type,
                                        Rateplan const& plan) {
    Money sum = 0;
    jsonM.beginArray("CP");
    for (auto const& entry : rateplanEntries) {
        if (entry.rateplan != plan.code ||
            (entry.impactCategory != "*" && entry.impactCategory != event.impactCategory)) {
            continue;
        }
        auto const& model = *findPriceModel(entry.priceModel);
        auto const charge = chargeFor(event, model);
        jsonM.beginObject()
            .member("RATEPLAN_TYPE", type)
            .member("RATEPLAN_CODE", plan.code)
            .member("INTERN_RATEPLAN", plan.number)
            .member("INTERN_RATEPLAN_VERSION", plan.version)
            .member("IMPACT_CATEGORY", event.impactCategory)
            .member("SERVICE_CODE_USED", plan.serviceCode)
            .member("SERVICE_CLASS_USED", plan.serviceClass)
            .member("PRICEMODEL_CODE", model.code)
            .member("PRICEMODEL_TYPE", "P")
            .member("QUANTITY", charge.quantity)
            .member("QUANTITY_UNIT", measures[model.measure].packetUnit)
            .member("CHARGED_AMOUNT", amountText(charge.amount))
            .member("CHARGED_CURRENCY", "EUR")
            .endObject();
        sum += charge.amount;
    }
    jsonM.endArray();
    return sum;
}

// Each grant is a share of what the grants before it have left.
void GeneratedEdrs::writeGrantedAmounts(Money charged) {
    if (ownGrantsM.empty() && sharedGrantsM.empty() && sponsorshipsM.empty()) {
        return;
    }
    jsonM.beginArray("DP");
    for (auto const* const grants : {&ownGrantsM, &sharedGrantsM, &sponsorshipsM}) {
        for (auto const& grant : *grants) {
            auto const amount = charged * grant.model->share / 100;
            charged -= amount;
            jsonM.beginObject()
                .member("DISCOUNT_MODEL", grant.model->name)
                .member("GRANTED_AMOUNT", amountText(amount))
                .member("GRANTED_CURRENCY", "EUR")
                .beginArray("SUB_BALANCE")
                .beginObject()
                .reference("BALANCE_GROUP_ID", balanceGroupId(grant.owner))
                .member("RESOURCE", "EUR")
                .member("AMOUNT", amountText(amount))
                .endObject()
                .endArray()
                .endObject();
        }
    }
    jsonM.endArray();
}

GeneratedEdrs::Charge GeneratedEdrs::chargeFor(Event const& event, PriceModel const& model) const {
    switch (model.measure) {
    case minutes: {
        auto const started = (event.duration + 59) / 60;
        return {std::to_string(started), model.price * started};
    }
    case megabytes: {
        auto const bytes = event.sent + event.received;
        auto const thousandths = bytes * 1000 / bytesOfMegabyte;
        return {
            fmt::format(FMT_COMPILE("{}.{:03}"), thousandths / 1000, thousandths % 1000),
            static_cast<Money>(bytes * static_cast<std::uint64_t>(model.price) / bytesOfMegabyte)};
    }
    case messages:
    case items:
        return {std::to_string(event.units), model.price * event.units};
    default:
        return {"1", model.price};
    }
}

} // namespace host
