#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace host {

namespace {

constexpr char const* description =
    "Runs the function plug-ins of an event rating pipeline without the production host.";
constexpr char const* exitCodes =
    "Exit codes: 0 done; 1 done, but input was rejected, a command was not handled or a plug-in "
    "threw; 2 usage; 3 start-up failed; 4 input or output failed.";

std::vector<Command> parseCommands(std::vector<std::string> const& texts) {
    std::vector<Command> commands;
    for (auto const& text : texts) {
        try {
            commands.push_back(parseCommand(text));
        } catch (std::invalid_argument const& error) {
            throw CLI::ValidationError("--at-end \"" + text + "\"", error.what());
        }
    }
    return commands;
}

} // namespace

std::variant<CommandLine, ExitCode> parseCommandLine(int argc, char const* const* argv) {
    CommandLine commandLine;
    std::string registry;
    std::vector<std::string> atEnd;
    CLI::App app(description, "pipeline-host");
    app.footer(exitCodes);
    app.require_subcommand(1);
    app.set_version_flag("--version", PIPELINE_HOST_VERSION);
    auto* const run = app.add_subcommand(
        "run", "Run the pipelines until their inputs end; results of commands go to standard "
               "output, everything else to the log");
    auto* const check =
        app.add_subcommand("check", "Start everything, report every problem, run nothing");
    for (auto* const verb : {run, check}) {
        verb->add_option("REGISTRY", registry, "The registry file")->required();
    }
    run->add_option(
           "--at-end", atEnd,
           "A command after the last input: \"OBJECT KEY[=VALUE] ...\", with quotes around "
           "values that hold blanks; may be given again")
        ->allow_extra_args(false);
    try {
        app.parse(argc, argv);
        commandLine.verb = check->parsed() ? CommandLine::Verb::check : CommandLine::Verb::run;
        commandLine.registry = registry;
        commandLine.atEnd = parseCommands(atEnd);
        return commandLine;
    } catch (CLI::ParseError const& error) {
        return app.exit(error, std::cout, std::cerr) == 0 ? ExitCode::done : ExitCode::usageWrong;
    }
}

} // namespace host
