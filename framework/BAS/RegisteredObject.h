// The base of everything that the framework knows by name: plug-ins, data modules, pipelines. An
// object registers itself under its full dotted registry name when it is built and unregisters when
// it is destroyed; an object whose name is taken stays unregistered. The creator of an object owns
// it; find returns plain pointers.
//
// Name, status and flags of every object are guarded by the class-wide locks below, one lock a
// kind, each held for a single read or write. Where two are needed, the status lock is the outer
// one and the name lock the inner.
//
// The order of the virtual operations is fixed: plug-ins that were built elsewhere depend on it.
#pragma once

#include "BAS/Status.h"
#include "BAS/String.h"

#include <mutex>

namespace BAS {

class InstrumentationProbeList;
class LogSink;
class Message;
class ProtectedBool;
class RegistryEntry;

class RegisteredObject {
public:
    explicit RegisteredObject(String const& name);
    RegisteredObject(RegisteredObject const&) = delete;
    RegisteredObject& operator=(RegisteredObject const&) = delete;
    virtual ~RegisteredObject();

    // True when the object is registered and valid.
    virtual bool isUsable();
    virtual void receiveMessage(Message const& message);
    virtual void receiveRequest(Message& request);
    virtual void update(String const& event);
    virtual void update(Status const& event);
    virtual void getInstrumentationProbe(InstrumentationProbeList& probes) const;
    virtual bool readRegistry();
    virtual bool evalEnvironment();
    virtual bool setEDRContainerIndices();
    // A command at run time: its keys are the children of the update entry. Returns whether the
    // update was handled; workDone is set to true when there was anything to do. An object without
    // commands rejects every update.
    virtual bool registryUpdate(RegistryEntry const* update, ProtectedBool& workDone);
    virtual bool updateBoolFlag(RegistryEntry const* update, RegistryEntry* entry,
                                String const& key, bool& flag, String const& messageName,
                                ProtectedBool& workDone);
    virtual bool setBoolFlag(RegistryEntry const* entry, String const& key, bool& flag);

    // The registered object of that full dotted name, or null. Any thread.
    static RegisteredObject* find(String const& name);

    // Makes the tree, whose root's name is the first part of every registered name, the registry of
    // all objects. Relative paths in it are relative to the directory. The tree stays the caller's
    // and must outlive the objects; null removes it. Not while objects are being built.
    static void bindRegistry(RegistryEntry const* root, String const& directory);
    // The directory of the registry file.
    static String registryDirectory();
    // Where writeLog writes; null drops everything. The sink stays the caller's.
    static void bindProcessLog(LogSink* sink);

    // The subtree of the registry with this object's name, or null.
    RegistryEntry const* registry() const;

    // Whether the object's start succeeded, without asking the object itself. Any thread.
    bool isValid() const;
    // Copies, taken under the locks.
    String name() const;
    Status status() const;

    // The part of a dotted name before its last dot; empty when there is none. Call it with
    // dirNameLockerCM held.
    static String dirName(String const& name);
    // The dotted name of this object's ancestor directly below the level, such as
    // "host.Pipelines.Main" for the level "Pipelines"; empty when there is none.
    String superName(String const& level) const;

    static std::mutex isRegisteredLockerCM;
    static std::mutex isValidLockerCM;
    static std::mutex nameLockerCM;
    static std::mutex statusLockerCM;
    static std::mutex dirNameLockerCM;
    static std::mutex rootNameLockerCM;
    // The name of the registry's root; guarded by rootNameLockerCM.
    static String rootNameCM;

protected:
    // Record a status on the object, under the object's name, and write it to the process log when
    // log is true.
    void setStatus(String const& messageName, Status::Severity severity, String const& argument,
                   bool log);
    // The same for a given status, whose object name is kept unless it is empty.
    void setStatus(Status const& status, bool log);
    void writeLog(Status const& status) const;

    // Guarded by the lock of the same name.
    bool isRegisteredM;
    bool isValidM = true;
    String nameM;
    Status statusM;
};

} // namespace BAS
