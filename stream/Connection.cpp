#include "Connection.h"

#include "base/MessageCatalogue.h"
#include "base/WholeFile.h"

#include <fmt/format.h>

namespace stream {

namespace {

constexpr std::int64_t connectTimeout = 2'000; // milliseconds, for each server
constexpr std::int64_t writeTimeout = 2'000;   // milliseconds
constexpr std::int64_t reconnectWait = 200;    // milliseconds
constexpr std::int64_t bucketTimeout = 1'000;  // milliseconds

// No server was there, or the one that was there went away before it said who it lets in, as
// servers do that are ending, and what forwards connections to servers that are away.
bool isAway(natsStatus status) {
    return status == NATS_NO_SERVER || status == NATS_TIMEOUT || status == NATS_CONNECTION_CLOSED ||
           status == NATS_IO_ERROR;
}

void check(natsStatus status, host::StreamConfiguration const& stream, char const* what) {
    if (status != NATS_OK) {
        throw failure(stream.name, what, failureText(status));
    }
}

std::string firstLine(std::filesystem::path const& file) {
    auto text = host::readWholeFile(file);
    return text.substr(0, text.find_first_of("\r\n"));
}

// The library doesn't log; what matters shows in the calls that fail.
void ignoreError(natsConnection* /*connection*/, natsSubscription* /*subscription*/,
                 natsStatus /*status*/, void* /*closure*/) {
}

void authenticate(natsOptions* options, host::StreamConfiguration const& stream) {
    if (stream.credentials) {
        check(
            natsOptions_SetUserCredentialsFromFiles(options, stream.credentials->c_str(), nullptr),
            stream, "using the credentials file");
    }
    if (!stream.user.empty()) {
        check(natsOptions_SetUserInfo(options, stream.user.c_str(),
                                      firstLine(*stream.passwordFile).c_str()),
              stream, "using the user and password");
    }
}

void secure(natsOptions* options, host::StreamConfiguration const& stream) {
    if (stream.isSecure()) {
        check(natsOptions_SetSecure(options, true), stream, "using TLS");
    }
    if (stream.certificateAuthority) {
        check(natsOptions_LoadCATrustedCertificates(options, stream.certificateAuthority->c_str()),
              stream, "reading the certificate authority");
    }
}

} // namespace

std::string failureText(natsStatus status) {
    char const* const detail = nats_GetLastError(nullptr);
    return detail == nullptr || *detail == '\0'
               ? natsStatus_GetText(status)
               : fmt::format("{}: {}", natsStatus_GetText(status), detail);
}

BAS::Status failure(std::string const& stream, std::string const& what, std::string const& reason) {
    return host::makeStatus(BAS::Status::critical, {}, "ERR_STREAM_FAILED", {stream, what, reason});
}

Connection::Connection(host::StreamConfiguration const& stream,
                       Acknowledgements const& acknowledgements)
    : nameM(stream.name) {
    natsOptions* options = nullptr;
    check(natsOptions_Create(&options), stream, "preparing a connection");
    optionsM.reset(options);
    std::vector<char const*> servers;
    for (auto const& server : stream.servers) {
        servers.push_back(server.c_str());
    }
    check(natsOptions_SetServers(options, servers.data(), static_cast<int>(servers.size())), stream,
          "taking the servers");
    natsOptions_SetTimeout(options, connectTimeout);
    // Without it, a server that doesn't read holds whoever writes for as long.
    natsOptions_SetWriteDeadline(options, writeTimeout);
    natsOptions_SetMaxReconnect(options, -1);
    natsOptions_SetReconnectWait(options, reconnectWait);
    // What is published while no server is there fails at once and is sent again by its publisher.
    natsOptions_SetReconnectBufSize(options, 0);
    natsOptions_SetErrorHandler(options, &ignoreError, nullptr);
    natsOptions_SetName(options, "pipeline-host");
    check(natsOptions_SetCustomInboxPrefix(options, stream.inboxPrefix.c_str()), stream,
          "using the inbox prefix");
    secure(options, stream);
    authenticate(options, stream);
    natsConnection* connection = nullptr;
    auto const status = natsConnection_Connect(&connection, options);
    auto const what = fmt::format("connecting to {}", fmt::join(stream.servers, ", "));
    if (isAway(status)) {
        throw NoServer(failure(stream.name, what, failureText(status)));
    }
    check(status, stream, what.c_str());
    connectionM.reset(connection);
    jsOptions jetStream;
    jsOptions_Init(&jetStream);
    jetStream.Wait = requestTimeout;
    jetStream.PublishAsync.AckHandler = acknowledgements.handler;
    jetStream.PublishAsync.AckHandlerClosure = acknowledgements.closure;
    jsCtx* context = nullptr;
    check(natsConnection_JetStream(&context, connection, &jetStream), stream, "using the streams");
    jetStreamM.reset(context);
    jsOptions_Init(&jetStream);
    jetStream.Wait = bucketTimeout;
    check(natsConnection_JetStream(&context, connection, &jetStream), stream, "using the buckets");
    bucketsM.reset(context);
}

Connection::~Connection() {
    close();
}

// They do so to a client that they no longer let in.
void Connection::requireOpen() const {
    if (natsConnection_IsClosed(connectionM.get())) {
        char const* reason = nullptr;
        auto const status = natsConnection_GetLastError(connectionM.get(), &reason);
        throw failure(
            nameM, "keeping the connection",
            fmt::format("{}: {}", natsStatus_GetText(status), reason == nullptr ? "" : reason));
    }
}

StreamInfo Connection::streamInfo(std::string const& name, std::int64_t wait) const {
    jsStreamInfo* info = nullptr;
    jsErrCode code = {};
    jsOptions options;
    jsOptions_Init(&options);
    options.Wait = wait;
    auto const status = js_GetStreamInfo(&info, jetStreamM.get(), name.c_str(), &options, &code);
    if (status != NATS_OK && status != NATS_NOT_FOUND) {
        fail("asking for the stream " + name, status);
    }
    return StreamInfo(info);
}

Bucket Connection::bucket(std::string const& name) const {
    kvStore* store = nullptr;
    auto const status = js_KeyValue(&store, bucketsM.get(), name.c_str());
    if (status == NATS_NOT_FOUND) {
        throw failure(nameM, "opening the bucket " + name,
                      "there is none; 'pipeline-host stream create' makes it");
    }
    if (status != NATS_OK) {
        fail("opening the bucket " + name, status);
    }
    return Bucket(store);
}

std::optional<std::string> Connection::refusal() const {
    char const* report = nullptr;
    bool const isRefused =
        natsConnection_GetLastError(connectionM.get(), &report) == NATS_NOT_PERMITTED;
    return isRefused ? std::optional<std::string>(report) : std::nullopt;
}

void Connection::requirePermitted(std::string const& what) const {
    if (auto const reason = refusal()) {
        throw failure(nameM, what, *reason);
    }
}

// The servers don't answer what they don't permit.
void Connection::fail(std::string const& what, natsStatus status) const {
    auto const text = failureText(status);
    if (auto const reason = refusal(); reason && status == NATS_TIMEOUT) {
        throw failure(nameM, what, *reason);
    }
    throw NoServer(failure(nameM, what, text));
}

} // namespace stream
