// The database module of the stand-alone host. Its registry key "Connection" is the connection
// string of the reference database; every client gets a connection of its own.
#include "ConnectionString.h"

#include "BAS/RegistryEntry.h"
#include "DBC/DatabasePlugIn.h"

#include <filesystem>
#include <memory>

namespace MOD {

namespace {

class DatabaseModule : public DBC::DatabasePlugIn {
public:
    explicit DatabaseModule(BAS::String const& name);

    RWDBConnection connection() const override { return RWDBConnection(connectionTextM); }

private:
    bool start();
    bool fail(char const* messageName, BAS::String const& argument);

    BAS::String connectionTextM;
};

DatabaseModule::DatabaseModule(BAS::String const& name) : DatabasePlugIn(name) {
    bool const started = start();
    std::lock_guard const guard(isValidLockerCM);
    isValidM = started;
}

bool DatabaseModule::start() {
    auto const* const subtree = registry();
    if (subtree == nullptr) {
        return fail("ERR_REG_SUBTREE_NOT_FOUND", name());
    }
    auto const* const entry = subtree->find("Connection");
    if (entry == nullptr) {
        return fail("ERR_REG_ENTRY_NOT_FOUND", "Connection");
    }
    ConnectionString const given(entry->value().str(), registryDirectory().str());
    connectionTextM = given.text;
    if (given.file && given.file->empty()) {
        return fail("ERR_DATABASE", "'" + RWDBConnection(connectionTextM).shownText().str() +
                                        "' names no database file, expected 'db=FILE'");
    }
    // Opening it would give a less exact error.
    std::error_code unreachable;
    if (given.file && !std::filesystem::exists(*given.file, unreachable)) {
        return fail("ERR_DATABASE",
                    "the database file '" + given.file->string() + "' does not exist");
    }
    RWDBConnection const opened(connectionTextM);
    return opened.isValid() || fail("ERR_DATABASE", errorMessage(opened.status()));
}

bool DatabaseModule::fail(char const* messageName, BAS::String const& argument) {
    setStatus(messageName, BAS::Status::critical, argument, true);
    return false;
}

} // namespace

} // namespace MOD

// The caller owns the object.
extern "C" [[gnu::visibility("default")]] BAS::RegisteredObject*
DBC_DatabaseModuleStart(BAS::String const& name) {
    return std::make_unique<MOD::DatabaseModule>(name).release();
}
