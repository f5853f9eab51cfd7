#include "Problems.h"

#include "MessageCatalogue.h"
#include "StartFailure.h"

#include <algorithm>

namespace host {

void Problems::add(FilePosition position, std::string text) {
    problemsM.push_back({position, std::move(text)});
}

void Problems::throwIfAny() const {
    if (problemsM.empty()) {
        return;
    }
    auto sorted = problemsM;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](auto const& a, auto const& b) { return a.position < b.position; });
    StartFailure failure;
    for (auto const& problem : sorted) {
        failure.problems.push_back(
            makeStatus(BAS::Status::critical, {}, "ERR_CONFIGURATION",
                       {fileM.string(), std::to_string(problem.position.line),
                        std::to_string(problem.position.column), problem.text}));
    }
    throw failure;
}

} // namespace host
