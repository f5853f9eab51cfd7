// Takes commands to all hosts from the servers of a stream, and sends the answers: on a connection
// and a thread of its own, so that a pipeline isn't slower for it, nor an answer for a pipeline.
#pragma once

#include "Answer.h"
#include "CommandMessages.h"
#include "base/Bell.h"
#include "input/StreamCommands.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

namespace BAS {
class LogSink;
}

namespace stream {

class CommandReceiver : public host::StreamCommands {
public:
    // Pipeline, bell and log must outlive the object; statuses have the pipeline's name.
    CommandReceiver(host::PipelineConfiguration const& pipeline, host::Bell& arrived,
                    BAS::LogSink& log);
    // What isn't sent yet, isn't.
    ~CommandReceiver() override;

    std::optional<host::StreamCommand> take() override;
    void answer(std::uint64_t number, host::StreamAnswer answer) override;

private:
    using Clock = std::chrono::steady_clock;

    // A command and what becomes of it.
    struct Exchange {
        std::uint64_t number = 0;
        std::string inbox; // of the sender
        std::string text;
        std::string sender;
        Clock::time_point asked;    // whether the sender waits
        bool isTaken = false;       // the sender does
        Clock::time_point latest;   // it does until then, or is to have said so
        Clock::time_point progress; // of the answer
        std::unique_ptr<OutgoingAnswer> answer;
    };
    using Exchanges = std::map<std::string, Exchange>; // by token

    void work();
    bool connect();
    void serve(natsSubscription* subscription);
    void receive(natsMsg* message);
    void request(CommandMessage const& given, std::string const& inbox);
    void taken(Exchange& exchange, std::uint64_t milliseconds);
    void stopped(Exchanges::iterator exchange);
    void takeAnswers();
    void sendAnswers();
    bool sendAnswer(std::string const& token, Exchange& exchange);
    void dropLate();
    void publish(std::string const& token, Exchange const& exchange, std::string const& data);
    void reportNotTaken(std::string const& reason);
    void reportStopped(std::string const& reason);
    bool isClosed() const;
    void report(BAS::Status status);

    host::PipelineConfiguration const& pipelineM;
    host::StreamConfiguration const& streamM;
    host::Bell& arrivedM;
    BAS::LogSink& logM;
    std::string hostM; // its name
    // Of the thread:
    Exchanges exchangesM;
    std::uint64_t lastNumberM = 0;
    mutable std::mutex lockM; // for what follows
    std::condition_variable closedM;
    bool isClosedM = false;
    std::unique_ptr<Connection> connectionM; // made by the thread
    std::deque<host::StreamCommand> waitingM;
    struct Given {
        std::uint64_t number;
        host::StreamAnswer answer;
    };
    std::vector<Given> answersM; // to be sent
    std::jthread workerM;
};

} // namespace stream
