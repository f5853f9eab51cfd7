// Writes the reference data of the generated EDRs, as an SQL script for the tables of the reference
// database.
#pragma once

#include "generate/GeneratedCustomers.h"
#include "generate/GeneratedFile.h"

#include <cstdint>

namespace host {

class GeneratedDatabase {
public:
    // Customers and file stay the caller's.
    GeneratedDatabase(GeneratedCustomers const& customers, std::uint64_t seed, GeneratedFile& file)
        : customersM(customers), randomM(seed ^ 0x2545F491ULL), fileM(file) {}

    // Throws a BAS::Status when the file can't be written.
    void write();

    std::uint64_t rows() const noexcept { return rowsM; }

private:
    struct DiscountObject {
        std::uint64_t id;
        std::string_view ownerType;
        std::uint64_t ownerId;
        std::uint64_t account; // of the owner
        DiscountModel const& model;
        std::string validFrom;
    };

    void writeFramework();
    void writeRateplans();
    void writePriceModels();
    void writeDiscountModels();
    void writeAccounts();
    void writeServices();
    void writeBalances();
    void writeOwnedDiscounts();
    void writeDiscountObjects();
    void writeSponsorships();
    // Those of the customers and those that groups share.
    template <class Action>
    void forEachDiscount(Action const& action) const;

    // Rows are gathered in statements of many; a statement begins with its table and columns.
    void beginTable(std::string_view tableAndColumns);
    template <class Format, class... Args>
    void addRow(Format const& format, Args const&... arguments);
    void endTable();

    GeneratedCustomers const& customersM;
    GeneratorRandom randomM;
    GeneratedFile& fileM;
    std::string_view tableM;
    std::uint64_t rowsOfTableM = 0;
    std::uint64_t rowsM = 0;
};

} // namespace host
