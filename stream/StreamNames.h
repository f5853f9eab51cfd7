// How the streams of a pipeline are called on the servers.
#pragma once

#include <cstdint>
#include <string>

namespace stream {

inline std::string streamName(std::string const& pipeline, std::uint64_t partition) {
    return "EDR_" + pipeline + "_" + std::to_string(partition);
}

inline std::string subject(std::string const& pipeline, std::uint64_t partition) {
    return "edr." + pipeline + "." + std::to_string(partition);
}

// Of commands to all hosts: where they all listen, for the token "request" and for those that they
// give themselves, and where an answer goes. Publishers may send to none of them.
inline std::string commandSubject(std::string const& pipeline, std::string const& token) {
    return "command." + pipeline + "." + token;
}

inline std::string answerSubject(std::string const& pipeline, std::string const& token) {
    return "answer." + pipeline + "." + token;
}

// Of the key-value buckets, with one key a partition: which host owns it, and its place.
inline std::string leaseBucket(std::string const& pipeline) {
    return "EDR_" + pipeline + "_leases";
}

inline std::string placeBucket(std::string const& pipeline) {
    return "EDR_" + pipeline + "_places";
}

} // namespace stream
