// The diagnostic function plug-in FCT_DataDump. It watches the EDRs that pass its pipeline stage,
// remembers the most recent distinct events and what they were rated with, and on an operator's
// command writes a report of them, or a dump of what the host's data modules hold in memory for
// exactly those events. It never changes an EDR.
//
// The host builds the plug-in through the entry FCT_DataDumpModuleStart and owns it. The plug-in
// owns its configuration, its field handles and the captured events; data modules, EDR factory and
// database connection are the host's. It starts no thread and guards nothing by a lock of its own:
// processEdrContainer and registryUpdate of one plug-in must not run at the same time.
//
// It relies on nothing in the host but the operations that it calls. A text that the host returns
// may be a value, or a reference to a buffer that the host's next text goes into: it is used or
// copied before the next call.
#pragma once

#include "BAS/DateTime.h"
#include "BAS/String.h"
#include "EDR/BlockIndex.h"
#include "EDR/Container.h"
#include "EDR/Index.h"
#include "EDR/Iterator.h"
#include "PLG/FunctionPlugIn.h"
#include "RW/RWTPtrOrderedVector.h"
#include "RW/RWTValOrderedVector.h"

#include <cstdint>
#include <iosfwd>
#include <list>
#include <map>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

class RWDBReader;
namespace DAT::Account {
class BatchPlugIn;
}
namespace DAT::Balance {
class PlugIn;
}
namespace DAT::Discount {
class PlugIn;
}
namespace DAT::Rating {
class PricePlugIn;
class RateplanPlugIn;
} // namespace DAT::Rating
namespace DBC {
class DatabasePlugIn;
}
namespace FCT::Account {
class ServiceFieldMapEntry;
}

namespace FCT::DataDump {

// ---- What is kept of one event -----------------------------------------------------------------

enum class PricingInfoType {
    // The rating product used for the event.
    usedProduct = 1,
    // A discount of the event's own account.
    ownDiscount = 2,
    // A discount or sponsorship that another account shares with the event's account.
    sharedPrice = 3
};

enum class AccountType {
    // The account that the event belongs to.
    eventAccount = 1,
    // An owner account that shares a discount with the event's account or sponsors it.
    sharingAccount = 2
};

extern BAS::String const SharingTypeDiscount;
extern BAS::String const SharingTypeSponsor;

// The number of an identifier text such as "1_2001": what follows the first underscore, read as
// far as it is a decimal number; 0 when there is none.
unsigned long objectNumber(BAS::String const& identifier);

// The identification of an account by object numbers.
template <AccountType type>
struct BaseAccountInfo {
    unsigned long accountId = 0;
    unsigned long balanceGroupId = 0;
};

// A priced item: the number of its instance, and the name of its rate plan or discount model.
template <PricingInfoType type>
struct BasePriceInfo {
    BasePriceInfo() = default;
    BasePriceInfo(BasePriceInfo const&) = default;
    BasePriceInfo(BasePriceInfo&&) noexcept(std::is_nothrow_move_constructible_v<BAS::String>) =
        default;
    BasePriceInfo& operator=(BasePriceInfo const&) = default;
    BasePriceInfo&
    operator=(BasePriceInfo&&) noexcept(std::is_nothrow_move_assignable_v<BAS::String>) = default;
    virtual ~BasePriceInfo() = default;

    // 0 for the rating product, which has no instance.
    unsigned long objectId = 0;
    BAS::String name;
};

// The rating product that the event's charge was computed with; name is the rate plan code.
struct ProductInfo : BasePriceInfo<PricingInfoType::usedProduct> {
    // Empties everything but the price models.
    void clearRatePlan();

    BAS::String internalRatePlan;
    long ratePlanVersion = 0;
    BAS::String impactCategory;
    BAS::String serviceCodeUsed;
    BAS::String serviceClassUsed;
    // In the order met, duplicates included.
    RWTValOrderedVector<BAS::String> priceModelCodes;
};

using OwnDiscountInfo = BasePriceInfo<PricingInfoType::ownDiscount>;

// A list that is emptied and filled again for every EDR of its event: its elements keep their
// storage, so that filling it with elements of like size allocates nothing; only an unusually long
// list gives its storage back.
template <class Element>
class RefillList {
public:
    RefillList() = default;
    RefillList(RefillList const&) = delete;
    RefillList(RefillList&& other) noexcept
        : elementsM(std::move(other.elementsM)), countM(std::exchange(other.countM, 0)) {}
    RefillList& operator=(RefillList const&) = delete;
    RefillList& operator=(RefillList&&) = delete;

    // Appends an element, which still holds what it held before the list was emptied: the caller
    // sets every field.
    Element& append() {
        if (elementsM.begin() + static_cast<std::ptrdiff_t>(countM) == elementsM.end()) {
            elementsM.emplace_back();
        }
        return elementsM[countM++];
    }
    void clear() noexcept {
        constexpr std::size_t usualLength = 32;
        if (std::exchange(countM, 0) > usualLength) {
            std::vector<Element>().swap(elementsM);
        }
    }

