#include "DataDumpPlugIn.h"

#include "BAS/ProtectedBool.h"
#include "BAS/RegistryEntry.h"
#include "DAT/AccountBatchPlugIn.h"
#include "DAT/BalancePlugIn.h"
#include "DAT/DiscountPlugIn.h"
#include "DAT/RatingPricePlugIn.h"
#include "DAT/RatingRateplanPlugIn.h"
#include "DBC/DatabasePlugIn.h"
#include "EDR/Factory.h"
#include "FCT/AccountServiceFieldMapEntry.h"
#include "PBC/ModuleReference.h"
#include "RW/RWDBDatabase.h"
#include "RW/RWDBReader.h"
#include "RW/RWDBSelector.h"
#include "RW/RWDBTable.h"
#include "RW/RWZone.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <concepts>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace FCT::DataDump {

BAS::String const SharingTypeDiscount("DiscountSharing");
BAS::String const SharingTypeSponsor("Sponsorship");

namespace {

BAS::String const moduleName("FCT_DataDump");
BAS::String const moduleVersion("10003");

constexpr auto severityError = static_cast<BAS::Status::Severity>(4);
constexpr auto severityCritical = static_cast<BAS::Status::Severity>(5);

BAS::String const dataPoolName("DataPool");
BAS::String const moduleSuffix(".Module");

BAS::String const defaultRecordType("981");
BAS::String const defaultRatePlanType("R");
constexpr unsigned long defaultNumberOfEvents = 10;

constexpr int detailRecordKind = 3;
// Of the two entries of the block position list, the one that the EDR decides.
constexpr std::size_t productPosition = 1;

BAS::String const priceModelTypes[] = {"S", "A", "P"};

std::string_view viewOf(BAS::String const& text) {
    return {text.data(), text.length()};
}

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// The value of a decimal digit; 10 or more when the character is none.
unsigned digitOf(char c) {
    return static_cast<unsigned char>(c - '0');
}

// An EDR has some twenty identifiers, and digit by digit they would take a sixth of the time that
// it takes: so the last one to eight digits are read as one word.

// The characters before end, as the values of digits. Eight characters must stand there; those that
// aren't among the last count are 0. For machines whose words begin with the lowest byte.
std::uint64_t lastDigits(char const* end, std::size_t count) {
    constexpr std::uint64_t all = ~std::uint64_t{0};
    // By count; the last characters are the highest bytes.
    static constexpr std::uint64_t lastBytes[] = {
        0, all << 56, all << 48, all << 40, all << 32, all << 24, all << 16, all << 8, all};
    std::uint64_t digits = 0;
    std::memcpy(&digits, end - 8, 8);
    return (digits ^ 0x3030303030303030) & lastBytes[count]; // '0' to '9' become 0 to 9
}

// Whether no byte is 10 or more: that carries into the highest bit.
bool areDigits(std::uint64_t digits) {
    return (((digits + 0x7676767676767676) | digits) & 0x8080808080808080) == 0;
}

// Joins the digits in pairs, first to four numbers of two, then to two of four, then to one of
// eight.
unsigned long joined(std::uint64_t digits) {
    digits = (digits * (10 << 8 | 1) >> 8) & 0x00ff00ff00ff00ff;
    digits = (digits * (100 << 16 | 1) >> 16) & 0x0000ffff0000ffff;
    return digits * (10000UL << 32 | 1) >> 32;
}

// Calls visit with each value of one of the framework's vectors, in order.
template <class Vector, class Visit>
void forEach(Vector& vector, Visit visit) {
    for (decltype(vector.entries()) i = 0; i < vector.entries(); ++i) {
        visit(vector[i]);
    }
}

bool contains(RWTValOrderedVector<BAS::String> const& texts, BAS::String const& text) {
    for (decltype(texts.entries()) i = 0; i < texts.entries(); ++i) {
        if (texts[i] == text) {
            return true;
        }
    }
    return false;
}

// Seconds of an offset from UTC that is written as a sign, hours and two digits of minutes, and
// read as one decimal number.
long offsetSeconds(long hoursAndMinutes) {
    return hoursAndMinutes / 100 * 3600 + hoursAndMinutes % 100 * 60;
}

// The number at the beginning of a text, after blanks and a sign; 0 when there is none. What is out
// of range ends at the nearest signed number.
unsigned long numberAt(char const* at, char const* end) {
    at = std::find_if_not(at, end, isBlank);
    bool const negative = at != end && *at == '-';
    if (negative || (at != end && *at == '+')) {
        ++at;
    }
    unsigned long const limit = std::numeric_limits<long>::max() + (negative ? 1UL : 0UL);
    unsigned long number = 0;
    for (unsigned digit = 0; at != end && (digit = digitOf(*at)) < 10; ++at) {
        number = number > (limit - digit) / 10 ? limit : number * 10 + digit;
    }
    return negative ? 0 - number : number;
}

unsigned long unixSeconds(unsigned long seconds) {
    return seconds > BAS::DateTime::rwToUnixSecsCM ? seconds - BAS::DateTime::rwToUnixSecsCM : 0;
}

} // namespace

unsigned long objectNumber(BAS::String const& identifier) {
    auto const* const text = identifier.data();
    auto const length = identifier.length();
    for (std::size_t at = 0; at < length;) {
        if (text[at++] != '_') {
            continue;
        }
        auto const count = length - at;
        if (std::endian::native == std::endian::little && count - 1 < 8 && length >= 8) {
            auto const digits = lastDigits(text + length, count);
            if (areDigits(digits)) {
                return joined(digits);
            }
        }
        return numberAt(text + at, text + length);
    }
    return 0;
}

// ---- What is kept of one event -----------------------------------------------------------------

SharingMap::Place SharingMap::findOrInsert(unsigned long ownerId) {
    auto const isBefore = [&](std::uint32_t position, unsigned long id) {
        return entriesM[position].owner.ownerId < id;
    };
    // Owners often come in ascending order.
    auto const place = orderM.empty() || isBefore(orderM.back(), ownerId)
                           ? orderM.end()
                           : std::lower_bound(orderM.begin(), orderM.end(), ownerId, isBefore);
    if (place != orderM.end() && entriesM[*place].owner.ownerId == ownerId) {
        return {entriesM[*place], false};
    }
    // The entry first: should there be no room for its position, nothing points to it.
    auto& entry = entriesM.append();
    entry.owner.ownerId = ownerId;
    entry.items.clear();
    orderM.insert(place, static_cast<std::uint32_t>(entriesM.entries() - 1));
    return {entry, true};
}

void SharingMap::clear() noexcept {
    entriesM.clear();
    orderM.clear();
}

void EventDetailRecord::prepareForRefill() {
    accountInfo.ownDiscounts.clear();
    accountInfo.productInfo.priceModelCodes.clear();
    sharingMap.clear();
}

