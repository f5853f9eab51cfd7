// What every data module of the stand-alone host has in common: a plug-in that loads its data from
// the reference database when it is built, through the database module that its registry key
// "Database" names. The data does not change afterwards, so dumps may run on any thread.
//
// Base is the framework's class of the module; Data has
//     void load(RWDBConnection const&, RowReport const&)
// and may throw std::exception, which leaves the module invalid with the status "ERR_DATABASE".
#pragma once

#include "TableLoader.h"

#include "BAS/RegistryEntry.h"
#include "DBC/DatabasePlugIn.h"

#include <exception>

namespace MOD {

template <class Base, class Data>
class DataModule : public Base {
public:
    explicit DataModule(BAS::String const& name);

protected:
    // Null while the module is not usable.
    DBC::DatabasePlugIn* databaseModule() const noexcept { return databaseM; }
    Data const& data() const noexcept { return dataM; }

private:
    static constexpr char const* databaseKey = "Database";

    DBC::DatabasePlugIn* findDatabase();
    BAS::RegisteredObject* findDataPoolObject(BAS::String const& reference) const;
    bool load(DBC::DatabasePlugIn const& database);
    void reportRow(std::string const& table, std::string const& key,
                   std::string const& reason) const;
    void fail(char const* messageName, BAS::String const& argument);

    DBC::DatabasePlugIn* databaseM = nullptr;
    Data dataM;
};

template <class Base, class Data>
DataModule<Base, Data>::DataModule(BAS::String const& name) : Base(name, "10000") {
    auto* const database = findDatabase();
    if (database != nullptr && load(*database)) {
        databaseM = database;
        return;
    }
    std::lock_guard const guard(this->isValidLockerCM);
    this->isValidM = false;
}

// Null when there is none; the status tells why.
template <class Base, class Data>
DBC::DatabasePlugIn* DataModule<Base, Data>::findDatabase() {
    auto const* const registry = this->registry();
    if (registry == nullptr) {
        fail("ERR_REG_SUBTREE_NOT_FOUND", this->name());
        return nullptr;
    }
    auto const* const entry = registry->find(databaseKey);
    if (entry == nullptr) {
        fail("ERR_REG_ENTRY_NOT_FOUND", databaseKey);
        return nullptr;
    }
    auto* const object = findDataPoolObject(entry->value());
    if (object == nullptr) {
        fail("ERR_DATA_PLUGIN_NOT_FOUND", entry->value());
        return nullptr;
    }
    auto* const database = dynamic_cast<DBC::DatabasePlugIn*>(object);
    if (database == nullptr) {
        fail("ERR_PLUGIN_TYPE_INVALID", entry->value());
    }
    return database;
}

template <class Base, class Data>
BAS::RegisteredObject*
DataModule<Base, Data>::findDataPoolObject(BAS::String const& reference) const {
    auto const ownName = reference + BAS::String(".Module");
    if (auto* const object = Base::find(ownName)) {
        return object;
    }
    BAS::String rootName;
    {
        std::lock_guard const guard(Base::rootNameLockerCM);
        rootName = Base::rootNameCM;
    }
    return Base::find(rootName + BAS::String(".DataPool.") + ownName);
}

template <class Base, class Data>
bool DataModule<Base, Data>::load(DBC::DatabasePlugIn const& database) {
    auto const connection = database.connection();
    if (!connection.isValid()) {
        fail("ERR_DATABASE", DBC::DatabasePlugIn::errorMessage(connection.status()));
        return false;
    }
    try {
        dataM.load(connection, [this](auto const&... row) { reportRow(row...); });
        return true;
    } catch (std::exception const& error) {
        fail("ERR_DATABASE", error.what());
        return false;
    }
}

template <class Base, class Data>
void DataModule<Base, Data>::reportRow(std::string const& table, std::string const& key,
                                       std::string const& reason) const {
    BAS::Status status("ERR_ROW_REJECTED", BAS::Status::warning, table);
    status.setObjectName(this->name());
    status.arguments().append(key);
    status.arguments().append(reason);
    this->writeLog(status);
}

template <class Base, class Data>
void DataModule<Base, Data>::fail(char const* messageName, BAS::String const& argument) {
    this->setStatus(messageName, BAS::Status::critical, argument, true);
}

} // namespace MOD
