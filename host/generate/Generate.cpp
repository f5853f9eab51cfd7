#include "generate/Generate.h"

#include "base/Failures.h"
#include "generate/GeneratedDatabase.h"
#include "generate/GeneratedEdrs.h"
#include "generate/GeneratorTexts.h"
#include "generate/PlantedErrors.h"

#include <array>

namespace host {

namespace {

constexpr char const* registryName = "registry.yaml";
constexpr char const* descriptionName = "edr-description.yaml";
constexpr char const* schemaName = "reference-schema.sql";
constexpr char const* dataName = "reference-data.sql";
constexpr char const* edrsName = "events.jsonl";
constexpr char const* plantedEdrsName = "planted.jsonl";
constexpr char const* plantedListName = "planted.txt";
constexpr std::array names = {registryName, descriptionName, schemaName,     dataName,
                              edrsName,     plantedEdrsName, plantedListName};

void prepareDirectory(GenerateOptions const& options) {
    std::error_code error;
    std::filesystem::create_directories(options.output, error);
    if (error) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", options.output, error.value());
    }
    for (auto const* const name : names) {
        if (!options.isForced && std::filesystem::exists(options.output / name, error)) {
            throw makeStatus(
                BAS::Status::critical, {}, "ERR_FILE_NOT_WRITABLE",
                {(options.output / name).string(), "it exists already; --force replaces it"});
        }
    }
}

void writeText(std::filesystem::path const& path, std::string_view text) {
    GeneratedFile file(path);
    file.write(text);
    file.close();
}

void replace(std::string& text, std::string_view what, std::string const& by) {
    text.replace(text.find(what), what.size(), by);
}

// With planted events, which come last, the plug-in remembers all of them.
std::string registryText(std::uint32_t planted) {
    std::string text = generatorRegistry;
    if (planted > 0) {
        replace(text, "[events.jsonl]", fmt::format("[{}, {}]", edrsName, plantedEdrsName));
        replace(text, "NumberOfEvents: 10",
                fmt::format("NumberOfEvents: {}", 10 + plantedEvents(planted)));
    }
    return text;
}

template <class Write>
void writePlanted(std::filesystem::path const& path, std::uint32_t planted, Write write) {
    GeneratedFile file(path);
    write(planted, file);
    file.close();
}

} // namespace

std::string generate(GenerateOptions const& options) {
    prepareDirectory(options);
    writeText(options.output / registryName, registryText(options.planted));
    writeText(options.output / descriptionName, generatorEdrDescription);
    writeText(options.output / schemaName, generatorSchema);
    GeneratedCustomers const customers(options.customers, options.seed);
    GeneratedFile dataFile(options.output / dataName);
    GeneratedDatabase database(customers, options.seed, dataFile);
    database.write();
    auto rows = database.rows();
    if (options.planted > 0) {
        rows += writePlantedRows(options.planted, dataFile);
        writePlanted(options.output / plantedEdrsName, options.planted, writePlantedEdrs);
        writePlanted(options.output / plantedListName, options.planted, writePlantedList);
    }
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
                       options.output.string(), options.events, options.customers, rows,
                       options.output.string(), schemaName, dataName, registryName);
}

} // namespace host