    std::size_t entries() const noexcept { return countM; }
    Element& operator[](std::size_t position) { return elementsM[position]; }
    Element const& operator[](std::size_t position) const { return elementsM[position]; }

private:
    std::vector<Element> elementsM;
    std::size_t countM = 0;
};

// What the event's own account contributed.
struct EventAccountInfo : BaseAccountInfo<AccountType::eventAccount> {
    EventAccountInfo() = default;
    EventAccountInfo(EventAccountInfo const&) = delete;
    EventAccountInfo& operator=(EventAccountInfo const&) = delete;
    virtual ~EventAccountInfo() = default;

    ProductInfo productInfo;
    RefillList<OwnDiscountInfo> ownDiscounts;
};

// An owner that shares discounts with the event's account or sponsors it. Owners are the same when
// their owner objects are: that merges what one owner shares and what it sponsors.
struct SharingAccountInfo : BaseAccountInfo<AccountType::sharingAccount> {
    SharingAccountInfo() = default;
    SharingAccountInfo(SharingAccountInfo const&) = default;
    SharingAccountInfo(SharingAccountInfo&&) = default;
    SharingAccountInfo& operator=(SharingAccountInfo const&) = default;
    SharingAccountInfo& operator=(SharingAccountInfo&&) = default;
    virtual ~SharingAccountInfo() = default;

    unsigned long ownerId = 0;
    BAS::String ownerType;

    friend bool operator<(SharingAccountInfo const& a, SharingAccountInfo const& b) noexcept {
        return a.ownerId < b.ownerId;
    }
};

// A shared discount or a sponsorship.
template <PricingInfoType type>
struct SharedPriceInfo : BasePriceInfo<type> {
    // SharingTypeDiscount or SharingTypeSponsor.
    BAS::String sharingType;
};

using SharedItemInfo = SharedPriceInfo<PricingInfoType::sharedPrice>;

// The owners of one event with what each shares, in ascending order of owner id.
class SharingMap {
public:
    struct Entry {
        SharingAccountInfo owner;
        // In the order met.
        RefillList<SharedItemInfo> items;
    };

    // The entry of that owner id, which stands until the next one is asked for. A new one has no
    // items, and the fields of its owner other than the id are for the caller to set.
    struct Place {
        Entry& entry;
        bool isNew;
    };
    Place findOrInsert(unsigned long ownerId);
    void clear() noexcept;

    std::size_t entries() const noexcept { return orderM.size(); }
    // By position in ascending order of owner id.
    Entry const& operator[](std::size_t position) const { return entriesM[orderM[position]]; }

private:
    // In the order of insertion, so that a new owner leaves the others where they are.
    RefillList<Entry> entriesM;
    // Positions in entriesM, in ascending order of owner id.
    std::vector<std::uint32_t> orderM;
};

// The state of one captured event, as its latest EDR left it.
struct EventDetailRecord {
    EventDetailRecord() = default;
    EventDetailRecord(EventDetailRecord const&) = delete;
    EventDetailRecord& operator=(EventDetailRecord const&) = delete;

    // Empties the lists for a new EDR of the same key. Texts and numbers keep their values until
    // the new EDR's overwrite them.
    void prepareForRefill();
    // Takes another key's texts and empties the lists. The rest keeps the values of the key before
    // until this one's EDR overwrites them.
    void startAnew(BAS::String const& customer, BAS::String const& service);

    BAS::String identifier;
    BAS::String eventType;
    BAS::String serviceType;
    unsigned long serviceId = 0;
    BAS::String serviceCode;
    // Seconds since 1970-01-01 00:00:00 GMT.
    unsigned long chargingStartTime = 0;
    // Always empty.
    BAS::String spareText;
    EventAccountInfo accountInfo;
    SharingMap sharingMap;
};

// ---- The bounded store of events ---------------------------------------------------------------

// The customer identifier of the event's service, and the internal service code.
using EventKey = std::pair<BAS::String, BAS::String>;

struct CapturedEvent;

// The order in which events were seen: the front is the most recently seen one, the back the one
// seen longest ago. The events are the event map's. A null entry stands for no event and equals no
// key; there is at most one.
using EventQueue = std::list<CapturedEvent*>;

// A key object with what is kept of it. The event map owns it; it keeps its address when it is
// given another key.
struct CapturedEvent : EventKey {
    std::size_t keyHash = 0;
    EventQueue::iterator placeInQueue;
    // False while there is no record, or one that is not filled to its end.
    bool hasRecord = false;
    EventDetailRecord record;
};

// Owns the key objects and their records. No two keys are equal. Finding, adding and renaming take
// constant time; renaming allocates nothing but room for a longer text.
class EventMap {
public:
    // A key with its hash, so that several operations with one key compute it once; stands as
    // long as the key does.
    struct HashedKey {
        HashedKey(EventKey const& key);

