// A plug-in in a small host, with its inside open to tests.
#pragma once

#include "BAS/ProtectedBool.h"
#include "DataDump/SmallHost.h"
#include "DataDumpPlugIn.h"
#include "FCT/AccountServiceFieldMapEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace DataDumpTest {

// The plug-in with its inside open to tests.
class Probe : public FCT::DataDump::PlugIn {
public:
    using PlugIn::accountDatabase;
    using PlugIn::accountDataModule;
    using PlugIn::addEvent;
    using PlugIn::applyUTCOffset;
    using PlugIn::balanceDataModule;
    using PlugIn::bindIterators;
    using PlugIn::blocks;
    using PlugIn::cbdRecordTypes;
    using PlugIn::discountDataModule;
    using PlugIn::dumpAllEvents;
    using PlugIn::dumpAllInMemoryData;
    using PlugIn::dumpCounter;
    using PlugIn::eventMap;
    using PlugIn::eventQueue;
    using PlugIn::fields;
    using PlugIn::initServiceFieldMap;
    using PlugIn::itCbdCp;
    using PlugIn::itDlPd;
    using PlugIn::itSlSd;
    using PlugIn::numberOfEvents;
    using PlugIn::priceDataModule;
    using PlugIn::rateplanDataModule;
    using PlugIn::ratePlanTypes;
    using PlugIn::serviceFieldMap;

    explicit Probe(std::string const& name) : PlugIn(name, "10003") {}
};

inline std::vector<std::string> texts(RWTValOrderedVector<BAS::String> const& values) {
    std::vector<std::string> result;
    for (auto const& value : values) {
        result.push_back(value.str());
    }
    return result;
}

// An EDR with lists of every kind, each of whose texts is that one.
inline std::vector<support::EdrStep> fullEdr(char const* customer, char const* text) {
    return {{"INTERN_SERVICE_CODE", "TEL"},
            {"A_NUMBER", customer},
            {"EVENT_TYPE", text},
            {"CUST_A"},
            {"CUST_A.ACCOUNT_PARENT_ID", "1_1"},
            {"CUST_A.PRODUCT"},
            {"CUST_A.PRODUCT.SERVICE_TYPE", text},
            {"CUST_A.DL"},
            {"CUST_A.DL.DISCOUNT_OWNER_ACCT_ID", "1_1"},
            {"CUST_A.DL.PD"},
            {"CUST_A.DL.PD.DISCOUNT_MODEL", text},
            {"CUST_A.DL"},
            {"CUST_A.DL.DISCOUNT_OWNER_ID", "1_7"},
            {"CUST_A.DL.DISCOUNT_OWNER_TYPE", text},
            {"CUST_A.DL.PD"},
            {"CUST_A.DL.PD.DISCOUNT_MODEL", text},
            {"CUST_A.SL"},
            {"CUST_A.SL.SPONSOR_OWNER_ID", "1_8"},
            {"CUST_A.SL.SPONSOR_OWNER_TYPE", text},
            {"CUST_A.SL.SD"},
            {"CUST_A.SL.SD.DISCOUNT_MODEL", text},
            {"ASS_CBD"},
            {"ASS_CBD.RECORD_TYPE", "981"},
            {"ASS_CBD.CP"},
            {"ASS_CBD.CP.RATEPLAN_TYPE", "R"},
            {"ASS_CBD.CP.RATEPLAN_CODE", text},
            {"ASS_CBD.CP.PRICEMODEL_CODE", text},
            {"ASS_CBD.CP"},
            {"ASS_CBD.CP.RATEPLAN_TYPE", "R"},
            {"ASS_CBD.CP.RATEPLAN_CODE", text},
            {"ASS_CBD.CP.PRICEMODEL_CODE", text}};
}

class PlugInFixture : public testing::Test, protected SmallHost {
protected:
    Probe& start(std::string const& name = plugInName) {
        prepare();
        plugIn = std::make_unique<Probe>(name);
        return *plugIn;
    }

    // Hands the plug-in one EDR; see support::fill.
    void process(std::vector<support::EdrStep> const& steps,
                 EDR::RecordKind kind = EDR::detailRecord) {
        EDR::Container container(description);
        support::fill(container, description, steps, kind);
        RWTPtrOrderedVector<EDR::Container> batch;
        batch.append(&container);
        ASSERT_TRUE(plugIn->processEdrContainer(batch));
    }
    // An EDR of the service TEL with nothing but a customer.
    void processCustomer(char const* customer) {
        process({{"INTERN_SERVICE_CODE", "TEL"}, {"A_NUMBER", customer}});
    }

    FCT::DataDump::EventDetailRecord* recordOf(char const* customer,
                                               char const* serviceCode = "TEL") {
        auto* const event = plugIn->eventMap.find(FCT::DataDump::EventKey(customer, serviceCode));
        return event == nullptr || !event->hasRecord ? nullptr : &event->record;
    }
    // The customers in the queue, front to back.
    std::vector<std::string> queued() const {
        std::vector<std::string> customers;
        for (auto const* event : plugIn->eventQueue) {
            customers.push_back(event == nullptr ? "(empty)" : event->first.str());
        }
        return customers;
    }
    // Puts a key without a record to the front of the queue.
    void putKey(char const* customer) {
        plugIn->addEvent(FCT::DataDump::EventKey(customer, "TEL"));
    }
    std::string report() {
        std::ostringstream out;
        plugIn->dumpAllEvents(out);
        return out.str();
    }
    bool update(std::vector<std::pair<std::string, std::string>> const& command,
                BAS::ProtectedBool& workDone) {
        BAS::RegistryEntry entry("update");
        for (auto const& [key, value] : command) {
            entry.add(key, value);
        }
        return plugIn->registryUpdate(&entry, workDone);
    }

    std::unique_ptr<Probe> plugIn;
};

} // namespace DataDumpTest
