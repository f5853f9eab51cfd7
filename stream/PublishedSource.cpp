#include "PublishedSource.h"

#include <optional>
#include <stdexcept>

namespace stream {

namespace {

constexpr std::string_view serviceField = "INTERN_SERVICE_CODE";
// Nothing when there is no such member, or when its value is neither a text nor a number. What the
// text has is valid until the next one is asked for.
std::optional<std::string_view> valueOf(simdjson::ondemand::object& edr, std::string_view name) {
    simdjson::ondemand::value value;
    simdjson::ondemand::json_type type = {};
    if (edr.find_field_unordered(name).get(value) != simdjson::SUCCESS ||
        value.type().get(type) != simdjson::SUCCESS) {
        return std::nullopt;
    }
    if (type == simdjson::ondemand::json_type::number) {
        auto const token = value.raw_json_token();
        return token.substr(0, token.find_last_not_of(" \t\r\n") + 1);
    }
    std::string_view text;
    return type == simdjson::ondemand::json_type::string &&
                   value.get_string().get(text) == simdjson::SUCCESS
               ? std::optional(text)
               : std::nullopt;
}

} // namespace

KeyFields::KeyFields(std::vector<std::string> const& keys) {
    for (auto const& key : keys) {
        auto const separator = key.find('=');
        auto const service = separator == std::string::npos ? "" : key.substr(0, separator);
        auto const field = separator == std::string::npos ? key : key.substr(separator + 1);
        if (field.empty() || separator == 0 || !fieldsM.emplace(service, field).second) {
            throw std::invalid_argument("'" + key +
                                        "' is no key: expected [SERVICE=]FIELD, each service once");
        }
    }
}

std::uint64_t KeyFields::partitionOf(std::string_view line, std::uint64_t partitions) {
    simdjson::ondemand::document document;
    simdjson::ondemand::object edr;
    simdjson::padded_string_view const padded(line.data(), line.size(), line.size() + padding);
    if (parserM.iterate(padded).get(document) != simdjson::SUCCESS ||
        document.get_object().get(edr) != simdjson::SUCCESS) {
        return 0;
    }
    auto const* const field = fieldOf(edr);
    auto const value = field == nullptr ? std::nullopt : valueOf(edr, *field);
    return value ? hashOf(*value) % partitions : 0;
}

// Null when neither the service of the EDR nor all services have one.
std::string const* KeyFields::fieldOf(simdjson::ondemand::object& edr) const {
    auto const forAll = fieldsM.find("");
    bool const isByService = fieldsM.size() > (forAll == fieldsM.end() ? 0 : 1);
    auto const service = isByService ? valueOf(edr, serviceField) : std::nullopt;
    auto const own = service ? fieldsM.find(*service) : fieldsM.end();
    auto const found = own == fieldsM.end() ? forAll : own;
    return found == fieldsM.end() ? nullptr : &found->second;
}

} // namespace stream
