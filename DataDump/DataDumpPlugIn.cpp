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
#include "RW/RWZone.h"

#include <algorithm>
#include <charconv>
#include <concepts>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <limits>
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

bool contains(RWTValOrderedVector<BAS::String> const& texts, BAS::String const& text) {
    for (std::size_t i = 0; i < texts.entries(); ++i) {
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

unsigned long unixSeconds(unsigned long seconds) {
    return seconds > BAS::DateTime::rwToUnixSecsCM ? seconds - BAS::DateTime::rwToUnixSecsCM : 0;
}

} // namespace

unsigned long objectNumber(BAS::String const& identifier) {
    auto const* const end = identifier.data() + identifier.length();
    auto const* at = std::find(identifier.data(), end, '_');
    if (at != end) {
        ++at;
    }
    while (at != end && isBlank(*at)) {
        ++at;
    }
    bool const negative = at != end && *at == '-';
    if (negative || (at != end && *at == '+')) {
        ++at;
    }
    // Any number of that many digits is in range; what is out of range ends at the nearest signed
    // number.
    constexpr std::ptrdiff_t safeDigits = std::numeric_limits<long>::digits10;
    auto const* const safeEnd = at + std::min(end - at, safeDigits);
    unsigned long const limit = std::numeric_limits<long>::max() + (negative ? 1UL : 0UL);
    unsigned long number = 0;
    unsigned digit = 0;
    for (; at != safeEnd && (digit = digitOf(*at)) < 10; ++at) {
        number = number * 10 + digit;
    }
    for (; at != end && (digit = digitOf(*at)) < 10; ++at) {
        number = number > (limit - digit) / 10 ? limit : number * 10 + digit;
    }
    return negative ? 0 - number : number;
}

// ---- What is kept of one event -----------------------------------------------------------------

SharingMap::Place SharingMap::findOrInsert(unsigned long ownerId) {
    auto const place = std::lower_bound(orderM.begin(), orderM.end(), ownerId,
                                        [&](std::uint32_t position, unsigned long id) {
                                            return entriesM[position].owner.ownerId < id;
                                        });
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

void EventDetailRecord::prepareForRefill() noexcept {
    accountInfo.ownDiscounts.clear();
    accountInfo.productInfo.priceModelCodes.clear();
    sharingMap.clear();
}

void EventDetailRecord::startAnew(BAS::String const& customer, BAS::String const& service) {
    auto& product = accountInfo.productInfo;
    for (auto* const text :
         {&eventType, &serviceType, &product.name, &product.internalRatePlan,
          &product.impactCategory, &product.serviceCodeUsed, &product.serviceClassUsed}) {
        text->clear();
    }
    identifier = customer;
    serviceCode = service;
    serviceId = 0;
    chargingStartTime = 0;
    accountInfo.accountId = 0;
    accountInfo.balanceGroupId = 0;
    product.ratePlanVersion = 0;
    prepareForRefill();
}

// ---- The bounded store of events ---------------------------------------------------------------

namespace {

std::size_t hashOf(EventKey const& key) noexcept {
    std::hash<std::string_view> const hash;
    constexpr std::size_t oddMultiplier = 0x9e3779b97f4a7c15;
    return hash(viewOf(key.first)) * oddMultiplier + hash(viewOf(key.second));
}

} // namespace

EventMap::HashedKey::HashedKey(EventKey const& ofKey) noexcept : key(ofKey), hash(hashOf(ofKey)) {
}

CapturedEvent* EventMap::find(HashedKey const& sought) const noexcept {
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

// Frees the event's slot and closes the gap: every event behind it that may stand nearer to its
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

void EventQueue::pushFront(CapturedEvent* event) noexcept {
    linkAtFront(event == nullptr ? emptyEntryM : *event);
    ++countM;
}

void EventQueue::moveToFront(CapturedEvent& event) noexcept {
    unlink(event);
    linkAtFront(event);
}

CapturedEvent* EventQueue::removeBack() noexcept {
    auto& back = *endsM.newer;
    unlink(back);
    --countM;
    return &back == &emptyEntryM ? nullptr : static_cast<CapturedEvent*>(&back);
}

void EventQueue::clear() noexcept {
    endsM.newer = &endsM;
    endsM.older = &endsM;
    countM = 0;
}

void EventQueue::linkAtFront(QueueEntry& entry) noexcept {
    entry.newer = &endsM;
    entry.older = endsM.older;
    endsM.older->newer = &entry;
    endsM.older = &entry;
}

void EventQueue::unlink(QueueEntry& entry) noexcept {
    entry.newer->older = entry.older;
    entry.older->newer = entry.newer;
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
    // Nothing derives from this class at run time that could override a step.
    if (isValid()) {
        setValid(PlugIn::readRegistry());
    }
    if (isValid()) {
        setValid(PlugIn::setEDRContainerIndices());
    }
    if (isValid()) {
        setValid(initServiceFieldMap());
    }
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
    setStatus(status, log);
    writeToPipelineLog(status);
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
    module = dynamic_cast<Module*>(findRegisteredObject(entry->value()));
    if (module == nullptr) {
        reportWrongModule(entry->value(), errorForm);
    }
    return module != nullptr;
}

void PlugIn::reportWrongModule(BAS::String const& reference, ErrorForm errorForm) {
    if (errorForm == ErrorForm::statusThenLog) {
        recordAndLog("ERR_PLUGIN_TYPE_INVALID", severityCritical, reference);
    } else {
        setStatus("ERR_PLUGIN_TYPE_INVALID", severityCritical, reference, true);
    }
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
    for (std::size_t i = 0; i < pieces.entries(); ++i) {
        if (pieces[i] != defaultType) {
            types.append(pieces[i]);
        }
    }
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
    std::string_view path;
    std::string_view alias;
};

// Each handle of the set stands in exactly one binding, and each path in one.
template <class Handle, class Handles, std::size_t count>
constexpr bool bindsEachOnce(Binding<Handle, Handles> const (&bindings)[count]) {
    static_assert(sizeof(Handles) == count * sizeof(Handle), "a handle has no binding");
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (bindings[i].handle == bindings[j].handle || bindings[i].path == bindings[j].path) {
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
    BAS::String const moduleReference = PBC::ModuleReference(directory);
    try {
        for (auto const& binding : fieldBindings) {
            fields.*binding.handle = edrFactoryM->getIndex(
                moduleName, BAS::String(binding.path), BAS::String(binding.alias), moduleReference);
        }
        for (auto const& binding : blockBindings) {
            blocks.*binding.handle = edrFactoryM->getBlockIndex(
                moduleName, BAS::String(binding.path), BAS::String(binding.alias), moduleReference);
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

RWDBReader PlugIn::selectServiceFields(BAS::String const& pipelineName) const {
    auto const database = accountDatabase->connection().database();
    auto const pipelines = database.table("KWL_PIPELINE");
    auto const aliases = database.table("KWL_ALIAS_MAP");
    auto const edrFields = database.table("KWL_EDRC_FIELD");
    auto const reference = aliases["REFERENCE"];
    auto selector = database.selector();
    selector << aliases["KEY_ID"] << reference << edrFields["FIELD_NAME"];
    selector.where((((pipelines["PIPELINE"] == pipelineName) &&
                     (pipelines["EDRC_DESC"] == aliases["EDRC_DESC"])) &&
                    (aliases["FIELD_ID"] == edrFields["FIELD_ID"])) &&
                   ((((reference == accountCustomerA) || (reference == uniDataCustomerA)) ||
                     (reference == accountCustomerB)) ||
                    (reference == uniDataCustomerB)));
    return selector.reader();
}

bool PlugIn::initServiceFieldMap() {
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
    BAS::String const pipelineName(viewOf(pipeline).substr(lastDot + 1));
    auto reader = selectServiceFields(pipelineName);
    bool anyRow = false;
    BAS::String serviceCode;
    BAS::String reference;
    BAS::String fieldName;
    while (reader()) {
        reader >> serviceCode >> reference >> fieldName;
        if (!reader.isValid()) {
            break;
        }
        anyRow = true;
        try {
            if (!addServiceField(serviceCode, reference, fieldName)) {
                return false;
            }
        } catch (BAS::Status const& fieldNotFound) {
            reportThrown(fieldNotFound, false);
            return false;
        }
    }
    if (!reader.isValid()) {
        recordAndLog("ERR_DATABASE", severityCritical,
                     DBC::DatabasePlugIn::errorMessage(reader.status()));
        return false;
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
    for (std::size_t i = 0; i < batch.entries(); ++i) {
        if (batch[i]->recordKind() == detailRecordKind) {
            capture(batch[i]);
        }
    }
    return true;
}

void PlugIn::capture(EDR::Container* container) {
    auto const startTime = getGMTStartTime(container);
    auto const& serviceCode = container->getString(fields.idxInternServiceCode);
    auto const service = serviceFieldMap.find(&serviceCode);
    if (service == serviceFieldMap.end() || service->second == nullptr ||
        !service->second->aField().isValid()) {
        return;
    }
    auto const& identifier = container->getString(service->second->aField());
    // Read like every head field of an event, and not kept: the product's service type is.
    static_cast<void>(container->getString(fields.idxServiceType));
    auto const& eventType = container->getString(fields.idxEventType);
    auto const balanceGroupId = objectNumber(container->getString(fields.idxBalanceGroupId));
    currentObjects[productPosition] = container->getLong(fields.idxFoundPPIndex);
    auto const& serviceType = container->getString(fields.idxProductServiceType, currentObjects);
    auto const serviceId =
        objectNumber(container->getString(fields.idxProductServiceId, currentObjects));
    auto const accountId =
        objectNumber(container->getString(fields.idxAccountParentId, currentObjects));

    currentKey.first = identifier;
    currentKey.second = serviceCode;
    auto* const key = checkUniquenessInQueue(currentKey);
    EventDetailRecord* record = nullptr;
    if (key == nullptr || !checkForEventAllocation(key, record) || record == nullptr) {
        return;
    }
    try {
        record->accountInfo.accountId = accountId;
        record->accountInfo.balanceGroupId = balanceGroupId;
        record->serviceType = serviceType;
        record->serviceId = serviceId;
        record->chargingStartTime = startTime;
        record->eventType = eventType;
        populateDiscAndSpon(container, key, record);
        populateProductInfo(container, key, record);
    } catch (...) {
        // What is filled half belongs to no EDR: until its next one the key is without a record.
        key->hasRecord = false;
        throw;
    }
}

CapturedEvent* PlugIn::checkUniquenessInQueue(EventKey const& key) {
    if (eventQueue.entries() == 0 && numberOfEvents == 0) {
        eventQueue.pushFront(nullptr);
        return nullptr;
    }
    // The queue holds the events of the map, each once, and an empty entry equals no key: so what
    // the map finds is what a search of the queue from its front would find first.
    EventMap::HashedKey const hashed(key);
    if (auto* const known = eventMap.find(hashed)) {
        eventQueue.moveToFront(*known);
        return known;
    }
    if (eventQueue.entries() < numberOfEvents) {
        auto& added = eventMap.add(hashed);
        eventQueue.pushFront(&added);
        return &added;
    }
    auto* const oldest = eventQueue.removeBack();
    if (oldest != nullptr) {
        eventMap.rename(*oldest, hashed);
    }
    eventQueue.pushFront(oldest);
    return oldest;
}

bool PlugIn::checkForEventAllocation(CapturedEvent* key, EventDetailRecord*& record) {
    record = &key->record;
    if (key->hasRecord) {
        record->prepareForRefill();
    } else {
        record->startAnew(key->first, key->second);
        key->hasRecord = true;
    }
    return true;
}

unsigned long PlugIn::getGMTStartTime(EDR::Container const* container) const {
    int offset = 0;
    container->getString(fields.idxUtcTimeOffset).toNum(offset);
    auto const chargingStart = container->getDateTime(fields.idxChargingStart);
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

namespace {

void appendShared(RefillList<SharedItemInfo>& items, unsigned long id, BAS::String const& model,
                  BAS::String const& sharingType) {
    auto& item = items.append();
    item.objectId = id;
    item.name = model;
    item.sharingType = sharingType;
}

} // namespace

bool PlugIn::populateDiscAndSpon(EDR::Container* container, EventKey const* /*key*/,
                                 EventDetailRecord* record) {
    return populateDiscounts(container, record) && populateSponsorships(container, record);
}

bool PlugIn::populateDiscounts(EDR::Container* container, EventDetailRecord* record) {
    OwnerFields const ownerFields{fields.idxDlBalanceGroupId, fields.idxDlDiscountOwnerAcctId,
                                  fields.idxDlDiscountOwnerId, fields.idxDlDiscountOwnerType};
    if (!itDlPd.reset(container)) {
        return false;
    }
    while (itDlPd(blocks.blkCustADl)) {
        auto const owner = readOwner(itDlPd, ownerFields);
        bool const own = owner.accountId == record->accountInfo.accountId;
        auto* const shared = own ? nullptr : &sharedItems(*record, owner);
        while (itDlPd(blocks.blkDlPd)) {
            auto const& model = itDlPd.getString(fields.idxPdDiscountModel);
            auto const id = objectNumber(itDlPd.getString(fields.idxPdDiscountId));
            if (shared == nullptr) {
                auto& discount = record->accountInfo.ownDiscounts.append();
                discount.objectId = id;
                discount.name = model;
            } else {
                appendShared(*shared, id, model, SharingTypeDiscount);
            }
        }
    }
    return true;
}

// The sponsor blocks are walked by the sponsorship iterator and read through the discount iterator:
// a field is read at the cursor of its own block kind, whichever iterator asks.
bool PlugIn::populateSponsorships(EDR::Container* container, EventDetailRecord* record) {
    OwnerFields const ownerFields{fields.idxSlBalanceGroupId, fields.idxSlSponsorOwnerAcctId,
                                  fields.idxSlSponsorOwnerId, fields.idxSlSponsorOwnerType};
    if (!itSlSd.reset(container)) {
        return false;
    }
    while (itSlSd(blocks.blkCustASl)) {
        auto const owner = readOwner(itDlPd, ownerFields);
        // What an account sponsors for itself is not recorded.
        bool const own = owner.accountId == record->accountInfo.accountId;
        auto* const shared = own ? nullptr : &sharedItems(*record, owner);
        while (itSlSd(blocks.blkSlSd)) {
            auto const& model = itDlPd.getString(fields.idxSdDiscountModel);
            auto const id = objectNumber(itDlPd.getString(fields.idxSdSponsorshipId));
            if (shared != nullptr) {
                appendShared(*shared, id, model, SharingTypeSponsor);
            }
        }
    }
    return true;
}

PlugIn::Owner PlugIn::readOwner(EDR::Iterator const& iterator, OwnerFields const& from) {
    return {objectNumber(iterator.getString(from.balanceGroupId)),
            objectNumber(iterator.getString(from.accountId)),
            objectNumber(iterator.getString(from.ownerId)), iterator.getString(from.ownerType)};
}

// An owner that is known already keeps the fields of the block in which it was met first.
RefillList<SharedItemInfo>& PlugIn::sharedItems(EventDetailRecord& record, Owner const& owner) {
    auto const place = record.sharingMap.findOrInsert(owner.ownerId);
    if (place.isNew) {
        place.entry.owner.accountId = owner.accountId;
        place.entry.owner.balanceGroupId = owner.balanceGroupId;
        place.entry.owner.ownerType = owner.ownerType;
    }
    return place.entry.items;
}

bool PlugIn::populateProductInfo(EDR::Container* container, EventKey const* /*key*/,
                                 EventDetailRecord* record) {
    if (!itCbdCp.reset(container)) {
        return false;
    }
    // What one packet says of the product the next one overwrites, so only the last is copied.
    std::optional<ChargePacket> last;
    auto& product = record->accountInfo.productInfo;
    while (itCbdCp(blocks.blkAssCbd)) {
        if (!contains(cbdRecordTypes, itCbdCp.getString(fields.idxCbdRecordType))) {
            continue;
        }
        while (itCbdCp(blocks.blkCbdCp)) {
            if (!contains(ratePlanTypes, itCbdCp.getString(fields.idxCpRateplanType))) {
                continue;
            }
            last.emplace(readChargePacket());
            product.priceModelCodes.append(itCbdCp.getString(fields.idxCpPricemodelCode));
            // The price model's type is looked at and decides nothing: a packet of any type counts.
            auto const& type = itCbdCp.getString(fields.idxCpPricemodelType);
            static_cast<void>(
                std::find(std::begin(priceModelTypes), std::end(priceModelTypes), type));
        }
    }
    if (last) {
        product.name = last->ratePlanCode;
        product.internalRatePlan = last->internalRatePlan;
        product.ratePlanVersion = last->ratePlanVersion;
        product.impactCategory = last->impactCategory;
        product.serviceCodeUsed = last->serviceCodeUsed;
        product.serviceClassUsed = last->serviceClassUsed;
    }
    return true;
}

PlugIn::ChargePacket PlugIn::readChargePacket() const {
    return {itCbdCp.getString(fields.idxCpRateplanCode),
            itCbdCp.getString(fields.idxCpInternRateplan),
            itCbdCp.getLong(fields.idxCpInternRateplanVersion),
            itCbdCp.getString(fields.idxCpImpactCategory),
            itCbdCp.getString(fields.idxCpServiceCodeUsed),
            itCbdCp.getString(fields.idxCpServiceClassUsed)};
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
template <class Writer>
bool PlugIn::writeDumpFile(BAS::String const& path, BAS::ProtectedBool& workDone, Writer writer) {
    if (path.length() == 0) {
        BAS::Status status("ERR_REG_VALUE_INVALID", severityCritical, BAS::NULL_STRING);
        status.arguments().append("Event file name not specified.");
        setStatus(status, true);
        setDone(workDone);
        return false;
    }
    std::ofstream file(path.data());
    (this->*writer)(file);
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
    for (std::size_t i = 0; i < product.priceModelCodes.entries(); ++i) {
        out << product.priceModelCodes[i] << "   ";
    }
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

} // namespace

// Calls the writer with each key and its record, which may be null, from the back of the queue to
// its front. An empty entry ends the walk.
template <class EventWriter>
void PlugIn::forEachEventFromOldest(EventWriter writeEvent) {
    dumpCounter = static_cast<long>(eventQueue.entries());
    for (auto const* const event : eventQueue) {
        --dumpCounter;
        if (event == nullptr) {
            return;
        }
        writeEvent(*event, event->hasRecord ? &event->record : nullptr);
    }
}

void PlugIn::dumpAllEvents(std::ostream& out) {
    LineWriter writer(out);
    forEachEventFromOldest([&](EventKey const& key, EventDetailRecord const* record) {
        writer << eventSeparator << endLine;
        writer << "Event type= Identifier=" << key.first << "   Service Code = " << key.second
               << endLine;
        if (record != nullptr) {
            writeRecord(writer, *record);
        }
        writer << eventSeparator << endLine;
    });
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
    forEachEventFromOldest([&](EventKey const& key, EventDetailRecord const* record) {
        writer.writeHeading(key);
        if (record != nullptr) {
            writer.writeRecord(*record);
        }
        writer.writeEnd();
    });
}

} // namespace FCT::DataDump

// The host's way in: builds the plug-in of that registry name and hands it over.
extern "C" __attribute__((visibility("default"))) BAS::RegisteredObject*
FCT_DataDumpModuleStart(BAS::String const& name) {
    return new FCT::DataDump::PlugIn(name, FCT::DataDump::moduleVersion);
}
