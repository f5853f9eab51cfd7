#include "program/CommandLine.h"

#include "base/EscapedText.h"
#include "base/LogFile.h"
#include "base/NearestName.h"
#include "commands/SharedCommand.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <limits>

namespace host {

namespace {

constexpr char const* description =
    "Runs the function plug-ins of an event rating pipeline without the production host.";
constexpr char const* runExamples =
    "Inputs are those of the registry. With an input directory the host runs until SIGTERM\n"
    "or SIGINT. Results go to standard output, everything else to the log.\n\nExamples:\n"
    "  pipeline-host run registry.yaml\n"
    "  pipeline-host run registry.yaml --json --at-end \\\n"
    "      \"host.Pipelines.Main.Functions.DataDump.Module DumpEvents='/tmp/my events.txt'\"\n";
constexpr char const* checkExamples =
    "Reports every problem and warning. Runs nothing and writes no log file.\n\nExamples:\n"
    "  pipeline-host check registry.yaml\n"
    "  runuser -u pipeline-host -- pipeline-host check /etc/pipeline-host/main/registry.yaml\n";
constexpr char const* sendExamples =
    "The command goes through the command directory of the registry, or with --pipeline through\n"
    "the servers of a stream to all hosts that take commands from it.\n\nExamples:\n"
    "  pipeline-host send registry.yaml host.Pipelines.Main.Functions.DataDump.Module \\\n"
    "      DumpEvents=/tmp/events.txt\n"
    "  pipeline-host send registry.yaml host.Pipelines.Main.Functions.DataDump.Module \\\n"
    "      ClearData --timeout 5\n"
    "  pipeline-host send registry.yaml --pipeline Main --collect today \\\n"
    "      host.Pipelines.Main.Functions.DataDump.Module Dump=@\n";
constexpr char const* statusExamples =
    "Tells how a running host is doing, also while a command or a batch keeps it busy. It ends\n"
    "with 75 when no host runs with that registry.\n\nExamples:\n"
    "  pipeline-host status registry.yaml\n"
    "  pipeline-host status registry.yaml --json | jq .Pipelines\n";
constexpr char const* generateExamples =
    "The directory gets EDRs, a registry, the EDR description and the database scripts that\n"
    "belong to them. Customers, services, discounts and sponsors are distributed by Zipf's law\n"
    "with the exponent 1. The same options make the same files.\n\nExamples:\n"
    "  pipeline-host generate --output /tmp/day\n"
    "  pipeline-host generate --output /tmp/big --events 1000000 --customers 50000 --seed 7\n";

constexpr char const* streamExamples =
    "The registry names the stream, its servers and its number of partitions.\n\nExamples:\n"
    "  pipeline-host stream create registry.yaml Main --replicas 3\n"
    "  pipeline-host stream show registry.yaml Main\n";
constexpr char const* publishExamples =
    "Lines go out in order, those with the same key to the same partition. Given again, it goes "
    "on\n"
    "after the last published line. One publisher may write to a stream at a time.\n\nExamples:\n"
    "  pipeline-host publish registry.yaml Main day.jsonl --key A_NUMBER --key GPRS=B_NUMBER\n";

struct VerbName {
    char const* name;
    CommandLine::Verb verb;
};
constexpr std::array verbNames = {
    VerbName{"run", CommandLine::Verb::run},
    VerbName{"check", CommandLine::Verb::check},
    VerbName{"send", CommandLine::Verb::send},
    VerbName{"status", CommandLine::Verb::status},
    VerbName{"generate", CommandLine::Verb::generate},
    VerbName{"stream", CommandLine::Verb::stream},
    VerbName{"publish", CommandLine::Verb::publish},
};

// No range keeps it out. The problem, if there is one.
std::string notANumberProblem(std::string const& text) {
    return std::isnan(std::strtod(text.c_str(), nullptr)) ? text + " is no number of seconds" : "";
}

// The texts of the command line before they are parsed.
struct Texts {
    std::string registry;
    std::string logLevel;
    std::vector<std::string> atEnd;
    std::string object;
    std::vector<std::string> keys;
    double timeout = 0;
    std::string action;
};

std::string exitCodesText() {
    std::string text = "Exit codes:\n";
    for (auto const& [code, meaning] : exitCodeMeanings) {
        text += fmt::format("  {:<5}", static_cast<int>(code));
        for (char const c : meaning) {
            text += c;
            if (c == '\n') {
                text += "       ";
            }
        }
        text += '\n';
    }
    return text + "\npipeline-host COMMAND --help shows the options and examples of a command.\n";
}

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
                                       "'" + printable(word) + "' is not valid UTF-8");
        }
    }
}

BAS::Status::Severity parsedLevel(std::string const& name) {
    auto const level = levelOfName(name);
    if (!level) {
        auto const known = levelNames();
        throw CLI::ValidationError("--log-level",
                                   fmt::format("unknown level '{}'{}; expected one of {}", name,
                                               nearestNameHint(name, {known.begin(), known.end()}),
                                               fmt::join(known, ", ")));
    }
    return *level;
}

