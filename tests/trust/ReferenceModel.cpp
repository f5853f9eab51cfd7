#include "ReferenceModel.h"

#include <algorithm>
#include <concepts>
#include <cstdlib>
#include <ctime>
#include <limits>

namespace trust {

namespace {

std::string const nothing;

std::string const& fieldOf(EdrBlock const& block, std::string const& name) {
    auto const found = block.fields.find(name);
    return found == block.fields.end() ? nothing : found->second;
}

std::vector<EdrBlock> const& blocksOf(EdrBlock const& block, std::string const& name) {
    static std::vector<EdrBlock> const none;
    auto const found = block.blocks.find(name);
    return found == block.blocks.end() ? none : found->second;
}

// The block at that position, or one without anything.
EdrBlock const& blockAt(EdrBlock const& block, std::string const& name, long position = 0) {
    static EdrBlock const none;
    auto const& blocks = blocksOf(block, name);
    bool const isThere = position >= 0 && position < static_cast<long>(blocks.size());
    return isThere ? blocks[static_cast<std::size_t>(position)] : none;
}

// The whole text as one decimal number within the limits, with an optional sign; else the default.
template <class Number>
Number numberOr(Number otherwise, std::string const& text) {
    auto const digits = text.substr(text.find_first_of("+-") == 0 ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos) {
        return otherwise;
    }
    using Limits = std::numeric_limits<Number>;
    __extension__ using Wide = __int128;
    Wide value = 0;
    for (char const digit : digits) {
        value = value * 10 + (digit - '0');
        if (value > Wide{std::numeric_limits<unsigned long>::max()}) {
            return otherwise;
        }
    }
    value = text.front() == '-' ? -value : value;
    return value < Wide{Limits::min()} || value > Wide{Limits::max()} ? otherwise
                                                                      : static_cast<Number>(value);
}

unsigned long idIn(std::string const& text) {
    auto const underscore = text.find('_');
    return underscore == std::string::npos || underscore + 1 == text.size()
               ? 0
               : static_cast<unsigned long>(
                     std::strtol(text.c_str() + underscore + 1, nullptr, 10));
}

// Seconds since 1970 of YYYYMMDDHHMMSS; 0 for earlier times and for other texts.
long timeOf(std::string const& text) {
    if (text.size() != 14 || text.find_first_not_of("0123456789") != std::string::npos) {
        return 0;
    }
    std::tm parts{};
    int* const members[] = {&parts.tm_mon, &parts.tm_mday, &parts.tm_hour, &parts.tm_min,
                            &parts.tm_sec};
    parts.tm_year = std::stoi(text.substr(0, 4)) - 1900;
    for (std::size_t i = 0; i < 5; ++i) {
        *members[i] = std::stoi(text.substr(4 + 2 * i, 2));
    }
    parts.tm_mon -= 1;
    auto normal = parts;
    auto const seconds = timegm(&normal);
    bool const isTime = normal.tm_mon == parts.tm_mon && normal.tm_mday == parts.tm_mday &&
                        normal.tm_hour == parts.tm_hour && normal.tm_min == parts.tm_min &&
                        normal.tm_sec == parts.tm_sec;
    return isTime ? std::max(0L, seconds) : 0;
}

unsigned long startTimeOf(EdrBlock const& detail) {
    long const offset = numberOr<int>(0, fieldOf(detail, "UTC_TIME_OFFSET"));
    long const size = std::abs(offset) / 100 * 3600 + std::abs(offset) % 100 * 60;
    return static_cast<unsigned long>(timeOf(fieldOf(detail, "CHARGING_START_TIMESTAMP")) -
                                      (offset < 0 ? -size : size));
}

// The configured types but the default, then the default.
std::vector<std::string> typesOf(std::optional<std::string> const& list, std::string const& last) {
    std::vector<std::string> types;
    if (list) {
        std::string rest = *list + ",";
        for (auto comma = rest.find(','); comma != std::string::npos; comma = rest.find(',')) {
            if (auto const piece = rest.substr(0, comma); piece != last) {
                types.push_back(piece);
            }
            rest.erase(0, comma + 1);
        }
    }
    types.push_back(last);
    return types;
}

bool isIn(std::vector<std::string> const& list, std::string const& text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

std::string text(std::string const& value) {
    return value;
}
template <std::integral Number>
std::string text(Number value) {
    return std::to_string(value);
}

template <class... Parts>
void line(std::string& out, Parts const&... parts) {
    (out.append(text(parts)), ...);
    out += '\n';
}

template <class List>
std::string listed(std::string const& operation, List const& values) {
    std::string list;
    for (auto const& value : values) {
        list += (&value == values.data() ? "" : ",") + text(value);
    }
    return operation + "{" + list + "}";
}

std::string priceModelList(std::vector<std::string> const& codes) {
    std::string list;
    for (auto const& code : codes) {
        list += code + "   ";
    }
    return list;
}

} // namespace

struct ReferenceModel::SharingNames {
    std::string ownerBlock, ownerPrefix, itemBlock, itemId;
    bool isDiscount;
};

ReferenceModel::ReferenceModel(ModelConfiguration const& configuration)
    : configurationM(configuration),
      capacityM(numberOr<unsigned long>(10, configuration.numberOfEvents.value_or(""))),
      recordTypesM(typesOf(configuration.recordTypes, "981")),
      ratePlanTypesM(typesOf(configuration.ratePlanTypes, "R")) {
}

void ReferenceModel::clearData() {
    queueM.clear();
    recordsM.clear();
}

void ReferenceModel::process(EdrTree const& edr) {
    auto const& detail = edr.detail;
    auto const service = configurationM.customerFields.find(fieldOf(detail, "INTERN_SERVICE_CODE"));
    if (edr.recordKind != 3 || service == configurationM.customerFields.end()) {
        return;
    }
    auto const* holder = &detail;
    auto path = service->second;
    for (; path.size() > 1; path.erase(path.begin())) {
        holder = &blockAt(*holder, path.front());
    }
    Key const key{fieldOf(*holder, path.front()), service->first};
    if (!takeKey(key)) {
        return;
    }
    auto const& customer = blockAt(detail, "CUST_A");
    auto const index = numberOr<long>(0, fieldOf(customer, "INTERN_FOUND_PP_INDEX"));
    auto const& product = blockAt(customer, "PRODUCT", index);
    auto& record = recordsM[key];
    record.eventType = fieldOf(detail, "EVENT_TYPE");
    record.serviceType = fieldOf(product, "SERVICE_TYPE");
    record.serviceId = idIn(fieldOf(product, "SERVICE_ID"));
    record.startTime = startTimeOf(detail);
    record.accountId = idIn(fieldOf(customer, "ACCOUNT_PARENT_ID"));
    record.balanceGroupId = idIn(fieldOf(detail, "INTERN_BALANCE_GROUP_ID"));
    record.priceModels.clear();
    record.ownDiscounts.clear();
    record.owners.clear();
    takeSharing(record, customer, {"DL", "DISCOUNT_OWNER_", "PD", "DISCOUNT_ID", true});
    takeSharing(record, customer, {"SL", "SPONSOR_OWNER_", "SD", "SPONSORSHIP_ID", false});
    takeProduct(record, detail);
}

// Puts the key to the queue's front; false when nothing is to be captured.
bool ReferenceModel::takeKey(Key const& key) {
    auto const known = std::find(queueM.begin(), queueM.end(), std::optional<Key>(key));
    if (known != queueM.end()) {
        queueM.erase(known);
    } else if (!queueM.empty() && queueM.size() >= capacityM) {
        auto const oldest = queueM.back();
        queueM.pop_back();
        if (!oldest) {
            queueM.push_front(std::nullopt);
            return false;
        }
        recordsM.erase(*oldest);
    } else if (capacityM == 0) {
        queueM.push_front(std::nullopt);
        return false;
    }
    queueM.push_front(key);
    return true;
}

void ReferenceModel::takeSharing(Record& record, EdrBlock const& customer,
                                 SharingNames const& names) const {
    for (auto const& block : blocksOf(customer, names.ownerBlock)) {
        auto const accountId = idIn(fieldOf(block, names.ownerPrefix + "ACCT_ID"));
        bool const isOwn = accountId == record.accountId;
        auto const ownerId = idIn(fieldOf(block, names.ownerPrefix + "ID"));
        if (!isOwn) {
            Owner const met{accountId,
                            idIn(fieldOf(block, "BALANCE_GROUP_ID")),
                            fieldOf(block, names.ownerPrefix + "TYPE"),
                            {}};
            record.owners.emplace(ownerId, met);
        }
        for (auto const& item : blocksOf(block, names.itemBlock)) {
            Item const taken{idIn(fieldOf(item, names.itemId)), fieldOf(item, "DISCOUNT_MODEL"),
                             names.isDiscount};
            if (!isOwn) {
                record.owners.at(ownerId).items.push_back(taken);
            } else if (names.isDiscount) {
                record.ownDiscounts.push_back(taken);
            }
        }
    }
}

void ReferenceModel::takeProduct(Record& record, EdrBlock const& detail) const {
    for (auto const& breakdown : blocksOf(detail, "ASS_CBD")) {
        if (!isIn(recordTypesM, fieldOf(breakdown, "RECORD_TYPE"))) {
            continue;
        }
        for (auto const& packet : blocksOf(breakdown, "CP")) {
            if (isIn(ratePlanTypesM, fieldOf(packet, "RATEPLAN_TYPE"))) {
                record.ratePlan = fieldOf(packet, "RATEPLAN_CODE");
                record.internalRatePlan = fieldOf(packet, "INTERN_RATEPLAN");
                record.version = numberOr<long>(0, fieldOf(packet, "INTERN_RATEPLAN_VERSION"));
                record.impactCategory = fieldOf(packet, "IMPACT_CATEGORY");
                record.serviceCodeUsed = fieldOf(packet, "SERVICE_CODE_USED");
                record.serviceClassUsed = fieldOf(packet, "SERVICE_CLASS_USED");
                record.priceModels.push_back(fieldOf(packet, "PRICEMODEL_CODE"));
            }
        }
    }
}

namespace {

template <class Record>
void eventRows(std::string& out, Record const& record) {
    line(out, "Event Service Id         = ", record.serviceId);
    line(out, "Event Service Type       = ", record.serviceType);
    line(out, "Event Event Type         = ", record.eventType);
    line(out, "Charging Start Time Stamp= ", record.startTime);
    line(out, "Event Account id         = ", record.accountId);
    line(out, "Event Balance Group id   = ", record.balanceGroupId);
}

template <class Owner>
void ownerRows(std::string& out, unsigned long id, Owner const& owner) {
    line(out, "\n    Sharing owner info:");
    line(out, "\n    Account id : ", owner.accountId);
    line(out, "\n    Owner id   : ", id);
    line(out, "\n    Owner Type : ", owner.type);
    line(out, "\n    BalGrp id  : ", owner.balanceGroupId);
}

template <class Item>
void sharedItemRows(std::string& out, Item const& item) {
    line(out, "     Discount/Sponsorship Object id    : ", item.id);
    line(out, "     Discount/Sponsorship model name   : ", item.model);
}

template <class Item>
void ownDiscountRows(std::string& out, Item const& item) {
    line(out, "    Discount Object id    : ", item.id);
    line(out, "    Discount model name   : ", item.model);
}

} // namespace

std::string ReferenceModel::eventReport() const {
    std::string out;
    for (auto key = queueM.rbegin(); key != queueM.rend() && *key; ++key) {
        auto const& record = recordsM.at(**key);
        line(out, std::string(70, '-'));
        line(out, "Event type= Identifier=", (*key)->first, "   Service Code = ", (*key)->second);
        eventRows(out, record);
        line(out, "\n\n  Used Rating product info:");
        line(out, "    Used Rate Plan code   : ", record.ratePlan);
        line(out, "    Used Price model codes: ", priceModelList(record.priceModels));
        line(out, "\n\n  Event's own Discount:");
        for (auto const& item : record.ownDiscounts) {
            ownDiscountRows(out, item);
        }
        line(out, "\n\n  DiscountSharing & Sponsorship:");
        for (auto const& [id, owner] : record.owners) {
            ownerRows(out, id, owner);
            for (auto const& item : owner.items) {
                sharedItemRows(out, item);
            }
        }
        line(out, std::string(70, '-'));
    }
    return out;
}

// The module finds the width 2 and blanks to fill with.
void ReferenceModel::Dump::call(std::string const& what) {
    calls.push_back(what + " w2' '");
    text += " 7";
}

std::string ReferenceModel::memoryDump(std::vector<std::string>& calls) const {
    Dump dump{{}, calls};
    int number = 0;
    for (auto key = queueM.rbegin(); key != queueM.rend() && *key; ++key) {
        line(dump.text, "Begin: ", ++number);
        line(dump.text, std::string(70, '='));
        line(dump.text, "Event type: Identifier= ", (*key)->first,
             "   Service Code = ", (*key)->second);
        dumpRecord(dump, **key, recordsM.at(**key));
        line(dump.text, "\n");
    }
    return dump.text;
}

void ReferenceModel::dumpRecord(Dump& dump, Key const& key, Record const& record) const {
    auto& out = dump.text;
    eventRows(out, record);
    line(out, "\nEvent Account Info:");
    line(out, std::string(20, '-'));
    dump.call("account(" + key.first + "," + text(static_cast<long>(record.serviceId)) + "," +
              record.serviceType + "," + record.eventType + ")");
    line(out);
    line(out, "\nUsed Rating product Info:");
    line(out, std::string(25, '-'));
    line(out, "Used Rate Plan code: ", record.ratePlan,
         " , Intern RatePlan Id: ", record.internalRatePlan,
         " , Intern RatePlan Version: ", record.version,
         " , Impact Catagory: ", record.impactCategory);
    if (configurationM.hasRateplan) {
        dump.call("rateplan(" + record.ratePlan + "," + text(record.version) + "," +
                  record.serviceCodeUsed + "," + record.serviceClassUsed + "," +
                  record.impactCategory + ")");
        line(out);
    }
    line(out, "Used Price model codes: ", priceModelList(record.priceModels));
    line(out, std::string(23, '-'), " ");
    if (configurationM.hasPrice) {
        dump.call(listed("price", record.priceModels));
        line(out);
    }
    if (configurationM.hasBalance) {
        line(out, "\n\nEvent's owner Balance Information:", record.balanceGroupId);
        dump.call(listed("balance", std::vector{record.balanceGroupId}));
    }
    if (configurationM.hasDiscount) {
        dumpOwnDiscounts(dump, record);
    }
    line(out, "\n\nAll DiscountSharing & Sponsorship Information:");
    line(out, std::string(50, '-'));
    for (auto const& [id, owner] : record.owners) {
        dumpOwner(dump, record, id, owner);
    }
}

void ReferenceModel::dumpOwnDiscounts(Dump& dump, Record const& record) const {
    std::vector<unsigned long> ids;
    std::vector<std::string> models;
    line(dump.text, "\n\nEvent's own Discount:");
    line(dump.text, std::string(21, '-'));
    for (auto const& item : record.ownDiscounts) {
        ownDiscountRows(dump.text, item);
        line(dump.text);
        ids.push_back(item.id);
        models.push_back(item.model);
    }
    dump.call(listed("discounts", ids));
    dump.call(listed("models", models));
}

void ReferenceModel::dumpOwner(Dump& dump, Record const& record, unsigned long id,
                               Owner const& owner) const {
    std::vector<unsigned long> discounts, sponsorships;
    std::vector<std::string> models;
    ownerRows(dump.text, id, owner);
    if (configurationM.hasBalance) {
        line(dump.text, "\n\nSharing owner Balance Information:", record.balanceGroupId);
        dump.call(listed("balance", std::vector{owner.balanceGroupId}));
    }
    for (auto const& item : owner.items) {
        sharedItemRows(dump.text, item);
        (item.isDiscount ? discounts : sponsorships).push_back(item.id);
        models.push_back(item.model);
    }
    if (configurationM.hasDiscount) {
        dump.call(listed("discounts", discounts));
        dump.call(listed("sponsorships", sponsorships));
        dump.call(listed("models", models));
    }
}

} // namespace trust
