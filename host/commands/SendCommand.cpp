#include "commands/SendCommand.h"

#include "base/DirectoryWatch.h"
#include "base/Failures.h"
#include "base/Poll.h"
#include "base/StopSignals.h"
#include "base/WholeFile.h"
#include "base/YamlTree.h"
#include "commands/CommandFile.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <iostream>

namespace host {

namespace {

// The names have the order in which the commands are sent.
std::string uniqueName() {
    auto const time = std::chrono::system_clock::now();
    auto const nanoseconds =
        std::chrono::nanoseconds(time.time_since_epoch()).count() % 1'000'000'000;
    return fmt::format("{:%Y%m%dT%H%M%S}.{:09}Z-{}",
                       fmt::gmtime(std::chrono::system_clock::to_time_t(time)), nanoseconds,
                       ::getpid());
}

// Whether all of the command was handled.
bool isHandled(std::filesystem::path const& result) {
    Problems problems(result);
    auto const document = readYamlFile(result, problems);
    auto const* const handled = document.find("Handled");
    return handled != nullptr && handled->value.text == "true";
}

ExitCode printResult(std::filesystem::path const& result) {
    bool const handled = isHandled(result);
    std::cout << readWholeFile(result) << std::flush;
    if (!std::cout) {
        return inputOrOutputFailed; // the file stays: the result isn't lost
    }
    ::unlink(result.c_str());
    return handled ? done : doneWithFaults;
}

bool isThere(std::filesystem::path const& file) {
    std::error_code error;
    return std::filesystem::exists(file, error);
}

// Returns false on timeout or when stop is set.
bool waitForResult(std::filesystem::path const& result, DirectoryWatch& watch,
                   Notification const& stop, Deadline deadline) {
    while (!isThere(result)) {
        if (stop.isSet() || !waitForAny({watch.descriptor(), stop.descriptor()}, deadline)) {
            return isThere(result);
        }
        watch.takeChanges();
    }
    return true;
}

void withdraw(std::filesystem::path const& file, std::filesystem::path const& result) {
    if (::unlink(file.c_str()) == 0) {
        std::cerr << "No host took the command; it is withdrawn." << std::endl;
    } else {
        std::cerr << "A host has taken the command and isn't done yet; its result will be in '"
                  << result.string() << "'." << std::endl;
    }
}

} // namespace

ExitCode sendCommand(std::filesystem::path const& directory, Command const& command,
                     std::chrono::duration<double> timeout) {
    auto const deadline = std::chrono::steady_clock::now() +
                          std::chrono::duration_cast<std::chrono::steady_clock::duration>(timeout);
    auto const base = (directory / uniqueName()).string();
    std::filesystem::path const file = base + commandSuffix;
    std::filesystem::path const result = base + resultSuffix;
    Notification stop;
    StopSignals const signals(stop);
    DirectoryWatch watch(directory);
    writeWholeFile(file, commandFileText(command));
    if (waitForResult(result, watch, stop, deadline)) {
        return printResult(result);
    }
    withdraw(file, result);
    return stop.isSet() ? interrupted : noAnswer;
}

} // namespace host
