// The base of the data modules of the stand-alone host: a plug-in that loads its data from the
// reference database, through the database module that its registry key "Database" names, when it
// is built and whenever the host reloads it.
//
// Base is the framework's class of the module; Data has
//     std::vector<DAT::LoadedTable> load(RWDBConnection const&, RowReport const&, std::stop_token)
// and may throw std::exception, which becomes the status "ERR_DATABASE".
#pragma once

#include "TableLoader.h"

#include "BAS/RegistryEntry.h"
#include "DAT/ReloadablePlugIn.h"
#include "DBC/DatabasePlugIn.h"

#include <exception>

namespace MOD {

template <class Base, class Data>
class DataModule : public DAT::ReloadablePlugIn<Base, Data> {
public:
    explicit DataModule(BAS::String const& name);

protected:
    // Null while the module is not usable.
    DBC::DatabasePlugIn* databaseModule() const noexcept { return databaseM; }

private:
    static constexpr char const* databaseKey = "Database";

    void load(DAT::LoadSession& session, Data& data, DAT::LoadReport& report) const override;
    DBC::DatabasePlugIn& findDatabase() const;
    BAS::RegisteredObject* findDataPoolObject(BAS::String const& reference) const;
    void reportRow(std::string const& table, std::string const& key,
                   std::string const& reason) const;

    DBC::DatabasePlugIn* databaseM = nullptr;
};

template <class Base, class Data>
DataModule<Base, Data>::DataModule(BAS::String const& name)
    : DAT::ReloadablePlugIn<Base, Data>(name, "10000") {
    try {
        databaseM = &findDatabase();
        this->loadFirst();
    } catch (BAS::Status const& status) {
        this->fail(status);
    }
    if (!this->isUsable()) {
        databaseM = nullptr;
    }
}

// Throws a BAS::Status when there is none.
template <class Base, class Data>
DBC::DatabasePlugIn& DataModule<Base, Data>::findDatabase() const {
    auto const* const registry = this->registry();
    if (registry == nullptr) {
        throw BAS::Status("ERR_REG_SUBTREE_NOT_FOUND", BAS::Status::critical, this->name());
    }
    auto const* const entry = registry->find(databaseKey);
    if (entry == nullptr) {
        throw BAS::Status("ERR_REG_ENTRY_NOT_FOUND", BAS::Status::critical, databaseKey);
    }
    auto* const object = findDataPoolObject(entry->value());
    if (object == nullptr) {
        throw BAS::Status("ERR_DATA_PLUGIN_NOT_FOUND", BAS::Status::critical, entry->value());
    }
    auto* const database = dynamic_cast<DBC::DatabasePlugIn*>(object);
    if (database == nullptr) {
        throw BAS::Status("ERR_PLUGIN_TYPE_INVALID", BAS::Status::critical, entry->value());
    }
    return *database;
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
void DataModule<Base, Data>::load(DAT::LoadSession& session, Data& data,
                                  DAT::LoadReport& report) const {
    auto const& connection = session.connection(*databaseM);
    report.source = connection.shownText();
    try {
        report.tables = data.load(
            connection, [this](auto const&... row) { reportRow(row...); }, session.stop());
    } catch (std::exception const& error) {
        throw BAS::Status("ERR_DATABASE", BAS::Status::critical, error.what());
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

} // namespace MOD
