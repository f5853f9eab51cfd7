// Runs of one way to keep events over one stream of keys, each in a host of its own.
#pragma once

#include "DataDump/SmallHost.h"
#include "DataDumpPlugIn.h"
#include "EventStream.h"

#include <time.h>

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

// The processor time of the calling thread: what else runs on the machine hardly counts.
struct Clock {
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<Clock>;
    static constexpr bool is_steady = true;

    static time_point now() {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return time_point(std::chrono::seconds(time.tv_sec) +
                          std::chrono::nanoseconds(time.tv_nsec));
    }
};
using Nanoseconds = std::chrono::duration<double, std::nano>;

inline constexpr std::size_t batchSize = 64;

class Host : public DataDumpTest::SmallHost {
public:
    explicit Host(std::string const& capacity) {
        keys["NumberOfEvents"] = capacity;
        sql += "INSERT INTO KWL_ALIAS_MAP VALUES('SMS', 'Account_CustA', 'ALL', 1),"
               "('DATA', 'Account_CustA', 'ALL', 1), ('CONTENT', 'Account_CustA', 'ALL', 1);";
        // One customer field for every service.
        sql += "DELETE FROM KWL_ALIAS_MAP WHERE REFERENCE = 'UniData_CustA';";
        prepare();
    }
};

// Builds a plug-in of that capacity in the host.
using MakePlugIn = std::function<std::unique_ptr<PLG::FunctionPlugIn>(Host&, std::size_t)>;

inline std::unique_ptr<PLG::FunctionPlugIn> makePlugIn(Host& /*host*/, std::size_t /*capacity*/) {
    return std::make_unique<FCT::DataDump::PlugIn>(DataDumpTest::plugInName, "10003");
}

struct Stream {
    char const* name;
    KeyStream keys;
    std::size_t capacity;
};
inline constexpr Stream streams[] = {
    {"repeats, 10", KeyStream::repeats, 10},
    {"zipf, 10", KeyStream::zipf, 10},
    {"zipf, 1000", KeyStream::zipf, 1'000},
    {"zipf, 100000", KeyStream::zipf, 100'000},
    {"distinct, 10", KeyStream::distinct, 10},
    {"distinct, 1000", KeyStream::distinct, 1'000},
    {"distinct, 100000", KeyStream::distinct, 100'000},
};

// One way in a host of its own, warmed up.
class Run {
public:
    Run(MakePlugIn const& make, Stream const& stream, std::size_t warmUpEvents)
        : hostM(std::to_string(stream.capacity)), keysM(stream.keys), edrsM(hostM.description),
          plugInM(make(hostM, stream.capacity)) {
        if (!plugInM->isUsable()) {
            throw std::runtime_error("the plug-in is not usable");
        }
        for (std::size_t done = 0; done < warmUpEvents; done += batchSize) {
            process(batchSize);
        }
    }

    // Hands a batch over and returns what that took.
    Nanoseconds process(std::size_t size) {
        batchM.clear();
        for (std::size_t i = 0; i < size; ++i) {
            batchM.append(edrsM.next(keysM.next()));
        }
        auto const begin = Clock::now();
        plugInM->processEdrContainer(batchM);
        return Clock::now() - begin;
    }

    PLG::FunctionPlugIn& plugIn() { return *plugInM; }

private:
    Host hostM;
    Keys keysM;
    PreparedEdrs edrsM;
    std::unique_ptr<PLG::FunctionPlugIn> plugInM;
    RWTPtrOrderedVector<EDR::Container> batchM;
};

} // namespace bench
