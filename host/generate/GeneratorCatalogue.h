// What the operator whose EDRs are generated sells: services, rate plans, prices and discounts. The
// EDRs and the reference data both come from these tables.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace host {

// In hundredths of a cent.
using Money = std::int64_t;

// What a price counts, and how charge packets and the database call it.
struct Measure {
    std::string_view packetUnit;
    std::string_view databaseUnit;
    std::string_view perQuantity; // database units that the price is for
};

enum MeasureNumber : std::uint8_t { uses, minutes, megabytes, messages, items };

inline constexpr std::array measures = {
    Measure{"USE", "use", "1"},       Measure{"MIN", "second", "60"},
    Measure{"MB", "byte", "1048576"}, Measure{"MSG", "message", "1"},
    Measure{"ITEM", "item", "1"},
};

struct PriceModel {
    std::string_view code;
    std::string_view description;
    MeasureNumber measure;
    Money price;
};

inline constexpr std::array priceModels = {
    PriceModel{"PM_VOICE_SETUP", "Set-up of a call", uses, 500},
    PriceModel{"PM_VOICE_ONNET", "Call within the network", minutes, 500},
    PriceModel{"PM_VOICE_NAT", "Call to a domestic number", minutes, 900},
    PriceModel{"PM_VOICE_BIZ", "Business call to a domestic number", minutes, 600},
    PriceModel{"PM_VOICE_PRE", "Prepaid call to a domestic number", minutes, 1200},
    PriceModel{"PM_VOICE_INT", "Call to a number abroad", minutes, 2900},
    PriceModel{"PM_VOICE_ROAM_Z2", "Call from zone 2", minutes, 4900},
    PriceModel{"PM_VOICE_ROAM_Z3", "Call from zone 3", minutes, 8900},
    PriceModel{"PM_DATA_MB", "Data by volume", megabytes, 200},
    PriceModel{"PM_DATA_OPEN", "Opening of a data session", uses, 100},
    PriceModel{"PM_DATA_ROAM_Z2", "Data in zone 2", megabytes, 3500},
    PriceModel{"PM_DATA_ROAM_Z3", "Data in zone 3", megabytes, 7500},
    PriceModel{"PM_SMS_NAT", "Message to a domestic number", messages, 900},
    PriceModel{"PM_SMS_INT", "Message to a number abroad", messages, 1900},
    PriceModel{"PM_SMS_ROAM", "Message from abroad", messages, 2900},
    PriceModel{"PM_CNT_FILM", "Film", items, 39900},
    PriceModel{"PM_CNT_HD", "Surcharge for high definition", items, 10000},
    PriceModel{"PM_CNT_SONG", "Song", items, 9900},
    PriceModel{"PM_W_VOICE", "Paid to the roaming partner for calls", minutes, 2100},
    PriceModel{"PM_W_DATA", "Paid to the roaming partner for data", megabytes, 800},
    PriceModel{"PM_W_SMS", "Paid to the roaming partner for messages", messages, 700},
};

constexpr PriceModel const* findPriceModel(std::string_view code) {
    for (auto const& model : priceModels) {
        if (model.code == code) {
            return &model;
        }
    }
    return nullptr;
}

// In the order of how often they are used.
enum ServiceNumber : std::uint8_t { telephony, data, message, content };

struct Service {
    std::string_view code;
    std::string_view type;
    std::string_view eventType;
    std::string_view itemTag;
    std::string_view source; // network element
    std::string_view customerReference;
    int customerField; // its number in the database, from 1 up as in customerFields
};

inline constexpr std::array<std::string_view, 4> customerFields = {
    "DETAIL.A_NUMBER", "DETAIL.B_NUMBER", "DETAIL.IMSI", "DETAIL.USER_NAME"};

inline constexpr std::array<Service, 4> services = {
    Service{"TEL", "/service/telco", "/event/session/telco", "voice", "MSC1", "Account_CustA", 1},
    Service{"GPRS", "/service/data", "/event/session/data", "data", "PGW1", "UniData_CustA", 3},
    Service{"SMS", "/service/message", "/event/message/sms", "message", "SMSC1", "UniData_CustA",
            1},
    Service{"CNT", "/service/content", "/event/purchase/content", "content", "SHOP1",
            "Account_CustA", 4},
};

struct Rateplan {
    std::string_view code;
    int number;
    int version;
    std::string_view serviceCode;
    std::string_view serviceClass;
};

