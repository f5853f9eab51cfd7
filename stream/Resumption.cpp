#include "Resumption.h"

#include "base/EscapedText.h"
#include "base/MessageCatalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <stdexcept>

namespace stream {

namespace {

constexpr char const* attempt = "finding the last published line";

} // namespace

Resumption::Resumption(std::string const& stream, host::StreamSource const& source,
                       std::size_t longestLine, host::Notification const& stop, BAS::LogSink& log)
    : streamM(stream), sourceM(source), longestLineM(longestLine), stopM(stop), logM(log) {
    for (auto const& file : source.files) {
        auto name = source.name.value_or(sourceName(file));
        if (std::find(namesM.begin(), namesM.end(), name) != namesM.end() ||
            std::count(source.files.begin(), source.files.end(), file) > 1) {
            throw std::invalid_argument("'" + file.string() + "' is given twice");
        }
        namesM.push_back(std::move(name));
    }
}

std::vector<ResumePoint> Resumption::find(std::vector<std::optional<SourcePlace>> const& lasts) {
    // If a source has the same lines up to the last one, so it has up to any before.
    std::map<std::string, SourcePlace> published;
    for (auto const& last : lasts) {
        if (last && published[last->source].line <= last->line) {
            published[last->source] = *last;
        }
    }
    std::map<std::string, std::optional<std::size_t>> files;
    for (auto const& [source, place] : published) {
        files[source] = fileOf(place);
    }
    std::vector<ResumePoint> points;
    for (auto const& last : lasts) {
        auto const file = last ? files[last->source] : std::nullopt;
        points.push_back(file ? ResumePoint{*file, last->line, true} : atFrom());
    }
    return points;
}

ResumePoint Resumption::atFrom() const {
    return {0, sourceM.from == 0 ? 0 : sourceM.from - 1, false};
}

// Nothing when the source isn't given now.
std::optional<std::size_t> Resumption::fileOf(SourcePlace const& published) {
    auto const found = std::find(namesM.begin(), namesM.end(), published.source);
    if (sourceM.name) {
        return found == namesM.end() ? std::nullopt : namedFile(published);
    }
    if (found != namesM.end()) {
        return static_cast<std::size_t>(found - namesM.begin());
    }
    for (auto const likeness : {Likeness::sameInode, Likeness::sameName}) {
        for (std::size_t file = 0; file < namesM.size(); ++file) {
            if (likenessOf(namesM[file], published.source) == likeness &&
                isContinued(published, file, likeness)) {
                return file;
            }
        }
    }
    return std::nullopt;
}

// A name says nothing of what is in the file.
std::optional<std::size_t> Resumption::namedFile(SourcePlace const& published) {
    if (!published.sums) {
        return 0; // its message was written by a version that had none
    }
    if (!canBeReadAgain(sourceM.files.front())) {
        expectedM = published;
        return 0;
    }
    if (sumsOf(0, published.line) == published.sums) {
        return 0;
    }
    if (sourceM.from == 0) {
        throw isAnother(published);
    }
    return std::nullopt;
}

bool Resumption::isContinued(SourcePlace const& published, std::size_t file,
                             Likeness likeness) const {
    bool const isInode = likeness == Likeness::sameInode;
    auto const path = sourceM.files[file].string();
    if (!published.sums) {
        if (isInode) {
            refuse(fmt::format("'{}' has changed since its line {} was published as '{}', and "
                               "whether it has the same lines up to there isn't known; --from LINE "
                               "says where to go on",
                               path, published.line, published.source));
        }
        return false;
    }
    auto const first = sumsOf(file, 1);
    if (!first || first->first != published.sums->first) {
        if (isInode) {
            logM.write(host::makeStatus(BAS::Status::notice, {}, "MSG_SOURCE_ANEW",
                                        {path, published.source}));
        }
        return false;
    }
    bool const hasLines = sumsOf(file, published.line) == published.sums;
    if (hasLines && isInode) {
        logM.write(host::makeStatus(BAS::Status::notice, {}, "MSG_SOURCE_CONTINUED",
                                    {path, published.source}));
        return true;
    }
    if (hasLines) {
        refuse(fmt::format("'{}' is another file than the one whose lines were published as '{}', "
                           "but has the same first {} lines; --source '{}' goes on after them, and "
                           "another name publishes all of it",
                           path, published.source, published.line, published.source));
    } else if (isInode) {
        refuse(fmt::format("'{}' has changed since its first {} lines were published as '{}', and "
                           "these aren't the same any more; --from LINE says where to go on, and "
                           "--source NAME publishes all of it",
                           path, published.line, published.source));
    }
    return false;
}

std::optional<SourceSums> Resumption::sumsOf(std::size_t file, std::uint64_t lines) const {
    return stream::sumsOf(sourceM.files[file], lines, longestLineM, stopM);
}

// Who says where to begin knows what was published.
void Resumption::refuse(std::string const& reason) const {
    if (sourceM.from == 0) {
        throw failure(streamM, attempt, reason);
    }
}

BAS::Status Resumption::isAnother(SourcePlace const& published) const {
    return failure(
        streamM, attempt,
        fmt::format("'{}' doesn't have the {} lines that were published as '{}'; another "
                    "--source publishes all of it",
                    sourceM.files.front().string(), published.line, published.source));
}

} // namespace stream
