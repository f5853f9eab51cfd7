// The problems of a start that fails, as texts.
#pragma once

#include "base/Failures.h"
#include "base/MessageCatalogue.h"

#include <string>
#include <vector>

// Each problem of a configuration file as "LINE:COLUMN: TEXT".
template <class Operation>
std::vector<std::string> problemsOf(Operation operation) {
    std::vector<std::string> texts;
    try {
        operation();
    } catch (host::StartFailure const& failure) {
        for (auto const& problem : failure.problems) {
            auto const& arguments = problem.arguments();
            texts.push_back(arguments[1].str() + ":" + arguments[2].str() + ": " +
                            arguments[3].str());
        }
    } catch (BAS::Status const& status) {
        texts.push_back(host::statusText(status));
    }
    return texts;
}
