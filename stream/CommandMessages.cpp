#include "CommandMessages.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <random>

namespace stream {

std::optional<CommandMessage> parseCommandMessage(std::string_view data) {
    auto const line = data.substr(0, data.find('\n'));
    auto const blank = std::min(line.find(' '), line.size());
    CommandMessage message{line.substr(0, blank), 0, {}};
    auto const digits = line.substr(std::min(blank + 1, line.size()));
    auto const [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), message.number);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) {
        return std::nullopt;
    }
    message.rest = data.substr(std::min(line.size() + 1, data.size()));
    return message;
}

std::string commandMessage(std::string_view word, std::uint64_t number, std::string_view rest) {
    auto text = fmt::format("{} {}\n", word, number);
    text += rest;
    return text;
}

std::string_view dataOf(natsMsg* message) {
    return {natsMsg_GetData(message), static_cast<std::size_t>(natsMsg_GetDataLength(message))};
}

std::string_view tokenOf(std::string_view subject, std::string_view prefix) {
    constexpr std::string_view characters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    constexpr std::size_t longest = 64;
    if (!subject.starts_with(prefix)) {
        return {};
    }
    auto const token = subject.substr(prefix.size());
    bool const isWord =
        token.size() <= longest && token.find_first_not_of(characters) == std::string_view::npos;
    return isWord ? token : std::string_view();
}

std::string newToken() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

} // namespace stream
