#include "watch/Watcher.h"

#include "BAS/LogSink.h"
#include "base/Failures.h"
#include "base/Poll.h"
#include "base/TemporaryFile.h"
#include "watch/MetricsText.h"
#include "watch/StatusText.h"

#include <sys/stat.h>

#include <algorithm>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

constexpr char const* statusName = ".status";
constexpr std::chrono::seconds statusPeriod(1);
constexpr std::chrono::seconds metricsPeriod(10);
// Between two looks, however many commands there are.
constexpr std::chrono::milliseconds shortestPause(20);

void writeMetrics(HostConfiguration const& configuration, std::string_view text) {
    TemporaryFile file(*configuration.metricsFile);
    if (::fchmod(file.descriptor(), static_cast<mode_t>(configuration.metricsMode)) != 0) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", *configuration.metricsFile, errno);
    }
    file.write(text);
    file.takePlace();
}

} // namespace

std::optional<std::filesystem::path> statusFileOf(HostConfiguration const& configuration) {
    if (configuration.statusFile || !configuration.commandDirectory) {
        return configuration.statusFile;
    }
    return *configuration.commandDirectory / statusName;
}

Watcher::Watcher(Host& host, CommandJournal& journal, std::filesystem::path const& registry,
                 Bell& reopen, std::function<void()> reopenLogs)
    : hostM(host), journalM(journal), gathererM(host, journal, registry), reopenM(reopen),
      reopenLogsM(std::move(reopenLogs)) {
    auto const& configuration = host.configuration();
    if (auto const file = statusFileOf(configuration)) {
        statusFileM.emplace(*file);
        outputsM.push_back(
            {[this](HostStatus const& status) { statusFileM->write(statusJson(status)); },
             statusPeriod, true});
    }
    if (configuration.metricsFile) {
        outputsM.push_back({[&configuration](HostStatus const& status) {
                                writeMetrics(configuration, metricsText(status));
                            },
                            metricsPeriod, false});
    }
    writeDue();
    threadM = std::jthread([this] { watch(); });
}

Watcher::~Watcher() {
    endM.set();
    threadM.join();
    for (auto& output : outputsM) {
        output.next = {};
    }
    writeDue();
}

void Watcher::watch() {
    while (!endM.isSet()) {
        auto const begin = Clock::now();
        waitForAny({endM.descriptor(), reopenM.descriptor(), journalM.changes().descriptor()},
                   begin + statusPeriod);
        if (reopenM.take()) {
            reopenLogsM();
        }
        if (journalM.changes().take()) {
            for (auto& output : outputsM) {
                output.next = output.isForCommands ? Clock::time_point() : output.next;
            }
        }
        writeDue();
        waitForAny({endM.descriptor()}, begin + shortestPause);
    }
}

void Watcher::writeDue() {
    auto const status = gathererM.gather();
    for (auto& output : outputsM) {
        if (Clock::now() >= output.next) {
            write(output, status);
        }
    }
}

void Watcher::write(Output& output, HostStatus const& status) {
    output.next = Clock::now() + output.period;
    try {
        output.write(status);
        output.isFailing = false;
    } catch (BAS::Status const& failure) {
        if (!std::exchange(output.isFailing, true)) {
            hostM.log().write(failure);
        }
    }
}

} // namespace host