void ProductInfo::clearRatePlan() {
    for (auto* const text :
         {&name, &internalRatePlan, &impactCategory, &serviceCodeUsed, &serviceClassUsed}) {
        *text = BAS::NULL_STRING;
    }
    ratePlanVersion = 0;
}

void EventDetailRecord::startAnew(BAS::String const& customer, BAS::String const& service) {
    identifier = customer;
    serviceCode = service;
    prepareForRefill();
}

// ---- The bounded store of events ---------------------------------------------------------------

namespace {

std::size_t hashOf(EventKey const& key) {
    constexpr std::size_t oddMultiplier = 0x9e3779b97f4a7c15;
    auto hash = std::hash<std::string_view>()(viewOf(key.first));
    // Service codes are short.
    for (auto const c : viewOf(key.second)) {
        hash = (hash ^ static_cast<unsigned char>(c)) * oddMultiplier;
    }
    return hash;
}

} // namespace

EventMap::HashedKey::HashedKey(EventKey const& ofKey) : key(ofKey), hash(hashOf(ofKey)) {
}

CapturedEvent* EventMap::find(HashedKey const& sought) const {
    if (slotsM.empty()) {
        return nullptr;
    }
    for (auto slot = homeOf(sought.hash); slotsM[slot].event != nullptr; slot = slotAfter(slot)) {
        EventKey const& entered = *slotsM[slot].event;
        if (slotsM[slot].hash == sought.hash && entered == sought.key) {
            return slotsM[slot].event;
        }
    }
    return nullptr;
}

CapturedEvent& EventMap::add(HashedKey const& added) {
    reserve(eventsM.size() + 1);
    auto event = std::make_unique<CapturedEvent>();
    static_cast<EventKey&>(*event) = added.key;
    event->keyHash = added.hash;
    eventsM.push_back(std::move(event));
    enter(*eventsM.back());
    return *eventsM.back();
}

void EventMap::rename(CapturedEvent& event, HashedKey const& renamed) {
    leave(event);
    event.hasRecord = false;
    try {
        static_cast<EventKey&>(event) = renamed.key;
    } catch (...) {
        auto const own = std::find_if(eventsM.begin(), eventsM.end(),
                                      [&](auto const& owned) { return owned.get() == &event; });
        eventsM.erase(own);
        throw;
    }
    event.keyHash = renamed.hash;
    enter(event);
}

void EventMap::clear() noexcept {
    std::fill(slotsM.begin(), slotsM.end(), Slot());
    eventsM.clear();
}

void EventMap::reserve(std::size_t events) {
    constexpr std::size_t fewestSlots = 16;
    if (events * 2 <= slotsM.size()) {
        return;
    }
    std::vector<Slot> larger(std::max(slotsM.size() * 2, fewestSlots));
    slotsM.swap(larger);
    for (auto const& event : eventsM) {
        enter(*event);
    }
}

void EventMap::enter(CapturedEvent& event) noexcept {
    auto slot = homeOf(event.keyHash);
    while (slotsM[slot].event != nullptr) {
        slot = slotAfter(slot);
    }
    slotsM[slot] = {&event, event.keyHash};
}

// Frees the event's slot and closes the gap: every event after it that may stand nearer to its
// home moves up.
void EventMap::leave(CapturedEvent const& event) noexcept {
    auto gap = homeOf(event.keyHash);
    while (slotsM[gap].event != &event) {
        gap = slotAfter(gap);
    }
    for (auto slot = slotAfter(gap); slotsM[slot].event != nullptr; slot = slotAfter(slot)) {
        auto const mask = slotsM.size() - 1;
        auto const distanceFromHome = (slot - homeOf(slotsM[slot].hash)) & mask;
        auto const distanceFromGap = (slot - gap) & mask;
        if (distanceFromHome >= distanceFromGap) {
            slotsM[gap] = slotsM[slot];
            gap = slot;
        }
    }
    slotsM[gap] = Slot();
}

// ---- The plug-in object ------------------------------------------------------------------------

PlugIn::PlugIn(BAS::String const& name, BAS::String const& version)
    : FunctionPlugIn(name, version) {
    bool registered = false;
    {
        std::lock_guard const guard(isRegisteredLockerCM);
        registered = isRegisteredM;
    }
    if (!registered) {
        setValid(false);
    }
    takeStartStep(&PlugIn::readRegistry);
    takeStartStep(&PlugIn::setEDRContainerIndices);
    takeStartStep(&PlugIn::initServiceFieldMap);
    cbdRecordTypes.append(defaultRecordType);
    ratePlanTypes.append(defaultRatePlanType);
    currentObjects.append(0);
    currentObjects.append(0);
}

PlugIn::~PlugIn() {
    eventMap.clear();
    eventQueue.clear();
}

bool PlugIn::isValid() const {
    std::lock_guard const guard(isValidLockerCM);
    return isValidM;
}

void PlugIn::setValid(bool valid) {
    std::lock_guard const guard(isValidLockerCM);
    isValidM = valid;
}

BAS::String PlugIn::ownName() const {
    std::lock_guard const guard(nameLockerCM);
    return nameM;
}

void PlugIn::recordAndLog(BAS::String const& messageName, BAS::Status::Severity severity,
                          BAS::String const& argument) {
    BAS::Status recorded;
    {
        std::lock_guard const guard(statusLockerCM);
        statusM.set(ownName(), messageName, severity, argument);
        recorded = statusM;
    }
    writeLog(recorded);
}

void PlugIn::reportThrown(BAS::Status status, bool log) {
    status.setObjectName(ownName());
    try {
        setStatus(status, log);
    } catch (BAS::Status const&) {
        // The pipeline log may still take it.
    }
    try {
        writeToPipelineLog(status);
    } catch (BAS::Status const&) {
        // What a log throws can't be written to it.
    }
}

// A status that the framework throws is the step's failure, and not the host's to catch.
void PlugIn::takeStartStep(bool (PlugIn::*step)()) {
    if (!isValid()) {
        return;
    }
    bool done = false;
    try {
        done = (this->*step)();
    } catch (BAS::Status const& thrown) {
        reportThrown(thrown, true);
    }
    setValid(done);
}

// ---- Start-up: registry ------------------------------------------------------------------------

BAS::RegisteredObject* PlugIn::findRegisteredObject(BAS::String const& reference) {
    if (auto* const named = find(reference + moduleSuffix)) {
        return named;
    }
    BAS::String rootName;
    {
        std::lock_guard const guard(rootNameLockerCM);
        rootName = rootNameCM;
    }
    if (auto* const pooled = find(rootName + "." + dataPoolName + "." + reference + moduleSuffix)) {
        return pooled;
    }
    setStatus("ERR_DATA_PLUGIN_NOT_FOUND", severityCritical, reference, true);
    return nullptr;
}

