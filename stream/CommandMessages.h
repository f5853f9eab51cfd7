// What a host and the sender of a command to all hosts say to each other: a line of a word and a
// number, and what follows it.
//
//   sender to command.STREAM.request       "command 0", its name, and the text of a command file
//   host to the sender's inbox             "taken 0" and the host's name: does the sender wait?
//   sender to command.STREAM.TOKEN         "wait MILLISECONDS" from now on
//   host to the sender's inbox             "answer NUMBER" and a message of the answer
//   sender to command.STREAM.TOKEN         "had NUMBER" messages, or "stop 0"
//
// The host gives itself the token, for one command. So nothing is carried out for a sender that has
// gone, however long the servers or the host kept the request, and no clocks are compared.
#pragma once

#include "Connection.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stream {

inline constexpr std::string_view requestToken = "request";

struct CommandMessage {
    std::string_view word;
    std::uint64_t number = 0;
    std::string_view rest;
};

// Nothing when it isn't one.
std::optional<CommandMessage> parseCommandMessage(std::string_view data);
std::string commandMessage(std::string_view word, std::uint64_t number, std::string_view rest = {});
std::string_view dataOf(natsMsg* message);

// The part of the subject after the prefix, if it is a word; else an empty text.
std::string_view tokenOf(std::string_view subject, std::string_view prefix);
// Nobody else's.
std::string newToken();

} // namespace stream