inline constexpr std::array rateplans = {
    Rateplan{"VOICE_STD", 12, 3, "TEL", "*"},    Rateplan{"VOICE_BIZ", 14, 2, "TEL", "BIZ"},
    Rateplan{"VOICE_PRE", 16, 1, "TEL", "PRE"},  Rateplan{"SMS_STD", 21, 2, "SMS", "*"},
    Rateplan{"SMS_BIZ", 22, 1, "SMS", "BIZ"},    Rateplan{"DATA_FLEX", 31, 5, "GPRS", "*"},
    Rateplan{"DATA_BIZ", 33, 2, "GPRS", "BIZ"},  Rateplan{"CNT_STD", 41, 1, "CNT", "*"},
    Rateplan{"W_ROAM_VOICE", 91, 4, "TEL", "*"}, Rateplan{"W_ROAM_DATA", 92, 4, "GPRS", "*"},
    Rateplan{"W_ROAM_SMS", 93, 4, "SMS", "*"},
};

constexpr Rateplan const* findRateplan(std::string_view code) {
    for (auto const& plan : rateplans) {
        if (plan.code == code) {
            return &plan;
        }
    }
    return nullptr;
}

// An event is charged by each entry of its rate plan that has its impact category, or any ("*").
struct RateplanEntry {
    std::string_view rateplan;
    std::string_view impactCategory;
    std::string_view priceModel;
};

inline constexpr std::array rateplanEntries = {
    RateplanEntry{"VOICE_STD", "ONNET", "PM_VOICE_ONNET"},
    RateplanEntry{"VOICE_STD", "DOMESTIC", "PM_VOICE_NAT"},
    RateplanEntry{"VOICE_STD", "INTERNATIONAL", "PM_VOICE_INT"},
    RateplanEntry{"VOICE_STD", "ROAM_Z2", "PM_VOICE_ROAM_Z2"},
    RateplanEntry{"VOICE_STD", "ROAM_Z3", "PM_VOICE_ROAM_Z3"},
    RateplanEntry{"VOICE_BIZ", "ONNET", "PM_VOICE_ONNET"},
    RateplanEntry{"VOICE_BIZ", "DOMESTIC", "PM_VOICE_BIZ"},
    RateplanEntry{"VOICE_BIZ", "INTERNATIONAL", "PM_VOICE_INT"},
    RateplanEntry{"VOICE_BIZ", "ROAM_Z2", "PM_VOICE_ROAM_Z2"},
    RateplanEntry{"VOICE_BIZ", "ROAM_Z3", "PM_VOICE_ROAM_Z3"},
    RateplanEntry{"VOICE_PRE", "*", "PM_VOICE_SETUP"},
    RateplanEntry{"VOICE_PRE", "ONNET", "PM_VOICE_ONNET"},
    RateplanEntry{"VOICE_PRE", "DOMESTIC", "PM_VOICE_PRE"},
    RateplanEntry{"VOICE_PRE", "INTERNATIONAL", "PM_VOICE_INT"},
    RateplanEntry{"VOICE_PRE", "ROAM_Z2", "PM_VOICE_ROAM_Z2"},
    RateplanEntry{"VOICE_PRE", "ROAM_Z3", "PM_VOICE_ROAM_Z3"},
    RateplanEntry{"SMS_STD", "ONNET", "PM_SMS_NAT"},
    RateplanEntry{"SMS_STD", "DOMESTIC", "PM_SMS_NAT"},
    RateplanEntry{"SMS_STD", "INTERNATIONAL", "PM_SMS_INT"},
    RateplanEntry{"SMS_STD", "ROAM_Z2", "PM_SMS_ROAM"},
    RateplanEntry{"SMS_STD", "ROAM_Z3", "PM_SMS_ROAM"},
    RateplanEntry{"SMS_BIZ", "ONNET", "PM_SMS_NAT"},
    RateplanEntry{"SMS_BIZ", "DOMESTIC", "PM_SMS_NAT"},
    RateplanEntry{"SMS_BIZ", "INTERNATIONAL", "PM_SMS_INT"},
    RateplanEntry{"SMS_BIZ", "ROAM_Z2", "PM_SMS_ROAM"},
    RateplanEntry{"SMS_BIZ", "ROAM_Z3", "PM_SMS_ROAM"},
    RateplanEntry{"DATA_FLEX", "DOMESTIC", "PM_DATA_OPEN"},
    RateplanEntry{"DATA_FLEX", "DOMESTIC", "PM_DATA_MB"},
    RateplanEntry{"DATA_FLEX", "ROAM_Z2", "PM_DATA_ROAM_Z2"},
    RateplanEntry{"DATA_FLEX", "ROAM_Z3", "PM_DATA_ROAM_Z3"},
    RateplanEntry{"DATA_BIZ", "DOMESTIC", "PM_DATA_MB"},
    RateplanEntry{"DATA_BIZ", "ROAM_Z2", "PM_DATA_ROAM_Z2"},
    RateplanEntry{"DATA_BIZ", "ROAM_Z3", "PM_DATA_ROAM_Z3"},
    RateplanEntry{"CNT_STD", "FILM", "PM_CNT_FILM"},
    RateplanEntry{"CNT_STD", "FILM", "PM_CNT_HD"},
    RateplanEntry{"CNT_STD", "MUSIC", "PM_CNT_SONG"},
    RateplanEntry{"W_ROAM_VOICE", "*", "PM_W_VOICE"},
    RateplanEntry{"W_ROAM_DATA", "*", "PM_W_DATA"},
    RateplanEntry{"W_ROAM_SMS", "*", "PM_W_SMS"},
};

