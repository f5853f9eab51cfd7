// A connection to the servers of a stream, and owners for the objects of the client library.
#pragma once

#include "BAS/Status.h"
#include "registry/Registry.h"

#include <nats/nats.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace stream {

template <auto destroy>
struct Destroyer {
    template <class T>
    void operator()(T* object) const noexcept {
        destroy(object);
    }
};
template <class T, auto destroy>
using Handle = std::unique_ptr<T, Destroyer<destroy>>;

using Message = Handle<natsMsg, &natsMsg_Destroy>;
using Subscription = Handle<natsSubscription, &natsSubscription_Destroy>;
using StreamInfo = Handle<jsStreamInfo, &jsStreamInfo_Destroy>;
using Bucket = Handle<kvStore, &kvStore_Destroy>;
using BucketEntry = Handle<kvEntry, &kvEntry_Destroy>;

// What the client library says of its last failure on this thread.
std::string failureText(natsStatus status);

// "ERR_STREAM_FAILED" with the stream, what was tried and why it failed.
BAS::Status failure(std::string const& stream, std::string const& what, std::string const& reason);

// For so long after an election a server may tell of an older state of a stream, or of none.
inline constexpr std::chrono::seconds staleTime{10};

// No server could be reached, or those that could don't serve streams now; waiting may mend it.
class NoServer : public BAS::Status {
public:
    explicit NoServer(BAS::Status const& status) : Status(status) {}
};

// The handler for acknowledgements of asynchronous publishing is called on a thread of the library,
// and owns the message it is given.
struct Acknowledgements {
    jsPubAckHandler handler = nullptr;
    void* closure = nullptr;
};

// Any thread may use a connection. Once it is made it connects again by itself, without end.
class Connection {
public:
    static constexpr std::int64_t requestTimeout = 5'000; // milliseconds

    // Throws NoServer when no server can be reached, and any other BAS::Status with what the
    // servers said.
    explicit Connection(host::StreamConfiguration const& stream,
                        Acknowledgements const& acknowledgements = {});
    ~Connection();
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    // Ends all waiting of other threads in calls of the library.
    void close() noexcept { natsConnection_Close(connectionM.get()); }

    // Throws a BAS::Status when the servers have closed it for good.
    void requireOpen() const;
    // What the servers said last that they don't permit.
    std::optional<std::string> refusal() const;
    // Throws a BAS::Status when there is a refusal: without what it is for nothing would go on.
    void requirePermitted(std::string const& what) const;

    natsConnection* get() const noexcept { return connectionM.get(); }
    jsCtx* jetStream() const noexcept { return jetStreamM.get(); }

    // Null when there is none of the name. Waits so many milliseconds for an answer. Throws
    // NoServer, or a BAS::Status when the servers don't permit it.
    StreamInfo streamInfo(std::string const& name, std::int64_t wait = requestTimeout) const;
    // Its operations wait for a second at most, so that one doesn't take the time of the others.
    // Throws NoServer, or a BAS::Status when there is none or the servers don't permit it.
    Bucket bucket(std::string const& name) const;
    // Throws NoServer, or a BAS::Status when the servers don't permit what failed.
    [[noreturn]] void fail(std::string const& what, natsStatus status) const;

private:
    std::string nameM;
    Handle<natsOptions, &natsOptions_Destroy> optionsM;
    Handle<natsConnection, &natsConnection_Destroy> connectionM;
    Handle<jsCtx, &jsCtx_Destroy> jetStreamM;
    Handle<jsCtx, &jsCtx_Destroy> bucketsM;
};

} // namespace stream
