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
    : customersM(customers), fileM(file), randomM(seed ^ 0x5DEECE66DULL),
      customerRanksM(customers.customers().size()), serviceRanksM(services.size()),
      networkRanksM(visitedNetworks.size()) {
}

void GeneratedEdrs::write(std::uint64_t details) {
    fileM.print(FMT_COMPILE("{{\"RECORD\":\"HEADER\",\"NETWORK_SOURCE\":\"RATING1\","
                            "\"SEQUENCE_NUMBER\":\"000001\",\"CREATION_TIMESTAMP\":\"{}\"}}\n"),
                edrTime(day + static_cast<std::int64_t>(secondsOfDay)));
    for (std::uint64_t i = 0; i < details; ++i) {
        auto event = drawEvent();
        event.start = day + static_cast<std::int64_t>(i * secondsOfDay / details);
        writeDetail(i + 1, event);
    }
    fileM.print(FMT_COMPILE("{{\"RECORD\":\"TRAILER\",\"NETWORK_SOURCE\":\"RATING1\","
                            "\"SEQUENCE_NUMBER\":\"000001\",\"TOTAL_RECORDS\":\"{}\"}}\n"),
                details);
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
    fileM.print(FMT_COMPILE("{{\"RECORD\":\"DETAIL\",\"RECORD_NUMBER\":\"{}\","
                            "\"NETWORK_SOURCE\":\"{}\""),
                number, services[event.service].source);
    writeParties(event);
    writeUse(event);
    writeCustomer(event);
    writeCharges(event);
    fileM.write("}\n");
}

void GeneratedEdrs::writeParties(Event const& event) {
    fileM.print(FMT_COMPILE(",\"A_NUMBER\":\"{}\""), phoneNumber(event.customer));
    if (isCalling(event.service)) {
        auto const other = event.impactCategory == "ONNET" ? phoneNumber(customerRanksM(randomM))
                           : event.impactCategory == "INTERNATIONAL"
                               ? fmt::format("4420{:08}", randomM.below(100'000'000))
                               : fmt::format("4930{:08}", randomM.below(100'000'000));
        fileM.print(FMT_COMPILE(",\"B_NUMBER\":\"{}\""), other);
    }
    if (event.service == content) {
        fileM.print(FMT_COMPILE(",\"USER_NAME\":\"{}\""), userName(event.customer));
        return;
    }
    fileM.print(FMT_COMPILE(",\"IMSI\":\"{}\",\"CELL_ID\":\"{}-{}\""),
                subscriberNumber(event.customer), 4000 + event.customer % 90, randomM.below(9));
    if (event.network != &homeNetwork) {
        fileM.print(FMT_COMPILE(",\"VISITED_NETWORK\":\"{}\""), event.network->name);
    }
}

void GeneratedEdrs::writeUse(Event const& event) {
    auto const& service = services[event.service];
    bool const isRoaming = event.network != &homeNetwork;
    auto const localStart = event.start + event.network->utcOffsetMinutes * secondsOfMinute;
    fileM.print(FMT_COMPILE(",\"INTERN_SERVICE_CODE\":\"{}\",\"SERVICE_TYPE\":\"{}\","
                            "\"EVENT_TYPE\":\"{}\",\"CONNECT_SUB_TYPE\":\"{}\","
                            "\"CHARGING_START_TIMESTAMP\":\"{}\",\"CHARGING_END_TIMESTAMP\":\"{}\","
                            "\"UTC_TIME_OFFSET\":\"{}\""),
                service.code, service.type, service.eventType, isRoaming ? "17" : "01",
                edrTime(localStart), edrTime(localStart + event.duration),
                event.network->utcOffset);
    if (event.duration > 0) {
        fileM.print(FMT_COMPILE(",\"DURATION\":\"{}\""), event.duration);
    }
    if (event.service == data) {
        fileM.print(FMT_COMPILE(",\"VOLUME_SENT\":\"{}\",\"VOLUME_RECEIVED\":\"{}\""), event.sent,
                    event.received);
    }
    if (event.units > 0) {
        fileM.print(FMT_COMPILE(",\"NUMBER_OF_UNITS\":\"{}\""), event.units);
    }
    fileM.print(FMT_COMPILE(",\"INTERN_BALANCE_GROUP_ID\":\"1_{}\",\"ITEM_TAG\":\"{}\","
                            "\"OBJECT_CACHE_TYPE\":\"0\""),
                balanceGroupId(event.customer), isRoaming ? "roaming" : service.itemTag);
}

