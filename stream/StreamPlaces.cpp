#include "StreamPlaces.h"

#include "BAS/String.h"
#include "base/Failures.h"
#include "base/MessageCatalogue.h"
#include "base/WholeFile.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <array>

namespace stream {

namespace {

// Five numbers of at most 20 digits with blanks; divides the size of a sector.
constexpr std::size_t recordSize = 128;
constexpr char padding = '\n';

std::string_view firstLine(std::string_view text) {
    return text.substr(0, text.find(padding));
}

} // namespace

std::string placeText(StreamPlace const& place) {
    return fmt::format("{} {} {} {} .", place.sequence, place.lines, place.rejectedBytes,
                       place.created);
}

std::optional<StreamPlace> parsePlace(std::string_view text) {
    auto const parts = BAS::String(std::string(firstLine(text))).split(' ');
    std::array<long, 4> numbers = {};
    if (parts.entries() != numbers.size() + 1 || parts[numbers.size()] != ".") {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (!parts[i].toNum(numbers[i]) || numbers[i] < 0) {
            return std::nullopt;
        }
    }
    if (numbers[0] == 0) { // the first message has the sequence 1
        return std::nullopt;
    }
    return StreamPlace{static_cast<std::uint64_t>(numbers[0]),
                       static_cast<std::uint64_t>(numbers[1]),
                       static_cast<std::uint64_t>(numbers[2]), numbers[3]};
}

StreamPlaces::StreamPlaces(std::filesystem::path file)
    : fileM(std::move(file)),
      descriptorM(::open(fileM.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
    if (!descriptorM.isOpen()) {
        throw host::fileStatus("ERR_FILE_NOT_WRITABLE", fileM, errno);
    }
    if (::flock(descriptorM.number(), LOCK_EX | LOCK_NB) != 0) {
        throw host::makeStatus(BAS::Status::critical, {}, "ERR_DIRECTORY_IN_USE",
                               {fileM.parent_path().string()});
    }
    recordsM = host::readWholeFile(fileM);
    recordsM.resize((recordsM.size() + recordSize - 1) / recordSize * recordSize, padding);
}

std::optional<StreamPlace> StreamPlaces::read(std::uint64_t partition) const {
    auto const begin = partition * recordSize;
    return begin < recordsM.size()
               ? parsePlace(std::string_view(recordsM).substr(begin, recordSize))
               : std::nullopt;
}

void StreamPlaces::set(std::uint64_t partition, StreamPlace const& place) {
    auto const begin = partition * recordSize;
    recordsM.resize(std::max(recordsM.size(), begin + recordSize), padding);
    auto record = placeText(place);
    record.resize(recordSize, padding);
    recordsM.replace(begin, recordSize, record);
    changedBeginM = changedEndM == 0 ? begin : std::min(changedBeginM, begin);
    changedEndM = std::max(changedEndM, begin + recordSize);
}

void StreamPlaces::write() {
    auto const changed =
        std::string_view(recordsM).substr(changedBeginM, changedEndM - changedBeginM);
    auto const written = ::pwrite(descriptorM.number(), changed.data(), changed.size(),
                                  static_cast<off_t>(changedBeginM));
    if (written != static_cast<ssize_t>(changed.size())) {
        throw host::fileStatus("ERR_FILE_NOT_WRITABLE", fileM, written < 0 ? errno : ENOSPC);
    }
    changedBeginM = changedEndM = 0;
}

} // namespace stream
