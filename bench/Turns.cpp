#include "Turns.h"

#include "support/AllocationCounter.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace bench {

namespace {

constexpr char goAhead = 'g';

Cost costOfOneRound(Run& run) {
    auto const allocationsBefore = support::allocationCount();
    Nanoseconds taken{};
    for (std::size_t done = 0; done < PreparedEdrs::count; done += batchSize) {
        taken += run.process(batchSize);
    }
    auto const allocations = support::allocationCount() - allocationsBefore;
    return {taken.count() / PreparedEdrs::count,
            static_cast<double>(allocations) / PreparedEdrs::count};
}

// The child's whole life.
void takeTurns(int socket, MakePlugIn const& make, Stream const& stream, std::size_t warmUp) {
    Run run(make, stream, warmUp);
    char command = 0;
    while (read(socket, &command, 1) == 1) {
        // The other ways have had the caches since this one's last turn.
        costOfOneRound(run);
        auto const cost = costOfOneRound(run);
        if (write(socket, &cost, sizeof cost) != sizeof cost) {
            return;
        }
    }
}

} // namespace

Contestant::Contestant(MakePlugIn const& make, Stream const& stream, std::size_t warmUpEvents) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    std::fflush(nullptr);
    childM = fork();
    if (childM < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (childM == 0) {
        close(ends[0]);
        try {
            takeTurns(ends[1], make, stream, warmUpEvents);
        } catch (std::exception const& failure) {
            std::fprintf(stderr, "%s: %s\n", stream.name, failure.what());
        }
        _exit(0);
    }
    close(ends[1]);
    socketM = ends[0];
}

Contestant::~Contestant() {
    // Other children hold copies of the socket, so closing it wouldn't reach this one.
    shutdown(socketM, SHUT_RDWR);
    close(socketM);
    waitpid(childM, nullptr, 0);
}

Cost Contestant::takeTurn() {
    Cost cost{};
    if (send(socketM, &goAhead, 1, MSG_NOSIGNAL) != 1 ||
        read(socketM, &cost, sizeof cost) != sizeof cost) {
        throw std::runtime_error("a measured process is gone");
    }
    return cost;
}

} // namespace bench
