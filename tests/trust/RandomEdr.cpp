#include "RandomEdr.h"

#include <string_view>

namespace trust {

namespace {

using namespace std::string_literals;

std::vector<std::string> const identifiers = {"1_1",
                                              "1_2",
                                              "1_3",
                                              "x_4",
                                              "a_b_5",
                                              "_1",
                                              "1_",
                                              "1",
                                              "_",
                                              "1__2",
                                              "1_+2",
                                              "1_-1",
                                              "1_+-2",
                                              "1_ \t\n\v\f\r2",
                                              "1_0x2",
                                              "1_\0002"s,
                                              "1_\0015",
                                              "1\0_3"s,
                                              "1_3\0 4"s,
                                              "1_12abc",
                                              "1_18446744073709551615",
                                              "1_9223372036854775808",
                                              "1_-99999999999999999999"};

// What a field may hold whose name ends in the suffix; the first one that fits counts.
struct Values {
    std::string_view suffix;
    std::vector<std::string> values;
};
std::vector<Values> const usualValues = {
    {"INTERN_SERVICE_CODE", {"TEL", "TEL", "SMS", "FAX", "NET", "", "TEL\0"s, "DEEP", "tel"}},
    {"FOUND_PP_INDEX",
     {"0", "0", "1", "2", "+1", "-1", "3000000000", "99999999999999999999", "1 "}},
    {"UTC_TIME_OFFSET",
     {"+0100", "-0030", "+0530", "0", "-0000", "+99", "-12345", "2147483647", "-2147483648",
      "4000000000", "+-100", "+", "1x", " 100"}},
    {"TIMESTAMP",
     {"20261121093000", "19700101000000", "19700101010000", "19691231235959", "19000101000000",
      "18991231235959", "20240229120000", "20230229120000", "20261301000000", "20261121240000",
      "20261121096000", "20261121093060", "2026112109300", "2026112109300x", "00000000000000",
      "99991231235959"}},
    {"RECORD_TYPE", {"981", "981", "982", "983", "98", " 981"}},
    {"RATEPLAN_TYPE", {"R", "R", "W", "", "r"}},
    {"PRICEMODEL_TYPE", {"P", "S", "A", "Z"}},
    {"PRICEMODEL_CODE", {"PM1", "PM2"}},
    {"_VERSION", {"3", "-3", "+4", "9223372036854775807", "9223372036854775808", "3.0"}},
    {"_ID", identifiers},
};

} // namespace

std::string Random::bytes(std::size_t length) {
    std::string text(length, '\0');
    for (auto& byte : text) {
        byte = static_cast<char>(below(256));
    }
    return text;
}

EdrTree RandomEdr::make(std::size_t customers) {
    customersM = customers;
    EdrTree edr;
    edr.recordKind = randomM.oneIn(20) ? static_cast<int>(randomM.below(5)) : 3;
    edr.detail = block(EDR::Description::root().blockKind());
    return edr;
}

EdrBlock RandomEdr::block(std::uint32_t kind) {
    EdrBlock made;
    auto const& described = descriptionM.blockKinds()[kind];
    bool const isEmpty = randomM.oneIn(20);
    for (auto const& each : described.fields) {
        if (!isEmpty && !randomM.oneIn(12)) {
            auto const name = lastPart(each.path);
            made.fields[name] = field(name);
        }
    }
    for (auto const child : described.children) {
        std::size_t const counts[] = {0, 1, 1, 2};
        auto const count = randomM.oneIn(100) ? 40 : randomM.oneOf(counts);
        auto& blocks = made.blocks[lastPart(descriptionM.blockKinds()[child].path)];
        for (std::size_t i = 0; i < count; ++i) {
            blocks.push_back(i < 3 ? block(child) : EdrBlock());
        }
    }
    return made;
}

std::string RandomEdr::field(std::string const& name) {
    if (randomM.oneIn(60)) {
        std::size_t const lengths[] = {0, 1, 7, 15, 16, 100};
        return randomM.bytes(randomM.oneIn(100) ? 100000 : randomM.oneOf(lengths));
    }
    if (name.ends_with("_NUMBER")) {
        return "4917" + std::to_string(randomM.below(customersM));
    }
    for (auto const& usual : usualValues) {
        if (name.ends_with(usual.suffix)) {
            return randomM.oneOf(usual.values);
        }
    }
    return name + std::to_string(randomM.below(3));
}

} // namespace trust
