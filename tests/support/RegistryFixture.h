// A registry, a process log and one pipeline "Main" with its log, for tests of objects that live in
// a host. Registry entries are added by dotted path before the objects are built.
#pragma once

#include "BAS/RegisteredObject.h"
#include "BAS/RegistryEntry.h"
#include "EDR/Description.h"
#include "EDR/Factory.h"
#include "PLG/Pipeline.h"
#include "support/LogRecorder.h"

#include <memory>
#include <string>

namespace support {

class RegistryFixture {
public:
    explicit RegistryFixture(std::string const& directory = ".") {
        BAS::RegisteredObject::bindRegistry(&rootM, directory);
        BAS::RegisteredObject::bindProcessLog(&log);
    }
    RegistryFixture(RegistryFixture const&) = delete;
    RegistryFixture& operator=(RegistryFixture const&) = delete;
    ~RegistryFixture() {
        BAS::RegisteredObject::bindProcessLog(nullptr);
        BAS::RegisteredObject::bindRegistry(nullptr, "");
    }

    // Adds the key, with every key above it, below the root "host".
    void add(std::string const& path, std::string const& value = "") {
        BAS::RegistryEntry* entry = &rootM;
        auto const parts = BAS::String(path).split('.');
        for (std::size_t i = 0; i < parts.entries(); ++i) {
            auto const* const known = entry->find(parts[i]);
            bool const last = i + 1 == parts.entries();
            entry = known == nullptr ? &entry->add(parts[i], last ? BAS::String(value) : "")
                                     : const_cast<BAS::RegistryEntry*>(known);
        }
    }

    LogRecorder log;
    LogRecorder pipelineLog;

private:
    BAS::RegistryEntry rootM{"host"};
};

} // namespace support
