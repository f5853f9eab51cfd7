#include "run/NameHints.h"

#include "EDR/Description.h"
#include "base/NearestName.h"
#include "registry/EdrNameHints.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace host {

namespace {

// The part of a data module's registered name by which others refer to it, or all of it but the
// last part.
std::string referenceTo(ModuleConfiguration const& module, bool isFull) {
    auto const name = module.registeredName.substr(0, module.registeredName.rfind('.'));
    return isFull ? name : name.substr(name.rfind('.') + 1);
}

} // namespace

BAS::Status NameHints::withHint(BAS::Status status) const {
    struct Rule {
        std::string_view message;
        std::size_t arguments; // without the hint
        std::string (NameHints::*hint)(BAS::Status const&) const;
    };
    static constexpr Rule rules[] = {
        {"ERR_DATA_PLUGIN_NOT_FOUND", 1, &NameHints::ofReference},
        {"ERR_PLUGIN_TYPE_INVALID", 1, &NameHints::ofKind},
        {"ERR_REG_ENTRY_NOT_FOUND", 1, &NameHints::ofKey},
        {"ERR_EDR_FIELD_NOT_FOUND", 4, &NameHints::ofField},
        {"ERR_EDR_BLOCK_NOT_FOUND", 4, &NameHints::ofBlock},
    };
    auto const rule = std::find_if(std::begin(rules), std::end(rules), [&](Rule const& each) {
        return each.message == status.messageName().view() &&
               each.arguments == status.arguments().entries();
    });
    if (rule != std::end(rules)) {
        if (auto const hint = (this->*rule->hint)(status); !hint.empty()) {
            status.arguments().append(hint);
        }
    }
    return status;
}

std::string NameHints::ofReference(BAS::Status const& status) const {
    auto const& reference = status.arguments()[0].str();
    bool const isFull = reference.find('.') != std::string::npos;
    std::vector<std::string> known;
    for (auto const& module : registryM.configuration.dataPool) {
        known.push_back(referenceTo(module, isFull));
    }
    return nearestNameHint(reference, {known.begin(), known.end()});
}

// The module of that name and the keys that name it, or what else was meant.
std::string NameHints::ofKind(BAS::Status const& status) const {
    auto const& reference = status.arguments()[0].str();
    auto const& pool = registryM.configuration.dataPool;
    auto const module = std::find_if(pool.begin(), pool.end(), [&](auto const& each) {
        return reference == referenceTo(each, false) || reference == referenceTo(each, true);
    });
    auto const* const subtree = subtreeOf(registryM, status.objectName());
    if (module == pool.end() || subtree == nullptr) {
        return ofReference(status);
    }
    std::string keys;
    for (auto const& key : subtree->children()) {
        if (key->wasFound() && key->value().str() == reference) {
            keys += fmt::format("{}'{}'", keys.empty() ? "" : " and ", key->name().str());
        }
    }
    return fmt::format(" (a {}, named by {})", module->moduleName, keys);
}

// A key that the object didn't ask for may be the one that it misses.
std::string NameHints::ofKey(BAS::Status const& status) const {
    auto const* const subtree = subtreeOf(registryM, status.objectName());
    std::vector<std::string_view> unread;
    if (subtree != nullptr) {
        for (auto const& key : subtree->children()) {
            if (!key->wasFound()) {
                unread.push_back(key->name().view());
            }
        }
    }
    auto const nearest = nearestName(status.arguments()[0].view(), unread);
    return nearest ? fmt::format(" (did you mean it by '{}'?)", *nearest) : std::string();
}

std::string NameHints::ofField(BAS::Status const& status) const {
    auto const* const description = descriptionOfM(status.objectName());
    return description == nullptr ? ""
                                  : missingFieldHint(*description, status.arguments()[0].view());
}

std::string NameHints::ofBlock(BAS::Status const& status) const {
    auto const* const description = descriptionOfM(status.objectName());
    return description == nullptr ? ""
                                  : missingBlockHint(*description, status.arguments()[0].view());
}

} // namespace host
