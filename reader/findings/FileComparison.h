// Finds objects that one file shows with other facts than another. Keeps a hash of each object, and
// where it stands: the earlier event is read again to name the facts.
#pragma once

#include "diff/ObjectChanges.h"
#include "facts/FactReader.h"
#include "facts/HeldObjects.h"
#include "findings/Finding.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace reader {

class FileComparison {
public:
    // The names of the files stay the caller's.
    explicit FileComparison(std::vector<std::string> const& files) : filesM(files) {}

    // Appends a finding for each object of the event that differs from what an earlier file shows;
    // each object once a file.
    void compare(EventFacts const& event, std::uint64_t offset, std::size_t file,
                 std::vector<Finding>& findings);

private:
    struct Shown {
        std::uint64_t hash;
        std::uint64_t offset; // of the event in its file
        std::size_t file;
        LineNumber line;
        std::size_t lastFile; // that was compared
    };

    Finding findingOf(HeldObject const& object, Shown const& earlier);
    std::vector<Change> changesSince(Shown const& earlier, HeldObject const& object);

    std::vector<std::string> const& filesM;
    HeldObjectWalk walkM;
    std::unordered_map<std::uint64_t, Shown> shownM; // by a hash of the object's name
    // For the earlier events.
    FactReader earlierReaderM;
    HeldObjectWalk earlierWalkM;
};

} // namespace reader
