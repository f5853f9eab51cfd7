// Gives a command to all hosts of a stream and collects their answers, until there is one for each
// partition.
#pragma once

#include "Answer.h"
#include "CommandMessages.h"
#include "input/StreamLibrary.h"

#include <chrono>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace stream {

class CommandSender {
public:
    // Connects. Both must outlive the object. Throws a BAS::Status when the servers can't be used,
    // or when the directory has files.
    CommandSender(host::StreamConfiguration const& stream, host::StreamSending const& sending);
    // Tells the hosts that nobody waits any more.
    ~CommandSender();
    CommandSender(CommandSender const&) = delete;
    CommandSender& operator=(CommandSender const&) = delete;

    // Returns when every partition is covered, at the timeout, or when stop is set. Prints the
    // answers to standard output, and on standard error what is missing. Once. Throws a BAS::Status
    // when the servers refuse, or when a report can't be written.
    host::ExitCode send(host::Notification const& stop);

private:
    using Clock = std::chrono::steady_clock;

    struct Responder {
        std::string host; // as it calls itself
        IncomingAnswer answer;
        std::string problem; // for which its answer isn't taken
    };

    void request();
    bool wait(host::Notification const& stop);
    void receive(natsMsg* message);
    void addAnswer(std::string const& token, Responder& responder, CommandMessage const& given);
    void say(std::string const& token, std::string_view word, std::uint64_t number);
    std::unique_ptr<host::TemporaryFile> makeFile(AnswerHead const& head);
    std::vector<std::uint64_t> uncovered() const;
    std::vector<std::string> problems() const;
    void print() const;
    host::ExitCode outcome() const;
    bool areFaultless() const;

    host::StreamConfiguration const& streamM;
    host::StreamSending const& sendingM;
    Clock::time_point endM;
    Connection connectionM;
    std::string inboxM; // answers go there
    Subscription subscriptionM;
    std::map<std::string, Responder> respondersM;  // by token
    std::vector<std::string> inOrderM;             // tokens of those whose answers are whole
    std::map<std::uint64_t, std::string> coveredM; // partitions, with the host
    std::set<std::uint64_t> coveredTwiceM;
    std::set<std::filesystem::path> filesM; // of reports
};

} // namespace stream