void addRun(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& run = *app.add_subcommand("run", "Run the pipelines until their inputs end");
    run.footer(runExamples);
    run.add_option("REGISTRY", texts.registry, "The registry file")->type_name("")->required();
    run.add_option("--at-end", texts.atEnd,
                   "OBJECT KEY[=VALUE]... as one text, carried out after the last input; "
                   "may be given again")
        ->type_name("COMMAND")
        ->allow_extra_args(false);
    run.add_flag("--quiet", commandLine.isQuiet, "No progress line and no summary");
    run.add_flag("--json", commandLine.isJson,
                 "Results of commands and the summary as one line of JSON")
        ->excludes("--quiet");
    run.add_option(
           "--log-level", texts.logLevel,
           fmt::format("Log only what is at least that severe: {}", fmt::join(levelNames(), ", ")))
        ->type_name("LEVEL")
        ->default_str(levelName(commandLine.leastSeverity));
}

void addCheck(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& check =
        *app.add_subcommand("check", "Start everything, report every problem, run nothing");
    check.footer(checkExamples);
    check.add_option("REGISTRY", texts.registry, "The registry file")->type_name("")->required();
    check.add_flag("--json", commandLine.isJson, "Problems and warnings as one line of JSON");
    check
        .add_flag("--objects", commandLine.isListingObjects,
                  "Start nothing; list the objects that take commands, each with its module")
        ->excludes("--json");
}

void addSend(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& send =
        *app.add_subcommand("send", "Give a running host a command and wait for its result");
    send.footer(sendExamples);
    send.add_option("REGISTRY", texts.registry, "The registry file of the host")
        ->type_name("")
        ->required();
    send.add_option("OBJECT", texts.object, "The registered object")->type_name("")->required();
    send.add_option("KEY", texts.keys, "KEY[=VALUE], with the rest of the text as the value")
        ->type_name("")
        ->required();
    send.add_option("--timeout", texts.timeout, "How long to wait")
        ->type_name("SECONDS")
        ->default_val(commandLine.timeout.count())
        ->check(CLI::Range(0.0, 1e9).description(""))
        ->check(notANumberProblem);
    send.add_flag("--json", commandLine.isJson, "The result as one line of JSON");
    auto* const pipeline =
        send.add_option("--pipeline", commandLine.pipeline,
                        "All hosts that read this pipeline's stream get the command; values are "
                        "'@', for a report, 'true', 'false', 'force', a whole number or nothing")
            ->type_name("PIPELINE");
    send.add_option("--collect", commandLine.collectedIn,
                    "The directory for the reports of '@', made when missing")
        ->type_name("DIRECTORY")
        ->needs(pipeline);
}

void addStatus(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& status = *app.add_subcommand("status", "Tell how a running host is doing");
    status.footer(statusExamples);
    status.add_option("REGISTRY", texts.registry, "The registry file of the host")
        ->type_name("")
        ->required();
    status.add_flag("--json", commandLine.isJson, "One line of JSON instead of tables");
}

void addGenerate(CLI::App& app, GenerateOptions& options) {
    auto& generate = *app.add_subcommand(
        "generate", "Make a believable day of EDRs and all that is needed to run them");
    generate.footer(generateExamples);
    generate
        .add_option("--output", options.output, "The directory of the files, made when missing")
        ->type_name("DIRECTORY")
        ->capture_default_str();
    generate.add_option("--events", options.events, "How many detail EDRs, up to 1000000000")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->check(CLI::Range(std::uint64_t{0}, GenerateOptions::mostEvents).description(""));
    generate
        .add_option("--customers", options.customers,
                    "How many customers they come from, up to 10000000")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->check(CLI::Range(std::uint32_t{1}, GenerateOptions::mostCustomers).description(""));
    generate.add_option("--seed", options.seed, "Another number makes other files")
        ->type_name("NUMBER")
        ->capture_default_str();
    generate
        .add_option("--plant", options.planted,
                    "Make so many events with an error of each kind besides, up to 10000")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->check(CLI::Range(std::uint32_t{0}, GenerateOptions::mostPlanted).description(""));
    generate.add_flag("--force", options.isForced, "Replace files that are there");
}

void requireSharable(CommandLine const& commandLine) {
    if (commandLine.pipeline.empty()) {
        return;
    }
    if (auto const objection = objectionToSharing(*commandLine.sent)) {
        throw CLI::ValidationError("the command", *objection);
    }
    if ((sharedReports(*commandLine.sent) > 0) != commandLine.collectedIn.has_value()) {
        throw CLI::ValidationError("--collect", "expected together with a value '@'");
    }
}

// Goes with each message.
constexpr std::size_t longestSourceName = 1000;

void requireSourceName(StreamSource const& source) {
    if (!source.name) {
        return;
    }
    if (source.files.size() > 1) {
        throw CLI::ValidationError("--source", "expected with one FILE; the lines of another one "
                                               "would count as published under the same name");
    }
    if (source.name->empty() || source.name->size() > longestSourceName) {
        throw CLI::ValidationError(
            "--source", fmt::format("expected a name of 1 to {} bytes", longestSourceName));
    }
}

