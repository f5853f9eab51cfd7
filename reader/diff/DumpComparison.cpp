#include "diff/DumpComparison.h"

#include <fmt/format.h>

#include <utility>

namespace reader {

namespace {

std::string nameOf(EventFacts const& event) {
    return fmt::format("{} {}", event.customer.text, event.service.text);
}

std::string orNothing(std::string const& text) {
    return text.empty() ? "nothing" : text;
}

} // namespace

bool DumpComparison::ComparedObject::differs() const {
    return sides[older].firstEvent != never && sides[newer].firstEvent != never &&
           sides[older].hash != sides[newer].hash;
}

DumpChanges DumpComparison::run() {
    for (auto const side : {older, newer}) {
        sourceM(side, [&](EventText const& text) {
            auto& isReadAgain = isReadAgainM[side];
            if (filterM.lets(text, readerM)) {
                addHashes(readerM.read(text), side, isReadAgain.size());
            }
            isReadAgain.push_back(false);
        });
    }
    chooseEvents();
    forEachReadAgain(
        older, [this](EventFacts const& event, std::size_t number) { keepOlder(event, number); });
    forEachReadAgain(newer, [this](EventFacts const& event, std::size_t number) {
        compareNewer(event, number);
    });
    return std::move(changesM);
}

void DumpComparison::addHashes(EventFacts const& event, Side side, std::size_t number) {
    eventsM[keyOf(event)].sides[side] = {saidFactHashes(event), number};
    walkM.forEach(event, [&](HeldObject const& object) {
        auto& compared = objectsM[object.key()];
        if (side == newer && std::exchange(compared.countedEvent, number) != number) {
            ++compared.events;
        }
        if (compared.sides[side].firstEvent == never) {
            compared.sides[side] = {object.hash(), number};
        }
    });
}

// The events that show a difference for the first time.
void DumpComparison::chooseEvents() {
    bool anyObject = false;
    for (auto const& [key, object] : objectsM) {
        if (object.differs()) {
            anyObject = true;
            isReadAgainM[older][object.sides[older].firstEvent] = true;
            isReadAgainM[newer][object.sides[newer].firstEvent] = true;
        }
    }
    ComparedEvent const* firstStart = nullptr;
    for (auto const& [key, event] : eventsM) {
        auto const& was = event.sides[older];
        auto const& is = event.sides[newer];
        bool const isInBoth = was.number != never && is.number != never;
        if (!isInBoth || differsBesidesStart(was.hashes, is.hashes)) {
            readAgain(event);
        }
        if (isInBoth && was.hashes[chargingStartFact] != is.hashes[chargingStartFact]) {
            ++changesM.chargingStarts;
            bool const isFirst =
                firstStart == nullptr || is.number < firstStart->sides[newer].number;
            firstStart = isFirst ? &event : firstStart;
        }
    }
    // They differ in nearly all events of live traffic: one is enough to show.
    if (firstStart != nullptr) {
        readAgain(*firstStart);
    }
    if (isByEventM && anyObject) {
        isReadAgainM[newer].assign(isReadAgainM[newer].size(), true);
    }
}

bool DumpComparison::differsBesidesStart(SaidHashes was, SaidHashes const& is) {
    was[chargingStartFact] = is[chargingStartFact];
    return was != is;
}

void DumpComparison::readAgain(ComparedEvent const& event) {
    for (auto const side : {older, newer}) {
        if (event.sides[side].number != never) {
            isReadAgainM[side][event.sides[side].number] = true;
        }
    }
}

void DumpComparison::forEachReadAgain(
    Side side, std::function<void(EventFacts const&, std::size_t)> const& visit) {
    auto const& isReadAgain = isReadAgainM[side];
    if (std::find(isReadAgain.begin(), isReadAgain.end(), true) == isReadAgain.end()) {
        return;
    }
    std::size_t number = 0;
    sourceM(side, [&](EventText const& text) {
        // A file may have grown since.
        if (number < isReadAgain.size() && isReadAgain[number] && filterM.lets(text, readerM)) {
            visit(readerM.read(text), number);
        }
        ++number;
    });
}

void DumpComparison::keepOlder(EventFacts const& event, std::size_t number) {
    auto& compared = eventsM[keyOf(event)];
    if (compared.sides[older].number == number) {
        if (compared.sides[newer].number == never) {
            changesM.gone.push_back(nameOf(event));
        } else {
            compared.before = std::make_unique<SaidFacts>(saidFacts(event));
        }
    }
    walkM.forEach(event, [&](HeldObject const& object) {
        auto& kept = objectsM[object.key()];
        if (kept.sides[older].firstEvent == number && kept.differs() && kept.before == nullptr) {
            kept.before = std::make_unique<KeptObject>(object);
        }
    });
}

void DumpComparison::compareNewer(EventFacts const& event, std::size_t number) {
    auto const& compared = eventsM[keyOf(event)];
    if (compared.sides[newer].number == number) {
        if (compared.sides[older].number == never) {
            changesM.came.push_back(nameOf(event));
        } else if (compared.before != nullptr) {
            compareSaid(*compared.before, saidFacts(event));
        }
    }
    walkM.forEach(event, [&](HeldObject const& object) {
        auto& kept = objectsM[object.key()];
        if (kept.before != nullptr && kept.sides[newer].firstEvent == number) {
            kept.changes = changesBetween(*kept.before, KeptObject(object));
            kept.before.reset();
            for (auto const& change : kept.changes) {
                changesM.objects.push_back({change, kept.events});
            }
        }
        if (isByEventM && std::exchange(kept.listedEvent, number) != number) {
            for (auto const& change : kept.changes) {
                changesM.byEvent.push_back({nameOf(event), change.text});
            }
        }
    });
}

void DumpComparison::compareSaid(SaidFacts const& was, SaidFacts const& is) {
    for (std::size_t fact = 0; fact < was.size(); ++fact) {
        if (was[fact] == is[fact]) {
            continue;
        }
        auto const change = fmt::format("{} → {}", orNothing(was[fact]), orNothing(is[fact]));
        if (fact != chargingStartFact) {
            ++changesM.said[fact][change];
        } else if (changesM.chargingStart.empty()) {
            changesM.chargingStart = change;
        }
    }
}

} // namespace reader