// Without an entry the module stays null.
template <class Module>
bool PlugIn::bindDataModule(BAS::RegistryEntry const* entry, Module*& module, ErrorForm errorForm) {
    module = nullptr;
    if (entry == nullptr) {
        return true;
    }
    BAS::String const reference(entry->value());
    module = dynamic_cast<Module*>(findRegisteredObject(reference));
    if (module != nullptr) {
        return true;
    }
    if (errorForm == ErrorForm::statusThenLog) {
        recordAndLog("ERR_PLUGIN_TYPE_INVALID", severityCritical, reference);
    } else {
        setStatus("ERR_PLUGIN_TYPE_INVALID", severityCritical, reference, true);
    }
    return false;
}

namespace {

// Appends the pieces of a comma-separated value, but for the default, which has its place at the
// end of the list.
void appendConfiguredTypes(BAS::RegistryEntry const* entry, BAS::String const& defaultType,
                           RWTValOrderedVector<BAS::String>& types) {
    if (entry == nullptr) {
        return;
    }
    auto const pieces = entry->value().split(',');
    forEach(pieces, [&](BAS::String const& piece) {
        if (piece != defaultType) {
            types.append(piece);
        }
    });
}

} // namespace

bool PlugIn::readRegistry() {
    auto const* const subtree = registry();
    if (subtree == nullptr) {
        recordAndLog("ERR_REG_SUBTREE_NOT_FOUND", severityCritical, ownName());
        return false;
    }
    if (!bindDataModule(subtree->find("DiscountDataModule"), discountDataModule,
                        ErrorForm::statusThenLog) ||
        !bindDataModule(subtree->find("BalanceDataModule"), balanceDataModule,
                        ErrorForm::statusThenLog)) {
        return false;
    }
    BAS::String const accountKey("AccountDataModule");
    auto const* const accountEntry = subtree->find(accountKey);
    if (accountEntry == nullptr) {
        recordAndLog("ERR_REG_ENTRY_NOT_FOUND", severityCritical, accountKey);
        return false;
    }
    if (!bindDataModule(accountEntry, accountDataModule, ErrorForm::statusThenLog)) {
        return false;
    }
    accountDatabase = accountDataModule->database();
    if (!bindDataModule(subtree->find("RateplanDataModule"), rateplanDataModule,
                        ErrorForm::setStatus) ||
        !bindDataModule(subtree->find("PriceDataModule"), priceDataModule, ErrorForm::setStatus)) {
        return false;
    }
    appendConfiguredTypes(subtree->find("ChargeBreakDownRecordType"), defaultRecordType,
                          cbdRecordTypes);
    appendConfiguredTypes(subtree->find("RatePlanType"), defaultRatePlanType, ratePlanTypes);
    unsigned long configuredEvents = defaultNumberOfEvents;
    if (auto const* const entry = subtree->find("NumberOfEvents")) {
        entry->value().toNum(configuredEvents);
    }
    numberOfEvents = configuredEvents;
    return true;
}

// ---- Start-up: EDR fields ----------------------------------------------------------------------

namespace {

template <class Handle, class Handles>
struct Binding {
    Handle Handles::*handle;
    char const* path;
    char const* alias;
};

// Each handle of the set stands in exactly one binding, and each path in one.
template <class Handle, class Handles, std::size_t count>
constexpr bool bindsEachOnce(Binding<Handle, Handles> const (&bindings)[count]) {
    static_assert(sizeof(Handles) == count * sizeof(Handle), "a handle has no binding");
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (bindings[i].handle == bindings[j].handle ||
                std::string_view(bindings[i].path) == bindings[j].path) {
                return false;
            }
        }
    }
    return true;
}

