// A file of dumps or reports that is read front to back in large pieces; "-" is standard input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace reader {

// No such file, not readable, or no event in it. The message names the file.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class InputFile {
public:
    // Throws an InputError when it can't be opened.
    explicit InputFile(std::string const& name) : InputFile(name, name) {}
    // Reads what stands under a path, and calls it by the name.
    InputFile(std::string const& name, std::string const& path);
    ~InputFile();
    InputFile(InputFile const&) = delete;
    InputFile& operator=(InputFile const&) = delete;

    // Fills at most size bytes and returns how many; 0 at the end. Throws an InputError.
    std::size_t read(char* bytes, std::size_t size);

    // Goes on from so many bytes after the file's begin; false when it can't be read twice.
    bool seek(std::uint64_t offset);

    // As it was named; "standard input" for "-".
    std::string const& name() const noexcept { return nameM; }

private:
    std::string nameM;
    int descriptorM;
};

// The files in a directory, by name, without hidden ones, those of directories in it, and pipes and
// devices, which may never end; of any other name, that name alone. Throws an InputError when the
// directory has none.
std::vector<std::string> filesUnder(std::string const& name);

// Whether it can be opened and read once more: a pipe can't.
bool isRereadable(std::string const& name);

} // namespace reader
