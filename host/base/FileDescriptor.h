// Owns an open file of the operating system, or none.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace host {

class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) noexcept : numberM(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : numberM(std::exchange(other.numberM, none)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(numberM, other.numberM);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) {
            ::close(numberM);
        }
    }

    bool isOpen() const noexcept { return numberM >= 0; }
    int number() const noexcept { return numberM; }

private:
    static constexpr int none = -1;

    int numberM = none;
};

// Writes all of the bytes; returns false, with the reason in errno, when that isn't possible.
inline bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        auto const written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace host