// In the order of the look-ups. The aliases are those of the EDR description, irregular ones
// included.
constexpr Binding<EDR::Index, FieldHandles> fieldBindings[] = {
    {&FieldHandles::idxANumber, "DETAIL.A_NUMBER", "A_NUMBER"},
    {&FieldHandles::idxBNumber, "DETAIL.B_NUMBER", "B_NUMBER"},
    {&FieldHandles::idxInternServiceCode, "DETAIL.INTERN_SERVICE_CODE", "INTERN_SERVICE_CODE"},
    {&FieldHandles::idxServiceType, "DETAIL.SERVICE_TYPE", "SERVICE_TYPE"},
    {&FieldHandles::idxEventType, "DETAIL.EVENT_TYPE", "EVENT_TYPE"},
    {&FieldHandles::idxConnectSubType, "DETAIL.CONNECT_SUB_TYPE", "CONNECT_SUB_TYPE"},
    {&FieldHandles::idxUtcTimeOffset, "DETAIL.UTC_TIME_OFFSET", "BDR_UTC_TIME_OFFSET"},
    {&FieldHandles::idxBalanceGroupId, "DETAIL.INTERN_BALANCE_GROUP_ID", "BAL_GRP_ID"},
    {&FieldHandles::idxItemTag, "DETAIL.ITEM_TAG", "ITEM_TAG"},
    {&FieldHandles::idxObjectCacheType, "DETAIL.OBJECT_CACHE_TYPE", "DETAIL_OBJECT_CACHE_TYPE"},
    {&FieldHandles::idxFoundPPIndex, "DETAIL.CUST_A.INTERN_FOUND_PP_INDEX", ""},
    {&FieldHandles::idxProductServiceType, "DETAIL.CUST_A.PRODUCT.SERVICE_TYPE", ""},
    {&FieldHandles::idxProductServiceId, "DETAIL.CUST_A.PRODUCT.SERVICE_ID", ""},
    {&FieldHandles::idxAccountParentId, "DETAIL.CUST_A.ACCOUNT_PARENT_ID", ""},
    {&FieldHandles::idxChargingStart, "DETAIL.CHARGING_START_TIMESTAMP",
     "CHARGING_START_TIMESTAMP"},
    {&FieldHandles::idxChargingEnd, "DETAIL.CHARGING_END_TIMESTAMP", "CHARGING_END_TIMESTAMP"},
    {&FieldHandles::idxCbdRecordType, "DETAIL.ASS_CBD.RECORD_TYPE", "ASS_CBD_RECORD_TYPE"},
    {&FieldHandles::idxCpRateplanType, "DETAIL.ASS_CBD.CP.RATEPLAN_TYPE", "RATEPLAN_TYPE"},
    {&FieldHandles::idxCpRateplanCode, "DETAIL.ASS_CBD.CP.RATEPLAN_CODE", "RATEPLAN_CODE"},
    {&FieldHandles::idxCpPricemodelCode, "DETAIL.ASS_CBD.CP.PRICEMODEL_CODE", "PRICEMODEL_CODE"},
    {&FieldHandles::idxCpPricemodelType, "DETAIL.ASS_CBD.CP.PRICEMODEL_TYPE", "PRICEMODEL_TYPE"},
    {&FieldHandles::idxCpInternRateplan, "DETAIL.ASS_CBD.CP.INTERN_RATEPLAN", "INTERN_RATEPLAN"},
    {&FieldHandles::idxCpInternRateplanVersion, "DETAIL.ASS_CBD.CP.INTERN_RATEPLAN_VERSION",
     "INTERN_RATEPLAN_VERSION"},
    {&FieldHandles::idxCpImpactCategory, "DETAIL.ASS_CBD.CP.IMPACT_CATEGORY", "IMPACT_CATEGORY"},
    {&FieldHandles::idxCpServiceCodeUsed, "DETAIL.ASS_CBD.CP.SERVICE_CODE_USED",
     "SERVICE_CODE_USED"},
    {&FieldHandles::idxCpServiceClassUsed, "DETAIL.ASS_CBD.CP.SERVICE_CLASS_USED",
     "SERVICE_CLASS_USED"},
    {&FieldHandles::idxDlBalanceGroupId, "DETAIL.CUST_A.DL.BALANCE_GROUP_ID",
     "CUSTA_DL_BALANCE_GROUP_ID"},
    {&FieldHandles::idxDlDiscountOwnerAcctId, "DETAIL.CUST_A.DL.DISCOUNT_OWNER_ACCT_ID",
     "CUSTA_DL_DISCOUNT_OWNER_ACCT_ID"},
    {&FieldHandles::idxDlDiscountOwnerId, "DETAIL.CUST_A.DL.DISCOUNT_OWNER_ID",
     "CUSTA_DL_DISCOUNT_OWNER_ID"},
    {&FieldHandles::idxDlDiscountOwnerType, "DETAIL.CUST_A.DL.DISCOUNT_OWNER_TYPE",
     "CUSTA_DL_DISCOUNT_OWNER_TYPE"},
    {&FieldHandles::idxPdDiscountModel, "DETAIL.CUST_A.DL.PD.DISCOUNT_MODEL",
     "CUSTA_DL_PD_DISCOUNT_MODEL"},
    {&FieldHandles::idxPdDiscountId, "DETAIL.CUST_A.DL.PD.DISCOUNT_ID", "CUSTA_DL_PD_DISCOUNT_ID"},
    {&FieldHandles::idxSlBalanceGroupId, "DETAIL.CUST_A.SL.BALANCE_GROUP_ID",
     "CUSTA_SL_BALANCE_GROUP_ID"},
    {&FieldHandles::idxSlSponsorOwnerAcctId, "DETAIL.CUST_A.SL.SPONSOR_OWNER_ACCT_ID",
     "CUSTA_SL_SPONSOR_OWNER_ACCT_ID"},
    {&FieldHandles::idxSlSponsorOwnerId, "DETAIL.CUST_A.SL.SPONSOR_OWNER_ID",
     "CUSTA_SL_SPONSOR_SPONSOR_OWNER_ID"},
    {&FieldHandles::idxSlSponsorOwnerType, "DETAIL.CUST_A.SL.SPONSOR_OWNER_TYPE",
     "CUSTA_SL_SPONSOR_SPONSOR_OWNER_TYPE"},
    {&FieldHandles::idxSdDiscountModel, "DETAIL.CUST_A.SL.SD.DISCOUNT_MODEL",
     "CUSTA_SL_SD_DISCOUNT_MODEL"},
    {&FieldHandles::idxSdSponsorshipId, "DETAIL.CUST_A.SL.SD.SPONSORSHIP_ID",
     "CUSTA_SL_SD_SPONSORSHIP_ID"},
};
constexpr Binding<EDR::BlockIndex, BlockHandles> blockBindings[] = {
    {&BlockHandles::blkAssCbd, "DETAIL.ASS_CBD", "ASS_CBD"},
    {&BlockHandles::blkCbdCp, "DETAIL.ASS_CBD.CP", "ASS_CBD_CHARGE_PACKET"},
    {&BlockHandles::blkCbdDp, "DETAIL.ASS_CBD.DP", "ASS_CBD_CHARGE_PACKET_DISCOUNT_PACKET"},
    {&BlockHandles::blkDpSubBalance, "DETAIL.ASS_CBD.DP.SUB_BALANCE", "ASS_CBD_CHARGE_PACKET_DPSB"},
    {&BlockHandles::blkCustADl, "DETAIL.CUST_A.DL", "CustA_DL_PD"},
    {&BlockHandles::blkDlPd, "DETAIL.CUST_A.DL.PD", "CustA_DL_PD"},
    {&BlockHandles::blkCustASl, "DETAIL.CUST_A.SL", "CustA_DL_PD"},
    {&BlockHandles::blkSlSd, "DETAIL.CUST_A.SL.SD", "CustA_DL_PD"},
};
static_assert(bindsEachOnce(fieldBindings) && bindsEachOnce(blockBindings));

} // namespace

bool PlugIn::setEDRContainerIndices() {
    BAS::String directory;
    {
        std::lock_guard const guard(dirNameLockerCM);
        directory = dirName(ownName());
    }
    BAS::String const moduleReference(PBC::ModuleReference(directory));
    try {
        for (auto const& binding : fieldBindings) {
            fields.*binding.handle =
                edrFactoryM->getIndex(moduleName, binding.path, binding.alias, moduleReference);
        }
        for (auto const& binding : blockBindings) {
            blocks.*binding.handle = edrFactoryM->getBlockIndex(moduleName, binding.path,
                                                                binding.alias, moduleReference);
        }
    } catch (BAS::Status const& notFound) {
        reportThrown(notFound, true);
        return false;
    }
    return bindIterators();
}

bool PlugIn::bindIterators() {
    struct {
        EDR::Iterator& iterator;
        EDR::BlockIndex const& block;
    } const iteratorBindings[] = {
        {itCbdCp, blocks.blkCbdCp}, {itDlPd, blocks.blkDlPd}, {itSlSd, blocks.blkSlSd}};
    for (auto const& binding : iteratorBindings) {
        if (!binding.iterator.setIndex(binding.block)) {
            BAS::String blockName;
            edrFactoryM->getBlockIndexName(binding.block, blockName);
            setStatus("ERR_INIT_EDR_ITERATOR", severityError, blockName, true);
            return false;
        }
    }
    return true;
}

// ---- Start-up: the customer fields of each service ---------------------------------------------

namespace {

BAS::String const accountCustomerA("Account_CustA");
BAS::String const uniDataCustomerA("UniData_CustA");
BAS::String const accountCustomerB("Account_CustB");
BAS::String const uniDataCustomerB("UniData_CustB");

} // namespace

bool PlugIn::initServiceFieldMap() {
    try {
        auto const pipeline = superName("Pipelines");
        auto const lastDot = viewOf(pipeline).rfind('.');
        if (lastDot == std::string_view::npos) {
            return false;
        }
        if (accountDatabase == nullptr) {
            recordAndLog("ERR_DATABASE", severityCritical,
                         "the account data module has no database connection");
            return false;
        }
        std::string const pipelineName(viewOf(pipeline).substr(lastDot + 1));
        return readServiceFields(pipelineName.c_str());
    } catch (BAS::Status const& thrown) {
        reportThrown(thrown, false);
        return false;
    }
}

