#include "program/Program.h"

#include "facts/Times.h"
#include "program/DiffCommand.h"
#include "program/FindingsCommand.h"
#include "program/HtmlCommand.h"
#include "program/JsonCommand.h"
#include "program/ListCommand.h"
#include "text/InputFile.h"
#include "text/Output.h"

#include <CLI/CLI.hpp>

#include <sys/stat.h>

#include <cstdio>
#include <iostream>

namespace reader {

namespace {

constexpr char const* exitCodes = R"(Exit codes:
  0    done
  1    findings: a mismatch was found; diff: the files differ
  2    wrong usage
  3    no such file, or no event in it
  4    the output can't be written

datadump COMMAND --help shows the options of a command.
)";
constexpr char const* fileHelp =
    "event reports, in-memory dumps, directories of them, or - for standard input";
constexpr char const* oneFileHelp = "event report or in-memory dump, or - for standard input";

// A time of the command line, in seconds since 1970.
std::optional<std::int64_t> timeOption(std::string const& text, char const* option) {
    if (text.empty()) {
        return std::nullopt;
    }
    auto const seconds = isoSeconds(text);
    if (!seconds) {
        throw CLI::ValidationError(option, "\"" + text +
                                               "\" is no time such as 2026-11-20 or "
                                               "2026-11-20T12:00:00Z");
    }
    return seconds;
}

// The options that choose events, the same for every command.
struct FilterTexts {
    std::string since;
    std::string until;
};

void addFilters(CLI::App& command, Options& options, FilterTexts& texts) {
    struct PatternOption {
        char const* name;
        std::vector<std::string> Filter::*patterns;
        char const* help;
    };
    constexpr PatternOption patternOptions[] = {
        {"--customer", &Filter::customers, "customer identifier"},
        {"--service", &Filter::services, "service code"},
        {"--account", &Filter::accounts, "account number of the event"},
        {"--rate-plan", &Filter::ratePlans, "code of the used rate plan"},
        {"--price-model", &Filter::priceModels, "code of a used price model"},
        {"--discount", &Filter::discounts, "number or model of a used discount or sponsorship"},
        {"--owner", &Filter::owners, "number or account of an owner who shares or sponsors"},
    };
    for (auto const& option : patternOptions) {
        command.add_option(option.name, options.filter.*option.patterns, option.help)
            ->type_name("PATTERN")
            ->expected(1)
            ->allow_extra_args(false)
            ->take_all()
            ->group("Filters (PATTERN may hold * and ?)");
    }
    command.add_option("--since", texts.since, "charging start from this time on, ISO 8601, UTC")
        ->type_name("TIME")
        ->group("Filters (PATTERN may hold * and ?)");
    command.add_option("--until", texts.until, "charging start before this time")
        ->type_name("TIME")
        ->group("Filters (PATTERN may hold * and ?)");
}

struct OptionTexts {
    FilterTexts filters;
    std::string severity;
    std::vector<std::string> ignored;
};

class CommandLine {
public:
    CommandLine() {
        appM.require_subcommand(1);
        appM.footer(exitCodes);
        appM.set_version_flag("--version", "datadump " DATADUMP_VERSION);
        addReadingCommand("list", "one line an event", listEvents);
        addReadingCommand("show", "events as they stand, byte for byte", showEvents);
        auto& html =
            addReadingCommand("html", "a page to look at and to attach to a ticket", writePage);
        html.add_option("--old", optionsM.older, "mark what differs from this file")
            ->type_name("FILE");
        html.add_option("-o,--output", optionsM.page,
                        "the file of the page, or - for standard output")
            ->type_name("PAGE")
            ->required();
        auto& findings =
            addReadingCommand("findings", "what doesn't fit, one line each", listFindings);
        findings.get_option("FILE")->required(false);
        findings
            .add_option("--explain", optionsM.explained, "what a kind of finding means, or all")
            ->type_name("KIND");
        findings.parse_complete_callback([this] {
            if (optionsM.files.empty() && optionsM.explained.empty()) {
                throw CLI::RequiredError("FILE");
            }
        });
        auto& diff = addCommand("diff", "what changed from one file to another", compareDumps);
        diff.add_option("OLD", optionsM.older, oneFileHelp)->required()->type_name("");
        diff.add_option("NEW", optionsM.newer, "the file to compare with it")
            ->required()
            ->type_name("");
        diff.add_flag("--by-event", optionsM.isByEvent,
                      "list the changes of memory event by event");
        auto& json = addReadingCommand("json", "JSON Lines, one object an event", writeJson);
        json.add_flag("--raw", optionsM.hasRawText, "with the texts as they stand");
    }

