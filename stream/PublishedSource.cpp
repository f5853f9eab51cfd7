#include "PublishedSource.h"

#include <optional>
#include <stdexcept>

namespace stream {

namespace {

constexpr std::string_view serviceField = "INTERN_SERVICE_CODE";
constexpr std::string_view blanks = " \t";

std::string_view withoutBlanks(std::string_view text) {
    auto const begin = text.find_first_not_of(blanks);
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

// The text of the first member of that name with a text or number as its value, as it stands in the
// line. A name within a text has a backslash before its quote, and no colon after it.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view name) {
    for (auto at = line.find(name); at != std::string_view::npos; at = line.find(name, at + 1)) {
        auto rest = line.substr(at + name.size());
        if (at == 0 || line[at - 1] != '"' || !rest.starts_with('"')) {
            continue;
        }
        rest = withoutBlanks(rest.substr(1));
        if (!rest.starts_with(':')) {
            continue;
        }
        rest = withoutBlanks(rest.substr(1));
        bool const isText = rest.starts_with('"');
        rest.remove_prefix(isText ? 1 : 0);
        return rest.substr(0, rest.find_first_of(isText ? "\"" : ",} \t"));
    }
    return std::nullopt;
}

} // namespace

KeyFields::KeyFields(std::vector<std::string> const& keys) {
    for (auto const& key : keys) {
        auto const separator = key.find('=');
        auto const service = separator == std::string::npos ? "" : key.substr(0, separator);
        auto const field = separator == std::string::npos ? key : key.substr(separator + 1);
        if (field.empty() || !fieldsM.emplace(service, field).second) {
            throw std::invalid_argument("'" + key +
                                        "' is no key: expected [SERVICE=]FIELD, each service once");
        }
    }
}

std::uint64_t KeyFields::partitionOf(std::string_view line, std::uint64_t partitions) const {
    auto const service = valueOf(line, serviceField);
    auto field = fieldsM.find(service.value_or(std::string_view()));
    if (field == fieldsM.end()) {
        field = fieldsM.find("");
    }
    auto const value = field == fieldsM.end() ? std::nullopt : valueOf(line, field->second);
    return value ? hashOf(*value) % partitions : 0;
}

} // namespace stream