// What the reader was made from stays until it is done.
bool PlugIn::readServiceFields(BAS::String const& pipelineName) {
    auto&& connection = accountDatabase->connection();
    auto&& database = connection.database();
    auto&& pipelines = database.table("KWL_PIPELINE");
    auto&& aliases = database.table("KWL_ALIAS_MAP");
    auto&& edrFields = database.table("KWL_EDRC_FIELD");
    auto&& reference = aliases["REFERENCE"];
    auto&& selector = database.selector();
    selector << aliases["KEY_ID"] << reference << edrFields["FIELD_NAME"];
    selector.where((((pipelines["PIPELINE"] == pipelineName) &&
                     (pipelines["EDRC_DESC"] == aliases["EDRC_DESC"])) &&
                    (aliases["FIELD_ID"] == edrFields["FIELD_ID"])) &&
                   ((((reference == accountCustomerA) || (reference == uniDataCustomerA)) ||
                     (reference == accountCustomerB)) ||
                    (reference == uniDataCustomerB)));
    auto&& reader = selector.reader();
    return addServiceFields(reader, pipelineName);
}

bool PlugIn::addServiceFields(RWDBReader& reader, BAS::String const& pipelineName) {
    auto const isUsable = [&] {
        if (reader.isValid()) {
            return true;
        }
        recordAndLog("ERR_DATABASE", severityCritical,
                     DBC::DatabasePlugIn::errorMessage(reader.status()));
        return false;
    };
    if (!isUsable()) {
        return false;
    }
    bool anyRow = false;
    BAS::String serviceCode;
    BAS::String reference;
    BAS::String fieldName;
    while (reader()) {
        reader >> serviceCode >> reference >> fieldName;
        if (!isUsable()) {
            return false;
        }
        anyRow = true;
        if (!addServiceField(serviceCode, reference, fieldName)) {
            return false;
        }
    }
    if (!anyRow) {
        setStatus("ERR_EMPTY_SERVICE_FIELD_MAP", severityError, pipelineName, true);
    }
    return anyRow;
}

bool PlugIn::addServiceField(BAS::String const& serviceCode, BAS::String const& reference,
                             BAS::String const& fieldName) {
    auto* const entry = serviceEntry(serviceCode);
    auto const field =
        edrFactoryM->getIndex(moduleName, fieldName, BAS::NULL_STRING, BAS::NULL_STRING);
    if (reference == accountCustomerA || reference == uniDataCustomerA) {
        if (!entry->initAField(fieldName, field)) {
            recordAndLog("ERR_EMPTY_SERVICE_FIELD_MAP", severityError,
                         "Initialization of service->field map for custA entry failed");
            return false;
        }
    } else if (!entry->initBField(fieldName, field)) {
        setStatus("ERR_EMPTY_SERVICE_FIELD_MAP", severityError,
                  "Initialization of service->field map for custB entry failed", true);
        return false;
    }
    return true;
}

// Finds or makes the entry of a service. What is made here is never freed: it lives until the
// process ends.
FCT::Account::ServiceFieldMapEntry* PlugIn::serviceEntry(BAS::String const& serviceCode) {
    auto const found = serviceFieldMap.find(&serviceCode);
    if (found != serviceFieldMap.end()) {
        return found->second;
    }
    auto entry = std::make_unique<FCT::Account::ServiceFieldMapEntry>(serviceCode);
    auto key = std::make_unique<BAS::String>(serviceCode);
    serviceFieldMap.emplace(key.get(), entry.get());
    static_cast<void>(key.release());
    return entry.release();
}

// ---- Capture -----------------------------------------------------------------------------------

bool PlugIn::processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) {
    if (!isValid()) {
        return false;
    }
    forEach(batch, [&](EDR::Container* container) {
        if (container->recordKind() == detailRecordKind) {
            capture(container);
        }
    });
    return true;
}

// Reads in an order in which every text can be used or copied at once: the host's next text may go
// into the same buffer.
void PlugIn::capture(EDR::Container* container) {
    auto const startTime = getGMTStartTime(container);
    auto& [identifier, serviceCode] = currentKey;
    serviceCode = container->getString(fields.idxInternServiceCode);
    auto const service = serviceFieldMap.find(&serviceCode);
    if (service == serviceFieldMap.end() || service->second == nullptr ||
        !service->second->aField().isValid()) {
        return;
    }
    identifier = container->getString(service->second->aField());
    // Read like every head field of an event, and not kept: the product's service type is.
    static_cast<void>(container->getString(fields.idxServiceType));
    auto const balanceGroupId = objectNumber(container->getString(fields.idxBalanceGroupId));
    currentObjects[productPosition] = container->getLong(fields.idxFoundPPIndex);
    auto const serviceId =
        objectNumber(container->getString(fields.idxProductServiceId, currentObjects));
    auto const accountId =
        objectNumber(container->getString(fields.idxAccountParentId, currentObjects));

    auto* const key = checkUniquenessInQueue(currentKey);
    EventDetailRecord* record = nullptr;
    if (key == nullptr || !checkForEventAllocation(key, record) || record == nullptr) {
        return;
    }
    // What an exception leaves filled half belongs to no EDR: until its next one, the key is
    // without a record.
    bool const isNew = !std::exchange(key->hasRecord, false);
    record->accountInfo.accountId = accountId;
    record->accountInfo.balanceGroupId = balanceGroupId;
    record->serviceType = container->getString(fields.idxProductServiceType, currentObjects);
    record->serviceId = serviceId;
    record->chargingStartTime = startTime;
    record->eventType = container->getString(fields.idxEventType);
    populateDiscAndSpon(container, key, record);
    populateProductInfo(container, key, record);
    if (isNew && record->accountInfo.productInfo.priceModelCodes.entries() == 0) {
        record->accountInfo.productInfo.clearRatePlan();
    }
    key->hasRecord = true;
}

CapturedEvent* PlugIn::checkUniquenessInQueue(EventKey const& key) {
    if (eventQueue.empty() && numberOfEvents == 0) {
        eventQueue.push_front(nullptr);
        return nullptr;
    }
    // The queue holds the events of the map, each once, and an empty entry equals no key: so what
    // the map finds is what a search of the queue from its front would find first.
    EventMap::HashedKey const hashed(key);
    if (auto* const known = eventMap.find(hashed)) {
        eventQueue.splice(eventQueue.begin(), eventQueue, known->placeInQueue);
        return known;
    }
    return eventQueue.size() < numberOfEvents ? addEvent(hashed) : replaceOldestEvent(hashed);
}

CapturedEvent* PlugIn::addEvent(EventMap::HashedKey const& key) {
    EventQueue added(1);
    auto& event = eventMap.add(key);
    added.front() = &event;
    event.placeInQueue = added.begin();
    eventQueue.splice(eventQueue.begin(), added);
    return &event;
}

