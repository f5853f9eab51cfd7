#include "program/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>

namespace reader {

namespace {

constexpr std::size_t usualWidth = 80;

std::string_view environment(char const* name) {
    auto const* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

std::size_t terminalWidth() {
    auto const text = environment("COLUMNS");
    std::size_t width = 0;
    std::from_chars(text.data(), text.data() + text.size(), width);
    winsize size{};
    if (width == 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        width = size.ws_col;
    }
    return width == 0 ? usualWidth : width;
}

} // namespace

Terminal Terminal::ofOutput() {
    Terminal terminal;
    terminal.isTerminal = ::isatty(STDOUT_FILENO) == 1;
    if (terminal.isTerminal) {
        terminal.hasColours = environment("NO_COLOR").empty() && environment("TERM") != "dumb";
        terminal.width = terminalWidth();
    }
    return terminal;
}

std::string Terminal::coloured(std::string_view text, std::string_view colour) const {
    std::string shown(text);
    if (hasColours) {
        shown = "\x1b[";
        shown += colour;
        shown += 'm';
        shown += text;
        shown += "\x1b[0m";
    }
    return shown;
}

std::string fitted(std::string const& text, std::size_t width) {
    std::size_t characters = 0;
    std::size_t cut = text.size(); // where the last character that may stay ends
    for (std::size_t at = 0; at < text.size(); ++at) {
        if ((text[at] & 0xc0) != 0x80) {
            ++characters;
            cut = characters == width ? at : cut;
        }
    }
    if (characters > width) {
        return text.substr(0, cut) + "…";
    }
    return text + std::string(width - characters, ' ');
}

} // namespace reader
