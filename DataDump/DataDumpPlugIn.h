// The diagnostic function plug-in FCT_DataDump. It watches the EDRs that pass its pipeline stage,
// remembers the most recent distinct events and what they were rated with, and on an operator's
// command writes a report of them, or a dump of what the host's data modules hold in memory for
// exactly those events. It never changes an EDR.
//
// The host builds the plug-in through the entry FCT_DataDumpModuleStart and owns it. The plug-in
// owns its configuration, its field handles and the captured events; data modules, EDR factory and
// database connection are the host's. It starts no thread and guards nothing by a lock of its own:
// processEdrContainer and registryUpdate of one plug-in must not run at the same time.
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

#include <iosfwd>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>

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
    BasePriceInfo(unsigned long id, BAS::String const& itemName) : objectId(id), name(itemName) {}
    BasePriceInfo(BasePriceInfo const&) = default;
    BasePriceInfo(BasePriceInfo&&) noexcept = default;
    BasePriceInfo& operator=(BasePriceInfo const&) = default;
    BasePriceInfo& operator=(BasePriceInfo&&) noexcept = default;
    virtual ~BasePriceInfo() = default;

    // 0 for the rating product, which has no instance.
    unsigned long objectId = 0;
    BAS::String name;
};

// The rating product that the event's charge was computed with; name is the rate plan code.
struct ProductInfo : BasePriceInfo<PricingInfoType::usedProduct> {
    BAS::String internalRatePlan;
    long ratePlanVersion = 0;
    BAS::String impactCategory;
    BAS::String serviceCodeUsed;
    BAS::String serviceClassUsed;
    // In the order met, duplicates included.
    RWTValOrderedVector<BAS::String> priceModelCodes;
};

using OwnDiscountInfo = BasePriceInfo<PricingInfoType::ownDiscount>;

// What the event's own account contributed.
struct EventAccountInfo : BaseAccountInfo<AccountType::eventAccount> {
    EventAccountInfo() = default;
    EventAccountInfo(EventAccountInfo const&) = delete;
    EventAccountInfo& operator=(EventAccountInfo const&) = delete;
    virtual ~EventAccountInfo() = default;

    ProductInfo productInfo;
    RWTValOrderedVector<OwnDiscountInfo> ownDiscounts;
};

// An owner that shares discounts with the event's account or sponsors it. Owners are the same when
// their owner objects are: that merges what one owner shares and what it sponsors.
struct SharingAccountInfo : BaseAccountInfo<AccountType::sharingAccount> {
    SharingAccountInfo() = default;
    SharingAccountInfo(SharingAccountInfo const&) = default;
    SharingAccountInfo& operator=(SharingAccountInfo const&) = default;
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
    SharedPriceInfo(unsigned long id, BAS::String const& itemName, BAS::String const& kind)
        : BasePriceInfo<type>(id, itemName), sharingType(kind) {}

    // SharingTypeDiscount or SharingTypeSponsor.
    BAS::String sharingType;
};

using SharedItemInfo = SharedPriceInfo<PricingInfoType::sharedPrice>;
// Owners in ascending order of owner id, each with its items in the order met.
using SharingMap = std::map<SharingAccountInfo, RWTValOrderedVector<SharedItemInfo>>;

// The state of one captured event, as its latest EDR left it.
struct EventDetailRecord {
    EventDetailRecord() = default;
    EventDetailRecord(EventDetailRecord const&) = delete;
    EventDetailRecord& operator=(EventDetailRecord const&) = delete;

    // Empties the lists for a new EDR of the same key. Texts and numbers keep their values until
    // the new EDR's overwrite them.
    void prepareForRefill();

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

struct EventKeyHash {
    std::size_t operator()(EventKey const& key) const noexcept;
};

// Owns every event key and the record of each. A key object keeps its address from add or rename
// until remove or clear. A key may be without a record, from its creation until its record is
// made. Finding, adding and renaming take constant time.
class EventMap {
public:
    // The record of a key of equal value; null without a key or without a record.
    EventDetailRecord* find(EventKey const& key) const;

    // A new key object, without a record. No equal key may be in the map.
    EventKey const* add(EventKey const& key);
    // Destroys the key's record and overwrites the key object, which must be the map's own, with
    // the new key, of which no equal may be in the map. If that fails, the key object is gone.
    void rename(EventKey const* key, EventKey const& newKey);
    // Gives a key of the map, which has no record, an empty one.
    EventDetailRecord* createRecord(EventKey const& key);
    // Destroys the key object, which must be the map's own, and its record.
    void remove(EventKey const* key);
    void clear() noexcept { entriesM.clear(); }

