#include "program/DiffCommand.h"

#include "diff/ObjectChanges.h"
#include "diff/SaidFacts.h"
#include "facts/FactReader.h"
#include "program/Program.h"
#include "program/Walk.h"
#include "text/Hash.h"
#include "text/Output.h"

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

namespace reader {

namespace {

constexpr std::size_t mostAlike = 5;

// Both files are read twice: once for hashes, then for the texts of what differs. Standard input is
// put into a file without a name for that.
class RereadableFile {
public:
    explicit RereadableFile(std::string const& name) : nameM(name) {
        if (name != "-") {
            return;
        }
        fileM.reset(std::tmpfile());
        InputFile input("-");
        std::vector<char> piece(std::size_t{1} << 16U);
        for (std::size_t size = 0; (size = input.read(piece.data(), piece.size())) > 0;) {
            if (fileM == nullptr || std::fwrite(piece.data(), 1, size, fileM.get()) != size) {
                throw OutputError("standard input can't be kept in a temporary file");
            }
        }
        if (fileM == nullptr || std::fflush(fileM.get()) != 0) {
            throw OutputError("standard input can't be kept in a temporary file");
        }
        nameM = fmt::format("/dev/fd/{}", ::fileno(fileM.get()));
    }

    std::string const& name() const noexcept { return nameM; }

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string nameM;
    std::unique_ptr<std::FILE, Closer> fileM;
};

enum Side : std::size_t { older, newer };

struct ComparedObject {
    std::array<std::optional<std::uint64_t>, 2> hashes;
    std::uint64_t events = 0; // of the newer file that show it
    std::unique_ptr<KeptObject> before;
    std::vector<Change> changes;
};

struct ComparedEvent {
    std::array<std::optional<std::array<std::uint64_t, saidFactNames.size()>>, 2> hashes;
    std::unique_ptr<SaidFacts> before;
};

class DumpComparison {
public:
    explicit DumpComparison(Options const& options)
        : optionsM(options), oldFileM(options.files[0]), newFileM(options.files[1]) {}

    bool run() {
        forEach(older, [this](EventFacts const& event) { addHashes(event, older); });
        forEach(newer, [this](EventFacts const& event) { addHashes(event, newer); });
        forEach(older, [this](EventFacts const& event) { keepDiffering(event); });
        forEach(newer, [this](EventFacts const& event) { compareDiffering(event); });
        printChanges();
        printSaid();
        printEvents("only in the older file", goneM);
        printEvents("only in the newer file", cameM);
        outM.flush();
        return differsM;
    }

private:
    template <class Visitor>
    void forEach(Side side, Visitor const& visit) {
        Walk walk({side == older ? oldFileM.name() : newFileM.name()});
        FactReader reader;
        walk.forEach([&](EventText const& text, std::size_t) {
            if (!text.isOutside) {
                auto const& event = reader.read(text);
                if (optionsM.filter.lets(event)) {
                    visit(event);
                }
            }
        });
    }

    static std::uint64_t keyOf(EventFacts const& event) {
        return hashOf(event.service.text, hashOf(event.customer.text));
    }
    static std::uint64_t keyOf(HeldObject const& object) {
        return hashOf(object.question, hashOf(object.id));
    }
    static std::string nameOf(EventFacts const& event) {
        return fmt::format("{} {}", event.customer.text, event.service.text);
    }

    void addHashes(EventFacts const& event, Side side) {
        auto& hashes = eventsM[keyOf(event)].hashes[side].emplace();
        auto const said = saidFacts(event);
        for (std::size_t i = 0; i < said.size(); ++i) {
            hashes[i] = hashOf(said[i]);
        }
        forEachHeldObject(event, [&](HeldObject const& object) {
            auto& compared = objectsM[keyOf(object)];
            compared.events += side == newer ? 1 : 0;
            if (!compared.hashes[side]) {
                compared.hashes[side] = object.hash();
            }
        });
    }

    static bool differs(ComparedObject const& object) {
        return object.hashes[older] && object.hashes[newer] &&
               *object.hashes[older] != *object.hashes[newer];
    }

    void keepDiffering(EventFacts const& event) {
        auto& compared = eventsM[keyOf(event)];
        if (!compared.hashes[newer]) {
            goneM.push_back(nameOf(event));
        } else if (*compared.hashes[older] != *compared.hashes[newer]) {
            compared.before = std::make_unique<SaidFacts>(saidFacts(event));
        }
        forEachHeldObject(event, [&](HeldObject const& object) {
            auto& kept = objectsM[keyOf(object)];
            if (differs(kept) && kept.before == nullptr) {
                kept.before = std::make_unique<KeptObject>(object);
            }
        });
    }

