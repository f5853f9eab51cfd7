// A directory of a test's own, removed with everything in it when the object goes.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace support {

class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "datadump-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary directory");
        }
        pathM = pattern;
    }
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(pathM, ignored);
    }

    std::filesystem::path const& path() const { return pathM; }

    std::string write(std::string const& name, std::string_view text) const {
        auto const file = pathM / name;
        std::ofstream(file, std::ios::binary) << text;
        return file.string();
    }

    std::string read(std::string const& name) const {
        std::ifstream file(pathM / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::filesystem::path pathM;
};

} // namespace support
