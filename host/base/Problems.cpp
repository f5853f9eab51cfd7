#include "base/Problems.h"

#include "base/Failures.h"
#include "base/MessageCatalogue.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace host {

void Problems::add(FilePosition position, std::string text) {
    problemsM.push_back({position, std::move(text)});
}

std::vector<BAS::Status> Problems::statuses() const {
    auto sorted = problemsM;
    std::stable_sort(sorted.begin(), sorted.end(), [](auto const& a, auto const& b) {
        return std::tie(a.position.line, a.position.column) <
               std::tie(b.position.line, b.position.column);
    });
    std::vector<BAS::Status> statuses;
    statuses.reserve(sorted.size());
    for (auto const& problem : sorted) {
        statuses.push_back(makeStatus(BAS::Status::critical, {}, "ERR_CONFIGURATION",
                                      {fileM.string(), std::to_string(problem.position.line),
                                       std::to_string(problem.position.column), problem.text}));
    }
    return statuses;
}

void Problems::throwIfAny() const {
    if (!problemsM.empty()) {
        throw StartFailure{statuses()};
    }
}

} // namespace host
