#include "input/InputFile.h"

#include "base/Failures.h"
#include "input/GzipDecompressor.h"
#include "input/ZstdDecompressor.h"

#include <fmt/format.h>

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace host {

namespace {

constexpr std::size_t bufferSize = std::size_t{128} * 1024;

struct Compression {
    std::string_view extension;
    std::string_view firstBytes; // not valid UTF-8
    std::unique_ptr<Decompressor> (*make)();
};

template <class T>
std::unique_ptr<Decompressor> makeDecompressor() {
    return std::make_unique<T>();
}

constexpr std::array compressions = {
    Compression{".gz", "\x1f\x8b", &makeDecompressor<GzipDecompressor>},
    Compression{".zst", "\x28\xb5\x2f\xfd", &makeDecompressor<ZstdDecompressor>},
};

BAS::Status damage(std::filesystem::path const& file, std::string const& reason) {
    return makeStatus(BAS::Status::critical, {}, "ERR_FILE_NOT_READABLE", {file.string(), reason});
}

int openInput(std::filesystem::path const& file, std::optional<int> opened) {
    if (file == "-") {
        opened = STDIN_FILENO;
    }
    return opened ? ::fcntl(*opened, F_DUPFD_CLOEXEC, 0)
                  : ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
}

} // namespace

InputFile::InputFile(std::filesystem::path file, std::optional<int> opened, Ends ends)
    : fileM(std::move(file)), endsM(ends), descriptorM(openInput(fileM, opened)) {
    if (!descriptorM.isOpen()) {
        throw fileStatus("ERR_FILE_NOT_READABLE", fileM, errno);
    }
}

std::size_t InputFile::read(std::span<char> target) {
    if (!isRecognisedM) {
        recogniseCompression();
    }
    if (decompressorM != nullptr) {
        return decompress(target);
    }
    return pendingM.empty() ? readFile(target) : takeFromBuffer(target);
}

void InputFile::recogniseCompression() {
    isRecognisedM = true;
    bufferM.resize(bufferSize);
    fillBuffer();
    for (auto const& each : compressions) {
        auto const start = [&] { return std::string_view(pendingM.data(), pendingM.size()); };
        while (start().size() < each.firstBytes.size() && each.firstBytes.starts_with(start()) &&
               fillBuffer()) {
        }
        if (fileM.extension() == each.extension || start().starts_with(each.firstBytes)) {
            decompressorM = each.make();
            return;
        }
    }
}

std::size_t InputFile::decompress(std::span<char> target) {
    try {
        for (;;) {
            if (auto const count = decompressorM->decompress(pendingM, target)) {
                return count;
            }
            if (!pendingM.empty() || fillBuffer()) {
                continue;
            }
            if (decompressorM->isComplete()) {
                return 0;
            }
            throw damage(fileM, fmt::format("the {} data end unexpectedly after byte {}",
                                            decompressorM->format(), bytesReadM));
        }
    } catch (std::runtime_error const& error) {
        throw damage(fileM, fmt::format("expected {} data at byte {}: {}", decompressorM->format(),
                                        bytesReadM - pendingM.size(), error.what()));
    }
}

std::size_t InputFile::takeFromBuffer(std::span<char> target) {
    auto const count = std::min(target.size(), pendingM.size());
    std::copy_n(pendingM.begin(), count, target.begin());
    pendingM = pendingM.subspan(count);
    return count;
}

bool InputFile::fillBuffer() {
    auto const count = readFile(std::span(bufferM).subspan(pendingM.size()));
    pendingM = std::span(bufferM).first(pendingM.size() + count);
    return count > 0;
}

bool InputFile::hasBytes() const {
    return !pendingM.empty() ||
           waitForAny({descriptorM.number()}, std::chrono::steady_clock::now());
}

bool InputFile::waitForBytes(std::chrono::steady_clock::time_point end) const {
    return !pendingM.empty() || waitUntilReady(end);
}

// Ready is also a notification.
bool InputFile::waitUntilReady(Deadline end) const {
    auto const descriptorOf = [](Notification const* notification) {
        return notification == nullptr ? -1 : notification->descriptor();
    };
    return waitForAny(
        {descriptorM.number(), descriptorOf(endsM.stop), descriptorOf(endsM.abandoned)}, end);
}

void InputFile::requireBytes() const {
    auto const isSet = [](Notification const* end) { return end != nullptr && end->isSet(); };
    waitUntilReady(std::nullopt);
    if (isSet(endsM.abandoned) ||
        (isSet(endsM.stop) &&
         !waitForAny({descriptorM.number()}, std::chrono::steady_clock::now()))) {
        throw InputStopped();
    }
}

std::size_t InputFile::readFile(std::span<char> target) {
    requireBytes();
    for (;;) {
        auto const count = ::read(descriptorM.number(), target.data(), target.size());
        if (count >= 0) {
            bytesReadM += static_cast<std::uint64_t>(count);
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throw fileStatus("ERR_FILE_NOT_READABLE", fileM, errno);
        }
    }
}

} // namespace host
