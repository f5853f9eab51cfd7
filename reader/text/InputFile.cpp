#include "text/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace reader {

namespace {

InputError errorOf(std::string const& name, int code) {
    return InputError(name + ": can't be read: " + std::strerror(code));
}

} // namespace

InputFile::InputFile(std::string const& name, std::string const& path)
    : nameM(name == "-" ? "standard input" : name), descriptorM(STDIN_FILENO) {
    if (path == "-") {
        return;
    }
    descriptorM = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptorM < 0) {
        throw errorOf(nameM, errno);
    }
    struct stat about {};
    if (::fstat(descriptorM, &about) == 0 && S_ISDIR(about.st_mode)) {
        ::close(descriptorM);
        throw errorOf(nameM, EISDIR);
    }
}

InputFile::~InputFile() {
    if (descriptorM != STDIN_FILENO) {
        ::close(descriptorM);
    }
}

bool InputFile::seek(std::uint64_t offset) {
    return descriptorM != STDIN_FILENO &&
           ::lseek(descriptorM, static_cast<off_t>(offset), SEEK_SET) >= 0;
}

std::size_t InputFile::read(char* bytes, std::size_t size) {
    for (;;) {
        auto const count = ::read(descriptorM, bytes, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            throw errorOf(nameM, errno);
        }
    }
}

std::vector<std::string> filesUnder(std::string const& name) {
    std::error_code error;
    if (name == "-" || !std::filesystem::is_directory(name, error)) {
        return {name};
    }
    std::vector<std::string> files;
    std::filesystem::directory_iterator entries(name, error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        std::error_code unknown;
        auto const status = entries->status(unknown);
        bool const isHidden = entries->path().filename().native().starts_with('.');
        if (!isHidden && !is_directory(status) && !is_other(status)) {
            files.push_back(entries->path().string());
        }
    }
    if (error) {
        throw errorOf(name, error.value());
    }
    if (files.empty()) {
        throw InputError(name + ": there is no file in this directory");
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool isRereadable(std::string const& name) {
    std::error_code error;
    return name != "-" && std::filesystem::is_regular_file(name, error);
}

} // namespace reader