// Gives the key object at the back to the new key and puts it to the front; an empty entry stays
// empty. If the key can't be replaced, the queue has lost its back.
CapturedEvent* PlugIn::replaceOldestEvent(EventMap::HashedKey const& key) {
    EventQueue oldest;
    oldest.splice(oldest.begin(), eventQueue, std::prev(eventQueue.end()));
    auto* const event = oldest.front();
    if (event != nullptr) {
        eventMap.rename(*event, key);
    }
    eventQueue.splice(eventQueue.begin(), oldest);
    return event;
}

bool PlugIn::checkForEventAllocation(CapturedEvent* key, EventDetailRecord*& record) {
    record = &key->record;
    if (key->hasRecord) {
        record->prepareForRefill();
    } else {
        record->startAnew(key->first, key->second);
    }
    return true;
}

unsigned long PlugIn::getGMTStartTime(EDR::Container const* container) const {
    int offset = 0;
    container->getString(fields.idxUtcTimeOffset).toNum(offset);
    auto chargingStart = container->getDateTime(fields.idxChargingStart);
    unsigned long seconds = 0;
    chargingStart.adjustTimezone(chargingStart.seconds(), seconds, RWZone::utc(), false);
    return unixSeconds(seconds) - static_cast<unsigned long>(offsetSeconds(offset));
}

void PlugIn::applyUTCOffset(BAS::DateTime& dateTime, EDR::Container const* container) const {
    long offset = 0;
    BAS::String::localeCM.stringToNum(container->getString(fields.idxUtcTimeOffset), &offset);
    unsigned long seconds = 0;
    dateTime.adjustTimezone(dateTime.seconds(), seconds, RWZone::utc(), false);
    auto const gmt = unixSeconds(seconds) + BAS::DateTime::rwToUnixSecsCM -
                     static_cast<unsigned long>(offsetSeconds(offset));
    dateTime.adjustTimezone(gmt, seconds, RWZone::utc(), true);
    dateTime.seconds(seconds);
}

struct PlugIn::OwnerBlocks {
    // Walks the owner blocks and the item blocks in each.
    EDR::Iterator PlugIn::*iterator;
    EDR::BlockIndex BlockHandles::*ownerBlock;
    EDR::Index FieldHandles::*balanceGroupId;
    EDR::Index FieldHandles::*accountId;
    EDR::Index FieldHandles::*ownerId;
    EDR::Index FieldHandles::*ownerType;
    EDR::BlockIndex BlockHandles::*itemBlock;
    EDR::Index FieldHandles::*itemId;
    EDR::Index FieldHandles::*itemModel;
    BAS::String const& sharingType;
    // Whether the items of the event's own account are kept, as its own discounts.
    bool keepsOwn;
};

PlugIn::OwnerBlocks const PlugIn::discountOwners{&PlugIn::itDlPd,
                                                 &BlockHandles::blkCustADl,
                                                 &FieldHandles::idxDlBalanceGroupId,
                                                 &FieldHandles::idxDlDiscountOwnerAcctId,
                                                 &FieldHandles::idxDlDiscountOwnerId,
                                                 &FieldHandles::idxDlDiscountOwnerType,
                                                 &BlockHandles::blkDlPd,
                                                 &FieldHandles::idxPdDiscountId,
                                                 &FieldHandles::idxPdDiscountModel,
                                                 SharingTypeDiscount,
                                                 true};
PlugIn::OwnerBlocks const PlugIn::sponsorOwners{&PlugIn::itSlSd,
                                                &BlockHandles::blkCustASl,
                                                &FieldHandles::idxSlBalanceGroupId,
                                                &FieldHandles::idxSlSponsorOwnerAcctId,
                                                &FieldHandles::idxSlSponsorOwnerId,
                                                &FieldHandles::idxSlSponsorOwnerType,
                                                &BlockHandles::blkSlSd,
                                                &FieldHandles::idxSdSponsorshipId,
                                                &FieldHandles::idxSdDiscountModel,
                                                SharingTypeSponsor,
                                                false};

bool PlugIn::populateDiscAndSpon(EDR::Container* container, EventKey const* /*key*/,
                                 EventDetailRecord* record) {
    return populateOwners(container, discountOwners, *record) &&
           populateOwners(container, sponsorOwners, *record);
}

// All fields are read through the discount iterator, whichever iterator walks.
bool PlugIn::populateOwners(EDR::Container* container, OwnerBlocks const& from,
                            EventDetailRecord& record) {
    auto& walk = this->*from.iterator;
    if (!walk.reset(container)) {
        return false;
    }
    auto const number = [&](EDR::Index FieldHandles::*field) {
        return objectNumber(itDlPd.getString(fields.*field));
    };
    auto const fill = [&](auto& item) {
        item.objectId = number(from.itemId);
        item.name = itDlPd.getString(fields.*from.itemModel);
    };
    while (walk(blocks.*from.ownerBlock)) {
        auto const accountId = number(from.accountId);
        if (accountId == record.accountInfo.accountId) {
            while (walk(blocks.*from.itemBlock)) {
                if (from.keepsOwn) {
                    fill(record.accountInfo.ownDiscounts.append());
                }
            }
            continue;
        }
        // An owner that is known already keeps the fields of the block in which it was met first.
        auto const [entry, isNew] = record.sharingMap.findOrInsert(number(from.ownerId));
        if (isNew) {
            entry.owner.accountId = accountId;
            entry.owner.balanceGroupId = number(from.balanceGroupId);
            entry.owner.ownerType = itDlPd.getString(fields.*from.ownerType);
        }
        while (walk(blocks.*from.itemBlock)) {
            auto& item = entry.items.append();
            fill(item);
            item.sharingType = from.sharingType;
        }
    }
    return true;
}

bool PlugIn::populateProductInfo(EDR::Container* container, EventKey const* /*key*/,
                                 EventDetailRecord* record) {
    if (!itCbdCp.reset(container)) {
        return false;
    }
    while (itCbdCp(blocks.blkAssCbd)) {
        if (!contains(cbdRecordTypes, itCbdCp.getString(fields.idxCbdRecordType))) {
            continue;
        }
        while (itCbdCp(blocks.blkCbdCp)) {
            if (contains(ratePlanTypes, itCbdCp.getString(fields.idxCpRateplanType))) {
                takeChargePacket(record->accountInfo.productInfo);
            }
        }
    }
    return true;
}

// What one packet says of the product the next one overwrites; of the price models all are kept.
void PlugIn::takeChargePacket(ProductInfo& product) {
    product.name = itCbdCp.getString(fields.idxCpRateplanCode);
    product.internalRatePlan = itCbdCp.getString(fields.idxCpInternRateplan);
    product.ratePlanVersion = itCbdCp.getLong(fields.idxCpInternRateplanVersion);
    product.impactCategory = itCbdCp.getString(fields.idxCpImpactCategory);
    product.serviceCodeUsed = itCbdCp.getString(fields.idxCpServiceCodeUsed);
    product.serviceClassUsed = itCbdCp.getString(fields.idxCpServiceClassUsed);
    product.priceModelCodes.append(itCbdCp.getString(fields.idxCpPricemodelCode));
    // The price model's type is looked at and decides nothing: a packet of any type counts.
    auto const& type = itCbdCp.getString(fields.idxCpPricemodelType);
    static_cast<void>(std::find(std::begin(priceModelTypes), std::end(priceModelTypes), type));
}