    void compareDiffering(EventFacts const& event) {
        auto const& compared = eventsM[keyOf(event)];
        if (!compared.hashes[older]) {
            cameM.push_back(nameOf(event));
        } else if (compared.before != nullptr) {
            auto const said = saidFacts(event);
            for (std::size_t i = 0; i < said.size(); ++i) {
                addSaid(i, (*compared.before)[i], said[i]);
            }
        }
        forEachHeldObject(event, [&](HeldObject const& object) {
            auto& kept = objectsM[keyOf(object)];
            if (kept.before != nullptr && kept.changes.empty()) {
                kept.changes = changesBetween(*kept.before, KeptObject(object));
            }
            for (auto const& change : kept.changes) {
                addChange(change, kept.events, event);
            }
        });
    }

    void addSaid(std::size_t fact, std::string const& before, std::string const& after) {
        if (before != after) {
            ++saidM[fact][fmt::format("{} → {}", before.empty() ? "nothing" : before,
                                      after.empty() ? "nothing" : after)];
        }
    }

    void addChange(Change const& change, std::uint64_t events, EventFacts const& event) {
        if (optionsM.isByEvent) {
            byEventM.emplace_back(nameOf(event), change.text);
        }
        auto const [place, isNew] = changesM.try_emplace(change.text, events);
        if (isNew) {
            orderM.push_back(change);
            ++alikeM[change.alike];
        }
    }

    // A change whose kind is frequent is one line with a count.
    void printChanges() {
        if (optionsM.isByEvent) {
            for (auto const& [event, text] : byEventM) {
                line(fmt::format("{}: {}", event, text));
            }
            return;
        }
        std::map<std::string, bool> isFolded;
        for (auto const& change : orderM) {
            auto const count = alikeM[change.alike];
            if (change.alike.empty() || count <= mostAlike) {
                line(fmt::format("{}, {}", change.text, counted(changesM[change.text])));
            } else if (!std::exchange(isFolded[change.alike], true)) {
                line(fmt::format("{}, {} times, such as {}", change.alike, count, change.text));
            }
        }
    }

    void printSaid() {
        for (std::size_t fact = 0; fact < saidM.size(); ++fact) {
            auto const& values = saidM[fact];
            if (values.size() <= mostAlike && fact != chargingStartFact) {
                for (auto const& [value, count] : values) {
                    line(fmt::format("event: {} {}, {}", saidFactNames[fact], value,
                                     counted(count)));
                }
                continue;
            }
            std::uint64_t events = 0;
            for (auto const& value : values) {
                events += value.second;
            }
            if (events > 0) {
                line(fmt::format("event: {} differs, {}, such as {}", saidFactNames[fact],
                                 counted(events), values.begin()->first));
            }
        }
    }

    void printEvents(char const* what, std::vector<std::string> const& names) {
        if (names.size() > mostAlike) {
            line(fmt::format("event: {} {}, such as {}", counted(names.size()), what, names[0]));
            return;
        }
        for (auto const& name : names) {
            line(fmt::format("event: {} {}", name, what));
        }
    }

    void line(std::string const& text) {
        differsM = true;
        outM.write(printable(text) + "\n");
    }

    static std::string counted(std::uint64_t events) {
        return fmt::format("{} event{}", events, events == 1 ? "" : "s");
    }

    Options const& optionsM;
    RereadableFile oldFileM;
    RereadableFile newFileM;
    Output outM;
    bool differsM = false;
    std::unordered_map<std::uint64_t, ComparedObject> objectsM;
    std::unordered_map<std::uint64_t, ComparedEvent> eventsM;
    std::vector<Change> orderM;
    std::unordered_map<std::string, std::uint64_t> changesM; // how many events show it
    std::map<std::string, std::uint64_t> alikeM;
    std::vector<std::pair<std::string, std::string>> byEventM;
    std::array<std::map<std::string, std::uint64_t>, saidFactNames.size()> saidM;
    std::vector<std::string> goneM;
    std::vector<std::string> cameM;
};

} // namespace

int compareDumps(Options const& options) {
    return DumpComparison(options).run() ? foundOrDifferent : done;
}

} // namespace reader
