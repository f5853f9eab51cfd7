// Walks over the events of several files as if they were one.
#pragma once

#include "text/EventReader.h"

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace reader {

// Tells what a reader should know beside the results: on standard error, FILE:LINE first.
void warn(std::string const& file, LineNumber line, std::string const& text);

class Walk {
public:
    // Files are called by their names, and read from the paths, if there are some.
    explicit Walk(std::vector<std::string> files, std::vector<std::string> paths = {})
        : filesM(std::move(files)), pathsM(paths.empty() ? filesM : std::move(paths)) {}

    using Visitor = std::function<void(EventText const&, std::size_t file)>;

    // Whether notices about the order of events are printed; a second walk needs not.
    enum class Notices { printed, quiet };

    // Calls the visitor with every event and with what stands outside of events. Throws an
    // InputError.
    void forEach(Visitor const& visit, Notices notices = Notices::printed);

    std::vector<std::string> const& files() const noexcept { return filesM; }

private:
    std::vector<std::string> filesM;
    std::vector<std::string> pathsM;
};

// Tells of keys that stand in two files. A report and a dump of the same event are no two.
class KeyRegister {
public:
    void add(std::string_view customer, std::string_view service, EventText const& event,
             std::size_t file, std::vector<std::string> const& files);

private:
    struct Place {
        std::size_t file;
        LineNumber line;
    };
    // By a hash of the key and the kind of text.
    std::unordered_map<std::uint64_t, Place> placesM;
};

} // namespace reader
