// What the plug-in must do, once more: plain values, searched from the front and copied at will.
// Slow, and meant to be checked by reading. It shares no code with the plug-in.
#pragma once

#include "EdrTree.h"

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace trust {

// The configuration, as the registry gives it; absent is the default.
struct ModelConfiguration {
    std::optional<std::string> numberOfEvents;
    std::optional<std::string> recordTypes;
    std::optional<std::string> ratePlanTypes;
    bool hasRateplan = false;
    bool hasPrice = false;
    bool hasBalance = false;
    bool hasDiscount = false;
    // The customer-A field of each service, below "DETAIL": the names of blocks, then the field's.
    std::map<std::string, std::vector<std::string>> customerFields;
};

class ReferenceModel {
public:
    explicit ReferenceModel(ModelConfiguration const& configuration);

    void process(EdrTree const& edr);
    void clearData();
    std::size_t queued() const { return queueM.size(); }

    std::string eventReport() const;
    // Every module writes the number 7. What each was asked is added to the calls.
    std::string memoryDump(std::vector<std::string>& calls) const;

private:
    using Key = std::pair<std::string, std::string>;
    struct Item {
        unsigned long id;
        std::string model;
        bool isDiscount;
    };
    struct Owner {
        unsigned long accountId;
        unsigned long balanceGroupId;
        std::string type;
        std::vector<Item> items;
    };
    struct Record {
        std::string eventType, serviceType;
        unsigned long serviceId = 0, startTime = 0, accountId = 0, balanceGroupId = 0;
        std::string ratePlan, internalRatePlan, impactCategory, serviceCodeUsed, serviceClassUsed;
        long version = 0;
        std::vector<std::string> priceModels;
        std::vector<Item> ownDiscounts;
        std::map<unsigned long, Owner> owners;
    };
    // The text of a dump and what was asked for it.
    struct Dump {
        std::string text;
        std::vector<std::string>& calls;

        void call(std::string const& what);
    };
    // How an owner list and the items in it are called.
    struct SharingNames;

    bool takeKey(Key const& key);
    void takeSharing(Record& record, EdrBlock const& customer, SharingNames const& names) const;
    void takeProduct(Record& record, EdrBlock const& detail) const;
    void dumpRecord(Dump& dump, Key const& key, Record const& record) const;
    void dumpOwnDiscounts(Dump& dump, Record const& record) const;
    void dumpOwner(Dump& dump, Record const& record, unsigned long id, Owner const& owner) const;

    ModelConfiguration configurationM;
    std::size_t capacityM;
    std::vector<std::string> recordTypesM;
    std::vector<std::string> ratePlanTypesM;
    std::deque<std::optional<Key>> queueM; // front: seen last
    std::map<Key, Record> recordsM;
};

} // namespace trust