// Standard output can't hold both.
void requireOneOutput(CommandLine const& commandLine) {
    auto const& atEnd = commandLine.atEnd;
    if (commandLine.isJson && (std::any_of(atEnd.begin(), atEnd.end(), &hasSenderReport) ||
                               (commandLine.sent && hasSenderReport(*commandLine.sent)))) {
        throw CLI::ValidationError("--json", "the value '@-' has standard output for its report, "
                                             "so that there can be no JSON; expected '@PATH'");
    }
}

void addRegistryAndPipeline(CLI::App& verb, Texts& texts, CommandLine& commandLine) {
    verb.add_option("REGISTRY", texts.registry, "The registry file")->type_name("")->required();
    verb.add_option("PIPELINE", commandLine.pipeline, "The name of a pipeline that reads a stream")
        ->type_name("")
        ->required();
}

void addStream(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& stream = *app.add_subcommand("stream", "Make or show the streams of a pipeline");
    stream.footer(streamExamples);
    stream.add_option("ACTION", texts.action, "create or show")
        ->type_name("")
        ->required()
        ->check(CLI::IsMember({"create", "show"}).description(""));
    addRegistryAndPipeline(stream, texts, commandLine);
    auto& limits = commandLine.streamLimits;
    stream.add_option("--replicas", limits.replicas, "On how many servers each message is kept")
        ->type_name("NUMBER")
        ->capture_default_str()
        ->check(CLI::Range(1, 5).description(""));
    stream
        .add_option("--bytes", limits.bytes,
                    "So much of each partition is kept; -1 keeps everything")
        ->type_name("NUMBER")
        ->capture_default_str();
    stream.add_flag("--json", commandLine.isJson, "What show shows, as one line of JSON");
    stream.add_option("--hours", limits.hours, "So long a message is kept; 0 keeps it forever")
        ->type_name("NUMBER")
        ->capture_default_str();
}

void addPublish(CLI::App& app, Texts& texts, CommandLine& commandLine) {
    auto& publish = *app.add_subcommand("publish", "Send files of EDRs to a pipeline's stream");
    publish.footer(publishExamples);
    addRegistryAndPipeline(publish, texts, commandLine);
    auto& source = commandLine.streamSource;
    publish.add_option("FILE", source.files, "EDR files, in order; - is standard input")
        ->type_name("")
        ->required();
    publish
        .add_option("--key", source.keys,
                    "[SERVICE=]FIELD whose value decides the partition; may be given again")
        ->type_name("KEY")
        ->required()
        ->allow_extra_args(false);
    publish
        .add_option("--source", source.name,
                    "What the lines of the one FILE are remembered by, instead of its name and "
                    "identity")
        ->type_name("NAME");
    publish.add_flag("--json", commandLine.isJson, "The summary as one line of JSON");
    publish.add_option("--from", source.from, "The first line that is sent where none is known")
        ->type_name("LINE")
        ->check(CLI::Range(std::uint64_t{1}, std::numeric_limits<std::uint64_t>::max())
                    .description(""));
}

void take(Texts const& texts, CLI::App const& app, CommandLine& commandLine) {
    for (auto const& each : verbNames) {
        if (app.got_subcommand(each.name)) {
            commandLine.verb = each.verb;
        }
    }
    commandLine.registry = texts.registry;
    commandLine.isCreating = texts.action == "create";
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
        requireSharable(commandLine);
    }
    requireSourceName(commandLine.streamSource);
    requireOneOutput(commandLine);
}

std::string unknownVerbText(CLI::App const& app, std::string const& word) {
    std::vector<std::string> verbs;
    for (auto const* const verb : app.get_subcommands([](auto const*) { return true; })) {
        verbs.push_back(verb->get_name());
    }
    if (word.starts_with('-') || std::find(verbs.begin(), verbs.end(), word) != verbs.end()) {
        return {};
    }
    return fmt::format("unknown command '{}'{}; expected one of {}", word,
                       nearestNameHint(word, {verbs.begin(), verbs.end()}), fmt::join(verbs, ", "));
}

// Suggestions for unknown options.
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
        hints += hint.empty() ? hint : fmt::format("unknown option '{}'{}\n", word, hint);
    }
    return hints;
}

} // namespace

std::variant<CommandLine, ExitCode> parseCommandLine(int argc, char const* const* argv) {
    CommandLine commandLine;
    Texts texts;
    CLI::App app(description, "pipeline-host");
    app.footer(exitCodesText());
    app.require_subcommand(1);
    app.set_version_flag("--version", "pipeline-host " PIPELINE_HOST_VERSION);
    addRun(app, texts, commandLine);
    addCheck(app, texts, commandLine);
    addSend(app, texts, commandLine);
    addStatus(app, texts, commandLine);
    addGenerate(app, commandLine.generate);
    addStream(app, texts, commandLine);
    addPublish(app, texts, commandLine);
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
