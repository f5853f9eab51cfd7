#include "findings/FileComparison.h"

#include <fmt/format.h>

namespace reader {

void FileComparison::compare(EventFacts const& event, std::size_t file,
                             std::vector<Finding>& findings) {
    walkM.forEach(event, [&](HeldObject const& object) {
        auto const hash = object.hash();
        auto const [place, isNew] =
            shownM.try_emplace(object.key(), Shown{hash, file, object.line, file});
        auto& earlier = place->second;
        if (isNew || earlier.lastFile == file) {
            return;
        }
        earlier.lastFile = file;
        if (earlier.hash != hash) {
            auto const subject = object.question.empty()
                                     ? object.id
                                     : fmt::format("{}, {}", object.id, object.question);
            findings.push_back(
                {Kind::differsBetweenFiles,
                 object.line,
                 subject,
                 {},
                 fmt::format("other facts than at {}:{}", filesM[earlier.file], earlier.line),
                 "use datadump diff to see which"});
        }
    });
}

} // namespace reader
