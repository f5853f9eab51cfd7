// A small host for the plug-in: registry, pipeline "Main", an EDR description with every field the
// plug-in asks for, a reference database in SQLite and data modules that record their calls.
#pragma once

#include "DAT/AccountBatchPlugIn.h"
#include "DAT/BalancePlugIn.h"
#include "DAT/DiscountPlugIn.h"
#include "DAT/RatingPricePlugIn.h"
#include "DAT/RatingRateplanPlugIn.h"
#include "DBC/DatabasePlugIn.h"
#include "support/EdrText.h"
#include "support/RegistryFixture.h"
#include "support/SqliteFile.h"
#include "support/TemporaryDirectory.h"

#include <map>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace DataDumpTest {

inline std::vector<std::string> const boundFields = {
    "DETAIL.A_NUMBER",
    "DETAIL.B_NUMBER",
    "DETAIL.INTERN_SERVICE_CODE",
    "DETAIL.SERVICE_TYPE",
    "DETAIL.EVENT_TYPE",
    "DETAIL.CONNECT_SUB_TYPE",
    "DETAIL.UTC_TIME_OFFSET",
    "DETAIL.INTERN_BALANCE_GROUP_ID",
    "DETAIL.ITEM_TAG",
    "DETAIL.OBJECT_CACHE_TYPE",
    "DETAIL.CUST_A.INTERN_FOUND_PP_INDEX",
    "DETAIL.CUST_A.PRODUCT.SERVICE_TYPE",
    "DETAIL.CUST_A.PRODUCT.SERVICE_ID",
    "DETAIL.CUST_A.ACCOUNT_PARENT_ID",
    "DETAIL.CHARGING_START_TIMESTAMP",
    "DETAIL.CHARGING_END_TIMESTAMP",
    "DETAIL.ASS_CBD.RECORD_TYPE",
    "DETAIL.ASS_CBD.CP.RATEPLAN_TYPE",
    "DETAIL.ASS_CBD.CP.RATEPLAN_CODE",
    "DETAIL.ASS_CBD.CP.PRICEMODEL_CODE",
    "DETAIL.ASS_CBD.CP.PRICEMODEL_TYPE",
    "DETAIL.ASS_CBD.CP.INTERN_RATEPLAN",
    "DETAIL.ASS_CBD.CP.INTERN_RATEPLAN_VERSION",
    "DETAIL.ASS_CBD.CP.IMPACT_CATEGORY",
    "DETAIL.ASS_CBD.CP.SERVICE_CODE_USED",
    "DETAIL.ASS_CBD.CP.SERVICE_CLASS_USED",
    "DETAIL.CUST_A.DL.BALANCE_GROUP_ID",
    "DETAIL.CUST_A.DL.DISCOUNT_OWNER_ACCT_ID",
    "DETAIL.CUST_A.DL.DISCOUNT_OWNER_ID",
    "DETAIL.CUST_A.DL.DISCOUNT_OWNER_TYPE",
    "DETAIL.CUST_A.DL.PD.DISCOUNT_MODEL",
    "DETAIL.CUST_A.DL.PD.DISCOUNT_ID",
    "DETAIL.CUST_A.SL.BALANCE_GROUP_ID",
    "DETAIL.CUST_A.SL.SPONSOR_OWNER_ACCT_ID",
    "DETAIL.CUST_A.SL.SPONSOR_OWNER_ID",
    "DETAIL.CUST_A.SL.SPONSOR_OWNER_TYPE",
    "DETAIL.CUST_A.SL.SD.DISCOUNT_MODEL",
    "DETAIL.CUST_A.SL.SD.SPONSORSHIP_ID",
};
inline std::vector<std::string> const boundBlocks = {
    "DETAIL.ASS_CBD",   "DETAIL.ASS_CBD.CP",   "DETAIL.ASS_CBD.DP", "DETAIL.ASS_CBD.DP.SUB_BALANCE",
    "DETAIL.CUST_A.DL", "DETAIL.CUST_A.DL.PD", "DETAIL.CUST_A.SL",  "DETAIL.CUST_A.SL.SD",
};

inline std::string const plugInName = "host.Pipelines.Main.Functions.DataDump.Module";

// What the data modules were asked, in order, with the stream's width and fill at each call. Each
// call writes the number 7.
class Calls {
public:
    void record(std::ostream& out, std::string const& call) {
        listM.push_back(call + " w" + std::to_string(out.width()) + "'" + out.fill() + "'");
        out << 7;
    }
    template <class Value>
    void record(std::ostream& out, std::string const& operation,
                RWTValOrderedVector<Value> const& values) {
        std::ostringstream call;
        call << operation << '{';
        for (std::size_t i = 0; i < values.entries(); ++i) {
            call << (i == 0 ? "" : ",") << values[i];
        }
        call << '}';
        record(out, call.str());
    }
    std::vector<std::string> const& list() const { return listM; }

private:
    std::vector<std::string> listM;
};

class Database : public DBC::DatabasePlugIn {
public:
    explicit Database(std::string const& connectionString)
        : DatabasePlugIn("host.DataPool.Login.Module"), connectionM(connectionString) {}
    RWDBConnection connection() const override { return connectionM; }

private:
    RWDBConnection connectionM;
};

