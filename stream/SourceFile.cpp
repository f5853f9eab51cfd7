#include "SourceFile.h"

#include "GracePeriod.h"
#include "base/EscapedText.h"
#include "input/InputStateFile.h"

#include <fmt/format.h>
#include <zlib.h>

#include <charconv>
#include <chrono>

namespace stream {

namespace {

struct FileSource {
    std::string_view file;
    std::string_view inode;
};

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Takes the last word off a text that has more.
std::string_view lastWordOff(std::string_view& text) {
    auto const blank = text.rfind(' ');
    if (blank == std::string_view::npos) {
        return {};
    }
    auto const word = text.substr(blank + 1);
    text = text.substr(0, blank);
    return word;
}

// Nothing when the source isn't a regular file without a name of its own.
std::optional<FileSource> parsed(std::string_view source) {
    auto const modified = lastWordOff(source);
    auto const size = lastWordOff(source);
    auto const inode = lastWordOff(source);
    if (!isNumber(modified) || !isNumber(size) || !isNumber(inode)) {
        return std::nullopt;
    }
    return FileSource{source, inode};
}

// With its end, which may be missing at the end of a file.
std::uint32_t sumOf(std::string_view line, std::uint32_t before) {
    auto const add = [](std::uint32_t sum, std::string_view text) {
        auto const* const bytes = reinterpret_cast<Bytef const*>(text.data());
        return text.empty() ? sum : static_cast<std::uint32_t>(::crc32_z(sum, bytes, text.size()));
    };
    return add(add(before, line), "\n");
}

} // namespace

std::string sourceName(std::filesystem::path const& file) {
    auto const name = file == "-" ? "standard input" : host::printable(file.filename().string());
    if (!canBeReadAgain(file)) {
        return fmt::format("{} {}", name,
                           std::chrono::system_clock::now().time_since_epoch().count());
    }
    // A symbolic link would stay the same when its file doesn't.
    auto const identity =
        host::FileIdentity::of(std::filesystem::canonical(file)).value_or(host::FileIdentity{});
    return fmt::format("{} {} {} {}", name, identity.inode, identity.size, identity.modified);
}

bool canBeReadAgain(std::filesystem::path const& file) {
    std::error_code error;
    return file != "-" && std::filesystem::is_regular_file(file, error);
}

Likeness likenessOf(std::string const& one, std::string const& other) {
    auto const left = parsed(one);
    auto const right = parsed(other);
    if (!left || !right || left->file != right->file) {
        return Likeness::none;
    }
    return left->inode == right->inode ? Likeness::sameInode : Likeness::sameName;
}

void LineSums::add(host::LineReader const& lines) {
    auto const line = lines.isTooLong() ? std::string_view() : lines.line();
    if (isEmptyM) {
        isEmptyM = false;
        sumsM.first = sumOf(line, 0);
    }
    sumsM.all = sumOf(line, sumsM.all);
}

std::optional<SourceSums> sumsOf(std::filesystem::path const& file, std::uint64_t lines,
                                 std::size_t longestLine, host::Notification const& stop) {
    host::InputFile input(file, std::nullopt, {&stop, nullptr});
    host::LineReader reader(input, longestLine, 0);
    LineSums sums;
    while (reader.nextLine()) {
        if (stop.isSet()) {
            throw PublishingStopped();
        }
        sums.add(reader);
        if (reader.number() == lines) {
            return sums.sums();
        }
    }
    return std::nullopt;
}

} // namespace stream
