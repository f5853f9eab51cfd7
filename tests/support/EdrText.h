// Descriptions and EDRs from a short text, so that a test shows what it is about.
#pragma once

#include "EDR/Container.h"
#include "EDR/Description.h"

#include <memory>
#include <string>
#include <vector>

namespace support {

// Adds the field or block of that full path, and every block above it that isn't there yet.
inline EDR::BlockIndex describeBlock(EDR::Description& description, std::string const& path) {
    if (auto const known = description.findBlock(path); known.isValid()) {
        return known;
    }
    auto const dot = path.rfind('.');
    return description.addBlock(describeBlock(description, path.substr(0, dot)),
                                path.substr(dot + 1));
}

inline void describeField(EDR::Description& description, std::string const& path,
                          EDR::FieldType type = EDR::FieldType::text) {
    auto const dot = path.rfind('.');
    description.addField(describeBlock(description, path.substr(0, dot)), path.substr(dot + 1),
                         type);
}

// One step of an EDR: a block of that path is begun, or, with a value, a field of it is set. Paths
// are given below "DETAIL.".
struct EdrStep {
    std::string path;
    char const* value = nullptr;
};

inline void fill(EDR::Container& container, EDR::Description const& description,
                 std::vector<EdrStep> const& steps, EDR::RecordKind kind = EDR::detailRecord) {
    container.clear(kind);
    for (auto const& step : steps) {
        auto const path = "DETAIL." + step.path;
        if (step.value == nullptr) {
            container.addBlock(description.findBlock(path));
        } else {
            container.setField(description.findField(path), step.value);
        }
    }
}

} // namespace support
