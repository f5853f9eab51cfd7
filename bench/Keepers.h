// Ways to keep events, to measure the plug-in's own against; see EventReading.h for what a keeper
// has.
#pragma once

#include "EventReading.h"

#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index/sequenced_index.hpp>
#include <boost/multi_index_container.hpp>

#include <algorithm>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

// A record of plain containers.
struct PlainRecord {
    struct Item {
        unsigned long id;
        BAS::String model;
        BAS::String sharingType;
    };
    struct Owner {
        unsigned long accountId;
        unsigned long balanceGroupId;
        BAS::String type;
        std::vector<Item> items;
    };
    BAS::String identifier, eventType, serviceType, serviceCode;
    unsigned long serviceId, accountId, balanceGroupId, startTime;
    BAS::String ratePlan, internalRatePlan, impactCategory, serviceCodeUsed, serviceClassUsed;
    long ratePlanVersion = 0;
    std::vector<BAS::String> priceModels;
    std::vector<Item> ownDiscounts;
    std::map<unsigned long, std::unique_ptr<Owner>> owners;
};

// Fills the record that a store hands out for an event. The store has PlainRecord& record(head).
template <class Store>
class RecordKeeper {
public:
    explicit RecordKeeper(std::size_t capacity) : storeM(capacity) {}

    void event(EventHead const& head) {
        recordM = &storeM.record(head);
        recordM->identifier = head.identifier;
        recordM->serviceCode = head.serviceCode;
        recordM->eventType = head.eventType;
        recordM->serviceType = head.serviceType;
        recordM->serviceId = head.serviceId;
        recordM->accountId = head.accountId;
        recordM->balanceGroupId = head.balanceGroupId;
        recordM->startTime = head.startTime;
    }
    void owner(OwnerBlock const& block, bool sponsors) {
        sharingTypeM =
            sponsors ? &FCT::DataDump::SharingTypeSponsor : &FCT::DataDump::SharingTypeDiscount;
        itemsM = nullptr;
        if (block.accountId == recordM->accountId) {
            itemsM = sponsors ? nullptr : &recordM->ownDiscounts;
            return;
        }
        auto& owner = recordM->owners[block.ownerId];
        if (owner == nullptr) {
            owner = std::make_unique<PlainRecord::Owner>(
                PlainRecord::Owner{block.accountId, block.balanceGroupId, block.ownerType, {}});
        }
        itemsM = &owner->items;
    }
    void item(unsigned long id, BAS::String const& model) {
        if (itemsM != nullptr) {
            itemsM->push_back({id, model, *sharingTypeM});
        }
    }
    void packet(ChargePacket const& packet) {
        recordM->ratePlan = packet.ratePlan;
        recordM->internalRatePlan = packet.internalRatePlan;
        recordM->ratePlanVersion = packet.ratePlanVersion;
        recordM->impactCategory = packet.impactCategory;
        recordM->serviceCodeUsed = packet.serviceCodeUsed;
        recordM->serviceClassUsed = packet.serviceClassUsed;
        recordM->priceModels.push_back(packet.priceModel);
    }

private:
    Store storeM;
    PlainRecord* recordM = nullptr;
    std::vector<PlainRecord::Item>* itemsM = nullptr;
    BAS::String const* sharingTypeM = nullptr;
};

inline void emptyLists(PlainRecord& record) {
    record.priceModels.clear();
    record.ownDiscounts.clear();
    record.owners.clear();
}

// A list of keys that is searched from its front and an ordered map from key to record.
class ListAndMap {
public:
    explicit ListAndMap(std::size_t capacity) : capacityM(capacity) {}

    PlainRecord& record(EventHead const& head) {
        Key const key(head.identifier, head.serviceCode);
        auto found = std::find_if(queueM.begin(), queueM.end(),
                                  [&](Key const* entry) { return *entry == key; });
        Key* front = nullptr;
        if (found != queueM.end()) {
            front = *found;
            queueM.erase(found);
        } else if (queueM.size() < capacityM) {
            front = keysM.emplace_back(std::make_unique<Key>(key)).get();
        } else {
            front = queueM.back();
            queueM.pop_back();
            mapM.erase(front);
            *front = key;
        }
        queueM.push_front(front);
        auto& record = mapM[front];
        if (record == nullptr) {
            record = std::make_unique<PlainRecord>();
        } else {
            emptyLists(*record);
        }
        return *record;
    }

private:
    using Key = std::pair<BAS::String, BAS::String>;
    struct PointedLess {
        bool operator()(Key const* a, Key const* b) const { return *a < *b; }
    };

    std::size_t capacityM;
    std::vector<std::unique_ptr<Key>> keysM;
    std::list<Key*> queueM;
    std::map<Key const*, std::unique_ptr<PlainRecord>, PointedLess> mapM;
};

// The usual recency store: one container with a sequence and a hash index.
class MultiIndexStore {
public:
    explicit MultiIndexStore(std::size_t capacity) : capacityM(capacity) {}

    PlainRecord& record(EventHead const& head) {
        auto& sequence = storeM.template get<0>();
        auto [place, inserted] =
            sequence.push_front({{head.identifier.str(), head.serviceCode.str()}, {}});
        if (!inserted) {
            sequence.relocate(sequence.begin(), place);
            emptyLists(*place->record);
        } else {
            place->record = std::make_unique<PlainRecord>();
            if (sequence.size() > capacityM) {
                sequence.pop_back();
            }
        }
        return *place->record;
    }

private:
    using Key = std::pair<std::string, std::string>;
    struct Entry {
        Key key;
        mutable std::unique_ptr<PlainRecord> record;
    };
    using Store = boost::multi_index_container<
        Entry,
        boost::multi_index::indexed_by<boost::multi_index::sequenced<>,
                                       boost::multi_index::hashed_unique<
                                           boost::multi_index::member<Entry, Key, &Entry::key>>>>;

    std::size_t capacityM;
    Store storeM;
};

} // namespace bench
