// Collects what an object writes into a report. The object gets the path of a private FIFO; what
// it writes there goes through memory into a temporary file beside the report's place, which it
// takes once all of it is written and flushed to the disk. So the object waits for the disk only
// when the memory is used up, and a disk that is full doesn't stop it.
//
// One thread of its own drains the FIFO, another one writes. finish is called by the thread that
// made the report.
#pragma once

#include "base/Notification.h"
#include "base/PrivateDirectory.h"
#include "base/TemporaryFile.h"
#include "commands/BoundedBytes.h"

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace host {

class CollectedReport {
public:
    struct Outcome {
        bool isOpened = false; // the object did
        bool isWhole = false;  // all of it is at its place
        std::uint64_t size = 0;
        std::string reason; // if it isn't whole
    };

    // Throws a BAS::Status when there can be no FIFO or no thread.
    explicit CollectedReport(std::unique_ptr<TemporaryFile> file,
                             std::size_t mostBuffered = std::size_t{64} << 20);
    CollectedReport(CollectedReport const&) = delete;
    CollectedReport& operator=(CollectedReport const&) = delete;
    ~CollectedReport();

    // What the object is to open for writing.
    std::filesystem::path path() const { return directoryM.path() / "report"; }

    // Once the object has returned: waits, a few seconds at most, until nobody has the FIFO open
    // any more, and for the disk. The report takes its place when it is whole and there is no
    // objection, which is the reason otherwise.
    Outcome finish(std::string const& objection);

    // Leaves no file behind when the process ends in the middle. Any thread.
    void removeTraces() noexcept;

private:
    void drain();
    // Both return false at the end, which they tell in reasonM if it isn't a good one.
    bool readOn();
    bool waitForMore();
    bool wasNeverOpened() const;
    bool isTooLate();
    void store();
    void end();

    std::unique_ptr<TemporaryFile> fileM;
    PrivateDirectory directoryM; // of the FIFO
    FileDescriptor readerM;
    BoundedBytes bytesM;
    Notification returnedM; // the object has
    std::atomic<bool> isAbandonedM{false};
    // Of the thread that drains, until it has ended:
    std::array<char, std::size_t{64} * 1024> bufferM;
    bool isOpenedM = false;
    std::uint64_t sizeM = 0;
    std::string drainReasonM;
    std::optional<std::chrono::steady_clock::time_point> deadlineM;
    // Of the thread that stores:
    std::string storeReasonM;
    std::thread drainerM;
    std::thread storerM;
};

} // namespace host
