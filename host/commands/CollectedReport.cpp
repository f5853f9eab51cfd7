#include "commands/CollectedReport.h"

#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/Poll.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>

#include <system_error>

namespace host {

namespace {

// How long somebody may still write after the object has returned.
constexpr std::chrono::seconds patience{3};
// How long nobody looks while the FIFO is closed and the object hasn't returned; it may open it
// again.
constexpr std::chrono::milliseconds pause{20};

short eventsOf(FileDescriptor const& descriptor) {
    pollfd waited = {descriptor.number(), POLLIN, 0};
    ::poll(&waited, 1, 0);
    return waited.revents;
}

} // namespace

CollectedReport::CollectedReport(std::unique_ptr<TemporaryFile> file, std::size_t mostBuffered)
    : fileM(std::move(file)), bytesM(mostBuffered) {
    if (::mkfifo(path().c_str(), 0600) == 0) {
        readerM = FileDescriptor(::open(path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    }
    if (!readerM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_WRITABLE", path(), errno);
    }
    // Larger than it is by default: fewer turns. If the system says no, it works as it is.
    ::fcntl(readerM.number(), F_SETPIPE_SZ, 1 << 20);
    try {
        drainerM = std::thread([this] { drain(); });
        storerM = std::thread([this] { store(); });
    } catch (std::system_error const& error) {
        end();
        throw systemStatus("pthread_create", error.code().value());
    }
}

CollectedReport::~CollectedReport() {
    end();
}

CollectedReport::Outcome CollectedReport::finish(std::string const& objection) {
    returnedM.set();
    drainerM.join();
    storerM.join();
    Outcome outcome{isOpenedM, false, sizeM, objection};
    for (auto const* const reason : {&drainReasonM, &storeReasonM}) {
        outcome.reason = outcome.reason.empty() ? *reason : outcome.reason;
    }
    if (!outcome.reason.empty()) {
        return outcome;
    }
    try {
        fileM->takePlace();
        outcome.isWhole = true;
    } catch (BAS::Status const& status) {
        outcome.reason = messageText(status);
    }
    return outcome;
}

void CollectedReport::removeTraces() noexcept {
    directoryM.remove();
    fileM->remove();
}

void CollectedReport::drain() {
    while (readOn()) {
    }
    ::unlink(path().c_str());
    readerM = FileDescriptor(); // whoever still writes is told
    bytesM.close();
}

bool CollectedReport::readOn() {
    try {
        auto const count = ::read(readerM.number(), bufferM.data(), bufferM.size());
        if (count > 0) {
            isOpenedM = true;
            sizeM += static_cast<std::uint64_t>(count);
            bytesM.put({bufferM.data(), static_cast<std::size_t>(count)});
            return !isTooLate();
        }
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            drainReasonM = std::generic_category().message(errno);
            return false;
        }
        return waitForMore();
    } catch (std::bad_alloc const&) {
        drainReasonM = "the memory is used up";
        return false;
    }
}

// There is nothing to read just now.
bool CollectedReport::waitForMore() {
    auto const now = std::chrono::steady_clock::now();
    bool const hasReturned = returnedM.isSet(); // before, so that the events are its last
    auto const events = eventsOf(readerM);
    if ((events & POLLIN) != 0) {
        return true;
    }
    bool const isClosed = (events & POLLHUP) != 0;
    isOpenedM = isOpenedM || isClosed;
    if (isAbandonedM) {
        return false;
    }
    if (!hasReturned) {
        // A FIFO that was closed can always be read.
        waitForAny({isClosed ? -1 : readerM.number(), returnedM.descriptor()},
                   isClosed ? Deadline(now + pause) : std::nullopt);
        return true;
    }
    if (isClosed) {
        return false;
    }
    if (!isOpenedM && wasNeverOpened()) {
        drainReasonM = "nothing opened it for writing";
        return false;
    }
    isOpenedM = true;
    if (isTooLate()) {
        return false;
    }
    waitForAny({readerM.number()}, deadlineM);
    return true;
}

// Whether somebody has it open for too long. What a slow disk keeps in the FIFO isn't too late.
bool CollectedReport::isTooLate() {
    if (!returnedM.isSet() || (eventsOf(readerM) & POLLHUP) != 0) {
        return false;
    }
    auto const now = std::chrono::steady_clock::now();
    deadlineM = deadlineM.value_or(now + patience);
    if (now < *deadlineM) {
        return false;
    }
    drainReasonM =
        fmt::format("it was still open {} seconds after the object had returned", patience.count());
    return true;
}

// When a writer closes a FIFO that no other has open, its reader sees the end.
bool CollectedReport::wasNeverOpened() const {
    { FileDescriptor const writer(::open(path().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)); }
    return (eventsOf(readerM) & POLLHUP) != 0;
}

void CollectedReport::store() {
    try {
        for (auto piece = bytesM.take(); !piece.empty(); piece = bytesM.take()) {
            fileM->write(piece);
        }
        fileM->flush();
    } catch (BAS::Status const& status) {
        storeReasonM = messageText(status);
        bytesM.discard();
    }
}

void CollectedReport::end() {
    isAbandonedM = true;
    returnedM.set();
    if (drainerM.joinable()) {
        drainerM.join();
    }
    bytesM.close();
    if (storerM.joinable()) {
        storerM.join();
    }
    removeTraces();
}

} // namespace host
