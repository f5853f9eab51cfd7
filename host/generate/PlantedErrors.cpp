#include "generate/PlantedErrors.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace host {

namespace {

// In all texts below, '#' stands for the seven digits of the event's number. The identifiers begin
// with digits that no generated customer's have.

struct PlantedRow {
    std::string_view table;
    std::string_view values; // with commas between them; an empty one is NULL
};

// What memory holds for an event that nothing is wrong with. 79# is an account that the event has
// nothing to do with; 86# owns what is shared with the event's account, 81#.
constexpr std::array plantedRows = {
    PlantedRow{"ACCOUNT", "81#,ACTIVE,EUR,"},
    PlantedRow{"ACCOUNT", "86#,ACTIVE,EUR,"},
    PlantedRow{"ACCOUNT", "79#,ACTIVE,EUR,"},
    PlantedRow{"CUSTOMER_IDENTIFIER", "49172#,81#"},
    PlantedRow{"ACCOUNT_SERVICE", "81#,83#,/service/telco,49172#,ACTIVE"},
    PlantedRow{"ACCOUNT_PRODUCT",
               "81#,84#,PL#,83#,/event/session/telco,ACTIVE,2020-01-01T00:00:00Z,"},
    PlantedRow{"ACCOUNT_DISCOUNT", "81#,85#,DO#,,*,ACTIVE,2020-01-01T00:00:00Z,"},
    PlantedRow{"BALANCE_GROUP", "82#,81#"},
    PlantedRow{"BALANCE_GROUP", "88#,86#"},
    PlantedRow{"BALANCE", "82#,EUR,EUR,12.5000,150.00,2020-01-01T00:00:00Z,"},
    PlantedRow{"BALANCE", "88#,EUR,EUR,150.00,150.00,2020-01-01T00:00:00Z,"},
    PlantedRow{"RATEPLAN", "PL#,1,77#,FLAT,2020-01-01T00:00:00Z,"},
    PlantedRow{"RATEPLAN_ENTRY", "PL#,1,1,TEL,*,ONNET,PQ#"},
    PlantedRow{"RATEPLAN_ENTRY", "PL#,1,2,TEL,*,DOMESTIC,PM#"},
    PlantedRow{"PRICEMODEL", "PM#,Planted,EUR"},
    PlantedRow{"PRICEMODEL", "PQ#,Planted besides,EUR"},
    PlantedRow{"PRICEMODEL_STEP", "PM#,1,second,0,600,0.0900,60,2020-01-01T00:00:00Z,"},
    PlantedRow{"PRICEMODEL_STEP", "PM#,2,second,600,,0.0400,60,2020-01-01T00:00:00Z,"},
    PlantedRow{"PRICEMODEL_STEP", "PQ#,1,second,0,,0.0100,60,2020-01-01T00:00:00Z,"},
    PlantedRow{"PRICEMODEL_IMPACT", "PM#,1,1,EUR,EUR,0.0900"},
    PlantedRow{"PRICEMODEL_IMPACT", "PM#,2,1,EUR,EUR,0.0400"},
    PlantedRow{"PRICEMODEL_IMPACT", "PQ#,1,1,EUR,EUR,0.0100"},
    PlantedRow{"DISCOUNT_MODEL", "DO#,Planted for the account"},
    PlantedRow{"DISCOUNT_MODEL", "DS#,Planted to be shared"},
    PlantedRow{"DISCOUNT_MODEL", "SP#,Planted to sponsor"},
    PlantedRow{"DISCOUNT_RULE", "DO#,1,ALL_USE,*,EUR"},
    PlantedRow{"DISCOUNT_RULE", "DS#,1,ALL_USE,*,EUR"},
    PlantedRow{"DISCOUNT_RULE", "SP#,1,ALL_USE,*,EUR"},
    PlantedRow{"DISCOUNT_STEP", "DO#,1,1,0,,5"},
    PlantedRow{"DISCOUNT_STEP", "DS#,1,1,0,,10"},
    PlantedRow{"DISCOUNT_STEP", "SP#,1,1,0,,50"},
    PlantedRow{"DISCOUNT_OBJECT",
               "85#,/account,81#,81#,DO#,ACTIVE,2020-01-01T00:00:00Z,,2020-01-01T00:00:00Z"},
    PlantedRow{"DISCOUNT_OBJECT",
               "89#,/group/sharing,87#,86#,DS#,ACTIVE,2020-01-01T00:00:00Z,,2020-01-01T00:00:00Z"},
    PlantedRow{"SPONSORSHIP_OBJECT",
               "80#,/group/sponsor,87#,86#,SP#,ACTIVE,2020-01-01T00:00:00Z,,2020-01-01T00:00:00Z"},
};

// Members of the EDR by name, each with its text of JSON; an edit to "" leaves the member out.
using PlantedEdr = std::map<std::string, std::string, std::less<>>;

constexpr std::string_view packet =
    R"({"RATEPLAN_TYPE":"R","RATEPLAN_CODE":"PL#","INTERN_RATEPLAN":"77#",)"
    R"("INTERN_RATEPLAN_VERSION":"1","IMPACT_CATEGORY":"DOMESTIC","SERVICE_CODE_USED":"TEL",)"
    R"("SERVICE_CLASS_USED":"*","PRICEMODEL_CODE":"PM#","PRICEMODEL_TYPE":"P"})";
constexpr std::string_view packetOfOtherPlan =
    R"({"RATEPLAN_TYPE":"R","RATEPLAN_CODE":"PX#","INTERN_RATEPLAN":"78#",)"
    R"("INTERN_RATEPLAN_VERSION":"1","IMPACT_CATEGORY":"DOMESTIC","SERVICE_CODE_USED":"TEL",)"
    R"("SERVICE_CLASS_USED":"*","PRICEMODEL_CODE":"PQ#","PRICEMODEL_TYPE":"P"})";

struct EdrMember {
    std::string_view name;
    std::string_view json;
};
constexpr std::array edrMembers = {
    EdrMember{"A_NUMBER", R"("49172#")"},
    EdrMember{"CHARGING_START_TIMESTAMP", R"("20261120235959")"},
    EdrMember{"PRODUCT", R"([{"SERVICE_TYPE":"/service/telco","SERVICE_ID":"1_83#"}])"},
    EdrMember{"DL", R"([{"BALANCE_GROUP_ID":"1_82#","DISCOUNT_OWNER_ACCT_ID":"1_81#",)"
                    R"("DISCOUNT_OWNER_ID":"1_81#","DISCOUNT_OWNER_TYPE":"/account",)"
                    R"("PD":[{"DISCOUNT_MODEL":"DO#","DISCOUNT_ID":"1_85#"}]},)"
                    R"({"BALANCE_GROUP_ID":"1_88#","DISCOUNT_OWNER_ACCT_ID":"1_86#",)"
                    R"("DISCOUNT_OWNER_ID":"1_87#","DISCOUNT_OWNER_TYPE":"/group/sharing",)"
                    R"("PD":[{"DISCOUNT_MODEL":"DS#","DISCOUNT_ID":"1_89#"}]}])"},
    EdrMember{"SL", R"([{"BALANCE_GROUP_ID":"1_88#","SPONSOR_OWNER_ACCT_ID":"1_86#",)"
                    R"("SPONSOR_OWNER_ID":"1_87#","SPONSOR_OWNER_TYPE":"/group/sponsor",)"
                    R"("SD":[{"DISCOUNT_MODEL":"SP#","SPONSORSHIP_ID":"1_80#"}]}])"},
    EdrMember{"CP", packet},
};

// One difference from the event that nothing is wrong with.
struct Edit {
    static constexpr int removal = -1;

    std::string_view target = {}; // a table, or a member of the EDR
    std::size_t row = 0;          // of the table's rows above
    int column = removal;
    std::string_view value = {};
};

struct PlantedKind {
    std::string_view name;
    std::array<Edit, 5> edits;     // those with a target count
    bool isAfterAnother = false;   // a first EDR of the event has no edits
    std::string_view besides = {}; // what the same error is found as besides
};

constexpr std::string_view past = "2026-11-01T00:00:00Z";

// The kinds that one file can have and that the host's own data can bring about.
constexpr std::array plantedKinds = {
    PlantedKind{"customer-absent", {{{"CUSTOMER_IDENTIFIER"}}}},
    PlantedKind{"rate-plan-absent", {{{"RATEPLAN"}, {"RATEPLAN_ENTRY", 0}, {"RATEPLAN_ENTRY", 1}}}},
    PlantedKind{"price-model-absent",
                {{{"PRICEMODEL"},
                  {"PRICEMODEL_STEP", 0},
                  {"PRICEMODEL_STEP", 1},
                  {"PRICEMODEL_IMPACT", 0},
                  {"PRICEMODEL_IMPACT", 1}}}},
    PlantedKind{"balance-group-absent", {{{"BALANCE_GROUP"}, {"BALANCE"}}}},
    PlantedKind{"discount-absent", {{{"DISCOUNT_OBJECT", 1}}}},
    PlantedKind{"sponsorship-absent", {{{"SPONSORSHIP_OBJECT"}}}},
    PlantedKind{"discount-model-absent",
                {{{"DISCOUNT_MODEL", 1},
                  {"DISCOUNT_RULE", 1},
                  {"DISCOUNT_STEP", 1},
                  {"DISCOUNT_OBJECT", 1}}},
                false,
                "discount-absent"},
    PlantedKind{"account-differs", {{{"CUSTOMER_IDENTIFIER", 0, 1, "79#"}}}},
    PlantedKind{"service-absent", {{{"ACCOUNT_SERVICE"}, {"ACCOUNT_PRODUCT"}}}},
    PlantedKind{"service-type-differs", {{{"ACCOUNT_SERVICE", 0, 2, "/service/data"}}}},
    PlantedKind{"plan-not-of-product", {{{"ACCOUNT_PRODUCT", 0, 2, "PX#"}}}},
    PlantedKind{"product-not-valid", {{{"ACCOUNT_PRODUCT", 0, 7, past}}}},
    PlantedKind{"rate-plan-id-differs", {{{"RATEPLAN", 0, 2, "78#"}}}},
    PlantedKind{"rate-plan-not-valid", {{{"RATEPLAN", 0, 5, past}}}},
    PlantedKind{"price-model-not-of-entry", {{{"RATEPLAN_ENTRY", 1, 5, "ONNET"}}}},
    PlantedKind{"price-not-valid",
                {{{"PRICEMODEL_STEP", 0, 8, past}, {"PRICEMODEL_STEP", 1, 8, past}}}},
    PlantedKind{"price-model-without-steps",
                {{{"PRICEMODEL_STEP", 0},
                  {"PRICEMODEL_STEP", 1},
                  {"PRICEMODEL_IMPACT", 0},
                  {"PRICEMODEL_IMPACT", 1}}}},
    PlantedKind{"balance-group-of-other-account", {{{"BALANCE_GROUP", 0, 1, "79#"}}}},
    PlantedKind{"object-model-differs", {{{"DISCOUNT_OBJECT", 1, 4, "SP#"}}}},
    PlantedKind{"object-account-differs", {{{"DISCOUNT_OBJECT", 1, 3, "79#"}}}},
    PlantedKind{"object-owner-differs", {{{"DISCOUNT_OBJECT", 1, 2, "79#"}}}},
    PlantedKind{"object-not-valid", {{{"DISCOUNT_OBJECT", 1, 7, past}}}},
    PlantedKind{"own-discount-not-valid", {{{"ACCOUNT_DISCOUNT", 0, 7, past}}}},
    PlantedKind{"own-discount-model-differs", {{{"ACCOUNT_DISCOUNT", 0, 2, "DX#"}}}},
    PlantedKind{"discount-not-listed", {{{"ACCOUNT_DISCOUNT"}}}},
    PlantedKind{"account-inactive", {{{"ACCOUNT", 0, 1, "SUSPENDED"}}}},
    PlantedKind{"service-inactive", {{{"ACCOUNT_SERVICE", 0, 4, "SUSPENDED"}}}},
    PlantedKind{"product-inactive", {{{"ACCOUNT_PRODUCT", 0, 5, "CLOSED"}}}},
    PlantedKind{"object-inactive", {{{"DISCOUNT_OBJECT", 1, 5, "CLOSED"}}}},
    PlantedKind{"own-discount-inactive", {{{"ACCOUNT_DISCOUNT", 0, 5, "CLOSED"}}}},
    PlantedKind{"balance-not-valid", {{{"BALANCE", 0, 6, past}}}},
    PlantedKind{"over-credit-limit", {{{"BALANCE", 0, 3, "150.0001"}}}},
    PlantedKind{"no-balance-for-impact", {{{"PRICEMODEL_IMPACT", 0, 3, "POINTS"}}}},
    PlantedKind{"object-purchased-later", {{{"DISCOUNT_OBJECT", 1, 8, "2026-11-25T00:00:00Z"}}}},
    PlantedKind{"price-gap", {{{"PRICEMODEL_STEP", 1, 3, "700"}}}},
    PlantedKind{"price-overlap", {{{"PRICEMODEL_STEP", 1, 3, "500"}}}},
    PlantedKind{"entry-passed-over", {{{"RATEPLAN_ENTRY", 0, 5, "DOMESTIC"}}}},
    PlantedKind{"own-discount-not-applying", {{{"ACCOUNT_DISCOUNT", 0, 4, "/event/session/data"}}}},
    PlantedKind{"rate-plan-left", {{{"CP"}}}, true},
    PlantedKind{"empty-identifier", {{{"A_NUMBER"}}}},
    PlantedKind{"no-service", {{{"PRODUCT"}}}},
    PlantedKind{"no-charging-start", {{{"CHARGING_START_TIMESTAMP"}}}},
    PlantedKind{"no-charge-packet", {{{"CP"}}}},
    PlantedKind{"no-rule-for-category", {{{"DISCOUNT_RULE", 1, 3, "ROAM_Z3"}}}},
    PlantedKind{"several-plans", {{{"CP", 0, 0, packetOfOtherPlan}}}},
};

std::string filledIn(std::string_view text, std::uint64_t number) {
    std::string result;
    for (char const c : text) {
        result += c == '#' ? fmt::format("{:07}", number) : std::string(1, c);
    }
    return result;
}

// Calls the action with each kind and the number of each of its events.
template <class Action>
void forEachEvent(std::uint32_t ofEachKind, Action const& action) {
    std::uint64_t number = 0;
    for (auto const& kind : plantedKinds) {
        for (std::uint32_t i = 0; i < ofEachKind; ++i) {
            action(kind, number++);
        }
    }
}

std::vector<std::string> splitValues(std::string_view values) {
    std::vector<std::string> parts(1);
    for (char const c : values) {
        if (c == ',') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

// The values of the row after the kind's edits; none when an edit removes it.
std::vector<std::string> editedRow(PlantedKind const& kind, PlantedRow const& row,
                                   std::size_t ofTable) {
    auto values = splitValues(row.values);
    for (auto const& edit : kind.edits) {
        if (edit.target != row.table || edit.row != ofTable) {
            continue;
        }
        if (edit.column == Edit::removal) {
            return {};
        }
        values[static_cast<std::size_t>(edit.column)] = edit.value;
    }
    return values;
}

void writeRow(std::string_view table, std::vector<std::string> const& values, std::uint64_t number,
              GeneratedFile& file) {
    file.print(FMT_COMPILE("INSERT INTO {} VALUES ("), table);
    char const* separator = ""; // a view of nothing has no address to format
    for (auto const& value : values) {
        if (value.empty()) {
            file.print(FMT_COMPILE("{}NULL"), separator);
        } else {
            file.print(FMT_COMPILE("{}'{}'"), separator, filledIn(value, number));
        }
        separator = ", ";
    }
    file.write(");\n");
}

std::string edrOf(std::array<Edit, 5> const& edits, std::uint64_t number) {
    PlantedEdr members;
    for (auto const& member : edrMembers) {
        members[std::string(member.name)] = member.json;
    }
    for (auto const& edit : edits) {
        auto const member = members.find(edit.target);
        if (member == members.end()) {
            continue;
        }
        if (edit.column == Edit::removal) {
            members.erase(member);
        } else {
            // Another element before the one that is there.
            member->second = std::string(edit.value) + "," + member->second;
        }
    }
    auto const text = [&](std::string_view name) {
        auto const member = members.find(name);
        return member == members.end() ? std::string()
                                       : fmt::format(R"(,"{}":{})", name, member->second);
    };
    auto const packets = members.find("CP");
    auto const line = fmt::format(
        R"({{"RECORD":"DETAIL"{}{},"UTC_TIME_OFFSET":"+0000","INTERN_SERVICE_CODE":"TEL",)"
        R"("SERVICE_TYPE":"/service/telco","EVENT_TYPE":"/event/session/telco",)"
        R"("INTERN_BALANCE_GROUP_ID":"1_82#","CUST_A":[{{"ACCOUNT_PARENT_ID":"1_81#",)"
        R"("INTERN_FOUND_PP_INDEX":"0"{}{}{}}}],"ASS_CBD":[{{"RECORD_TYPE":"981","CP":[{}]}}]}})",
        text("A_NUMBER"), text("CHARGING_START_TIMESTAMP"), text("PRODUCT"), text("DL"), text("SL"),
        packets == members.end() ? std::string() : packets->second);
    return filledIn(line, number);
}

} // namespace

std::uint64_t plantedEvents(std::uint32_t ofEachKind) {
    return std::uint64_t{ofEachKind} * plantedKinds.size();
}

std::uint64_t writePlantedRows(std::uint32_t ofEachKind, GeneratedFile& file) {
    std::uint64_t rows = 0;
    file.write("\n-- What events with planted errors refer to.\nBEGIN;\n");
    forEachEvent(ofEachKind, [&](PlantedKind const& kind, std::uint64_t number) {
        std::map<std::string_view, std::size_t> rowsOfTable;
        for (auto const& row : plantedRows) {
            auto const values = editedRow(kind, row, rowsOfTable[row.table]++);
            if (!values.empty()) {
                writeRow(row.table, values, number, file);
                ++rows;
            }
        }
    });
    file.write("COMMIT;\n");
    return rows;
}

void writePlantedEdrs(std::uint32_t ofEachKind, GeneratedFile& file) {
    forEachEvent(ofEachKind, [&](PlantedKind const& kind, std::uint64_t number) {
        if (kind.isAfterAnother) {
            file.print(FMT_COMPILE("{}\n"), edrOf({}, number));
        }
        file.print(FMT_COMPILE("{}\n"), edrOf(kind.edits, number));
    });
}

void writePlantedList(std::uint32_t ofEachKind, GeneratedFile& file) {
    std::string before;
    forEachEvent(ofEachKind, [&](PlantedKind const& kind, std::uint64_t number) {
        bool const hasIdentifier = kind.edits.front().target != "A_NUMBER";
        auto const key = (hasIdentifier ? filledIn("49172#", number) : std::string()) + "\tTEL\n";
        // Events without an identifier are one event to the plug-in.
        if (hasIdentifier || key != before) {
            for (auto const name : {kind.name, kind.besides}) {
                if (!name.empty()) {
                    file.print(FMT_COMPILE("{}\t{}"), name, key);
                }
            }
        }
        before = key;
    });
}

} // namespace host
