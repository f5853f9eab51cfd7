// What every way of capturing has in common: a plug-in that starts like the real one, makes the
// same host reads and number conversions for each EDR and hands the values to a keeper. With a
// keeper that keeps nothing it is the floor against which the others are measured.
#pragma once

#include "DataDumpPlugIn.h"
#include "FCT/AccountServiceFieldMapEntry.h"

#include <algorithm>

namespace bench {

// The values of one event, as the host's reads return them; they stand until the EDR changes.
struct EventHead {
    BAS::String const& identifier;
    BAS::String const& serviceCode;
    BAS::String const& eventType;
    BAS::String const& serviceType;
    unsigned long serviceId;
    unsigned long accountId;
    unsigned long balanceGroupId;
    unsigned long startTime;
};
struct OwnerBlock {
    unsigned long balanceGroupId;
    unsigned long accountId;
    unsigned long ownerId;
    BAS::String const& ownerType;
};
struct ChargePacket {
    BAS::String const& ratePlan;
    BAS::String const& internalRatePlan;
    long ratePlanVersion;
    BAS::String const& impactCategory;
    BAS::String const& serviceCodeUsed;
    BAS::String const& serviceClassUsed;
    BAS::String const& priceModel;
    BAS::String const& priceModelType;
};

// A keeper has event(EventHead), then for each owner block owner(OwnerBlock, sponsors) and
// item(id, model), then packet(ChargePacket) for each matching charge packet.
template <class Keeper>
class EventReading : public FCT::DataDump::PlugIn {
public:
    template <class... Arguments>
    explicit EventReading(BAS::String const& name, Arguments&&... arguments)
        : PlugIn(name, "1"), keeperM(std::forward<Arguments>(arguments)...) {}

    bool processEdrContainer(RWTPtrOrderedVector<EDR::Container>& batch) override {
        for (std::size_t i = 0; i < batch.entries(); ++i) {
            if (batch[i]->recordKind() == EDR::detailRecord) {
                read(batch[i]);
            }
        }
        return true;
    }

private:
    void read(EDR::Container* edr) {
        auto const startTime = getGMTStartTime(edr);
        auto const& serviceCode = edr->getString(fields.idxInternServiceCode);
        auto const service = serviceFieldMap.find(&serviceCode);
        if (service == serviceFieldMap.end() || !service->second->aField().isValid()) {
            return;
        }
        auto const& identifier = edr->getString(service->second->aField());
        static_cast<void>(edr->getString(fields.idxServiceType));
        auto const& eventType = edr->getString(fields.idxEventType);
        auto const balanceGroup = number(edr->getString(fields.idxBalanceGroupId));
        currentObjects[1] = edr->getLong(fields.idxFoundPPIndex);
        keeperM.event({identifier, serviceCode, eventType,
                       edr->getString(fields.idxProductServiceType, currentObjects),
                       number(edr->getString(fields.idxProductServiceId, currentObjects)),
                       number(edr->getString(fields.idxAccountParentId, currentObjects)),
                       balanceGroup, startTime});
        readOwners(edr, itDlPd, blocks.blkCustADl, blocks.blkDlPd,
                   {fields.idxDlBalanceGroupId, fields.idxDlDiscountOwnerAcctId,
                    fields.idxDlDiscountOwnerId, fields.idxDlDiscountOwnerType,
                    fields.idxPdDiscountId, fields.idxPdDiscountModel},
                   false);
        readOwners(edr, itSlSd, blocks.blkCustASl, blocks.blkSlSd,
                   {fields.idxSlBalanceGroupId, fields.idxSlSponsorOwnerAcctId,
                    fields.idxSlSponsorOwnerId, fields.idxSlSponsorOwnerType,
                    fields.idxSdSponsorshipId, fields.idxSdDiscountModel},
                   true);
        readPackets(edr);
    }

    struct OwnerFields {
        EDR::Index const& balanceGroupId;
        EDR::Index const& accountId;
        EDR::Index const& ownerId;
        EDR::Index const& ownerType;
        EDR::Index const& itemId;
        EDR::Index const& itemModel;
    };

    void readOwners(EDR::Container* edr, EDR::Iterator& iterator, EDR::BlockIndex const& ownerBlock,
                    EDR::BlockIndex const& itemBlock, OwnerFields const& from, bool sponsors) {
        iterator.reset(edr);
        while (iterator(ownerBlock)) {
            keeperM.owner({number(iterator.getString(from.balanceGroupId)),
                           number(iterator.getString(from.accountId)),
                           number(iterator.getString(from.ownerId)),
                           iterator.getString(from.ownerType)},
                          sponsors);
            while (iterator(itemBlock)) {
                keeperM.item(number(iterator.getString(from.itemId)),
                             iterator.getString(from.itemModel));
            }
        }
    }

    void readPackets(EDR::Container* edr) {
        itCbdCp.reset(edr);
        while (itCbdCp(blocks.blkAssCbd)) {
            if (!listed(cbdRecordTypes, itCbdCp.getString(fields.idxCbdRecordType))) {
                continue;
            }
            while (itCbdCp(blocks.blkCbdCp)) {
                if (listed(ratePlanTypes, itCbdCp.getString(fields.idxCpRateplanType))) {
                    keeperM.packet({itCbdCp.getString(fields.idxCpRateplanCode),
                                    itCbdCp.getString(fields.idxCpInternRateplan),
                                    itCbdCp.getLong(fields.idxCpInternRateplanVersion),
                                    itCbdCp.getString(fields.idxCpImpactCategory),
                                    itCbdCp.getString(fields.idxCpServiceCodeUsed),
                                    itCbdCp.getString(fields.idxCpServiceClassUsed),
                                    itCbdCp.getString(fields.idxCpPricemodelCode),
                                    itCbdCp.getString(fields.idxCpPricemodelType)});
                }
            }
        }
    }

    static unsigned long number(BAS::String const& identifier) {
        return FCT::DataDump::objectNumber(identifier);
    }
    static bool listed(RWTValOrderedVector<BAS::String> const& texts, BAS::String const& text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }

    Keeper keeperM;
};

} // namespace bench
