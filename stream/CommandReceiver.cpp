#include "CommandReceiver.h"

#include "BAS/LogSink.h"
#include "Leases.h"
#include "StreamNames.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <algorithm>

namespace stream {

namespace {

constexpr auto connectInterval = std::chrono::seconds(1);
// How long the thread waits for a message; while answers are at hand, they may need it.
constexpr std::int64_t idleTime = 1'000;  // milliseconds
constexpr std::int64_t busyTime = 50;     // milliseconds
constexpr std::int64_t flushTime = 5'000; // milliseconds
// A message of an answer counts as lost after that.
constexpr auto repeatTime = std::chrono::seconds(1);
// In which a sender that waits says so.
constexpr auto askTime = std::chrono::seconds(10);
constexpr std::uint64_t longestWait = 30 * 86'400'000ULL; // milliseconds
constexpr std::size_t mostExchanges = 64;
constexpr std::size_t mostCommandBytes = std::size_t{64} * 1024;

// There is no message, or the one that was to go to a sender found it gone.
bool isPassing(natsStatus status) {
    return status == NATS_TIMEOUT || status == NATS_SLOW_CONSUMER || status == NATS_NO_RESPONDERS;
}

} // namespace

CommandReceiver::CommandReceiver(host::PipelineConfiguration const& pipeline, host::Bell& arrived,
                                 BAS::LogSink& log)
    : pipelineM(pipeline), streamM(*pipeline.stream), arrivedM(arrived), logM(log),
      hostM(processName()) {
    workerM = std::jthread([this] { work(); });
}

CommandReceiver::~CommandReceiver() {
    {
        std::lock_guard const guard(lockM);
        isClosedM = true;
        if (connectionM != nullptr) {
            connectionM->close();
        }
    }
    closedM.notify_all();
    workerM.join();
}

std::optional<host::StreamCommand> CommandReceiver::take() {
    arrivedM.take(); // before, so that no later ring is lost
    std::lock_guard const guard(lockM);
    while (!waitingM.empty()) {
        auto command = std::move(waitingM.front());
        waitingM.pop_front();
        if (Clock::now() < command.latest) {
            return command;
        }
        report(
            host::makeStatus(BAS::Status::warning, {}, "ERR_STREAM_COMMAND_LATE", {streamM.name}));
    }
    return std::nullopt;
}

void CommandReceiver::answer(std::uint64_t number, host::StreamAnswer answer) {
    std::lock_guard const guard(lockM);
    answersM.push_back({number, std::move(answer)});
}

// The thread's body.
void CommandReceiver::work() {
    try {
        while (!connect()) {
            std::unique_lock guard(lockM);
            if (closedM.wait_for(guard, connectInterval, [&] { return isClosedM; })) {
                return;
            }
        }
        auto const subject = commandSubject(streamM.name, "*");
        natsSubscription* made = nullptr;
        if (auto const status =
                natsConnection_SubscribeSync(&made, connectionM->get(), subject.c_str());
            status != NATS_OK) {
            connectionM->fail("taking commands", status);
        }
        Subscription const subscription(made);
        natsConnection_FlushTimeout(connectionM->get(), flushTime);
        if (auto const refusal = connectionM->refusal()) {
            throw failure(streamM.name, "taking commands", *refusal);
        }
        report(host::makeStatus(BAS::Status::info, {}, "MSG_STREAM_COMMANDS", {streamM.name}));
        serve(made);
    } catch (BAS::Status const& status) {
        reportStopped(host::messageText(status));
    } catch (std::exception const& exception) {
        reportStopped(exception.what());
    }
}

bool CommandReceiver::connect() {
    try {
        auto connection = std::make_unique<Connection>(streamM);
        std::lock_guard const guard(lockM);
        connectionM = std::move(connection);
        if (isClosedM) {
            connectionM->close();
        }
        return true;
    } catch (NoServer const&) {
        return false; // the pipeline's input says so
    }
}

void CommandReceiver::serve(natsSubscription* subscription) {
    for (;;) {
        natsMsg* message = nullptr;
        auto const status = natsSubscription_NextMsg(&message, subscription,
                                                     exchangesM.empty() ? idleTime : busyTime);
        Message const owner(message);
        if (isClosed()) {
            return;
        }
        if (message != nullptr) {
            receive(message);
        } else if (!isPassing(status)) {
            connectionM->requireOpen();
            throw failure(streamM.name, "taking commands", failureText(status));
        }
        takeAnswers();
        sendAnswers();
        dropLate();
    }
}

void CommandReceiver::receive(natsMsg* message) {
    auto const given = parseCommandMessage(dataOf(message));
    auto const token =
        std::string(tokenOf(natsMsg_GetSubject(message), commandSubject(streamM.name, "")));
    if (!given) {
        return;
    }
    if (token == requestToken) {
        char const* const inbox = natsMsg_GetReply(message);
        request(*given, inbox == nullptr ? "" : inbox);
        return;
    }
    auto const found = exchangesM.find(token); // else it is another host's
    if (found == exchangesM.end()) {
        return;
    }
    auto& exchange = found->second;
    if (given->word == "wait") {
        taken(exchange, given->number);
    } else if (given->word == "had" && exchange.answer != nullptr) {
        exchange.progress = Clock::now();
        exchange.answer->window().acknowledge(given->number);
    } else if (given->word == "stop") {
        stopped(found);
    }
}

// Asks the sender whether it waits.
void CommandReceiver::request(CommandMessage const& given, std::string const& inbox) {
    auto const ignore = [&](std::string const& reason) {
        report(host::makeStatus(BAS::Status::warning, {}, "ERR_STREAM_COMMAND_IGNORED",
                                {streamM.name, reason}));
    };
    // An answer to anywhere else could say something to others.
    if (tokenOf(inbox, answerSubject(streamM.name, "")).empty()) {
        ignore(fmt::format("its answer is to go to '{}', expected '{}' and a word", inbox,
                           answerSubject(streamM.name, "")));
        return;
    }
    if (exchangesM.size() == mostExchanges || given.rest.size() > mostCommandBytes) {
        ignore(fmt::format("it has {} bytes and {} others wait, expected at most {} and {}",
                           given.rest.size(), exchangesM.size(), mostCommandBytes,
                           mostExchanges - 1));
        return;
    }
    auto const line = std::min(given.rest.find('\n'), given.rest.size());
    auto const token = newToken();
    auto& exchange = exchangesM[token];
    exchange.number = ++lastNumberM;
    exchange.inbox = inbox;
    exchange.sender = given.rest.substr(0, line);
    exchange.text = given.rest.substr(std::min(line + 1, given.rest.size()));
    exchange.asked = Clock::now();
    exchange.latest = exchange.asked + askTime;
    publish(token, exchange, commandMessage("taken", 0, hostM));
}

// The sender said it after it was asked, so it waits at least so long after that.
void CommandReceiver::taken(Exchange& exchange, std::uint64_t milliseconds) {
    if (exchange.isTaken) {
        return;
    }
    exchange.isTaken = true;
    exchange.latest =
        exchange.asked + std::chrono::milliseconds(std::min(milliseconds, longestWait));
    {
        std::lock_guard const guard(lockM);
        waitingM.push_back(
            {exchange.number, std::move(exchange.text), exchange.sender, exchange.latest});
    }
    arrivedM.ring();
}

void CommandReceiver::stopped(Exchanges::iterator exchange) {
    {
        std::lock_guard const guard(lockM);
        std::erase_if(waitingM, [&](auto const& waiting) {
            return waiting.number == exchange->second.number;
        });
    }
    exchangesM.erase(exchange);
}

void CommandReceiver::takeAnswers() {
    std::vector<Given> answers;
    {
        std::lock_guard const guard(lockM);
        answers.swap(answersM);
    }
    for (auto& given : answers) {
        auto& answer = given.answer;
        auto const exchange =
            std::find_if(exchangesM.begin(), exchangesM.end(),
                         [&](auto const& each) { return each.second.number == given.number; });
        if (exchange == exchangesM.end()) {
            continue; // its sender has gone
        }
        if (answer.partitions.empty()) {
            exchangesM.erase(exchange);
            continue;
        }
        AnswerHead head{hostM, std::move(answer.partitions), answer.isFaultless,
                        std::move(answer.result)};
        try {
            exchange->second.answer =
                std::make_unique<OutgoingAnswer>(std::move(head), std::move(answer.report));
            exchange->second.progress = Clock::now();
        } catch (BAS::Status const& status) {
            reportNotTaken(host::messageText(status));
            exchangesM.erase(exchange);
        }
    }
}

void CommandReceiver::sendAnswers() {
    for (auto each = exchangesM.begin(); each != exchangesM.end();) {
        bool const isSent = each->second.answer != nullptr && sendAnswer(each->first, each->second);
        each = isSent ? exchangesM.erase(each) : std::next(each);
    }
}

// Whether there is nothing more to send.
bool CommandReceiver::sendAnswer(std::string const& token, Exchange& exchange) {
    auto& window = exchange.answer->window();
    if (exchange.progress + repeatTime < Clock::now()) {
        exchange.progress = Clock::now();
        window.repeat();
    }
    try {
        while (auto const number = window.next()) {
            publish(token, exchange,
                    commandMessage("answer", *number, exchange.answer->message(*number)));
        }
    } catch (BAS::Status const& status) {
        reportNotTaken(host::messageText(status));
        return true;
    }
    return window.isDone();
}

// Whose sender waits no longer, as far as this host knows.
void CommandReceiver::dropLate() {
    std::erase_if(exchangesM, [&](auto const& each) {
        auto const& exchange = each.second;
        if (Clock::now() < exchange.latest) {
            return false;
        }
        if (exchange.answer != nullptr) {
            auto const refusal = connectionM->refusal();
            reportNotTaken(fmt::format("its sender has {} of {} messages and waits no longer{}",
                                       exchange.answer->window().had(),
                                       exchange.answer->head().messages(),
                                       refusal ? "; " + *refusal : ""));
        }
        return true;
    });
}

// What doesn't reach the servers is repeated, as what is lost on the way.
void CommandReceiver::publish(std::string const& token, Exchange const& exchange,
                              std::string const& data) {
    natsConnection_PublishRequest(connectionM->get(), exchange.inbox.c_str(),
                                  commandSubject(streamM.name, token).c_str(), data.data(),
                                  static_cast<int>(data.size()));
}

void CommandReceiver::reportNotTaken(std::string const& reason) {
    report(host::makeStatus(BAS::Status::warning, {}, "ERR_STREAM_ANSWER_NOT_TAKEN",
                            {streamM.name, reason}));
}

void CommandReceiver::reportStopped(std::string const& reason) {
    if (!isClosed()) {
        report(host::makeStatus(BAS::Status::error, {}, "ERR_COMMANDS_STOPPED",
                                {streamM.name, reason}));
    }
}

bool CommandReceiver::isClosed() const {
    std::lock_guard const guard(lockM);
    return isClosedM;
}

void CommandReceiver::report(BAS::Status status) {
    status.setObjectName(pipelineM.registeredName);
    logM.write(status);
}

} // namespace stream
