// Batches of prepared EDRs whose keys are patched in before they are handed over.
//
// The EDRs are realistic: one customer block with two products, two discount blocks of two
// discounts, a sponsor block of one sponsorship, and one charge breakdown with two charge packets.
// There are enough of them to keep the machine from learning them by heart.
#pragma once

#include "EDR/Container.h"
#include "EDR/Description.h"
#include "support/EdrText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace bench {

enum class KeyStream { repeats, zipf, distinct };

// Which customer and service each event of a stream is for.
class Keys {
public:
    explicit Keys(KeyStream stream) : streamM(stream) {}
    // A number below customers * services.
    std::uint64_t next() {
        auto const event = eventM++;
        switch (streamM) {
        case KeyStream::repeats:
            return event * 5 % 8;
        case KeyStream::zipf:
            return zipfDraws()[event % zipfDraws().size()];
        case KeyStream::distinct:
            return event;
        }
        return 0;
    }

    static constexpr std::uint64_t customers = 1'000'000;
    static constexpr std::uint64_t services = 4;

private:
    // Drawn once, for that takes longer than many a run.
    static std::vector<std::uint64_t> const& zipfDraws() {
        static auto const draws = drawZipf();
        return draws;
    }
    static std::vector<std::uint64_t> drawZipf() {
        std::vector<double> cumulated(customers);
        double sum = 0;
        for (std::uint64_t i = 0; i < customers; ++i) {
            cumulated[i] = sum += 1.0 / static_cast<double>(i + 1);
        }
        std::mt19937_64 random(42);
        std::uniform_real_distribution<double> share(0, sum);
        std::vector<std::uint64_t> draws(1 << 21);
        for (auto& key : draws) {
            auto const place = std::lower_bound(cumulated.begin(), cumulated.end(), share(random));
            key = static_cast<std::uint64_t>(place - cumulated.begin()) * services +
                  random() % services;
        }
        return draws;
    }

    KeyStream streamM;
    std::uint64_t eventM = 0;
};

class PreparedEdrs {
public:
    static constexpr std::size_t count = 4096;

    explicit PreparedEdrs(EDR::Description const& description)
        : customerM(description.findField("DETAIL.A_NUMBER")),
          serviceM(description.findField("DETAIL.INTERN_SERVICE_CODE")) {
        for (std::size_t i = 0; i < count; ++i) {
            edrsM.push_back(std::make_unique<EDR::Container>(description));
            prepare(*edrsM.back(), description, i);
        }
    }