// What a kind of customer has for each service.
struct Tariff {
    std::string_view rateplan;
    std::string_view product;
};

// The kinds in the order of how many customers they have.
inline constexpr std::array<std::array<Tariff, services.size()>, 3> segments = {{
    {{{"VOICE_STD", "Home Voice"},
      {"DATA_FLEX", "Home Data"},
      {"SMS_STD", "Home Text"},
      {"CNT_STD", "Screen Basic"}}},
    {{{"VOICE_BIZ", "Business Mobile"},
      {"DATA_BIZ", "Business Data"},
      {"SMS_BIZ", "Business Text"},
      {"CNT_STD", "Screen Office"}}},
    {{{"VOICE_PRE", "Prepaid Voice"},
      {"DATA_FLEX", "Prepaid Data"},
      {"SMS_STD", "Prepaid Text"},
      {"CNT_STD", "Screen To Go"}}},
}};

// What the roaming partner is paid for each service that it carries.
inline constexpr std::array<std::string_view, services.size()> wholesaleRateplans = {
    "W_ROAM_VOICE", "W_ROAM_DATA", "W_ROAM_SMS", ""};

struct DiscountModel {
    std::string_view name;
    std::string_view description;
    std::string_view serviceCode; // that it applies to, or "*"
    int share;                    // percent
};

// Each kind in the order of how often its models are sold.
inline constexpr std::array ownDiscountModels = {
    DiscountModel{"LOYALTY5", "Five percent after three years", "*", 5},
    DiscountModel{"WEEKEND20", "Calls at a weekend", "TEL", 20},
    DiscountModel{"STUDENT25", "A quarter off for students", "*", 25},
    DiscountModel{"DATA_PACK", "Half of the data for a monthly fee", "GPRS", 50},
    DiscountModel{"TEXT_FLAT", "Messages for a monthly fee", "SMS", 100},
    DiscountModel{"FILM_FAN", "Films and songs", "CNT", 15},
};
inline constexpr std::array sharedDiscountModels = {
    DiscountModel{"FAMILY10", "Ten percent for a family", "*", 10},
    DiscountModel{"CORP_VOICE15", "Company discount on calls", "TEL", 15},
    DiscountModel{"CORP_DATA20", "Company discount on data", "GPRS", 20},
    DiscountModel{"CLUB_TEXT30", "Messages of club members", "SMS", 30},
};
inline constexpr std::array sponsorshipModels = {
    DiscountModel{"SPON_VOICE", "Half of the calls is paid", "TEL", 50},
    DiscountModel{"SPON_TEXT", "Messages are paid", "SMS", 100},
    DiscountModel{"SPON_ALL", "A quarter of everything is paid", "*", 25},
};

// Networks abroad in which customers use their services.
struct VisitedNetwork {
    std::string_view name;
    std::string_view impactCategory;
    std::string_view utcOffset;
    int utcOffsetMinutes;
};

inline constexpr VisitedNetwork homeNetwork{"", "", "+0100", 60};
// In the order of how often they are visited.
inline constexpr std::array visitedNetworks = {
    VisitedNetwork{"NE-M1", "ROAM_Z2", "+0200", 120},
    VisitedNetwork{"NW-M4", "ROAM_Z2", "+0000", 0},
    VisitedNetwork{"AM-M2", "ROAM_Z3", "-0500", -300},
    VisitedNetwork{"AS-M2", "ROAM_Z3", "+0530", 330},
    VisitedNetwork{"AM-M7", "ROAM_Z3", "-0330", -210},
};

// What one table names is in another: the price of a rate plan's entry, and a tariff's rate plan
// for its service.
constexpr bool isPriceModel(std::string_view code) {
    return std::any_of(priceModels.begin(), priceModels.end(),
                       [&](PriceModel const& model) { return model.code == code; });
}
constexpr bool isRateplan(std::string_view code, std::string_view serviceCode) {
    return std::any_of(rateplans.begin(), rateplans.end(), [&](Rateplan const& plan) {
        return plan.code == code && plan.serviceCode == serviceCode;
    });
}
static_assert(std::all_of(rateplanEntries.begin(), rateplanEntries.end(),
                          [](RateplanEntry const& entry) {
                              return isPriceModel(entry.priceModel);
                          }));
static_assert(std::all_of(segments.begin(), segments.end(), [](auto const& tariffs) {
    return std::equal(tariffs.begin(), tariffs.end(), services.begin(),
                      [](Tariff const& tariff, Service const& service) {
                          return isRateplan(tariff.rateplan, service.code);
                      });
}));

} // namespace host