    std::size_t entries() const noexcept { return entriesM.size(); }

private:
    std::unordered_map<EventKey, std::unique_ptr<EventDetailRecord>, EventKeyHash> entriesM;
};

// The order in which events were seen: the front is the most recently seen key, the back the one
// seen longest ago. It owns its nodes and not the keys that they point to, and no two entries point
// to equal keys. An entry may be empty, that is point to no key: it equals nothing. Finding, moving
// to the front and removing take constant time at any length, and a key that takes the place of a
// removed one allocates nothing.
class EventQueue {
    using Nodes = std::list<EventKey const*>;

public:
    EventQueue() = default;
    EventQueue(EventQueue const&) = delete;
    EventQueue& operator=(EventQueue const&) = delete;

    // A place in the queue; it stays with its entry until the entry is removed.
    using Position = Nodes::const_iterator;

    std::size_t entries() const noexcept { return nodesM.size(); }
    // Iterates from the front to the place behind the back.
    Position begin() const noexcept { return nodesM.begin(); }
    Position end() const noexcept { return nodesM.end(); }
    // The place of the back; the queue must not be empty.
    Position back() const noexcept { return std::prev(nodesM.end()); }

    // The place of the entry whose key equals this one; end() when there is none.
    Position find(EventKey const& key) const;

    // Null puts an empty entry. The key must not change while it is in the queue. A failure leaves
    // the queue as it was.
    void pushFront(EventKey const* key);
    void moveToFront(Position position);
    // Takes the entry out and returns its key.
    EventKey const* remove(Position position);
    // Doesn't touch the keys, which may be gone already.
    void clear() noexcept;

private:
    struct PointedHash {
        std::size_t operator()(EventKey const* key) const noexcept { return EventKeyHash{}(*key); }
    };
    struct PointedEqual {
        bool operator()(EventKey const* a, EventKey const* b) const noexcept { return *a == *b; }
    };
    using Places = std::unordered_map<EventKey const*, Position, PointedHash, PointedEqual>;

    Nodes nodesM;
    Places placesM;
    // The node of the entry removed last, for the next one that is put.
    Nodes spareNodeM;
    Places::node_type sparePlaceM;
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
        bool operator()(BAS::String const* a, BAS::String const* b) const noexcept {
            return *a < *b;
        }
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
    EventKey const* checkUniquenessInQueue(EventKey const& key);
    // Sets record to the key's record, ready to be filled. Always true.
    bool checkForEventAllocation(EventKey const* key, EventDetailRecord*& record);
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

private:
    enum class ErrorForm { statusThenLog, setStatus };
    // What an owner block says about its owner.
    struct OwnerFields {
        EDR::Index const& balanceGroupId;
        EDR::Index const& accountId;
        EDR::Index const& ownerId;
        EDR::Index const& ownerType;
    };

    bool isValid() const;
    void setValid(bool valid);
    BAS::String ownName() const;
    // Sets the status under the plug-in's name, then writes it to the log.
    void recordAndLog(BAS::String const& messageName, BAS::Status::Severity severity,
                      BAS::String const& argument);
    template <class Module>
    bool bindDataModule(BAS::RegistryEntry const* entry, Module*& module, ErrorForm errorForm);
    // Records a status that the EDR factory threw, under the plug-in's name.
    void reportThrown(BAS::Status status, bool log);
    RWDBReader selectServiceFields(BAS::String const& pipelineName) const;
    bool addServiceField(BAS::String const& serviceCode, BAS::String const& reference,
                         BAS::String const& fieldName);
    FCT::Account::ServiceFieldMapEntry* serviceEntry(BAS::String const& serviceCode);
    template <class Writer>
    bool writeDumpFile(BAS::String const& path, BAS::ProtectedBool& workDone, Writer writer);

    void capture(EDR::Container* container);
    EventKey const* addNewKey(EventKey const& key);
    static SharingAccountInfo readOwner(EDR::Iterator const& iterator, OwnerFields const& from);
    bool populateDiscounts(EDR::Container* container, EventDetailRecord* record);
    bool populateSponsorships(EDR::Container* container, EventDetailRecord* record);
    template <class EventWriter>
    void forEachEventFromOldest(EventWriter writeEvent);
};

} // namespace FCT::DataDump
