#include "registry/EdrNameHints.h"

#include "EDR/Description.h"
#include "base/NearestName.h"

#include <vector>

namespace host {

namespace {

using Paths = std::vector<std::string_view>;

void addFields(EDR::Description const& description, Paths& paths) {
    for (auto const& kind : description.blockKinds()) {
        for (auto const& field : kind.fields) {
            paths.push_back(field.path.view());
        }
    }
}

void addBlocks(EDR::Description const& description, Paths& paths) {
    for (auto const& kind : description.blockKinds()) {
        paths.push_back(kind.path.view());
    }
}

std::string nearestBeside(std::string_view path, Paths const& known) {
    auto const parentLength = path.rfind('.') + 1; // 0 without one
    Paths names;
    for (auto const each : known) {
        if (each.rfind('.') + 1 == parentLength && each.starts_with(path.substr(0, parentLength))) {
            names.push_back(each.substr(parentLength));
        }
    }
    return nearestNameHint(path.substr(parentLength), names);
}

} // namespace

std::string missingFieldHint(EDR::Description const& description, std::string_view path) {
    Paths known;
    addFields(description, known);
    return nearestBeside(path, known);
}

std::string missingBlockHint(EDR::Description const& description, std::string_view path) {
    Paths known;
    addBlocks(description, known);
    return nearestBeside(path, known);
}

std::string missingMemberHint(EDR::Description const& description, std::string_view path) {
    Paths known;
    addFields(description, known);
    addBlocks(description, known);
    return nearestBeside(path, known);
}

} // namespace host
