// Collects the problems of one configuration file, so that all are reported at once.
#pragma once

#include "BAS/Status.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace host {

// A place in a text file; lines and columns count from 1.
struct FilePosition {
    int line = 1;
    int column = 1;
};

class Problems {
public:
    explicit Problems(std::filesystem::path file) : fileM(std::move(file)) {}

    void add(FilePosition position, std::string text);
    bool empty() const noexcept { return problemsM.empty(); }
    // In the order of their places.
    std::vector<BAS::Status> statuses() const;
    // Throws a StartFailure with all problems if there are any.
    void throwIfAny() const;

private:
    struct Problem {
        FilePosition position;
        std::string text;
    };

    std::filesystem::path fileM;
    std::vector<Problem> problemsM;
};

} // namespace host
