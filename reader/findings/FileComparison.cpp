#include "findings/FileComparison.h"

#include <fmt/format.h>

namespace reader {

namespace {

// What changes have in common is left out: the object's name before them.
std::string textOf(std::vector<Change> const& changes, std::string const& object) {
    constexpr std::size_t mostShown = 3;
    std::string text;
    for (std::size_t i = 0; i < std::min(mostShown, changes.size()); ++i) {
        auto const change = changes[i].text.substr(object.size());
        text += fmt::format("{}{}", i > 0 ? "; " : "",
                            change.substr(std::min(change.find_first_not_of(": "), change.size())));
    }
    return changes.size() > mostShown
               ? fmt::format("{}; and {} more", text, changes.size() - mostShown)
               : text;
}

} // namespace

void FileComparison::compare(EventFacts const& event, std::uint64_t offset, std::size_t file,
                             std::vector<Finding>& findings) {
    walkM.forEach(event, [&](HeldObject const& object) {
        auto const hash = object.hash();
        auto const [place, isNew] =
            shownM.try_emplace(object.key(), Shown{hash, offset, file, object.line, file});
        auto& earlier = place->second;
        if (isNew || earlier.lastFile == file) {
            return;
        }
        earlier.lastFile = file;
        if (earlier.hash != hash) {
            findings.push_back(findingOf(object, earlier));
        }
    });
}

Finding FileComparison::findingOf(HeldObject const& object, Shown const& earlier) {
    auto const changes = changesSince(earlier, object);
    return {Kind::differsBetweenFiles,
            object.line,
            object.question.empty() ? object.id : fmt::format("{}, {}", object.id, object.question),
            {},
            changes.empty() ? std::string("other facts") : textOf(changes, object.id),
            fmt::format("as against {}:{}", filesM[earlier.file], earlier.line)};
}

// None when the earlier file can't be read again, as a pipe can't, or has changed since.
std::vector<Change> FileComparison::changesSince(Shown const& earlier, HeldObject const& object) {
    std::vector<Change> changes;
    if (!isRereadable(filesM[earlier.file])) {
        return changes;
    }
    try {
        InputFile file(filesM[earlier.file]);
        EventReader events(file, [](LineNumber, std::string const&) {});
        EventText text;
        if (!file.seek(earlier.offset) || !events.next(text)) {
            return changes;
        }
        earlierWalkM.forEach(earlierReaderM.read(text), [&](HeldObject const& was) {
            if (changes.empty() && was.key() == object.key()) {
                changes = changesBetween(KeptObject(was), KeptObject(object));
            }
        });
    } catch (InputError const&) {
        changes.clear();
    }
    return changes;
}

} // namespace reader
