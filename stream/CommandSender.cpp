#include "CommandSender.h"

#include "StreamNames.h"
#include "base/EscapedText.h"
#include "base/Failures.h"
#include "base/JsonText.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>

namespace stream {

namespace {

constexpr std::int64_t waitTime = 100;    // milliseconds
constexpr std::int64_t flushTime = 5'000; // milliseconds
constexpr std::size_t mostResponders = 10'000;
constexpr std::size_t longestName = 200; // of a report

std::string ownName() {
    std::array<char, 256> machine = {};
    ::gethostname(machine.data(), machine.size() - 1);
    auto const* const user = ::getpwuid(::geteuid());
    return fmt::format("{}@{}", user == nullptr ? std::to_string(::geteuid()) : user->pw_name,
                       machine.data());
}

// What is read as one was made by one command.
void requireEmpty(std::filesystem::path const& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (!error && !std::filesystem::is_empty(directory, error) && !error) {
        throw host::makeStatus(BAS::Status::error, {}, "ERR_DIRECTORY_NOT_USABLE",
                               {directory.string(), "expected an empty one for the reports"});
    }
    if (error) {
        throw host::fileStatus("ERR_DIRECTORY_NOT_USABLE", directory, error.value());
    }
}

// Keys with the JSON of their values, also valid in YAML.
host::JsonMembers membersOf(AnswerHead const& head,
                            std::optional<std::filesystem::path> const& report) {
    host::JsonMembers members = {{"Partitions", host::quotedText(partitionsText(head.partitions))},
                                 {"Host", host::quotedText(head.host)},
                                 {"Faultless", host::jsonTruth(head.isFaultless)}};
    if (report) {
        members.emplace_back("Report", host::quotedText(report->string()));
        members.emplace_back("Bytes", std::to_string(*head.bytes));
    }
    members.emplace_back("Result", head.result);
    return members;
}

} // namespace

CommandSender::CommandSender(host::StreamConfiguration const& stream,
                             host::StreamSending const& sending)
    : streamM(stream), sendingM(sending),
      endM(Clock::now() + std::chrono::duration_cast<Clock::duration>(sending.timeout)),
      connectionM(stream), inboxM(answerSubject(stream.name, newToken())) {
    if (sending.directory) {
        requireEmpty(*sending.directory);
    }
    natsSubscription* made = nullptr;
    if (auto const status = natsConnection_SubscribeSync(&made, connectionM.get(), inboxM.c_str());
        status != NATS_OK) {
        connectionM.fail("waiting for answers", status);
    }
    subscriptionM.reset(made);
}

CommandSender::~CommandSender() {
    for (auto const& [token, responder] : respondersM) {
        if (!responder.answer.isWhole()) {
            say(token, "stop", 0);
        }
    }
    natsConnection_FlushTimeout(connectionM.get(), waitTime);
}

host::ExitCode CommandSender::send(host::Notification const& stop) {
    request();
    bool const isListening = wait(stop);
    print();
    if (!isListening) {
        std::cerr << "No host takes commands from the stream " << streamM.name << ".\n";
    }
    for (auto const& problem : problems()) {
        std::cerr << host::printable(problem) << '\n';
    }
    std::cerr << std::flush;
    if (!std::cout) {
        return host::inputOrOutputFailed;
    }
    return stop.isSet() && !uncovered().empty() ? host::interrupted : outcome();
}

void CommandSender::request() {
    auto const data = commandMessage("command", 0, ownName() + "\n" + sendingM.text);
    auto const subject = commandSubject(streamM.name, std::string(requestToken));
    auto status = natsConnection_PublishRequest(connectionM.get(), subject.c_str(), inboxM.c_str(),
                                                data.data(), static_cast<int>(data.size()));
    if (status == NATS_OK) {
        status = natsConnection_FlushTimeout(connectionM.get(), flushTime);
    }
    if (auto const refusal = connectionM.refusal()) {
        throw failure(streamM.name, "sending the command", *refusal);
    }
    if (status != NATS_OK) {
        connectionM.fail("sending the command", status);
    }
}

// False when no host listens.
bool CommandSender::wait(host::Notification const& stop) {
    while (!uncovered().empty() && !stop.isSet() && Clock::now() < endM) {
        natsMsg* got = nullptr;
        auto const status = natsSubscription_NextMsg(&got, subscriptionM.get(), waitTime);
        Message const message(got);
        if (got != nullptr) {
            receive(got);
        } else if (status == NATS_NO_RESPONDERS && respondersM.empty()) {
            return false;
        } else if (status != NATS_TIMEOUT) {
            connectionM.requireOpen();
        }
    }
    return true;
}

void CommandSender::receive(natsMsg* message) {
    auto const given = parseCommandMessage(dataOf(message));
    char const* const reply = natsMsg_GetReply(message);
    std::string const token(
        tokenOf(reply == nullptr ? "" : reply, commandSubject(streamM.name, "")));
    if (!given || token.empty() || token == requestToken) {
        return;
    }
    if (given->word == "taken" && respondersM.size() < mostResponders) {
        auto makeReport = [this](AnswerHead const& head) { return makeFile(head); };
        respondersM.try_emplace(
            token, Responder{std::string(given->rest.substr(0, longestName)),
                             IncomingAnswer(streamM.partitionCount, std::move(makeReport)),
                             {}});
        auto const left =
            std::chrono::duration_cast<std::chrono::milliseconds>(endM - Clock::now()).count();
        say(token, "wait", static_cast<std::uint64_t>(std::max<decltype(left)>(left, 0)));
        return;
    }
    auto const found = respondersM.find(token);
    if (given->word == "answer" && found != respondersM.end() && found->second.problem.empty()) {
        addAnswer(token, found->second, *given);
    }
}

void CommandSender::addAnswer(std::string const& token, Responder& responder,
                              CommandMessage const& given) {
    auto& answer = responder.answer;
    bool const wasWhole = answer.isWhole();
    bool const isNext = given.number == answer.had();
    try {
        answer.add(given.number, given.rest);
    } catch (MessageError const& error) {
        responder.problem = error.what();
        say(token, "stop", 0);
        return;
    }
    if (!isNext || answer.isWhole() || answer.had() % (mostOnTheWay / 2) == 0) {
        say(token, "had", answer.had());
    }
    if (!answer.isWhole() || wasWhole) {
        return;
    }
    inOrderM.push_back(token);
    for (auto const partition : answer.head()->partitions) {
        if (!coveredM.emplace(partition, responder.host).second) {
            coveredTwiceM.insert(partition);
        }
    }
}

void CommandSender::say(std::string const& token, std::string_view word, std::uint64_t number) {
    auto const data = commandMessage(word, number);
    natsConnection_Publish(connectionM.get(), commandSubject(streamM.name, token).c_str(),
                           data.data(), static_cast<int>(data.size()));
}

// Named after the partitions, of which no host can make a path.
std::unique_ptr<host::TemporaryFile> CommandSender::makeFile(AnswerHead const& head) {
    if (!sendingM.directory) {
        throw MessageError("it has a report, and none was asked for");
    }
    auto name = "partitions-" + partitionsText(head.partitions);
    if (name.size() > longestName) {
        name = fmt::format("partitions-{}-and-{}-more", head.partitions.front(),
                           head.partitions.size() - 1);
    }
    auto file = *sendingM.directory / (name + ".txt");
    for (int number = 2; !filesM.insert(file).second; ++number) {
        file = *sendingM.directory / fmt::format("{}.{}.txt", name, number);
    }
    return std::make_unique<host::TemporaryFile>(file);
}

std::vector<std::uint64_t> CommandSender::uncovered() const {
    std::vector<std::uint64_t> partitions;
    for (std::uint64_t each = 0; each < streamM.partitionCount; ++each) {
        if (coveredM.find(each) == coveredM.end()) {
            partitions.push_back(each);
        }
    }
    return partitions;
}

std::vector<std::string> CommandSender::problems() const {
    std::vector<std::string> texts;
    for (auto const& [token, responder] : respondersM) {
        if (!responder.problem.empty()) {
            texts.push_back(fmt::format("The answer of {} isn't taken: {}.", responder.host,
                                        responder.problem));
        } else if (!responder.answer.isWhole() && !uncovered().empty()) {
            texts.push_back(fmt::format("{} took the command, but its answer isn't whole: {}.",
                                        responder.host, responder.answer.missing()));
        }
    }
    if (!coveredTwiceM.empty()) {
        texts.push_back(fmt::format("More than one host answered for the partitions {}.",
                                    partitionsText({coveredTwiceM.begin(), coveredTwiceM.end()})));
    }
    if (auto const missing = uncovered(); !missing.empty()) {
        texts.push_back(fmt::format("No answer for the partitions {} of {}.",
                                    partitionsText(missing), streamM.name));
    }
    return texts;
}

void CommandSender::print() const {
    auto const missing = host::quotedText(partitionsText(uncovered()));
    std::vector<std::string> objects;
    std::string yaml;
    for (auto const& token : inOrderM) {
        auto const& answer = respondersM.at(token).answer;
        auto const members = membersOf(*answer.head(), answer.report());
        objects.push_back(host::jsonObject(members));
        char const* lead = "  - ";
        for (auto const& [key, value] : members) {
            yaml += fmt::format("{}{}: {}\n", lead, key, value);
            lead = "    ";
        }
    }
    if (sendingM.isJson) {
        std::cout << host::jsonObject({{"Answers", host::jsonArray(objects)}, {"Missing", missing}})
                  << std::endl;
        return;
    }
    std::cout << "Answers:" << (yaml.empty() ? " []\n" : "\n" + yaml) << "Missing: " << missing
              << std::endl;
}

host::ExitCode CommandSender::outcome() const {
    if (inOrderM.empty()) {
        return host::noAnswer;
    }
    return uncovered().empty() && coveredTwiceM.empty() && areFaultless() ? host::done
                                                                          : host::doneWithFaults;
}

bool CommandSender::areFaultless() const {
    return std::all_of(inOrderM.begin(), inOrderM.end(), [&](auto const& token) {
        return respondersM.at(token).answer.head()->isFaultless;
    });
}

} // namespace stream
