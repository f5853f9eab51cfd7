#include "DAT/Reloadable.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <numeric>
#include <string>

namespace DAT {

namespace {

std::string tablesText(LoadReport const& report) {
    std::string text;
    for (auto const& table : report.tables) {
        text += (text.empty() ? "" : ", ") + table.name.str() + " " + std::to_string(table.rows);
        if (table.rejected > 0) {
            text += " (" + std::to_string(table.rejected) + " rejected)";
        }
    }
    return text;
}

std::string utcText(std::chrono::system_clock::time_point time) {
    auto const seconds = std::chrono::system_clock::to_time_t(time);
    std::tm parts = {};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 32> text = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

std::string secondsText(double seconds) {
    std::array<char, 32> text = {};
    std::snprintf(text.data(), text.size(), "%.3f", seconds);
    return text.data();
}

std::size_t sum(LoadReport const& report, std::size_t LoadedTable::*count) {
    return std::accumulate(
        report.tables.begin(), report.tables.end(), std::size_t{0},
        [&](std::size_t total, LoadedTable const& table) { return total + table.*count; });
}

} // namespace

// Here and not inline, so that the type information is the framework's: one copy for all modules.
NewData::~NewData() = default;
Reloadable::~Reloadable() = default;

std::size_t LoadReport::rows() const noexcept {
    return sum(*this, &LoadedTable::rows);
}

std::size_t LoadReport::rejected() const noexcept {
    return sum(*this, &LoadedTable::rejected);
}

BAS::Status loadedStatus(LoadReport const& report) {
    BAS::Status status("MSG_DATA_LOADED", BAS::Status::info, std::to_string(report.rows()));
    for (auto const& argument :
         {std::to_string(report.rejected()), report.source.str(), secondsText(report.seconds),
          tablesText(report), utcText(report.time)}) {
        status.arguments().append(argument);
    }
    return status;
}

} // namespace DAT
