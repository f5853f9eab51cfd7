#include "BAS/RegisteredObject.h"

#include "BAS/LogSink.h"
#include "BAS/RegistryEntry.h"

#include <atomic>
#include <unordered_map>

namespace BAS {

namespace {

// Every registered object by its name.
struct Directory {
    std::mutex lock;
    std::unordered_map<String, RegisteredObject*> objects;
};

Directory& directory() {
    static Directory instance;
    return instance;
}

bool enter(String const& name, RegisteredObject* object) {
    std::lock_guard const guard(directory().lock);
    return directory().objects.emplace(name, object).second;
}

std::atomic<RegistryEntry const*> registryRoot{nullptr};
String registryDirectoryName; // guarded by rootNameLockerCM
std::atomic<LogSink*> processLog{nullptr};

} // namespace

std::mutex RegisteredObject::isRegisteredLockerCM;
std::mutex RegisteredObject::isValidLockerCM;
std::mutex RegisteredObject::nameLockerCM;
std::mutex RegisteredObject::statusLockerCM;
std::mutex RegisteredObject::dirNameLockerCM;
std::mutex RegisteredObject::rootNameLockerCM;
String RegisteredObject::rootNameCM;

// Registered last: a failure after it would leave the directory with a dead object.
RegisteredObject::RegisteredObject(String const& name) : isRegisteredM(false), nameM(name) {
    isRegisteredM = enter(name, this);
}

RegisteredObject::~RegisteredObject() {
    std::lock_guard const guard(directory().lock);
    auto const found = directory().objects.find(nameM);
    if (found != directory().objects.end() && found->second == this) {
        directory().objects.erase(found);
    }
}

bool RegisteredObject::isUsable() {
    {
        std::lock_guard const guard(isRegisteredLockerCM);
        if (!isRegisteredM) {
            return false;
        }
    }
    std::lock_guard const guard(isValidLockerCM);
    return isValidM;
}

void RegisteredObject::receiveMessage(Message const& /*message*/) {
}

void RegisteredObject::receiveRequest(Message& /*request*/) {
}

void RegisteredObject::update(String const& /*event*/) {
}

void RegisteredObject::update(Status const& /*event*/) {
}

void RegisteredObject::getInstrumentationProbe(InstrumentationProbeList& /*probes*/) const {
}

bool RegisteredObject::readRegistry() {
    return true;
}

bool RegisteredObject::evalEnvironment() {
    return true;
}

bool RegisteredObject::setEDRContainerIndices() {
    return true;
}

bool RegisteredObject::registryUpdate(RegistryEntry const* /*update*/,
                                      ProtectedBool& /*workDone*/) {
    return false;
}

bool RegisteredObject::updateBoolFlag(RegistryEntry const* /*update*/, RegistryEntry* /*entry*/,
                                      String const& /*key*/, bool& /*flag*/,
                                      String const& /*messageName*/, ProtectedBool& /*workDone*/) {
    return false;
}

bool RegisteredObject::setBoolFlag(RegistryEntry const* /*entry*/, String const& /*key*/,
                                   bool& /*flag*/) {
    return false;
}

RegisteredObject* RegisteredObject::find(String const& name) {
    std::lock_guard const guard(directory().lock);
    auto const found = directory().objects.find(name);
    return found == directory().objects.end() ? nullptr : found->second;
}

void RegisteredObject::bindRegistry(RegistryEntry const* root, String const& directory) {
    std::lock_guard const guard(rootNameLockerCM);
    registryRoot = root;
    rootNameCM = root == nullptr ? String() : root->name();
    registryDirectoryName = directory;
}

String RegisteredObject::registryDirectory() {
    std::lock_guard const guard(rootNameLockerCM);
    return registryDirectoryName;
}

void RegisteredObject::bindProcessLog(LogSink* sink) {
    processLog = sink;
}

RegistryEntry const* RegisteredObject::registry() const {
    auto const parts = name().split('.');
    RegistryEntry const* entry = registryRoot;
    if (entry == nullptr || parts[0] != entry->name()) {
        return nullptr;
    }
    for (std::size_t i = 1; i < parts.entries() && entry != nullptr; ++i) {
        entry = entry->find(parts[i]);
    }
    return entry;
}

bool RegisteredObject::isValid() const {
    std::lock_guard const guard(isValidLockerCM);
    return isValidM;
}

String RegisteredObject::name() const {
    std::lock_guard const guard(nameLockerCM);
    return nameM;
}

Status RegisteredObject::status() const {
    std::lock_guard const guard(statusLockerCM);
    return statusM;
}

String RegisteredObject::dirName(String const& name) {
    auto const lastDot = name.view().rfind('.');
    return lastDot == std::string_view::npos ? String() : String(name.view().substr(0, lastDot));
}

String RegisteredObject::superName(String const& level) const {
    auto const ownName = name();
    auto const parts = ownName.split('.');
    std::size_t length = 0;
    for (std::size_t i = 0; i + 1 < parts.entries(); ++i) {
        length += parts[i].length() + 1;
        if (parts[i] == level) {
            return String(ownName.view().substr(0, length + parts[i + 1].length()));
        }
    }
    return String();
}

void RegisteredObject::setStatus(String const& messageName, Status::Severity severity,
                                 String const& argument, bool log) {
    setStatus(Status(messageName, severity, argument), log);
}

void RegisteredObject::setStatus(Status const& status, bool log) {
    Status recorded(status);
    {
        std::lock_guard const statusGuard(statusLockerCM);
        if (recorded.objectName().isNull()) {
            std::lock_guard const nameGuard(nameLockerCM);
            recorded.setObjectName(nameM);
        }
        statusM = recorded;
    }
    if (log) {
        writeLog(recorded);
    }
}

void RegisteredObject::writeLog(Status const& status) const {
    if (LogSink* const sink = processLog) {
        sink->write(status);
    }
}

} // namespace BAS
