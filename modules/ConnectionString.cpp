#include "ConnectionString.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace MOD {

namespace {

constexpr std::string_view sqlitePrefix = "sqlite3://";
constexpr char blank = ' ';

using Parameters = std::vector<std::pair<std::string, std::string>>;

// Removes the value from the text: up to the next blank, or within quotes.
std::string takeValue(std::string_view& text) {
    bool const quoted = text.starts_with('"') || text.starts_with('\'');
    auto const end = quoted ? text.find(text.front(), 1) : text.find(blank);
    std::string value(quoted ? text.substr(1, end - 1) : text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return value;
}

Parameters parametersOf(std::string_view text) {
    Parameters parameters;
    while (text.find_first_not_of(blank) != std::string_view::npos) {
        text.remove_prefix(text.find_first_not_of(blank));
        auto const nameEnd = std::min(text.find('='), text.find(blank));
        if (nameEnd == std::string_view::npos || text[nameEnd] == blank) {
            // A value without a name is the file.
            parameters.emplace_back("db", takeValue(text));
            continue;
        }
        std::string name(text.substr(0, nameEnd));
        text.remove_prefix(nameEnd + 1);
        parameters.emplace_back(std::move(name), takeValue(text));
    }
    return parameters;
}

} // namespace

ConnectionString::ConnectionString(std::string const& givenText,
                                   std::filesystem::path const& directory)
    : text(givenText) {
    if (!givenText.starts_with(sqlitePrefix)) {
        return;
    }
    text = sqlitePrefix;
    file.emplace();
    bool readOnly = false;
    for (auto& [name, value] : parametersOf(std::string_view(givenText).substr(text.size()))) {
        if (name == "db" || name == "dbname") {
            file = directory / value;
            value = file->string();
        }
        readOnly = readOnly || name == "readonly";
        text += fmt::format("{}=\"{}\" ", name, value);
    }
    text += readOnly ? "" : "readonly=\"true\"";
}

} // namespace MOD
