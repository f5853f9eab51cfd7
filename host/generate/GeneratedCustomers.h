// The customers whose events and reference data are generated. Everything about them follows from
// their number and the seed; a lower number has more events.
#pragma once

#include "generate/GeneratorCatalogue.h"
#include "generate/GeneratorRandom.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace host {

struct GeneratedCustomer {
    std::uint8_t segment = 0;
    std::array<bool, services.size()> hasService{};
    std::uint8_t ownDiscounts = 0; // how many of those below count
    std::array<std::uint8_t, 2> ownDiscountModels{};
    std::optional<std::uint32_t> sharingGroup;
    std::optional<std::uint32_t> sponsor; // a group, too
    std::int32_t customerSince = 0;       // days since 1970-01-01
};

// A family, company or club: one of its customers shares discounts and sponsors.
struct GeneratedGroup {
    std::uint32_t owner = 0; // customer
    std::uint8_t sharedDiscounts = 1;
    std::array<std::uint8_t, 2> sharedDiscountModels{};
    std::uint8_t sponsorshipModel = 0;
};

class GeneratedCustomers {
public:
    GeneratedCustomers(std::uint32_t count, std::uint64_t seed);

    std::vector<GeneratedCustomer> const& customers() const noexcept { return customersM; }
    std::vector<GeneratedGroup> const& groups() const noexcept { return groupsM; }

private:
    GeneratedCustomer makeCustomer(GeneratorRandom& random);
    GeneratedGroup makeGroup(GeneratorRandom& random) const;

    ZipfDistribution segmentsM;
    ZipfDistribution ownModelsM;
    ZipfDistribution sharedModelsM;
    ZipfDistribution sponsorshipModelsM;
    ZipfDistribution groupRanksM;
    std::vector<GeneratedCustomer> customersM;
    std::vector<GeneratedGroup> groupsM;
};

// The numbers in the database and the EDRs for what belongs to customer i or group g. The first of
// nine digits is the kind.
constexpr std::uint64_t accountId(std::uint32_t i) {
    return 100'000'001ULL + i;
}
constexpr std::uint64_t balanceGroupId(std::uint32_t i) {
    return 200'000'001ULL + i;
}
constexpr std::uint64_t serviceId(std::uint32_t i, std::size_t service) {
    return 300'000'000ULL + i * services.size() + service;
}
constexpr std::uint64_t groupId(std::uint32_t g) {
    return 400'000'001ULL + g;
}
constexpr std::uint64_t ownDiscountId(std::uint32_t i, std::size_t place) {
    return 500'000'000ULL + i * 2ULL + place;
}
constexpr std::uint64_t sharedDiscountId(std::uint32_t g, std::size_t place) {
    return 550'000'000ULL + g * 2ULL + place;
}
constexpr std::uint64_t sponsorshipId(std::uint32_t g) {
    return 600'000'001ULL + g;
}
constexpr std::uint64_t productId(std::uint32_t i, std::size_t service) {
    return serviceId(i, service) + 400'000'000ULL;
}

// What identifies customer i in events: phone number, subscriber number and user name.
std::string phoneNumber(std::uint32_t i);
std::string subscriberNumber(std::uint32_t i);
std::string userName(std::uint32_t i);
// The one of them that the database has for the service.
std::string customerIdentifier(std::uint32_t i, Service const& service);

} // namespace host
