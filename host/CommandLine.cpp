#include "CommandLine.h"

#include "LogFile.h"
#include "NearestName.h"
#include "PrintableText.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <iostream>

namespace host {

namespace {

constexpr char const* description =
    "Runs the function plug-ins of an event rating pipeline without the production host.";
constexpr char const* exitCodes =
    "Exit codes: 0 done; 1 done, but input was rejected, a command was not handled or a plug-in "
    "threw; 2 usage; 3 start-up failed; 4 input or output failed; 75 no host answered in time; 130 "
    "ended by a second signal.\n";
constexpr char const* runExamples =
    "Inputs are those of the registry. With an input directory the host runs until SIGTERM or "
    "SIGINT.\n\nExamples:\n"
    "  pipeline-host run registry.yaml\n"
    "  pipeline-host run registry.yaml --json --at-end \\\n"
    "      \"host.Pipelines.Main.Functions.DataDump.Module DumpEvents='/tmp/my events.txt'\"\n";
constexpr char const* checkExamples = "Example:\n  pipeline-host check registry.yaml\n";
constexpr char const* sendExamples =
    "Examples:\n"
    "  pipeline-host send registry.yaml host.Pipelines.Main.Functions.DataDump.Module \\\n"
    "      DumpEvents=/tmp/events.txt\n"
    "  pipeline-host send registry.yaml host.Pipelines.Main.Functions.DataDump.Module \\\n"
    "      ClearData --timeout 5\n";
constexpr char const* generateExamples =
    "Customers, services, discounts and sponsors are distributed by Zipf's law with the exponent "
    "1. The same options make the same files.\n\nExamples:\n"
    "  pipeline-host generate --output /tmp/day\n"
    "  pipeline-host generate --output /tmp/big --events 1000000 --customers 50000 --seed 7\n";

struct VerbName {
    char const* name;
    CommandLine::Verb verb;
};
constexpr std::array verbNames = {
    VerbName{"run", CommandLine::Verb::run},
    VerbName{"check", CommandLine::Verb::check},
    VerbName{"send", CommandLine::Verb::send},
    VerbName{"generate", CommandLine::Verb::generate},
};

// The texts of the command line before they are taken apart.
struct Texts {
    std::string registry;
    std::string logLevel;
    std::vector<std::string> atEnd;
    std::string object;
    std::vector<std::string> keys;
    double timeout = 0;
};

template <class... Argument>
Command parsed(std::string const& place, Argument const&... argument) {
    try {
        return parseCommand(argument...);
    } catch (std::invalid_argument const& error) {
        throw CLI::ValidationError(place, error.what());
    }
}

// A command is sent as a file, which holds text.
void requireText(std::span<std::string const> words) {
    for (auto const& word : words) {
        if (!simdjson::validate_utf8(word)) {
            throw CLI::ValidationError("the command",
                                       "'" + printable(word) + "' is no text in UTF-8");
        }
    }
}

BAS::Status::Severity parsedLevel(std::string const& name) {
    auto const level = levelOfName(name);
    if (!level) {
        auto const known = levelNames();
        throw CLI::ValidationError("--log-level",
                                   fmt::format("'{}' is no level{}; expected one of {}", name,
                                               nearestNameHint(name, {known.begin(), known.end()}),
                                               fmt::join(known, ", ")));
    }
    return *level;
}

void addRun(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& run = *app.add_subcommand(
        "run", "Run the pipelines until their inputs end; results go to standard output, "
               "everything else to the log");
    run.footer(runExamples);
    run.add_option("REGISTRY", texts.registry, "The registry file")->required();
    run.add_option("--at-end", texts.atEnd,
                   "A command after the last input: \"OBJECT KEY[=VALUE] ...\", with quotes around "
                   "values that hold blanks; may be given again")
        ->allow_extra_args(false);
    run.add_flag("--quiet", commandLine.isQuiet, "No progress line and no summary");
    run.add_flag("--json", commandLine.isJson,
                 "Results of commands and the summary as one line of JSON")
        ->excludes("--quiet");
    run.add_option("--log-level", texts.logLevel, "Log only what is at least that severe")
        ->default_str("info");
}

void addCheck(CLI::App& app, Texts& texts) {
    auto& check =
        *app.add_subcommand("check", "Start everything, report every problem, run nothing");
    check.footer(checkExamples);
    check.add_option("REGISTRY", texts.registry, "The registry file")->required();
}

void addSend(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& send = *app.add_subcommand(
        "send", "Give a running host a command, through the command directory of its registry, "
                "and wait for the result");
    send.footer(sendExamples);
    send.add_option("REGISTRY", texts.registry, "The registry file of the host")->required();
    send.add_option("OBJECT", texts.object, "The registered object")->required();
    send.add_option("KEY", texts.keys, "KEY[=VALUE], with the rest of the text as the value")
        ->required();
    send.add_option("--timeout", texts.timeout, "How many seconds to wait")
        ->default_val(commandLine.timeout.count())
        ->check(CLI::Range(0.0, 1e9));
}

void addGenerate(CLI::App& app, GenerateOptions& options) {
    auto& generate = *app.add_subcommand(
        "generate", "Make a believable day of EDRs with the registry, the EDR description and the "
                    "database scripts that belong to them");
    generate.footer(generateExamples);
    generate
        .add_option("--output", options.output, "The directory of the files, made when missing")
        ->capture_default_str();
    generate.add_option("--events", options.events, "How many detail EDRs")
        ->capture_default_str()
        ->check(CLI::Range(std::uint64_t{0}, GenerateOptions::mostEvents));
    generate.add_option("--customers", options.customers, "How many customers they come from")
        ->capture_default_str()
        ->check(CLI::Range(std::uint32_t{1}, GenerateOptions::mostCustomers));
    generate.add_option("--seed", options.seed, "Another number makes other files")
        ->capture_default_str();
    generate.add_flag("--force", options.isForced, "Replace files that are there");
}

void take(Texts const& texts, CLI::App const& app, CommandLine& commandLine) {
    for (auto const& each : verbNames) {
        if (app.got_subcommand(each.name)) {
            commandLine.verb = each.verb;
        }
    }
    commandLine.registry = texts.registry;
    commandLine.timeout = std::chrono::duration<double>(texts.timeout);
    if (!texts.logLevel.empty()) {
        commandLine.leastSeverity = parsedLevel(texts.logLevel);
    }
    for (auto const& text : texts.atEnd) {
        commandLine.atEnd.push_back(parsed("--at-end \"" + text + "\"", std::string_view(text)));
    }
    if (commandLine.verb == CommandLine::Verb::send) {
        auto words = texts.keys;
        words.insert(words.begin(), texts.object);
        requireText(words);
        commandLine.sent = parsed("the command", std::span<std::string const>(words));
    }
}

std::string unknownVerbText(CLI::App const& app, std::string const& word) {
    std::vector<std::string> verbs;
    for (auto const* const verb : app.get_subcommands([](auto const*) { return true; })) {
        verbs.push_back(verb->get_name());
    }
    if (word.starts_with('-') || std::find(verbs.begin(), verbs.end(), word) != verbs.end()) {
        return {};
    }
    return fmt::format("'{}' is no command{}; expected one of {}", word,
                       nearestNameHint(word, {verbs.begin(), verbs.end()}), fmt::join(verbs, ", "));
}

// For the options that the command doesn't know, those that may have been meant.
std::string optionHints(CLI::App const& app, std::span<std::string const> words) {
    std::vector<std::string> options;
    for (auto const* const verb : app.get_subcommands()) {
        for (auto const* const option : verb->get_options()) {
            options.push_back(option->get_name());
        }
    }
    std::string hints;
    for (auto const& word : words) {
        auto const hint = word.starts_with("--") ? nearestNameHint(word.substr(0, word.find('=')),
                                                                   {options.begin(), options.end()})
                                                 : std::string();
        hints += hint.empty() ? hint : fmt::format("'{}' is no option{}\n", word, hint);
    }
    return hints;
}

} // namespace

std::variant<CommandLine, ExitCode> parseCommandLine(int argc, char const* const* argv) {
    CommandLine commandLine;
    Texts texts;
    CLI::App app(description, "pipeline-host");
    app.footer(exitCodes);
    app.require_subcommand(1);
    app.set_version_flag("--version", "pipeline-host " PIPELINE_HOST_VERSION);
    addRun(app, texts, commandLine);
    addCheck(app, texts);
    addSend(app, texts, commandLine);
    addGenerate(app, commandLine.generate);
    std::vector<std::string> const words(argv + std::min(argc, 1), argv + argc);
    if (!words.empty()) {
        if (auto const text = unknownVerbText(app, words.front()); !text.empty()) {
            std::cerr << text << std::endl;
            return usageWrong;
        }
    }
    try {
        app.parse(argc, argv);
        take(texts, app, commandLine);
        return commandLine;
    } catch (CLI::ParseError const& error) {
        if (app.exit(error, std::cout, std::cerr) == 0) {
            return done;
        }
        std::cerr << optionHints(app, words) << std::flush;
        return usageWrong;
    }
}

} // namespace host