class AccountModule : public DAT::Account::BatchPlugIn {
public:
    AccountModule(BAS::String const& name, Database* database, Calls& calls)
        : BatchPlugIn(name, "1"), databaseM(database), callsM(calls) {}
    DBC::DatabasePlugIn* database() const override { return databaseM; }
    void getDataDump(std::ostream& out, BAS::String const& customerId, long const& serviceId,
                     BAS::String const& serviceType, BAS::String const& eventType) const override {
        callsM.record(out, "account(" + customerId.str() + "," + std::to_string(serviceId) + "," +
                               serviceType.str() + "," + eventType.str() + ")");
    }

private:
    Database* databaseM;
    Calls& callsM;
};

class RateplanModule : public DAT::Rating::RateplanPlugIn {
public:
    RateplanModule(BAS::String const& name, Calls& calls)
        : RateplanPlugIn(name, "1"), callsM(calls) {}
    void getDataDump(std::ostream& out, BAS::String const& code, long const& version,
                     BAS::String const& serviceCode, BAS::String const& serviceClass,
                     BAS::String const& impactCategory) const override {
        callsM.record(out, "rateplan(" + code.str() + "," + std::to_string(version) + "," +
                               serviceCode.str() + "," + serviceClass.str() + "," +
                               impactCategory.str() + ")");
    }

private:
    Calls& callsM;
};

class PriceModule : public DAT::Rating::PricePlugIn {
public:
    PriceModule(BAS::String const& name, Calls& calls) : PricePlugIn(name, "1"), callsM(calls) {}
    void getDataDump(std::ostream& out, RWTValOrderedVector<BAS::String> const& codes) override {
        callsM.record(out, "price", codes);
    }

private:
    Calls& callsM;
};

class BalanceModule : public DAT::Balance::PlugIn {
public:
    BalanceModule(BAS::String const& name, Calls& calls) : PlugIn(name, "1"), callsM(calls) {}
    void getDataDump(std::ostream& out,
                     RWTValOrderedVector<unsigned long> const& ids) const override {
        callsM.record(out, "balance", ids);
    }

private:
    Calls& callsM;
};

class DiscountModule : public DAT::Discount::PlugIn {
public:
    DiscountModule(BAS::String const& name, Calls& calls) : PlugIn(name, "1"), callsM(calls) {}
    void getDiscountObjectDataDump(std::ostream& out,
                                   RWTValOrderedVector<unsigned long> const& ids) const override {
        callsM.record(out, "discounts", ids);
    }
    void
    getSponsorshipObjectDataDump(std::ostream& out,
                                 RWTValOrderedVector<unsigned long> const& ids) const override {
        callsM.record(out, "sponsorships", ids);
    }
    void getDscModelDataDump(std::ostream& out, RWTValOrderedVector<BAS::String>& names) override {
        callsM.record(out, "models", names);
    }

private:
    Calls& callsM;
};

class SmallHost {
public:
    // What may be changed before the host is prepared.
    std::map<std::string, std::string> keys = {{"AccountDataModule", "CustomerData"}};
    std::string leftOutOfDescription;
    std::string sql =
        "CREATE TABLE KWL_PIPELINE(PIPELINE TEXT, EDRC_DESC TEXT);"
        "CREATE TABLE KWL_ALIAS_MAP(KEY_ID TEXT, REFERENCE TEXT, EDRC_DESC TEXT, FIELD_ID INTEGER);"
        "CREATE TABLE KWL_EDRC_FIELD(FIELD_ID INTEGER, FIELD_NAME TEXT);"
        "INSERT INTO KWL_PIPELINE VALUES('Main', 'ALL'), ('Other', 'REST');"
        "INSERT INTO KWL_EDRC_FIELD VALUES(1, 'DETAIL.A_NUMBER'), (2, 'DETAIL.B_NUMBER'),"
        "                                 (3, 'DETAIL.NOWHERE');"
        "INSERT INTO KWL_ALIAS_MAP VALUES('TEL', 'Account_CustA', 'ALL', 1),"
        "                                ('SMS', 'UniData_CustA', 'ALL', 2),"
        "                                ('FAX', 'Account_CustB', 'ALL', 2),"
        "                                ('NET', 'Account_CustA', 'REST', 1);";

    // Makes everything that a plug-in finds when it is built.
    void prepare() {
        using EDR::FieldType;
        for (auto const& block : boundBlocks) {
            if (!block.starts_with(leftOutOfDescription) || leftOutOfDescription.empty()) {
                support::describeBlock(description, block);
            }
        }
        for (auto const& field : boundFields) {
            if (field != leftOutOfDescription &&
                !field.starts_with(leftOutOfDescription.empty() ? "-"
                                                                : leftOutOfDescription + ".")) {
                support::describeField(description, field,
                                       field.ends_with("TIMESTAMP")  ? FieldType::dateTime
                                       : field.ends_with("_INDEX")   ? FieldType::number
                                       : field.ends_with("_VERSION") ? FieldType::number
                                                                     : FieldType::text);
            }
        }
        registry.add("Pipelines.Main.Functions.DataDump.Module");
        for (auto const& [key, value] : keys) {
            registry.add("Pipelines.Main.Functions.DataDump.Module." + key, value);
        }
        auto const databaseFile = (directory.path() / "reference.db").string();
        support::runSql(databaseFile, sql);
        database = std::make_unique<Database>("sqlite3://db=" + databaseFile);
        account = std::make_unique<AccountModule>("host.DataPool.CustomerData.Module",
                                                  database.get(), calls);
    }

    support::TemporaryDirectory directory;
    support::RegistryFixture registry;
    EDR::Description description;
    EDR::Factory factory{description};
    PLG::Pipeline pipeline{"host.Pipelines.Main", factory, registry.pipelineLog};
    Calls calls;
    std::unique_ptr<Database> database;
    std::unique_ptr<AccountModule> account;
};

} // namespace DataDumpTest
