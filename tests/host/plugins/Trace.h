// What a test module was asked, one line each, in the file that its registry key "Trace" names;
// and what it is to do wrong, which its keys "Throw" and "Fail" name; "What" is what it throws.
#pragma once

#include "BAS/RegisteredObject.h"
#include "BAS/RegistryEntry.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <new>
#include <stdexcept>
#include <stop_token>
#include <string>

class Trace {
public:
    explicit Trace(BAS::RegisteredObject const& object) : objectM(object) {}

    // The part of the name that the test gave: "...Functions.NAME.Module".
    std::string ownName() const {
        auto const parts = objectM.name().split('.');
        return parts[parts.entries() - 2].str();
    }

    void note(std::string const& line) const {
        std::ofstream(value("Trace"), std::ios::app) << ownName() << " " << line << "\n";
    }

    bool has(char const* key) const { return !value(key).empty(); }

    std::string value(char const* key) const {
        auto const* const registry = objectM.registry();
        auto const* const entry = registry == nullptr ? nullptr : registry->find(key);
        return entry == nullptr ? std::string() : entry->value().str();
    }

    // Waits for a byte from the FIFO that the key "Gate" names, which the test has open. Throws
    // when a stop is requested meanwhile.
    void passGate(std::stop_token const& stop = {}) const {
        note("at gate");
        char byte = 0;
        pollfd gate{::open(value("Gate").c_str(), O_RDONLY | O_NONBLOCK), POLLIN, 0};
        while (::read(gate.fd, &byte, 1) != 1) {
            if (stop.stop_requested() || (errno != EAGAIN && errno != EINTR)) {
                throw std::runtime_error("the gate is closed");
            }
            ::poll(&gate, 1, 20);
        }
        ::close(gate.fd);
    }

    // Notes the step, throws if that is wanted, and returns false if a failure is.
    bool step(std::string const& name, std::string const& detail = {}) const {
        note(name + detail);
        throwAt(name);
        return value("Fail") != name;
    }

    // Throws if that is wanted there.
    void throwAt(std::string const& place) const {
        auto const what = value("What");
        if (value("Throw") != place) {
            return;
        }
        if (what == "number") {
            throw 7;
        }
        if (what == "memory") {
            throw std::bad_alloc();
        }
        if (what == "status") {
            throw BAS::Status("ERR_DATABASE", BAS::Status::error, "thrown");
        }
        throw std::runtime_error("thrown in " + place);
    }

private:
    BAS::RegisteredObject const& objectM;
};
