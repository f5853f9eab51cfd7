#include "generate/Generate.h"

#include "base/Failures.h"
#include "generate/GeneratedDatabase.h"
#include "generate/GeneratedEdrs.h"
#include "generate/GeneratorTexts.h"

namespace host {

namespace {

constexpr char const* registryName = "registry.yaml";
constexpr char const* descriptionName = "edr-description.yaml";
constexpr char const* schemaName = "reference-schema.sql";
constexpr char const* dataName = "reference-data.sql";
constexpr char const* edrsName = "events.jsonl";

void prepareDirectory(GenerateOptions const& options) {
    std::error_code error;
    std::filesystem::create_directories(options.output, error);
    if (error) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", options.output, error.value());
    }
    for (auto const* const name : {registryName, descriptionName, schemaName, dataName, edrsName}) {
        if (!options.isForced && std::filesystem::exists(options.output / name, error)) {
            throw makeStatus(
                BAS::Status::critical, {}, "ERR_FILE_NOT_WRITABLE",
                {(options.output / name).string(), "it exists already; --force replaces it"});
        }
    }
}

void writeText(std::filesystem::path const& path, char const* text) {
    GeneratedFile file(path);
    file.write(text);
    file.close();
}

} // namespace

std::string generate(GenerateOptions const& options) {
    prepareDirectory(options);
    writeText(options.output / registryName, generatorRegistry);
    writeText(options.output / descriptionName, generatorEdrDescription);
    writeText(options.output / schemaName, generatorSchema);
    GeneratedCustomers const customers(options.customers, options.seed);
    GeneratedFile dataFile(options.output / dataName);
    GeneratedDatabase database(customers, options.seed, dataFile);
    database.write();
    dataFile.close();
    GeneratedFile edrFile(options.output / edrsName);
    GeneratedEdrs(customers, options.seed, edrFile).write(options.events);
    edrFile.close();
    return fmt::format("{}: {} EDRs of {} customers, {} rows of reference data. To run them:\n"
                       "  cd '{}'\n"
                       "  cat {} {} | sqlite3 reference.db\n"
                       "  pipeline-host run {} \\\n"
                       "      --at-end \"host.Pipelines.Main.Functions.DataDump.Module "
                       "DumpEvents=events.txt\"\n",
                       options.output.string(), options.events, options.customers, database.rows(),
                       options.output.string(), schemaName, dataName, registryName);
}

} // namespace host
