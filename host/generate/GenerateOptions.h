// What input to generate, and where to put it.
#pragma once

#include <cstdint>
#include <filesystem>

namespace host {

struct GenerateOptions {
    static constexpr std::uint32_t mostCustomers = 10'000'000;
    static constexpr std::uint64_t mostEvents = 1'000'000'000;
    static constexpr std::uint32_t mostPlanted = 10'000;

    std::uint64_t events = 10'000;  // detail records, from 0
    std::uint32_t customers = 1000; // from 1
    std::uint64_t seed = 1;
    std::uint32_t planted = 0;                  // errors of each kind
    std::filesystem::path output = "generated"; // a directory, made when missing
    bool isForced = false;                      // replaces files that are there
};

} // namespace host