// ---- Commands ----------------------------------------------------------------------------------

namespace {

void setDone(BAS::ProtectedBool& workDone) {
    if (!workDone.value()) {
        workDone.set(true);
    }
}

} // namespace

// A file that can't be opened absorbs the report without a word.
bool PlugIn::writeDumpFile(BAS::String const& path, BAS::ProtectedBool& workDone,
                           void (PlugIn::*writeReport)(std::ostream&)) {
    if (path.length() == 0) {
        BAS::Status status("ERR_REG_VALUE_INVALID", severityCritical, BAS::NULL_STRING);
        status.arguments().append("Event file name not specified.");
        setStatus(status, true);
        setDone(workDone);
        return false;
    }
    std::ofstream file{std::string(viewOf(path))};
    (this->*writeReport)(file);
    setDone(workDone);
    return true;
}

bool PlugIn::registryUpdate(BAS::RegistryEntry const* update, BAS::ProtectedBool& workDone) {
    if (registry() == nullptr || update == nullptr) {
        recordAndLog("ERR_REG_UPDATE_FAILED", severityCritical, ownName());
        return false;
    }
    if (auto const* const entry = update->find("DumpEvents")) {
        return writeDumpFile(entry->value(), workDone, &PlugIn::dumpAllEvents);
    }
    if (auto const* const entry = update->find("Dump")) {
        return writeDumpFile(entry->value(), workDone, &PlugIn::dumpAllInMemoryData);
    }
    if (update->find("ClearData") != nullptr) {
        eventMap.clear();
        eventQueue.clear();
    }
    setDone(workDone);
    return true;
}

// ---- The report of captured events -------------------------------------------------------------

namespace {

enum LineEnd { endLine };

// Puts a line together, in plain decimal whatever the stream's formatting is, and hands it to the
// stream in one piece when it ends: flushed, so that a report cut short shows every finished line.
class LineWriter {
public:
    explicit LineWriter(std::ostream& stream) : streamM(stream) {}

    LineWriter& operator<<(std::string_view text) {
        lineM += text;
        return *this;
    }
    LineWriter& operator<<(char const* text) { return *this << std::string_view(text); }
    LineWriter& operator<<(BAS::String const& text) { return *this << viewOf(text); }
    template <std::integral Number>
    LineWriter& operator<<(Number number) {
        char digits[std::numeric_limits<Number>::digits10 + 2];
        auto const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
        return *this << std::string_view(digits, end);
    }
    LineWriter& operator<<(LineEnd) {
        lineM += '\n';
        streamM.write(lineM.data(), static_cast<std::streamsize>(lineM.size())).flush();
        lineM.clear();
        return *this;
    }

    // For what others write between two lines.
    std::ostream& stream() noexcept { return streamM; }

private:
    std::ostream& streamM;
    std::string lineM;
};

constexpr char const* eventSeparator =
    "----------------------------------------------------------------------";

void writeEventRows(LineWriter& out, EventDetailRecord const& record) {
    out << "Event Service Id         = " << record.serviceId << endLine;
    out << "Event Service Type       = " << record.serviceType << endLine;
    out << "Event Event Type         = " << record.eventType << endLine;
    out << "Charging Start Time Stamp= " << record.chargingStartTime << endLine;
    out << "Event Account id         = " << record.accountInfo.accountId << endLine;
    out << "Event Balance Group id   = " << record.accountInfo.balanceGroupId << endLine;
}

void writePriceModelCodes(LineWriter& out, ProductInfo const& product) {
    out << "Used Price model codes: ";
    forEach(product.priceModelCodes, [&](BAS::String const& code) { out << code << "   "; });
    out << endLine;
}

void writeOwnDiscount(LineWriter& out, OwnDiscountInfo const& discount) {
    out << "    Discount Object id    : " << discount.objectId << endLine;
    out << "    Discount model name   : " << discount.name << endLine;
}

void writeSharingOwner(LineWriter& out, SharingAccountInfo const& owner) {
    out << "\n    Sharing owner info:" << endLine;
    out << "\n    Account id : " << owner.accountId << endLine;
    out << "\n    Owner id   : " << owner.ownerId << endLine;
    out << "\n    Owner Type : " << owner.ownerType << endLine;
    out << "\n    BalGrp id  : " << owner.balanceGroupId << endLine;
}

void writeSharedItem(LineWriter& out, SharedItemInfo const& item) {
    out << "     Discount/Sponsorship Object id    : " << item.objectId << endLine;
    out << "     Discount/Sponsorship model name   : " << item.name << endLine;
}

void writeRecord(LineWriter& out, EventDetailRecord const& record) {
    writeEventRows(out, record);
    out << "\n\n  Used Rating product info:" << endLine;
    out << "    Used Rate Plan code   : " << record.accountInfo.productInfo.name << endLine;
    out << "    ";
    writePriceModelCodes(out, record.accountInfo.productInfo);
    out << "\n\n  Event's own Discount:" << endLine;
    for (std::size_t i = 0; i < record.accountInfo.ownDiscounts.entries(); ++i) {
        writeOwnDiscount(out, record.accountInfo.ownDiscounts[i]);
    }
    out << "\n\n  DiscountSharing & Sponsorship:" << endLine;
    for (std::size_t i = 0; i < record.sharingMap.entries(); ++i) {
        auto const& [owner, items] = record.sharingMap[i];
        writeSharingOwner(out, owner);
        for (std::size_t j = 0; j < items.entries(); ++j) {
            writeSharedItem(out, items[j]);
        }
    }
}

// Calls the writer with each key and its record, which may be null, from the back of the queue to
// its front. An empty entry ends the walk.
template <class EventWriter>
void forEachEventFromOldest(EventQueue const& queue, long& dumpCounter, EventWriter writeEvent) {
    dumpCounter = static_cast<long>(queue.size());
    for (auto place = queue.rbegin(); place != queue.rend(); ++place) {
        --dumpCounter;
        if (*place == nullptr) {
            return;
        }
        writeEvent(**place, (*place)->hasRecord ? &(*place)->record : nullptr);
    }
}

} // namespace

void PlugIn::dumpAllEvents(std::ostream& out) {
    LineWriter writer(out);
    auto const writeEvent = [&](EventKey const& key, EventDetailRecord const* record) {
        writer << eventSeparator << endLine;
        writer << "Event type= Identifier=" << key.first << "   Service Code = " << key.second
               << endLine;
        if (record != nullptr) {
            writeRecord(writer, *record);
        }
        writer << eventSeparator << endLine;
    };
    forEachEventFromOldest(eventQueue, dumpCounter, writeEvent);
}

