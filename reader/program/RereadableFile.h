// A file that is read more than once. What can be read only once, such as standard input or a pipe,
// is put into a file without a name for that.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace reader {

class RereadableFile {
public:
    // Reads a pipe to its end. Throws an InputError, or an OutputError when the bytes can't be
    // kept.
    explicit RereadableFile(std::string const& name);

    // As the user named it.
    std::string const& name() const noexcept { return nameM; }
    // Where it is read from, as long as this object is there.
    std::string const& path() const noexcept { return pathM; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void keep();

    std::string nameM;
    std::string pathM;
    std::unique_ptr<std::FILE, Closer> keptM;
};

} // namespace reader
