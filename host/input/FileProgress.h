// What becomes of an input file: its reject file, and its place in the state of an input directory.
#pragma once

#include "input/InputDirectory.h"
#include "input/InputProgress.h"
#include "input/RejectFile.h"

namespace host {

class FileProgress : public InputProgress {
public:
    // Of the reject file what it held at the start is kept. A directory, which may be null,
    // remembers the place, and must outlive the object. Throws a BAS::Status when the reject file
    // can't be prepared.
    FileProgress(DirectoryInput const& input, InputDirectory* directory)
        : rejectsM(input.input, input.start.rejectedBytes), directoryM(directory) {}

    void reject(InputPlace const& /*end*/, std::string_view line) override {
        rejectsM.append(line);
    }
    bool mayProcess() override { return true; }
    void keep(std::vector<InputPlace> const& places) override {
        if (directoryM != nullptr && !places.empty()) {
            directoryM->keepPosition({places.front().offset, rejectsM.size()});
        }
    }

    std::uint64_t rejectedBytes() const noexcept { return rejectsM.size(); }

private:
    RejectFile rejectsM;
    InputDirectory* directoryM;
};

} // namespace host
