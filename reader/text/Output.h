// What the program prints to standard output, in large pieces.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace reader {

class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Returns false, with errno, when not all of it can be written.
bool writeAll(int descriptor, std::string_view text);

class Output {
public:
    // Both throw an OutputError when standard output doesn't take it.
    void write(std::string_view text);
    void flush();

    template <class... Args>
    void print(fmt::format_string<Args...> format, Args&&... arguments) {
        write(fmt::format(format, std::forward<Args>(arguments)...));
    }

private:
    std::string bufferM;
};

// Control characters as "\xNN": so that a value neither breaks a line nor moves a terminal's
// cursor.
std::string printable(std::string_view text);
void appendPrintable(std::string& shown, std::string_view text);

} // namespace reader
