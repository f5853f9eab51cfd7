// Runs the plug-in and the plain model of it side by side on made-up EDRs and commands, and
// compares every report and every call of a data module, byte by byte.
//
//   differential [EDRS [SEED [ROUND]]]
//
// A round is the life of one plug-in with a configuration of its own; it depends on seed and number
// alone, so that a difference is shown again by its round, without the rounds before it.
#include "BAS/ProtectedBool.h"
#include "DataDump/SmallHost.h"
#include "PLG/FunctionPlugIn.h"
#include "RandomEdr.h"
#include "ReferenceModel.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

extern "C" BAS::RegisteredObject* FCT_DataDumpModuleStart(BAS::String const& name);

namespace trust {

namespace {

using namespace std::string_literals;

constexpr std::size_t edrsOfRound = 2500;

// A registry value that is often not given.
std::optional<std::string> maybe(Random& random, std::vector<std::string> const& values) {
    return random.oneIn(2) ? std::nullopt : std::optional(random.oneOf(values));
}

ModelConfiguration randomConfiguration(Random& random) {
    ModelConfiguration made;
    made.numberOfEvents = maybe(random, {"0", "1", "2", "3", "5", "17", "64", "1000", "+4", "-1",
                                         "-0", "x", "", "18446744073709551615"});
    made.recordTypes =
        maybe(random, {"982", "981,982", "982,981,983", "", ",", " 981", "9,98,981"});
    made.ratePlanTypes = maybe(random, {"W", "R", "R,W", "W,R,r", "", "R,"});
    made.hasRateplan = random.oneIn(2);
    made.hasPrice = random.oneIn(2);
    made.hasBalance = random.oneIn(2);
    made.hasDiscount = random.oneIn(2);
    made.customerFields = {{"TEL", {"A_NUMBER"}},
                           {"SMS", {"B_NUMBER"}},
                           {"", {"A_NUMBER"}},
                           {"DEEP", {"CUST_A", "PRODUCT", "SERVICE_TYPE"}}};
    return made;
}

class Round {
public:
    Round(std::uint64_t seed, std::uint64_t number)
        : randomM(seed * 1000003 + number), configurationM(randomConfiguration(randomM)),
          modelM(configurationM) {
        set("NumberOfEvents", configurationM.numberOfEvents);
        set("ChargeBreakDownRecordType", configurationM.recordTypes);
        set("RatePlanType", configurationM.ratePlanTypes);
        add("RateplanDataModule", configurationM.hasRateplan, rateplanM);
        add("PriceDataModule", configurationM.hasPrice, priceM);
        add("BalanceDataModule", configurationM.hasBalance, balanceM);
        add("DiscountDataModule", configurationM.hasDiscount, discountM);
        hostM.sql += "INSERT INTO KWL_EDRC_FIELD VALUES(4, 'DETAIL.CUST_A.PRODUCT.SERVICE_TYPE');"
                     "INSERT INTO KWL_ALIAS_MAP VALUES('', 'Account_CustA', 'ALL', 1),"
                     "                                ('DEEP', 'UniData_CustA', 'ALL', 4);";
        hostM.prepare();
        plugInM.reset(
            dynamic_cast<PLG::FunctionPlugIn*>(FCT_DataDumpModuleStart(DataDumpTest::plugInName)));
        if (plugInM == nullptr || !plugInM->isUsable()) {
            throw std::runtime_error("the plug-in isn't usable");
        }
    }

    // Throws a std::runtime_error at the first difference.
    void run(std::size_t edrs) {
        std::size_t const customers = randomM.oneOf(std::vector{2U, 6U, 40U, 2000U});
        while (processedM < edrs) {
            processBatch(std::min(randomM.below(40), edrs - processedM), customers);
            // A long report costs as much as many short ones.
            if (randomM.oneIn(1 + modelM.queued() / 20)) {
                command();
            }
        }
    }
    std::size_t processed() const { return processedM; }

private:
    void set(std::string const& key, std::optional<std::string> const& value) {
        if (value) {
            hostM.keys[key] = *value;
        }
    }
    template <class Module>
    void add(std::string const& key, bool isWanted, std::unique_ptr<Module>& module) {
        if (isWanted) {
            hostM.keys[key] = key + "Reference";
            module =
                std::make_unique<Module>("host.DataPool." + key + "Reference.Module", hostM.calls);
        }
    }

