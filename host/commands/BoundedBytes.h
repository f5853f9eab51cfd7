// Bytes on their way from one thread to another, in order, in bounded memory.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>

namespace host {

class BoundedBytes {
public:
    // Never holds more bytes, but for what is put last.
    explicit BoundedBytes(std::size_t most) : mostM(most) {}

    // Waits while it is full. What comes after discard is dropped.
    void put(std::string_view bytes) {
        std::unique_lock guard(guardM);
        changedM.wait(guard, [&] { return sizeM < mostM || isDiscardingM; });
        if (!isDiscardingM) {
            if (piecesM.empty() || piecesM.back().size() + bytes.size() > pieceSize) {
                piecesM.emplace_back().reserve(pieceSize);
            }
            piecesM.back() += bytes;
            sizeM += bytes.size();
            changedM.notify_all();
        }
    }

    // Nothing more comes.
    void close() {
        std::lock_guard const guard(guardM);
        isClosedM = true;
        changedM.notify_all();
    }

    // Waits for the next piece, which is empty at the end.
    std::string take() {
        std::unique_lock guard(guardM);
        changedM.wait(guard, [&] { return isClosedM || !piecesM.empty(); });
        if (piecesM.empty()) {
            return {};
        }
        auto piece = std::move(piecesM.front());
        piecesM.pop_front();
        sizeM -= piece.size();
        changedM.notify_all();
        return piece;
    }

    // Nobody takes any more.
    void discard() {
        std::lock_guard const guard(guardM);
        isDiscardingM = true;
        piecesM.clear();
        sizeM = 0;
        changedM.notify_all();
    }

private:
    // Many short lines come together in one.
    static constexpr std::size_t pieceSize = std::size_t{64} * 1024;

    std::size_t mostM;
    std::mutex guardM;
    std::condition_variable changedM;
    std::deque<std::string> piecesM;
    std::size_t sizeM = 0;
    bool isClosedM = false;
    bool isDiscardingM = false;
};

} // namespace host
