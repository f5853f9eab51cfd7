// Hands a target every file of the directories that are named, where no fuzzer does.
#include "FuzzInput.h"

#include <filesystem>
#include <fstream>
#include <iterator>

int main(int argc, char** argv) {
    std::size_t files = 0;
    for (int i = 1; i < argc; ++i) {
        for (auto const& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream in(entry.path(), std::ios::binary);
            std::string const text(std::istreambuf_iterator<char>(in), {});
            std::cout << entry.path().string() << std::endl;
            LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(text.data()), text.size());
            ++files;
        }
    }
    return files > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