void GeneratedEdrs::writeCustomer(Event const& event) {
    auto const& has = customersM.customers()[event.customer].hasService;
    std::size_t position = 0; // of the product that was rated
    for (std::size_t service = 0; service < event.service; ++service) {
        position += has[service] ? 1 : 0;
    }
    auto const account = accountId(event.customer);
    fileM.print(FMT_COMPILE(",\"CUST_A\":[{{\"ACCOUNT_PARENT_ID\":\"1_{}\",\"ACCOUNT_NO\":\"A-{}\","
                            "\"CURRENCY\":\"EUR\",\"INTERN_FOUND_PP_INDEX\":\"{}\""),
                account, account, position);
    writeProducts(event);
    writeDiscounts(event);
    writeSponsor(event);
    fileM.write("}]");
}

void GeneratedEdrs::writeProducts(Event const& event) {
    auto const& customer = customersM.customers()[event.customer];
    auto const since = edrTime(static_cast<std::int64_t>(secondsOfDay) * customer.customerSince);
    std::string_view separator = ",\"PRODUCT\":[";
    for (std::size_t service = 0; service < services.size(); ++service) {
        if (customer.hasService[service]) {
            fileM.print(FMT_COMPILE("{}{{\"SERVICE_TYPE\":\"{}\",\"SERVICE_ID\":\"1_{}\","
                                    "\"PRODUCT_NAME\":\"{}\",\"VALID_FROM\":\"{}\"}}"),
                        separator, services[service].type, serviceId(event.customer, service),
                        segments[customer.segment][service].product, since);
            separator = ",";
        }
    }
    fileM.write("]");
}

void GeneratedEdrs::writeDiscounts(Event const& event) {
    if (ownGrantsM.empty() && sharedGrantsM.empty()) {
        return;
    }
    fileM.write(",\"DL\":[");
    if (!ownGrantsM.empty()) {
        writeDiscountOwner(ownGrantsM, "/account", accountId(event.customer));
    }
    if (!sharedGrantsM.empty()) {
        fileM.write(ownGrantsM.empty() ? "" : ",");
        writeDiscountOwner(sharedGrantsM, "/group/sharing",
                           groupId(*customersM.customers()[event.customer].sharingGroup));
    }
    fileM.write("]");
}

void GeneratedEdrs::writeDiscountOwner(std::vector<Grant> const& grants, std::string_view type,
                                       std::uint64_t ownerId) {
    auto const owner = grants.front().owner;
    fileM.print(FMT_COMPILE("{{\"BALANCE_GROUP_ID\":\"1_{}\",\"DISCOUNT_OWNER_ACCT_ID\":\"1_{}\","
                            "\"DISCOUNT_OWNER_ID\":\"1_{}\",\"DISCOUNT_OWNER_TYPE\":\"{}\""),
                balanceGroupId(owner), accountId(owner), ownerId, type);
    std::string_view separator = ",\"PD\":[";
    for (auto const& grant : grants) {
        fileM.print(FMT_COMPILE("{}{{\"DISCOUNT_MODEL\":\"{}\",\"DISCOUNT_ID\":\"1_{}\"}}"),
                    separator, grant.model->name, grant.id);
        separator = ",";
    }
    fileM.write("]}");
}

