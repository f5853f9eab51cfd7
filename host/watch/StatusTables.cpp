// What people read of a status.
#include "base/EscapedText.h"
#include "base/LogFile.h"
#include "base/TextTable.h"
#include "base/TimeText.h"
#include "watch/StatusText.h"

#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <stdexcept>

namespace host {

namespace {

using Element = simdjson::dom::element;

Element member(Element const& element, char const* key) {
    return element[key].value();
}

std::string textOf(Element const& element, char const* key) {
    auto const value = member(element, key);
    std::string_view text;
    if (value.get(text) == simdjson::SUCCESS) {
        return printable(text);
    }
    return value.is_null() ? "-" : simdjson::minify(value);
}

std::string yesOrNo(Element const& element, char const* key) {
    return member(element, key).get_bool().value() ? "yes" : "no";
}

// A span of time as people read it, to two units.
std::string spanText(double seconds) {
    if (seconds < 60) {
        return fmt::format("{:.1f} s", seconds);
    }
    auto const whole = static_cast<std::uint64_t>(seconds);
    if (whole < 3600) {
        return fmt::format("{} min {} s", whole / 60, whole % 60);
    }
    return whole < 86400 ? fmt::format("{} h {} min", whole / 3600, whole % 3600 / 60)
                         : fmt::format("{} d {} h", whole / 86400, whole % 86400 / 3600);
}

std::string secondsText(Element const& element, char const* key, double later = 0) {
    double seconds = 0;
    return element[key].get(seconds) == simdjson::SUCCESS ? spanText(seconds + later) : "-";
}

std::string placeText(Element const& pipeline) {
    auto const input = member(pipeline, "Input");
    return input.is_null() ? "-" : textOf(input, "File") + ", byte " + textOf(input, "Byte");
}

// The host writes its status every second.
std::string ageText(double age) {
    constexpr double usualAge = 3;
    return age > usualAge ? "The status is of " + spanText(age) +
                                " ago: the host is stopped, or can't write it.\n"
                          : "";
}

std::string pipelinesTable(Element const& status, double age) {
    std::vector<TableRow> rows = {{"Pipeline"}};
    std::string alignment = "l";
    for (auto const& each : counterMembers) {
        rows.front().push_back(each.heading);
        alignment += 'r';
    }
    for (auto const* const heading : {"EDRs/s", "Last batch", "Reading"}) {
        rows.front().push_back(heading);
    }
    alignment += "rrl";
    for (auto const pipeline : status["Pipelines"].get_array()) {
        TableRow row = {textOf(pipeline, "Pipeline")};
        for (auto const& each : counterMembers) {
            row.push_back(textOf(pipeline, each.name));
        }
        row.push_back(textOf(pipeline, "EdrsPerSecond"));
        row.push_back(secondsText(pipeline, "SecondsSinceBatch", age));
        row.push_back(placeText(pipeline));
        rows.push_back(row);
    }
    return alignedTable(rows, alignment);
}

std::string countsTables(Element const& status) {
    std::string text;
    for (auto const pipeline : status["Pipelines"].get_array()) {
        auto const counts = member(pipeline, "CountBy");
        if (counts.is_null()) {
            continue;
        }
        std::vector<TableRow> rows;
        for (auto const [value, count] : member(counts, "Values").get_object()) {
            rows.push_back({printable(value), simdjson::minify(count)});
        }
        rows.push_back({"(other)", textOf(counts, "Other")});
        text += "\nDetails of " + textOf(pipeline, "Pipeline") + " by " + textOf(counts, "Field") +
                "\n" + alignedTable(rows, "lr");
    }
    return text;
}

std::string partitionsTables(Element const& status) {
    std::string text;
    for (auto const pipeline : status["Pipelines"].get_array()) {
        auto const partitions = member(pipeline, "Partitions");
        if (partitions.is_null()) {
            continue;
        }
        std::vector<TableRow> rows = {{"Partition", "Owned", "Next message", "Lag"}};
        for (auto const partition : partitions.get_array()) {
            rows.push_back({textOf(partition, "Partition"), yesOrNo(partition, "Owned"),
                            textOf(partition, "Sequence"), textOf(partition, "Lag")});
        }
        text +=
            "\nPartitions of " + textOf(pipeline, "Pipeline") + "\n" + alignedTable(rows, "rlrr");
    }
    return text;
}

// Of what is no fault the name says enough.
std::string statusTextOf(Element const& object) {
    auto const status = member(object, "Status");
    if (status.is_null()) {
        return "-";
    }
    auto const level = levelOfName(member(status, "Level").get_string().value());
    return textOf(status, "Message") +
           (level && *level < BAS::Status::warning ? "" : ": " + textOf(status, "Text"));
}

std::string objectsTable(Element const& status) {
    std::vector<TableRow> rows = {{"Object", "Kind", "Valid", "Status"}};
    for (auto const object : status["Objects"].get_array()) {
        rows.push_back({textOf(object, "Object"), textOf(object, "Kind"), yesOrNo(object, "Valid"),
                        statusTextOf(object)});
    }
    return alignedTable(rows, "llll");
}

std::string dataTable(Element const& status) {
    std::vector<TableRow> rows = {{"Data module", "Loaded", "Rows", "Rejected", "Source"}};
    for (auto const object : status["Objects"].get_array()) {
        if (Element load; object["Loaded"].get(load) == simdjson::SUCCESS) {
            rows.push_back({textOf(object, "Object"), textOf(load, "Time"), textOf(load, "Rows"),
                            textOf(load, "Rejected"), textOf(load, "Source")});
        }
    }
    return rows.size() == 1 ? "" : "\n" + alignedTable(rows, "llrrl");
}

std::string commandsTables(Element const& status, double age) {
    std::vector<TableRow> rows = {{"Command in progress", "Keys", "For"}};
    for (auto const command : status["CommandsInProgress"].get_array()) {
        rows.push_back({textOf(command, "Object"), textOf(command, "Keys"),
                        secondsText(command, "Seconds", age)});
    }
    auto text = rows.size() == 1 ? "" : "\n" + alignedTable(rows, "lll");
    rows = {{"Last commands", "Keys", "Answered", "Verdict", "Took"}};
    for (auto const command : status["LastCommands"].get_array()) {
        auto const result = member(command, "Result");
        rows.push_back({textOf(result, "Object"), textOf(result, "Keys"), textOf(command, "Time"),
                        textOf(result, "Verdict"), secondsText(result, "Seconds")});
    }
    return text + (rows.size() == 1 ? "" : "\n" + alignedTable(rows, "llllr"));
}

} // namespace

std::string statusTables(std::string_view json, std::chrono::system_clock::time_point now) {
    simdjson::dom::parser parser;
    try {
        auto const status = parser.parse(simdjson::padded_string(json)).value();
        auto const age = std::max(0.0, unixSeconds(now) - double(status["UnixTime"]));
        return fmt::format("pipeline-host {}, process {}, for {}, since {}\n{}\n{}\n{}{}{}\n{}{}{}",
                           textOf(status, "Version"), textOf(status, "Process"),
                           secondsText(status, "Seconds", age), textOf(status, "Since"),
                           textOf(status, "Registry"), ageText(age), pipelinesTable(status, age),
                           partitionsTables(status), countsTables(status), objectsTable(status),
                           dataTable(status), commandsTables(status, age));
    } catch (simdjson::simdjson_error const& error) {
        throw std::runtime_error(std::string("the status can't be understood: ") + error.what());
    }
}

} // namespace host
