// What a module needs around it: a registry, logs, and a pipeline "Main" with a small EDR
// description.
#pragma once

#include "BAS/LogSink.h"
#include "BAS/RegistryEntry.h"
#include "EDR/Description.h"
#include "EDR/Factory.h"
#include "PLG/Pipeline.h"

#include <filesystem>
#include <fstream>
#include <string>

namespace Example {

// Drops what is written.
class NoLog : public BAS::LogSink {
public:
    void write(BAS::Status const&) override {}
};

class ExampleHost {
public:
    // Of the objects below.
    static constexpr char const* function = "host.Pipelines.Main.Functions.Mine.Module";
    static constexpr char const* dataModule = "host.DataPool.Mine.Module";

    ExampleHost() {
        std::filesystem::create_directories(directory);
        serviceField = description.addField(description.root(), "SERVICE", EDR::FieldType::text);
        BAS::RegisteredObject::bindRegistry(&rootM, directory.string());
    }
    ExampleHost(ExampleHost const&) = delete;
    ExampleHost& operator=(ExampleHost const&) = delete;
    ~ExampleHost() { BAS::RegisteredObject::bindRegistry(nullptr, ""); }

    // Call it before the object is built.
    void setFunctionKey(char const* key, char const* value) { functionM.add(key, value); }
    void setDataModuleKey(char const* key, char const* value) { dataModuleM.add(key, value); }
    void writeFile(char const* name, char const* text) const {
        std::ofstream(directory / name) << text;
    }

    std::filesystem::path const directory =
        std::filesystem::temp_directory_path() / "pipeline-examples";
    EDR::Description description;
    EDR::Index serviceField;

private:
    BAS::RegistryEntry rootM{"host"};
    BAS::RegistryEntry& functionM =
        rootM.add("Pipelines").add("Main").add("Functions").add("Mine").add("Module");
    BAS::RegistryEntry& dataModuleM = rootM.add("DataPool").add("Mine").add("Module");
    NoLog logM;
    EDR::Factory factoryM{description};
    PLG::Pipeline pipelineM{"host.Pipelines.Main", factoryM, logM};
};

} // namespace Example
