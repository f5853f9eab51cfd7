// A queue of values from one thread to another.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

namespace host {

template <class T>
class HandOverQueue {
public:
    // The caller never has more values in the queue.
    explicit HandOverQueue(std::size_t most) { valuesM.reserve(most); }

    void put(T value) {
        {
            std::lock_guard const guard(guardM);
            valuesM.push_back(value);
        }
        changedM.notify_one();
    }

    // Waits for the next value; nothing once it is closed.
    std::optional<T> take() {
        std::unique_lock guard(guardM);
        changedM.wait(guard, [&] { return isClosedM || !valuesM.empty(); });
        if (isClosedM) {
            return std::nullopt;
        }
        auto const value = valuesM.front();
        valuesM.erase(valuesM.begin());
        return value;
    }

    // Ends all waiting, and drops the values.
    void close() {
        {
            std::lock_guard const guard(guardM);
            isClosedM = true;
        }
        changedM.notify_all();
    }

private:
    std::mutex guardM;
    std::condition_variable changedM;
    std::vector<T> valuesM;
    bool isClosedM = false;
};

} // namespace host