    int run(int argc, char const* const* argv) {
        try {
            appM.parse(argc, argv);
            takeTexts();
        } catch (CLI::ParseError const& error) {
            return appM.exit(error) == 0 ? done : wrongUsage;
        }
        return optionsM.explained.empty() ? commandM(optionsM) : explainKind(optionsM.explained);
    }

private:
    using Command = int (*)(Options const&);

    CLI::App& addCommand(char const* name, char const* help, Command command) {
        auto& sub = *appM.add_subcommand(name, help);
        addFilters(sub, optionsM, textsM.filters);
        sub.callback([this, command] { commandM = command; });
        return sub;
    }

    // Reads several files as one. Which findings count is said the same way for all of them.
    CLI::App& addReadingCommand(char const* name, char const* help, Command command) {
        auto& sub = addCommand(name, help, command);
        sub.add_option("FILE", optionsM.files, fileHelp)->required()->type_name("");
        constexpr auto group = "Findings";
        sub.add_flag("--only-findings", optionsM.onlyFindings, "only events that have findings")
            ->group(group);
        sub.add_option("--severity", textsM.severity,
                       "the least severity: note, suspicion or mismatch")
            ->type_name("SEVERITY")
            ->group(group);
        sub.add_option("--ignore", textsM.ignored, "leave out a kind of finding")
            ->type_name("KIND")
            ->expected(1)
            ->allow_extra_args(false)
            ->take_all()
            ->group(group);
        return sub;
    }

    void takeTexts() {
        optionsM.filter.since = timeOption(textsM.filters.since, "--since");
        optionsM.filter.until = timeOption(textsM.filters.until, "--until");
        if (!textsM.severity.empty()) {
            auto const severity = severityOf(textsM.severity);
            if (!severity) {
                throw CLI::ValidationError("--severity", "\"" + textsM.severity +
                                                             "\" is not one of note, suspicion "
                                                             "and mismatch");
            }
            optionsM.leastSeverity = *severity;
        }
        for (auto const& name : textsM.ignored) {
            optionsM.isIgnored[static_cast<std::size_t>(requireKind("--ignore", name))] = true;
        }
        if (!optionsM.explained.empty() && optionsM.explained != "all") {
            requireKind("--explain", optionsM.explained);
        }
        openDirectories();
        checkFiles();
    }

    void openDirectories() {
        std::vector<std::string> files;
        for (auto const& name : optionsM.files) {
            auto const found = filesUnder(name);
            files.insert(files.end(), found.begin(), found.end());
        }
        optionsM.files = std::move(files);
    }

    // No file is read up before its turn, or overwritten while it is read.
    void checkFiles() const {
        auto inputs = optionsM.files;
        inputs.insert(inputs.end(), {optionsM.older, optionsM.newer});
        if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
            throw CLI::ValidationError("FILE", "standard input can be read only once");
        }
        auto const page = optionsM.page == "-" ? "/dev/stdout" : optionsM.page;
        for (auto const& input : inputs) {
            if (isSameFile(page, input == "-" ? "/dev/stdin" : input)) {
                throw CLI::ValidationError("--output",
                                           "\"" + optionsM.page + "\" is a file to read");
            }
        }
    }

    static bool isSameFile(std::string const& one, std::string const& other) {
        struct stat aboutOne {};
        struct stat aboutOther {};
        return ::stat(one.c_str(), &aboutOne) == 0 && ::stat(other.c_str(), &aboutOther) == 0 &&
               !S_ISCHR(aboutOne.st_mode) && aboutOne.st_dev == aboutOther.st_dev &&
               aboutOne.st_ino == aboutOther.st_ino;
    }

    static Kind requireKind(char const* option, std::string const& name) {
        auto const* const kind = findKind(name);
        if (kind == nullptr) {
            throw CLI::ValidationError(option, "there is no kind \"" + name +
                                                   "\"; --explain all names them");
        }
        return kind->kind;
    }

    CLI::App appM{"Reads event reports and in-memory dumps, and finds what doesn't fit.",
                  "datadump"};
    Options optionsM;
    OptionTexts textsM;
    Command commandM = nullptr;
};

} // namespace

int runProgram(int argc, char const* const* argv) {
    try {
        return CommandLine().run(argc, argv);
    } catch (InputError const& error) {
        fmt::print(stderr, "datadump: {}\n", printable(error.what()));
        return noInput;
    } catch (OutputError const& error) {
        fmt::print(stderr, "datadump: {}\n", printable(error.what()));
        return outputFailed;
    }
}

} // namespace reader
