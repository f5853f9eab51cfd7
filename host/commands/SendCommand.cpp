#include "commands/SendCommand.h"

#include "base/DirectoryWatch.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/Poll.h"
#include "base/SignalThread.h"
#include "base/WholeFile.h"
#include "base/YamlTree.h"
#include "commands/CommandFile.h"
#include "commands/CommandReport.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <array>
#include <iostream>
#include <system_error>

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

bool isThere(std::filesystem::path const& file) {
    std::error_code error;
    return std::filesystem::exists(file, error);
}

bool isFaultless(std::filesystem::path const& result) {
    Problems problems(result);
    auto const document = readYamlFile(result, problems);
    auto const* const faultless = document.find("Faultless");
    return faultless != nullptr && faultless->value.text == "true";
}

// Copies the file to standard output.
void print(std::filesystem::path const& report) {
    auto const file = openForeignFile(report);
    std::array<char, std::size_t{64} * 1024> piece;
    for (;;) {
        auto const count = ::read(file.number(), piece.data(), piece.size());
        if (count < 0) {
            throw fileStatus("ERR_FILE_NOT_READABLE", report, errno);
        }
        if (count == 0) {
            return;
        }
        if (!writeAll(STDOUT_FILENO, {piece.data(), static_cast<std::size_t>(count)})) {
            throw makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_WRITABLE",
                             {"standard output", fmt::format("{}; the report stays in '{}'",
                                                             std::generic_category().message(errno),
                                                             report.string())});
        }
    }
}

void printReports(std::string const& base, std::size_t reports) {
    for (std::size_t number = 1; number <= reports; ++number) {
        auto const report = base + reportSuffix(number);
        if (isThere(report)) {
            print(report);
        }
    }
}

ExitCode printResult(std::string const& base, std::size_t reports, ResultForm form) {
    auto const result = base + resultSuffix;
    bool const faultless = isFaultless(result);
    printReports(base, reports);
    auto& output = reports > 0 ? std::cerr : std::cout;
    auto const text = readWholeFile(result);
    output << (form == ResultForm::json ? resultFileJson(text) : text) << std::flush;
    if (!output) {
        return inputOrOutputFailed;
    }
    return faultless ? done : doneWithFaults;
}

// What can't be printed stays, so that it isn't lost.
ExitCode fetchResult(CommandInlet const& inlet, std::string const& name, std::size_t reports,
                     ResultForm form) {
    auto const base = (inlet.answers / name).string();
    auto const exitCode = printResult(base, reports, form);
    if (exitCode == inputOrOutputFailed) {
        return exitCode;
    }
    if (!inlet.isOfGroup()) {
        removeAnswer(base);
        return exitCode;
    }
    try {
        writeWholeFile(inlet.directory / (name + fetchedSuffix), "");
    } catch (BAS::Status const&) {
        // It is the sender's no more, and goes after some days.
    }
    return exitCode;
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

ExitCode sendCommand(CommandInlet const& inlet, Command const& command,
                     std::chrono::duration<double> timeout, ResultForm form) {
    auto const deadline = std::chrono::steady_clock::now() +
                          std::chrono::duration_cast<std::chrono::steady_clock::duration>(timeout);
    auto const name = uniqueName();
    auto const file = inlet.directory / (name + commandSuffix);
    auto const result = inlet.answers / (name + resultSuffix);
    Notification stop;
    SignalThread const signals(stop);
    DirectoryWatch watch(inlet.answers);
    writeWholeFile(file, commandFileText(command));
    if (waitForResult(result, watch, stop, deadline)) {
        return fetchResult(inlet, name, senderReports(command), form);
    }
    withdraw(file, result);
    return stop.isSet() ? interrupted : noAnswer;
}

} // namespace host
