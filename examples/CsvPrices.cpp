#include "CsvPrices.h"

#include "BAS/RegistryEntry.h"

#include <filesystem>
#include <fstream>
#include <memory>

namespace Example {

CsvPrices::CsvPrices(BAS::String const& name) : ReloadablePlugIn(name, "1") {
    loadFirst();
}

// Throws a BAS::Status, which leaves the module invalid.
std::string CsvPrices::fileName() const {
    auto const* const own = registry();
    auto const* const file = own == nullptr ? nullptr : own->find("File");
    if (file == nullptr) {
        throw BAS::Status("ERR_REG_ENTRY_NOT_FOUND", BAS::Status::critical, "File");
    }
    return std::filesystem::path(registryDirectory().str()) / file->value().str();
}

// Runs in a thread of its own when the module is reloaded, while others read data().
void CsvPrices::load(DAT::LoadSession& session, PriceLines& data, DAT::LoadReport& report) const {
    report.source = fileName();
    std::ifstream in(report.source.str());
    if (!in) {
        throw BAS::Status("ERR_FILE_NOT_READABLE", BAS::Status::critical, report.source);
    }
    DAT::LoadedTable table{"prices", 0, 0};
    for (std::string line; std::getline(in, line);) {
        if (session.stop().stop_requested()) { // a part mustn't pass for the whole
            throw BAS::Status("ERR_DATA_NOT_READ", BAS::Status::error, "the reading was abandoned");
        }
        auto const cells = BAS::String(line).split(';');
        if (cells.entries() == 4) {
            data[cells[0]].push_back(cells[1].str() + " per " + cells[2].str() + " " +
                                     cells[3].str());
            ++table.rows;
        } else {
            ++table.rejected;
        }
    }
    if (in.bad()) { // such as a directory
        throw BAS::Status("ERR_FILE_NOT_READABLE", BAS::Status::critical, report.source);
    }
    report.tables.push_back(table);
}

void CsvPrices::getDataDump(std::ostream& out,
                            RWTValOrderedVector<BAS::String> const& priceModelCodes) {
    for (std::size_t i = 0; i < priceModelCodes.entries(); ++i) {
        auto const prices = data().find(priceModelCodes[i]);
        if (prices == data().end()) {
            out << "  price model " << priceModelCodes[i].str() << " not in memory\n";
            continue;
        }
        for (auto const& price : prices->second) {
            out << "  price model " << prices->first.str() << ": " << price << '\n';
        }
    }
}

} // namespace Example

// The host calls it with the module's registered name, and owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DAT_CsvPricesModuleStart(BAS::String const& name) {
    return std::make_unique<Example::CsvPrices>(name).release();
}