    void processBatch(std::size_t size, std::size_t customers) {
        RandomEdr edrs(randomM, hostM.description);
        RWTPtrOrderedVector<EDR::Container> batch;
        for (std::size_t i = 0; i < size; ++i) {
            auto const edr = edrs.make(customers);
            if (i == containersM.size()) {
                containersM.push_back(std::make_unique<EDR::Container>(hostM.description));
            }
            fill(*containersM[i], hostM.description, edr);
            batch.append(containersM[i].get());
            modelM.process(edr);
        }
        if (!plugInM->processEdrContainer(batch)) {
            throw std::runtime_error("the batch was refused");
        }
        processedM += size;
    }

    void command() {
        auto const calls = hostM.calls.list().size();
        std::vector<std::string> expectedCalls;
        switch (randomM.below(12)) {
        case 0:
            send({{"ClearData", "x"}});
            modelM.clearData();
            break;
        case 1:
            send({{"NumberOfEvents", "1"}});
            break;
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:
            send({{"ClearData", ""}, {"Dump", path()}});
            compare("dump", hostM.directory.read("out"), modelM.memoryDump(expectedCalls));
            break;
        default:
            send({{"Dump", path()}, {"DumpEvents", path()}});
            compare("report", hostM.directory.read("out"), modelM.eventReport());
        }
        auto const& list = hostM.calls.list();
        if (!std::equal(list.begin() + static_cast<long>(calls), list.end(), expectedCalls.begin(),
                        expectedCalls.end())) {
            throw std::runtime_error("the data modules were asked something else");
        }
    }
    std::string path() const { return (hostM.directory.path() / "out").string(); }

    void send(std::vector<std::pair<std::string, std::string>> const& keys) {
        BAS::RegistryEntry update("update");
        for (auto const& [key, value] : keys) {
            update.add(key, value);
        }
        BAS::ProtectedBool workDone;
        if (!plugInM->registryUpdate(&update, workDone) || !workDone.value()) {
            throw std::runtime_error("the command was refused");
        }
    }

    static void compare(std::string const& what, std::string const& actual,
                        std::string const& expected) {
        if (actual == expected) {
            return;
        }
        auto const end =
            std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
        auto const at = static_cast<std::size_t>(end.first - actual.begin());
        auto const around = [&](std::string const& text) {
            auto const begin = std::min(text.size(), at < 200 ? 0 : at - 200);
            return "'" + text.substr(begin, 400) + "'\n";
        };
        throw std::runtime_error("the " + what + " differs at byte " + std::to_string(at) +
                                 ", around\n" + around(actual) + "instead of\n" + around(expected));
    }

    Random randomM;
    ModelConfiguration configurationM;
    ReferenceModel modelM;
    DataDumpTest::SmallHost hostM;
    std::unique_ptr<DataDumpTest::RateplanModule> rateplanM;
    std::unique_ptr<DataDumpTest::PriceModule> priceM;
    std::unique_ptr<DataDumpTest::BalanceModule> balanceM;
    std::unique_ptr<DataDumpTest::DiscountModule> discountM;
    std::unique_ptr<PLG::FunctionPlugIn> plugInM;
    std::vector<std::unique_ptr<EDR::Container>> containersM;
    std::size_t processedM = 0;
};

int runRounds(std::size_t edrs, std::uint64_t seed, std::optional<std::uint64_t> only) {
    std::cout << "seed " << seed << ", " << edrs << " EDRs\n";
    auto const rounds = (edrs + edrsOfRound - 1) / edrsOfRound;
    for (auto number = only.value_or(0); number < (only ? *only + 1 : rounds); ++number) {
        Round round(seed, number);
        try {
            round.run(std::min(edrs, edrsOfRound));
        } catch (std::runtime_error const& difference) {
            std::cout << "round " << number << ", after " << round.processed()
                      << " EDRs: " << difference.what() << "\n";
            return EXIT_FAILURE;
        }
    }
    std::cout << "no difference\n";
    return EXIT_SUCCESS;
}

} // namespace

} // namespace trust

int main(int argc, char** argv) {
    auto const number = [&](int position) { return std::strtoul(argv[position], nullptr, 10); };
    return trust::runRounds(argc > 1 ? number(1) : 100000, argc > 2 ? number(2) : 1,
                            argc > 3 ? std::optional<std::uint64_t>(number(3)) : std::nullopt);
}