    // The next EDR, for a key number.
    EDR::Container* next(std::uint64_t key) {
        static constexpr char const* serviceCodes[] = {"TEL", "SMS", "DATA", "CONTENT"};
        auto& edr = *edrsM[nextM++ % count];
        char customer[] = "490000000000";
        auto number = key / Keys::services;
        for (std::size_t digit = sizeof customer - 2; digit > 1; --digit, number /= 10) {
            customer[digit] = static_cast<char>('0' + number % 10);
        }
        edr.setField(customerM, customer);
        edr.setField(serviceM, serviceCodes[key % Keys::services]);
        return &edr;
    }

private:
    static void prepare(EDR::Container& edr, EDR::Description const& description, std::size_t i) {
        auto const id = [&](std::size_t base) { return "1_" + std::to_string(base + i % 997); };
        auto const account = id(100000);
        auto const model = [&](char const* name) { return name + std::to_string(i % 37); };
        std::vector<std::pair<std::string, std::string>> const fields = {
            {"SERVICE_TYPE", "/service/telco"},
            {"EVENT_TYPE", "/event/session/telco"},
            {"UTC_TIME_OFFSET", i % 2 == 0 ? "+0100" : "-0330"},
            {"CHARGING_START_TIMESTAMP", "202611210" + std::to_string(10000 + i % 50000)},
            {"INTERN_BALANCE_GROUP_ID", id(200000)},
            {"CUST_A", ""},
            {"CUST_A.INTERN_FOUND_PP_INDEX", std::to_string(i % 2)},
            {"CUST_A.ACCOUNT_PARENT_ID", account},
            {"CUST_A.PRODUCT", ""},
            {"CUST_A.PRODUCT.SERVICE_TYPE", "/service/telco"},
            {"CUST_A.PRODUCT.SERVICE_ID", id(300000)},
            {"CUST_A.PRODUCT", ""},
            {"CUST_A.PRODUCT.SERVICE_TYPE", "/service/message"},
            {"CUST_A.PRODUCT.SERVICE_ID", id(310000)},
            {"CUST_A.DL", ""},
            {"CUST_A.DL.BALANCE_GROUP_ID", id(200000)},
            {"CUST_A.DL.DISCOUNT_OWNER_ACCT_ID", account},
            {"CUST_A.DL.DISCOUNT_OWNER_ID", id(100000)},
            {"CUST_A.DL.DISCOUNT_OWNER_TYPE", "/account"},
            {"CUST_A.DL.PD", ""},
            {"CUST_A.DL.PD.DISCOUNT_MODEL", model("LOYALTY")},
            {"CUST_A.DL.PD.DISCOUNT_ID", id(500000)},
            {"CUST_A.DL.PD", ""},
            {"CUST_A.DL.PD.DISCOUNT_MODEL", model("WEEKEND")},
            {"CUST_A.DL.PD.DISCOUNT_ID", id(510000)},
            {"CUST_A.DL", ""},
            {"CUST_A.DL.BALANCE_GROUP_ID", id(250000)},
            {"CUST_A.DL.DISCOUNT_OWNER_ACCT_ID", id(150000)},
            {"CUST_A.DL.DISCOUNT_OWNER_ID", id(400000)},
            {"CUST_A.DL.DISCOUNT_OWNER_TYPE", "/group/sharing"},
            {"CUST_A.DL.PD", ""},
            {"CUST_A.DL.PD.DISCOUNT_MODEL", model("FAMILY")},
            {"CUST_A.DL.PD.DISCOUNT_ID", id(520000)},
            {"CUST_A.DL.PD", ""},
            {"CUST_A.DL.PD.DISCOUNT_MODEL", model("FRIENDS")},
            {"CUST_A.DL.PD.DISCOUNT_ID", id(530000)},
            {"CUST_A.SL", ""},
            {"CUST_A.SL.BALANCE_GROUP_ID", id(260000)},
            {"CUST_A.SL.SPONSOR_OWNER_ACCT_ID", id(160000)},
            {"CUST_A.SL.SPONSOR_OWNER_ID", id(410000)},
            {"CUST_A.SL.SPONSOR_OWNER_TYPE", "/group/sponsor"},
            {"CUST_A.SL.SD", ""},
            {"CUST_A.SL.SD.DISCOUNT_MODEL", model("COMPANY")},
            {"CUST_A.SL.SD.SPONSORSHIP_ID", id(600000)},
            {"ASS_CBD", ""},
            {"ASS_CBD.RECORD_TYPE", "981"},
            {"ASS_CBD.CP", ""},
            {"ASS_CBD.CP.RATEPLAN_TYPE", "R"},
            {"ASS_CBD.CP.RATEPLAN_CODE", "VOICE_STD"},
            {"ASS_CBD.CP.INTERN_RATEPLAN", "12"},
            {"ASS_CBD.CP.INTERN_RATEPLAN_VERSION", "3"},
            {"ASS_CBD.CP.IMPACT_CATEGORY", "DOMESTIC"},
            {"ASS_CBD.CP.SERVICE_CODE_USED", "TEL"},
            {"ASS_CBD.CP.SERVICE_CLASS_USED", "*"},
            {"ASS_CBD.CP.PRICEMODEL_CODE", model("PM_VOICE_")},
            {"ASS_CBD.CP.PRICEMODEL_TYPE", "P"},
            {"ASS_CBD.CP", ""},
            {"ASS_CBD.CP.RATEPLAN_TYPE", "R"},
            {"ASS_CBD.CP.RATEPLAN_CODE", "VOICE_STD"},
            {"ASS_CBD.CP.INTERN_RATEPLAN", "12"},
            {"ASS_CBD.CP.INTERN_RATEPLAN_VERSION", "3"},
            {"ASS_CBD.CP.IMPACT_CATEGORY", "SETUP"},
            {"ASS_CBD.CP.SERVICE_CODE_USED", "TEL"},
            {"ASS_CBD.CP.SERVICE_CLASS_USED", "*"},
            {"ASS_CBD.CP.PRICEMODEL_CODE", model("PM_SETUP_")},
            {"ASS_CBD.CP.PRICEMODEL_TYPE", "S"}};
        std::vector<support::EdrStep> steps;
        for (auto const& [path, value] : fields) {
            steps.push_back({path, value.empty() ? nullptr : value.c_str()});
        }
        support::fill(edr, description, steps);
    }

    EDR::Index customerM;
    EDR::Index serviceM;
    std::vector<std::unique_ptr<EDR::Container>> edrsM;
    std::size_t nextM = 0;
};

} // namespace bench
