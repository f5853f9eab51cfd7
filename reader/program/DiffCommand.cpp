#include "program/DiffCommand.h"

#include "diff/DumpComparison.h"
#include "program/KeyChoice.h"
#include "program/Program.h"
#include "program/RereadableFile.h"
#include "program/Walk.h"
#include "text/Output.h"

#include <utility>

namespace reader {

namespace {

constexpr std::size_t mostAlike = 5;

std::string counted(std::uint64_t events) {
    return fmt::format("{} event{}", events, events == 1 ? "" : "s");
}

class ChangeList {
public:
    void add(DumpChanges const& changes, bool isByEvent) {
        if (isByEvent) {
            for (auto const& [event, text] : changes.byEvent) {
                line(fmt::format("{}: {}", event, text));
            }
        } else {
            addObjects(changes.objects);
        }
        for (std::size_t fact = 0; fact < changes.said.size(); ++fact) {
            if (fact == chargingStartFact) {
                addMany(fact, changes.chargingStarts, changes.chargingStart);
            } else {
                addValues(fact, changes.said[fact]);
            }
        }
        addEvents("only in the older file", changes.gone);
        addEvents("only in the newer file", changes.came);
        outM.flush();
    }

    bool isEmpty() const noexcept { return isEmptyM; }

private:
    // A change whose kind is frequent is one line with a count.
    void addObjects(std::vector<DumpChanges::OfObject> const& objects) {
        std::map<std::string, std::uint64_t> alike;
        for (auto const& object : objects) {
            ++alike[object.change.alike];
        }
        for (auto const& [change, events] : objects) {
            auto& count = alike[change.alike];
            if (change.alike.empty() || (count > 0 && count <= mostAlike)) {
                line(fmt::format("{}, {}", change.text, counted(events)));
            } else if (count > mostAlike) {
                line(fmt::format("{}, {} times, such as {}", change.alike, count, change.text));
                count = 0;
            }
        }
    }

    void addValues(std::size_t fact, DumpChanges::Values const& values) {
        if (values.size() <= mostAlike) {
            for (auto const& [value, count] : values) {
                line(fmt::format("event: {} {}, {}", saidFactNames[fact], value, counted(count)));
            }
            return;
        }
        std::uint64_t events = 0;
        for (auto const& value : values) {
            events += value.second;
        }
        addMany(fact, events, values.begin()->first);
    }

    void addMany(std::size_t fact, std::uint64_t events, std::string const& example) {
        if (events > 0) {
            line(fmt::format("event: {} differs, {}, such as {}", saidFactNames[fact],
                             counted(events), example));
        }
    }

    void addEvents(char const* what, std::vector<std::string> const& names) {
        if (names.size() > mostAlike) {
            line(fmt::format("event: {} {}, such as {}", counted(names.size()), what, names[0]));
            return;
        }
        for (auto const& name : names) {
            line(fmt::format("event: {} {}", name, what));
        }
    }

    void line(std::string const& text) {
        isEmptyM = false;
        outM.write(printable(text) + "\n");
    }

    Output outM;
    bool isEmptyM = true;
};

} // namespace

int compareDumps(Options const& options) {
    // Both are read twice: once for hashes, then for the texts of what differs.
    std::vector<RereadableFile> files;
    files.emplace_back(options.older);
    files.emplace_back(options.newer);
    std::array<bool, 2> isReadBefore{};
    auto const source = [&](DumpComparison::Side side, DumpComparison::Visitor const& visit) {
        auto const& file = files[side];
        Walk walk({file.name()}, {file.path()});
        walk.forEach(
            [&](EventText const& text, std::size_t) {
                if (!text.isOutside) {
                    visit(text);
                }
            },
            std::exchange(isReadBefore[side], true) ? Walk::Notices::quiet
                                                    : Walk::Notices::printed);
    };
    auto const filter = chosenInAny(options.filter, files);
    ChangeList list;
    list.add(DumpComparison(source, filter, options.isByEvent).run(), options.isByEvent);
    return list.isEmpty() ? done : foundOrDifferent;
}

} // namespace reader