// ---- The dump of what the data modules hold ----------------------------------------------------

namespace {

// Writes the sections of one dump. The working lists are filled for the calls of a section and
// emptied between sections, owners and events. A module that is not configured is null, and
// what is left out with it depends on the section.
class InMemoryDataWriter {
public:
    struct Modules {
        DAT::Account::BatchPlugIn const* account;
        DAT::Rating::RateplanPlugIn const* ratePlan;
        DAT::Rating::PricePlugIn* price;
        DAT::Balance::PlugIn const* balance;
        DAT::Discount::PlugIn* discount;
    };

    InMemoryDataWriter(std::ostream& stream, Modules const& modules)
        : outM(stream), modulesM(modules) {}

    void writeHeading(EventKey const& key) {
        outM << "Begin: " << ++eventNumberM << endLine;
        outM << "======================================================================" << endLine;
        outM << "Event type: Identifier= " << key.first << "   Service Code = " << key.second
             << endLine;
    }

    void writeRecord(EventDetailRecord const& record) {
        clearLists();
        writeEventRows(outM, record);
        writeAccount(record);
        writeProduct(record.accountInfo.productInfo);
        writePriceModels(record.accountInfo.productInfo);
        if (modulesM.balance != nullptr) {
            writeEventBalances(record.accountInfo);
        }
        if (modulesM.discount != nullptr) {
            writeOwnDiscounts(record.accountInfo);
        }
        writeSharing(record);
    }

    void writeEnd() { outM << endLine << endLine; }

private:
    // The stream as every module is to find it.
    std::ostream& forModule() { return outM.stream() << std::setfill(' ') << std::setw(2); }

    void writeAccount(EventDetailRecord const& record) {
        outM << "\nEvent Account Info:" << endLine;
        outM << "--------------------" << endLine;
        if (modulesM.account != nullptr) {
            auto const serviceId = static_cast<long>(record.serviceId);
            modulesM.account->getDataDump(forModule(), record.identifier, serviceId,
                                          record.serviceType, record.eventType);
            outM << endLine;
        }
    }

    void writeProduct(ProductInfo const& product) {
        outM << "\nUsed Rating product Info:" << endLine;
        outM << "-------------------------" << endLine;
        outM << "Used Rate Plan code: " << product.name
             << " , Intern RatePlan Id: " << product.internalRatePlan
             << " , Intern RatePlan Version: " << product.ratePlanVersion
             << " , Impact Catagory: " << product.impactCategory << endLine;
        if (modulesM.ratePlan != nullptr) {
            modulesM.ratePlan->getDataDump(forModule(), product.name, product.ratePlanVersion,
                                           product.serviceCodeUsed, product.serviceClassUsed,
                                           product.impactCategory);
            outM << endLine;
        }
    }

    void writePriceModels(ProductInfo const& product) {
        writePriceModelCodes(outM, product);
        outM << "----------------------- " << endLine;
        if (modulesM.price != nullptr) {
            modulesM.price->getDataDump(forModule(), product.priceModelCodes);
            outM << endLine;
        }
    }

    void writeEventBalances(EventAccountInfo const& account) {
        outM << "\n\nEvent's owner Balance Information:" << account.balanceGroupId << endLine;
        writeBalances(account.balanceGroupId);
    }

    void writeBalances(unsigned long balanceGroupId) {
        idsM.append(balanceGroupId);
        modulesM.balance->getDataDump(forModule(), idsM);
        clearLists();
    }

    void writeOwnDiscounts(EventAccountInfo const& account) {
        outM << "\n\nEvent's own Discount:" << endLine;
        outM << "---------------------" << endLine;
        for (std::size_t i = 0; i < account.ownDiscounts.entries(); ++i) {
            auto const& discount = account.ownDiscounts[i];
            writeOwnDiscount(outM, discount);
            idsM.append(discount.objectId);
            namesM.append(discount.name);
            outM << endLine;
        }
        modulesM.discount->getDiscountObjectDataDump(forModule(), idsM);
        modulesM.discount->getDscModelDataDump(forModule(), namesM);
        clearLists();
    }

    void writeSharing(EventDetailRecord const& record) {
        outM << "\n\nAll DiscountSharing & Sponsorship Information:" << endLine;
        outM << "--------------------------------------------------" << endLine;
        for (std::size_t i = 0; i < record.sharingMap.entries(); ++i) {
            auto const& [owner, items] = record.sharingMap[i];
            clearLists();
            writeSharingOwner(outM, owner);
            if (modulesM.balance != nullptr) {
                // The heading names the event's balance group, the balances are the owner's.
                outM << "\n\nSharing owner Balance Information:"
                     << record.accountInfo.balanceGroupId << endLine;
                writeBalances(owner.balanceGroupId);
            }
            writeSharedItems(items);
        }
    }

    void writeSharedItems(RefillList<SharedItemInfo> const& items) {
        for (std::size_t i = 0; i < items.entries(); ++i) {
            auto const& item = items[i];
            writeSharedItem(outM, item);
            namesM.append(item.name);
            auto& ids = item.sharingType == SharingTypeDiscount ? idsM : sponsorshipIdsM;
            ids.append(item.objectId);
        }
        if (modulesM.discount != nullptr) {
            modulesM.discount->getDiscountObjectDataDump(forModule(), idsM);
            modulesM.discount->getSponsorshipObjectDataDump(forModule(), sponsorshipIdsM);
            modulesM.discount->getDscModelDataDump(forModule(), namesM);
        }
    }

    void clearLists() {
        idsM.clear();
        namesM.clear();
        sponsorshipIdsM.clear();
    }

    LineWriter outM;
    Modules modulesM;
    long eventNumberM = 0;
    // Balance group numbers or discount numbers.
    RWTValOrderedVector<unsigned long> idsM;
    // Discount model names.
    RWTValOrderedVector<BAS::String> namesM;
    RWTValOrderedVector<unsigned long> sponsorshipIdsM;
};

} // namespace

void PlugIn::dumpAllInMemoryData(std::ostream& out) {
    InMemoryDataWriter writer(out, {accountDataModule, rateplanDataModule, priceDataModule,
                                    balanceDataModule, discountDataModule});
    auto const writeEvent = [&](EventKey const& key, EventDetailRecord const* record) {
        writer.writeHeading(key);
        if (record != nullptr) {
            writer.writeRecord(*record);
        }
        writer.writeEnd();
    };
    forEachEventFromOldest(eventQueue, dumpCounter, writeEvent);
}

} // namespace FCT::DataDump

// The host's way in: builds the plug-in of that registry name and hands it over.
extern "C" __attribute__((visibility("default"))) BAS::RegisteredObject*
FCT_DataDumpModuleStart(BAS::String const& name) {
    return new FCT::DataDump::PlugIn(name, FCT::DataDump::moduleVersion);
}
