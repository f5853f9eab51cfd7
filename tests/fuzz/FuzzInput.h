// What the fuzz targets share. A target is one function that is handed any bytes, must come back,
// and stops the process where a promise is broken.
#pragma once

#include "BAS/Status.h"
#include "base/Failures.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace fuzz {

inline std::string_view textOf(std::uint8_t const* data, std::size_t size) {
    return {reinterpret_cast<char const*>(data), size};
}

inline std::vector<std::string> pieces(std::string_view text, char separator) {
    std::vector<std::string> found;
    for (auto end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator)) {
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    found.emplace_back(text);
    return found;
}

inline void promise(bool isKept, std::string const& what) {
    if (!isKept) {
        std::cerr << "broken: " << what << "\n";
        std::abort();
    }
}

// A file in memory that holds the text, for what reads files.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view text) : descriptorM(::memfd_create("input", MFD_CLOEXEC)) {
        promise(::write(descriptorM, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
                "a file in memory");
    }
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;
    ~MemoryFile() { ::close(descriptorM); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptorM); }

private:
    int descriptorM;
};

// What is wrong with a file stands at a place in it, or just after it: where an escape breaks off
// at its end, the YAML parser counts up to the escape's full length.
inline void checkProblem(BAS::Status const& problem, std::string_view text) {
    auto const lines = 1 + std::count(text.begin(), text.end(), '\n');
    promise(problem.messageName() == "ERR_CONFIGURATION", "a problem of the file");
    auto const& arguments = problem.arguments();
    long line = 0;
    long column = 0;
    promise(arguments[1].toNum(line) && arguments[2].toNum(column), "a place in numbers");
    promise(line >= 1 && line <= lines + 1 && column >= 1 &&
                column <= static_cast<long>(text.size()) + 10,
            "a place in the file");
    promise(!arguments[3].isNull(), "a problem is reported");
}

// Reads a configuration file of that text. Returns whether it was accepted; nothing is thrown but
// what is wrong with it.
template <class Read>
bool isAccepted(std::string_view text, Read read) {
    MemoryFile const file(text);
    try {
        read(file.path());
        return true;
    } catch (host::StartFailure const& failure) {
        promise(!failure.problems.empty(), "a failure has its problems");
        for (auto const& problem : failure.problems) {
            checkProblem(problem, text);
        }
        return false;
    }
}

} // namespace fuzz