        EventKey const& key;
        std::size_t hash;
    };

    // The key object of equal value, or null.
    CapturedEvent* find(HashedKey const& sought) const;

    // A new key object, without a record. No equal key may be in the map. A failure leaves the map
    // as it was.
    CapturedEvent& add(HashedKey const& added);
    // Takes the record away and overwrites the key object with the new key, of which no equal may
    // be in the map. If that fails, the key object is gone.
    void rename(CapturedEvent& event, HashedKey const& renamed);
    void clear() noexcept;

    std::size_t entries() const noexcept { return eventsM.size(); }

private:
    // A hash table with linear probing, at most half full. A free slot has no event.
    struct Slot {
        CapturedEvent* event = nullptr;
        std::size_t hash = 0;
    };

    std::size_t slotAfter(std::size_t slot) const noexcept {
        return (slot + 1) & (slotsM.size() - 1);
    }
    std::size_t homeOf(std::size_t hash) const noexcept { return hash & (slotsM.size() - 1); }
    void reserve(std::size_t events);
    void enter(CapturedEvent& event) noexcept;
    void leave(CapturedEvent const& event) noexcept;

    std::vector<std::unique_ptr<CapturedEvent>> eventsM;
    // A power of two, or none.
    std::vector<Slot> slotsM;
};

// ---- The EDR handles ---------------------------------------------------------------------------

// The handles of the EDR blocks and fields that are resolved at start-up; each has its binding in
// the tables of the source file.
struct BlockHandles {
    EDR::BlockIndex blkAssCbd;
    EDR::BlockIndex blkCbdCp;
    EDR::BlockIndex blkCbdDp;
    EDR::BlockIndex blkDpSubBalance;
    EDR::BlockIndex blkCustADl;
    EDR::BlockIndex blkDlPd;
    EDR::BlockIndex blkCustASl;
    EDR::BlockIndex blkSlSd;
};

struct FieldHandles {
    EDR::Index idxANumber;
    EDR::Index idxBNumber;
    EDR::Index idxInternServiceCode;
    EDR::Index idxServiceType;
    EDR::Index idxEventType;
    EDR::Index idxConnectSubType;
    EDR::Index idxBalanceGroupId;
    EDR::Index idxChargingStart;
    EDR::Index idxChargingEnd;
    EDR::Index idxItemTag;
    EDR::Index idxObjectCacheType;
    EDR::Index idxUtcTimeOffset;
    EDR::Index idxFoundPPIndex;
    EDR::Index idxProductServiceType;
    EDR::Index idxProductServiceId;
    EDR::Index idxAccountParentId;
    EDR::Index idxDlBalanceGroupId;
    EDR::Index idxDlDiscountOwnerAcctId;
    EDR::Index idxDlDiscountOwnerId;
    EDR::Index idxDlDiscountOwnerType;
    EDR::Index idxPdDiscountModel;
    EDR::Index idxPdDiscountId;
    EDR::Index idxSlBalanceGroupId;
    EDR::Index idxSlSponsorOwnerAcctId;
    EDR::Index idxSlSponsorOwnerId;
    EDR::Index idxSlSponsorOwnerType;
    EDR::Index idxSdDiscountModel;
    EDR::Index idxSdSponsorshipId;
    EDR::Index idxCbdRecordType;
    EDR::Index idxCpRateplanType;
    EDR::Index idxCpRateplanCode;
    EDR::Index idxCpPricemodelCode;
    EDR::Index idxCpPricemodelType;
    EDR::Index idxCpInternRateplan;
    EDR::Index idxCpInternRateplanVersion;
    EDR::Index idxCpImpactCategory;
    EDR::Index idxCpServiceCodeUsed;
    EDR::Index idxCpServiceClassUsed;
};

// ---- The plug-in -------------------------------------------------------------------------------

class PlugIn : public PLG::FunctionPlugIn {
public:
    // Reads the configuration, binds the EDR fields and loads the service field map, each step only
    // while the one before succeeded; a failed step leaves the plug-in unusable, with the reason as
    // its status. Throws only what the framework throws.
    PlugIn(BAS::String const& name, BAS::String const& version);
    ~PlugIn() override;

    bool readRegistry() override;
    bool setEDRContainerIndices() override;
    // The commands DumpEvents, Dump (both with the path of the file to write) and ClearData.
    bool registryUpdate(BAS::RegistryEntry const* update, BAS::ProtectedBool& workDone) override;
    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) override;

protected:
    struct PointedTextLess {
        bool operator()(BAS::String const* a, BAS::String const* b) const { return *a < *b; }
    };
    using ServiceFieldMap =
        std::map<BAS::String const*, FCT::Account::ServiceFieldMapEntry*, PointedTextLess>;

