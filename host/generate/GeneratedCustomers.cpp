#include "generate/GeneratedCustomers.h"

#include <fmt/format.h>

namespace host {

namespace {

constexpr std::uint32_t customersOfGroup = 25;
constexpr std::int32_t firstDay = 18'262; // 2020-01-01
constexpr std::uint32_t days = 2000;

// Percent of the customers.
constexpr std::array<std::uint32_t, services.size()> serviceChances = {100, 80, 100, 40};
constexpr std::uint32_t ownDiscountChance = 45;
constexpr std::uint32_t secondDiscountChance = 25;
constexpr std::uint32_t sharingChance = 50;
constexpr std::uint32_t sponsorChance = 25;

constexpr std::array<std::string_view, 16> userNames = {
    "lindenhof", "nachteule",   "seeblick",  "bergfex",   "waldweg",  "morgenrot",
    "kornblume", "windrad",     "uhrmacher", "fischer",   "kaminrot", "eisvogel",
    "turmuhr",   "rosengarten", "salzmann",  "mondschein"};

// Draws one or two models that differ; returns how many.
std::uint8_t drawModels(ZipfDistribution const& ranks, std::size_t count, GeneratorRandom& random,
                        std::array<std::uint8_t, 2>& models) {
    models[0] = static_cast<std::uint8_t>(ranks(random));
    models[1] = static_cast<std::uint8_t>((models[0] + 1U) % count);
    return random.isChance(secondDiscountChance) ? 2 : 1;
}

} // namespace

GeneratedCustomers::GeneratedCustomers(std::uint32_t count, std::uint64_t seed)
    : segmentsM(segments.size()), ownModelsM(ownDiscountModels.size()),
      sharedModelsM(sharedDiscountModels.size()), sponsorshipModelsM(sponsorshipModels.size()),
      groupRanksM(count / customersOfGroup + 1) {
    GeneratorRandom random(seed);
    customersM.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        customersM.push_back(makeCustomer(random));
    }
    for (std::uint32_t g = 0; g < count / customersOfGroup + 1; ++g) {
        groupsM.push_back(makeGroup(random));
    }
}

GeneratedCustomer GeneratedCustomers::makeCustomer(GeneratorRandom& random) {
    GeneratedCustomer customer;
    customer.segment = static_cast<std::uint8_t>(segmentsM(random));
    for (std::size_t service = 0; service < services.size(); ++service) {
        customer.hasService[service] = random.isChance(serviceChances[service]);
    }
    if (random.isChance(ownDiscountChance)) {
        customer.ownDiscounts =
            drawModels(ownModelsM, ownDiscountModels.size(), random, customer.ownDiscountModels);
    }
    if (random.isChance(sharingChance)) {
        customer.sharingGroup = groupRanksM(random);
    }
    if (random.isChance(sponsorChance)) {
        customer.sponsor = groupRanksM(random);
    }
    customer.customerSince = firstDay + static_cast<std::int32_t>(random.below(days));
    return customer;
}

GeneratedGroup GeneratedCustomers::makeGroup(GeneratorRandom& random) const {
    GeneratedGroup group;
    group.owner = random.below(static_cast<std::uint32_t>(customersM.size()));
    group.sharedDiscounts =
        drawModels(sharedModelsM, sharedDiscountModels.size(), random, group.sharedDiscountModels);
    group.sponsorshipModel = static_cast<std::uint8_t>(sponsorshipModelsM(random));
    return group;
}

std::string phoneNumber(std::uint32_t i) {
    // Factor and modulus are coprime, so that no number comes twice.
    return fmt::format("49171{:08}", (std::uint64_t{i} * 61'803'399U + 3'920'001U) % 100'000'000U);
}

std::string subscriberNumber(std::uint32_t i) {
    return fmt::format("00101{:010}", i + 1U);
}

std::string userName(std::uint32_t i) {
    return fmt::format("{}{}", userNames[i % userNames.size()], i / userNames.size() + 1);
}

std::string customerIdentifier(std::uint32_t i, Service const& service) {
    switch (service.customerField) {
    case 1:
        return phoneNumber(i);
    case 3:
        return subscriberNumber(i);
    default:
        return userName(i);
    }
}

} // namespace host