void GeneratedEdrs::writeSponsor(Event const& event) {
    if (sponsorshipsM.empty()) {
        return;
    }
    auto const& sponsorship = sponsorshipsM.front();
    fileM.print(FMT_COMPILE(",\"SL\":[{{\"BALANCE_GROUP_ID\":\"1_{}\",\"SPONSOR_OWNER_ACCT_ID\":"
                            "\"1_{}\",\"SPONSOR_OWNER_ID\":\"1_{}\",\"SPONSOR_OWNER_TYPE\":"
                            "\"/group/sponsor\",\"SD\":[{{\"DISCOUNT_MODEL\":\"{}\","
                            "\"SPONSORSHIP_ID\":\"1_{}\"}}]}}]"),
                balanceGroupId(sponsorship.owner), accountId(sponsorship.owner),
                groupId(*customersM.customers()[event.customer].sponsor), sponsorship.model->name,
                sponsorship.id);
}

void GeneratedEdrs::writeCharges(Event const& event) {
    auto const segment = customersM.customers()[event.customer].segment;
    fileM.write(",\"ASS_CBD\":[{\"RECORD_TYPE\":\"981\"");
    auto const charged =
        writeChargePackets(event, "R", *findRateplan(segments[segment][event.service].rateplan));
    writeGrantedAmounts(charged);
    if (event.network != &homeNetwork) {
        fileM.write("},{\"RECORD_TYPE\":\"982\"");
        writeChargePackets(event, "W", *findRateplan(wholesaleRateplans[event.service]));
    }
    fileM.write("}]");
}

Money GeneratedEdrs::writeChargePackets(Event const& event, std::string_view type,
                                        Rateplan const& plan) {
    Money sum = 0;
    std::string_view separator = ",\"CP\":[";
    for (auto const& entry : rateplanEntries) {
        if (entry.rateplan != plan.code ||
            (entry.impactCategory != "*" && entry.impactCategory != event.impactCategory)) {
            continue;
        }
        auto const& model = *findPriceModel(entry.priceModel);
        auto const charge = chargeFor(event, model);
        fileM.print(FMT_COMPILE("{}{{\"RATEPLAN_TYPE\":\"{}\",\"RATEPLAN_CODE\":\"{}\","
                                "\"INTERN_RATEPLAN\":\"{}\",\"INTERN_RATEPLAN_VERSION\":\"{}\","
                                "\"IMPACT_CATEGORY\":\"{}\",\"SERVICE_CODE_USED\":\"{}\","
                                "\"SERVICE_CLASS_USED\":\"{}\",\"PRICEMODEL_CODE\":\"{}\","
                                "\"PRICEMODEL_TYPE\":\"P\",\"QUANTITY\":\"{}\","
                                "\"QUANTITY_UNIT\":\"{}\",\"CHARGED_AMOUNT\":\"{}\","
                                "\"CHARGED_CURRENCY\":\"EUR\"}}"),
                    separator, type, plan.code, plan.number, plan.version, event.impactCategory,
                    plan.serviceCode, plan.serviceClass, model.code, charge.quantity,
                    measures[model.measure].packetUnit, amountText(charge.amount));
        separator = ",";
        sum += charge.amount;
    }
    fileM.write("]");
    return sum;
}

// Each grant is a share of what the ones before it have left.
void GeneratedEdrs::writeGrantedAmounts(Money charged) {
    std::string_view separator = ",\"DP\":[";
    for (auto const* const grants : {&ownGrantsM, &sharedGrantsM, &sponsorshipsM}) {
        for (auto const& grant : *grants) {
            auto const amount = charged * grant.model->share / 100;
            charged -= amount;
            fileM.print(FMT_COMPILE("{}{{\"DISCOUNT_MODEL\":\"{}\",\"GRANTED_AMOUNT\":\"{}\","
                                    "\"GRANTED_CURRENCY\":\"EUR\",\"SUB_BALANCE\":[{{"
                                    "\"BALANCE_GROUP_ID\":\"1_{}\",\"RESOURCE\":\"EUR\","
                                    "\"AMOUNT\":\"{}\"}}]}}"),
                        separator, grant.model->name, amountText(amount),
                        balanceGroupId(grant.owner), amountText(amount));
            separator = ",";
        }
    }
    fileM.write(separator == "," ? "]" : "");
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
