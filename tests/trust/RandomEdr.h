// Makes up EDRs that collide, repeat and misbehave: few customers and owners, so that events and
// owners meet again, and fields that are missing, empty, huge or hold any bytes at all.
#pragma once

#include "EdrTree.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trust {

class Random {
public:
    explicit Random(std::uint64_t seed) : stateM(seed) {}

    // From 0 to below the limit, which isn't 0.
    std::size_t below(std::size_t limit) { return next() % limit; }
    bool oneIn(std::size_t chances) { return below(chances) == 0; }
    template <class List>
    auto const& oneOf(List const& list) {
        return list[below(std::size(list))];
    }
    // Any bytes.
    std::string bytes(std::size_t length);

private:
    // A counter with its bits mixed.
    std::uint64_t next() {
        auto mixed = stateM += 0x9e3779b97f4a7c15;
        mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
        return mixed ^ (mixed >> 31);
    }

    std::uint64_t stateM;
};

class RandomEdr {
public:
    // Random numbers and description stay the caller's.
    RandomEdr(Random& random, EDR::Description const& description)
        : randomM(random), descriptionM(description) {}

    // Customers are those of so many, but for the odd one.
    EdrTree make(std::size_t customers);

private:
    EdrBlock block(std::uint32_t kind);
    std::string field(std::string const& name);

    Random& randomM;
    EDR::Description const& descriptionM;
    std::size_t customersM = 1;
};

} // namespace trust
