// Writes the EDRs of one day: a header, details in the order of their start, and a trailer.
#pragma once

#include "generate/GeneratedCustomers.h"
#include "generate/JsonWriter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace host {

class GeneratedEdrs {
public:
    // Customers and file stay the caller's.
    GeneratedEdrs(GeneratedCustomers const& customers, std::uint64_t seed, GeneratedFile& file);

    // Throws a BAS::Status when the file can't be written.
    void write(std::uint64_t details);

private:
    struct Event {
        std::uint32_t customer = 0;
        std::size_t service = telephony;
        VisitedNetwork const* network = &homeNetwork;
        std::string_view impactCategory;
        std::int64_t start = 0;     // seconds since 1970, UTC
        std::uint32_t duration = 0; // seconds
        std::uint64_t sent = 0;     // bytes
        std::uint64_t received = 0; // bytes
        std::uint32_t units = 0;    // messages or items
    };
    // A discount or sponsorship that applies to the event.
    struct Grant {
        DiscountModel const* model;
        std::uint64_t id;
        std::uint32_t owner; // customer
    };
    // What is charged by one price model.
    struct Charge {
        std::string quantity;
        Money amount;
    };

    Event drawEvent();
    void drawUse(Event& event);
    void collectGrants(Event const& event);
    void addGrant(std::vector<Grant>& grants, Event const& event, DiscountModel const& model,
                  std::uint64_t id, std::uint32_t owner) const;

    JsonWriter& beginFileRecord(std::string_view kind);
    void writeDetail(std::uint64_t number, Event const& event);
    void writeParties(Event const& event);
    void writeUse(Event const& event);
    void writeCustomer(Event const& event);
    void writeProducts(Event const& event);
    void writeDiscounts(Event const& event);
    void writeDiscountOwner(std::vector<Grant> const& grants, std::string_view type,
                            std::uint64_t ownerId);
    void writeSponsor(Event const& event);
    void writeCharges(Event const& event);
    Money writeChargePackets(Event const& event, std::string_view type, Rateplan const& plan);
    void writeGrantedAmounts(Money charged);
    Charge chargeFor(Event const& event, PriceModel const& model) const;

    GeneratedCustomers const& customersM;
    JsonWriter jsonM;
    GeneratorRandom randomM;
    ZipfDistribution customerRanksM;
    ZipfDistribution serviceRanksM;
    ZipfDistribution networkRanksM;
    // Of the present event:
    std::vector<Grant> ownGrantsM;
    std::vector<Grant> sharedGrantsM;
    std::vector<Grant> sponsorshipsM;
};

} // namespace host