    // Start-up.
    // The object that a data-module key refers to: of that full name, else of that name in the data
    // pool. Null, with the error reported, when there is none.
    BAS::RegisteredObject* findRegisteredObject(BAS::String const& reference);
    bool bindIterators();
    bool initServiceFieldMap();

    // Capture.
    // The key object that now stands at the front of the queue for this key; null when nothing is
    // to be captured.
    CapturedEvent* checkUniquenessInQueue(EventKey const& key);
    // Puts a new key object to the front of the queue. No equal key may be there.
    CapturedEvent* addEvent(EventMap::HashedKey const& key);
    // Sets record to the key's record, ready to be filled. Always true.
    bool checkForEventAllocation(CapturedEvent* key, EventDetailRecord*& record);
    // The charging start in seconds since 1970-01-01 00:00:00 GMT.
    unsigned long getGMTStartTime(EDR::Container const* container) const;
    // Moves a date-time in the EDR's local time to GMT.
    void applyUTCOffset(BAS::DateTime& dateTime, EDR::Container const* container) const;
    // Fill the record's lists from the EDR's blocks. False when the EDR could not be walked.
    bool populateDiscAndSpon(EDR::Container* container, EventKey const* key,
                             EventDetailRecord* record);
    bool populateProductInfo(EDR::Container* container, EventKey const* key,
                             EventDetailRecord* record);

    // Output; both go from the event seen longest ago to the most recent one.
    void dumpAllEvents(std::ostream& out);
    void dumpAllInMemoryData(std::ostream& out);

    // Keys and entries live until the process ends.
    ServiceFieldMap serviceFieldMap;
    RWTValOrderedVector<BAS::String> cbdRecordTypes;
    RWTValOrderedVector<BAS::String> ratePlanTypes;
    // Always empty.
    BAS::String spareText;
    DBC::DatabasePlugIn* accountDatabase = nullptr;
    BlockHandles blocks;
    FieldHandles fields;
    EDR::Iterator itCbdCp;
    EDR::Iterator itDlPd;
    EDR::Iterator itSlSd;
    // The block positions at which the customer's product is read: the customer block, and the
    // product in it that rating selected for the current EDR.
    RWTValOrderedVector<long> currentObjects;
    // Null when not configured; not owned.
    DAT::Discount::PlugIn* discountDataModule = nullptr;
    DAT::Balance::PlugIn* balanceDataModule = nullptr;
    DAT::Account::BatchPlugIn* accountDataModule = nullptr;
    DAT::Rating::RateplanPlugIn* rateplanDataModule = nullptr;
    DAT::Rating::PricePlugIn* priceDataModule = nullptr;
    EventMap eventMap;
    EventQueue eventQueue;
    // The capacity of the event queue.
    unsigned long numberOfEvents = 3;
    // How many events of the report in progress are still to be written.
    long dumpCounter = 0;
    // The key of the EDR at hand; kept for its storage.
    EventKey currentKey;

private:
    enum class ErrorForm { statusThenLog, setStatus };
    // Where a list of owners with their items is found in an EDR, and what becomes of the items;
    // see the source file.
    struct OwnerBlocks;
    static OwnerBlocks const discountOwners;
    static OwnerBlocks const sponsorOwners;

    bool isValid() const;
    void setValid(bool valid);
    BAS::String ownName() const;
    // Sets the status under the plug-in's name, then writes it to the log.
    void recordAndLog(BAS::String const& messageName, BAS::Status::Severity severity,
                      BAS::String const& argument);
    // Records a status that the framework threw, under the plug-in's name, and writes it to the
    // pipeline's log.
    void reportThrown(BAS::Status status, bool log);

    void takeStartStep(bool (PlugIn::*step)());
    template <class Module>
    bool bindDataModule(BAS::RegistryEntry const* entry, Module*& module, ErrorForm errorForm);
    bool readServiceFields(BAS::String const& pipelineName);
    bool addServiceFields(RWDBReader& reader, BAS::String const& pipelineName);
    bool addServiceField(BAS::String const& serviceCode, BAS::String const& reference,
                         BAS::String const& fieldName);
    FCT::Account::ServiceFieldMapEntry* serviceEntry(BAS::String const& serviceCode);

    void capture(EDR::Container* container);
    CapturedEvent* replaceOldestEvent(EventMap::HashedKey const& key);
    bool populateOwners(EDR::Container* container, OwnerBlocks const& from,
                        EventDetailRecord& record);
    void takeChargePacket(ProductInfo& product);

    bool writeDumpFile(BAS::String const& path, BAS::ProtectedBool& workDone,
                       void (PlugIn::*writeReport)(std::ostream&));
};

} // namespace FCT::DataDump
