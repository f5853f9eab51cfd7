// Stands between a client and a PostgreSQL server on a Unix socket of its own, and hangs up on both
// for ever once the server has sent so many bytes. Serves one connection after the other.
#pragma once

#include "support/TemporaryDirectory.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>

namespace trust {

class CuttingProxy {
public:
    CuttingProxy(std::string const& serverDirectory, std::size_t most)
        : serverM(addressIn(serverDirectory)), mostM(most),
          listenerM(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        auto const own = addressIn(directory());
        if (::bind(listenerM, generic(own), sizeof own) != 0 || ::listen(listenerM, 8) != 0) {
            throw std::runtime_error("no proxy");
        }
        threadM = std::thread([this] { serve(); });
    }
    CuttingProxy(CuttingProxy const&) = delete;
    CuttingProxy& operator=(CuttingProxy const&) = delete;
    // The clients must have gone.
    ~CuttingProxy() {
        ::shutdown(listenerM, SHUT_RDWR);
        threadM.join();
        ::close(listenerM);
    }

    // The host, as clients know it.
    std::string directory() const { return directoryM.path().string(); }
    std::size_t bytesSent() const { return sentM; }

private:
    static sockaddr_un addressIn(std::string const& directory) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        auto const path = directory + "/.s.PGSQL.5432";
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        return address;
    }
    static sockaddr const* generic(sockaddr_un const& address) {
        return reinterpret_cast<sockaddr const*>(&address);
    }

    void serve() {
        for (int client; (client = ::accept(listenerM, nullptr, nullptr)) >= 0;) {
            int const server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
            if (::connect(server, generic(serverM), sizeof serverM) == 0) {
                while (sentM < mostM && relay(client, server)) {
                }
            }
            if (sentM >= mostM) {
                ::shutdown(listenerM, SHUT_RDWR);
            }
            ::close(client);
            ::close(server);
        }
    }

    // Passes on what has come; false when one of them has hung up.
    bool relay(int client, int server) {
        std::array<pollfd, 2> ends = {{{client, POLLIN, 0}, {server, POLLIN, 0}}};
        ::poll(ends.data(), ends.size(), -1);
        for (auto const& end : ends) {
            if (end.revents == 0) {
                continue;
            }
            std::array<char, 4096> bytes{};
            auto const got = ::read(end.fd, bytes.data(), bytes.size());
            auto length = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
            if (end.fd == server) {
                length = std::min(length, mostM - sentM);
                sentM += length;
            }
            int const other = end.fd == client ? server : client;
            if (length == 0 || ::send(other, bytes.data(), length, MSG_NOSIGNAL) < 0) {
                return false;
            }
        }
        return true;
    }

    support::TemporaryDirectory directoryM;
    sockaddr_un serverM;
    std::size_t mostM;
    std::atomic<std::size_t> sentM{0};
    int listenerM;
    std::thread threadM;
};

} // namespace trust
