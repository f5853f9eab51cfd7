#include "facts/FactReader.h"

#include "facts/EventEnd.h"
#include "facts/ModuleSentences.h"
#include "facts/ObjectReader.h"
#include "facts/PlanReader.h"
#include "facts/PlugInItems.h"

namespace reader {

namespace {

constexpr Fact EventFacts::*recordFacts[] = {&EventFacts::serviceId, &EventFacts::serviceType,
                                             &EventFacts::eventType, &EventFacts::chargingStart,
                                             &EventFacts::account,   &EventFacts::balanceGroup};
static_assert(std::size(recordFacts) == eventRowLabels.size());

constexpr std::string_view planLineStart = "\nUsed Rate Plan code: ";
constexpr Heading discountHeadings[] = {ownDiscountsHeading, sharingHeading};

void forget(EventFacts& facts) {
    constexpr Fact EventFacts::*otherFacts[] = {
        &EventFacts::customer,   &EventFacts::service,         &EventFacts::ratePlan,
        &EventFacts::ratePlanId, &EventFacts::ratePlanVersion, &EventFacts::impactCategory,
        &EventFacts::codes,      &EventFacts::priceModelsAsked};
    for (auto const fact : recordFacts) {
        facts.*fact = Fact();
    }
    for (auto const fact : otherFacts) {
        facts.*fact = Fact();
    }
    facts.cutLine = 0;
    facts.hasRecord = false;
    facts.priceModels.clear();
    facts.ownDiscounts.clear();
    facts.owners.clear();
    facts.accountMemory = AccountMemory();
    facts.planMemory = PlanMemory();
    facts.priceModelMemory.clear();
    facts.memory.clear();
    facts.sections.clear();
    facts.unplaced.clear();
    facts.foreignTexts.clear();
}

// The line within which a text was cut: the last one with something in it.
Place lastLine(LinedText const& text) {
    auto const last = text.bytes().find_last_not_of('\n');
    if (last == std::string_view::npos) {
        return {};
    }
    auto const line = text.placeOf(last).line;
    return line == 0 ? Place() : Place{text.endOf(line - 1) + 1, line};
}

} // namespace

// Outlives events: the catalogue's objects, and containers whose memory is used again.
struct FactReader::Kept {
    ObjectReader objects;
    PlanReader plans{objects};
    ModuleText account;

    void beginEvent() {
        objects.beginEvent();
        if (objects.limitKept()) {
            plans.clear();
        }
    }
};

// Reads one event.
class FactReader::Reading {
public:
    Reading(Kept& kept, EventFacts& facts, EventText const& event);

    void readOverview();
    void readAll();

private:
    LineNumber number(Place place) const { return factsM.line + place.line; }
    bool isOpen(Place end) const { return factsM.cutLine != 0 && end.at == textM.size(); }
    UnplacedLines unplaced() { return {textM.bytes(), factsM.cutLine != 0, factsM.unplaced}; }
    void addSection(SectionName name, std::string_view text, Place begin) {
        factsM.sections.push_back({name, text, number(begin)});
    }

    Place readKey();
    void readEventRows(Place begin, Place end);
    void readReport(Place begin);
    bool readReportLine(std::string_view line, LineNumber number);

    Place readAccount(Place heading);
    // Lines among those of the plug-in.
    void addUnplaced(Place begin, Place end, char const* reason);
    void readBalances(Place begin, Place end);
    void readOwnDiscounts(Place begin, Place end);
    void readSharing(Place begin);
    // What the balance and discount modules hold for the event, or for one owner.
    void readObjects(Place begin, Place end, SectionName section, SharingOwner* owner);

    Kept& keptM;
    EventFacts& factsM;
    LinedText textM;
};

FactReader::Reading::Reading(Kept& kept, EventFacts& facts, EventText const& event)
    : keptM(kept), factsM(facts), textM(event.text) {
    keptM.beginEvent();
    forget(factsM);
    factsM.kind = event.kind;
    factsM.bytes = event.text.bytes();
    factsM.line = event.line;
    factsM.number = event.number;
}

void FactReader::Reading::readOverview() {
    auto const begin = readKey();
    if (factsM.kind == TextKind::report) {
        readReport(begin);
        return;
    }
    auto const account = findHeading(textM, begin, accountHeading);
    readEventRows(begin, account);
    auto const product = findHeading(textM, account, productHeading);
    if (product.at < textM.size()) {
        auto const plan = productHeading.after(product);
        PlanReader::readOverview(textM, plan, number(plan), factsM);
    }
}

void FactReader::Reading::readAll() {
    if (isCut(factsM.kind, textM)) {
        auto const last = lastLine(textM);
        factsM.cutLine = number(last);
        textM = textM.part({}, last);
    }
    auto const begin = readKey();
    if (factsM.kind == TextKind::report) {
        readReport(begin);
        return;
    }
    auto const account = findHeading(textM, begin, accountHeading);
    readEventRows(begin, account);
    if (account.at == textM.size()) {
        return;
    }
    auto const plan = readAccount(account);
    if (plan.at == textM.size()) {
        return;
    }
    auto next = keptM.plans.read(textM, plan, number(plan), factsM.cutLine != 0, factsM);
    if (isHeadingAt(textM, next, balancesHeading)) {
        auto const end = findHeading(textM, balancesHeading.after(next), discountHeadings);
        readBalances(textM.nextLine(balancesHeading.after(next)), end);
        next = end;
    }
    if (isHeadingAt(textM, next, ownDiscountsHeading)) {
        auto const own = ownDiscountsHeading.after(next);
        next = findHeading(textM, own, sharingHeading);
        readOwnDiscounts(own, next);
    }
    if (next.at < textM.size()) {
        readSharing(sharingHeading.after(next));
    }
}

// From "Begin" to the end of the key line; returns where the next one begins. The code of a service
// has no such label within.
Place FactReader::Reading::readKey() {
    auto const label = factsM.kind == TextKind::dump ? dumpKeyLabel : reportKeyLabel;
    auto const key = findText(textM.bytes(), label);
    if (key == std::string_view::npos) {
        return textM.end();
    }
    auto const found = textM.placeOf(key);
    Place const begin{key + label.size(), found.line};
    auto const line = textM.restOfLine(begin);
    auto const split = line.rfind(serviceCodeLabel);
    if (split == std::string_view::npos) {
        factsM.customer = {line, number(begin)};
        unplaced().add(number(begin), line, "a key line has \"   Service Code = \"");
    } else {
        factsM.customer = {line.substr(0, split), number(begin)};
        factsM.service = {line.substr(split + serviceCodeLabel.size()), number(begin)};
    }
    return textM.nextLine(begin);
}

void FactReader::Reading::readEventRows(Place begin, Place end) {
    std::size_t expected = 0;
    Lines lines(textM.part(begin, end), number(begin));
    std::string_view line;
    while (lines.next(line)) {
        if (expected < eventRowLabels.size() && line.starts_with(eventRowLabels[expected])) {
            factsM.*recordFacts[expected] = {line.substr(eventRowLabels[expected].size()),
                                             lines.number()};
            factsM.hasRecord = true;
            ++expected;
        } else if (!line.empty()) {
            unplaced().add(lines.number(), line, "the event's rows stand here");
        }
    }
}

// ---- The report --------------------------------------------------------------------------------

void FactReader::Reading::readReport(Place begin) {
    auto const part = textM.part(begin, textM.end());
    auto const ruler = part.bytes().rfind(reportRuler);
    Lines lines(part, number(begin));
    std::string_view line;
    while (lines.next(line)) {
        bool const isEnd = lines.begin().at == ruler && line == reportRuler;
        if (!line.empty() && !isEnd && !readReportLine(line, lines.number())) {
            unplaced().add(lines.number(), line, "a report has no such line");
        }
    }
}

bool FactReader::Reading::readReportLine(std::string_view line, LineNumber number) {
    for (std::size_t i = 0; i < std::size(recordFacts); ++i) {
        auto& fact = factsM.*recordFacts[i];
        if (!fact.isTold() && line.starts_with(eventRowLabels[i])) {
            fact = {line.substr(eventRowLabels[i].size()), number};
            factsM.hasRecord = true;
            return true;
        }
    }
    if (line.starts_with(reportPlanLabel) && !factsM.ratePlan.isTold()) {
        factsM.ratePlan = {line.substr(reportPlanLabel.size()), number};
        return true;
    }
    if (line.starts_with(reportCodesLabel) && !factsM.codes.isTold()) {
        splitCodes(line.substr(reportCodesLabel.size()), number, factsM);
        return true;
    }
    bool const isOwn = factsM.owners.empty();
    return line == reportProductHeading || line == reportOwnHeading ||
           line == reportSharingHeading || readOwnerRow(line, number, factsM.owners) ||
           (isOwn ? readItemLine(line, number, ownItemLabels, factsM.ownDiscounts)
                  : readItemLine(line, number, sharedItemLabels, factsM.owners.back().items));
}

// ---- The dump ----------------------------------------------------------------------------------

// Returns where the line of the rate plan begins; the end of the text when there is none. A heading
// that is damaged does not hide what stands below it.
Place FactReader::Reading::readAccount(Place heading) {
    auto const begin = accountHeading.after(heading);
    // The line end of the ruler may be the first of the heading.
    Place const ruler{begin.at - 1, begin.line - 1};
    auto end = findHeading(textM, ruler, productHeading);
    auto plan = end.at < textM.size() ? productHeading.after(end) : end;
    auto const line = plan.at == textM.size() ? findText(textM.bytes(), planLineStart, ruler.at)
                                              : std::string_view::npos;
    if (line != std::string_view::npos) {
        end = textM.placeOf(line);
        plan = textM.nextLine(end);
    }
    auto const text = textM.part(begin, end.at < begin.at ? begin : end);
    addSection(SectionName::account, text.bytes(), begin);
    keptM.account.read(text, number(begin), keptM.objects.layouts(), isOpen(end));
    auto lines = unplaced();
    readAccountText(keptM.account, factsM.accountMemory, lines);
    if (!factsM.accountMemory.customer.isTold()) {
        factsM.addForeignText(SectionName::account, {}, text.bytes(), number(begin));
    }
    return plan;
}

void FactReader::Reading::readObjects(Place begin, Place end, SectionName section,
                                      SharingOwner* owner) {
    auto lines = unplaced();
    auto const text = textM.part(begin, end);
    auto& memory = owner == nullptr ? factsM.memory : owner->memory;
    bool const isKnown =
        keptM.objects.read(text, number(begin), isOpen(end), {nullptr, nullptr, &memory}, lines);
    if (!isKnown) {
        factsM.addForeignText(section, owner == nullptr ? std::string_view() : owner->id.text,
                              text.bytes(), number(begin));
    }
}

void FactReader::Reading::addUnplaced(Place begin, Place end, char const* reason) {
    Lines lines(textM.part(begin, end), number(begin));
    std::string_view line;
    while (lines.next(line)) {
        if (!line.empty()) {
            unplaced().add(lines.number(), line, reason);
        }
    }
}

void FactReader::Reading::readBalances(Place begin, Place end) {
    begin = begin.at < end.at ? begin : end;
    addSection(SectionName::balances, textM.part(begin, end).bytes(), begin);
    readObjects(begin, end, SectionName::balances, nullptr);
}

void FactReader::Reading::readOwnDiscounts(Place begin, Place end) {
    auto const text = textM.part(begin, end);
    addSection(SectionName::ownDiscounts, text.bytes(), begin);
    std::optional<Place> moduleText;
    for (auto place = begin; place.at < end.at; place = textM.nextLine(place)) {
        auto const line = textM.restOfLine(place);
        if (readItemLine(line, number(place), ownItemLabels, factsM.ownDiscounts)) {
            if (moduleText) {
                addUnplaced(*moduleText, place, "the event's discounts stand here");
                moduleText.reset();
            }
        } else if (!line.empty() && !moduleText) {
            moduleText = place;
        }
    }
    if (moduleText) {
        readObjects(*moduleText, end, SectionName::ownDiscounts, nullptr);
    }
}

// The lines of owners and their items, and between them what the modules wrote.
void FactReader::Reading::readSharing(Place begin) {
    addSection(SectionName::sharing, textM.bytes().substr(begin.at), begin);
    // Lines of the plug-in that follow each other without a module's text between them.
    enum class Group { none, owner, balances, items };
    auto& owners = factsM.owners;
    std::optional<Place> moduleText;
    auto before = Group::none; // of the module's text
    auto const endModuleText = [&](Place end) {
        if (moduleText && !owners.empty()) {
            readObjects(*moduleText, end, SectionName::sharing, &owners.back());
        }
        moduleText.reset();
    };
    for (auto place = begin; place.at < textM.size(); place = textM.nextLine(place)) {
        auto const line = textM.restOfLine(place);
        auto group = Group::none;
        if (line.starts_with("    ")) {
            if (line == ownerHeading) {
                endModuleText(place);
            }
            if (readOwnerRow(line, number(place), owners)) {
                group = Group::owner;
            } else if (!owners.empty() &&
                       readItemLine(line, number(place), sharedItemLabels, owners.back().items)) {
                group = Group::items;
            }
        } else if (line.starts_with(ownerBalancesLabel) && !owners.empty()) {
            group = Group::balances;
        }
        if (group != Group::none) {
            bool const isWithin = before == Group::owner ? group != Group::items : before == group;
            if (moduleText && isWithin) {
                addUnplaced(*moduleText, place, "the owner's rows or items stand here");
                moduleText.reset();
            }
            endModuleText(place);
            before = group;
        } else if (line.empty() && !moduleText) {
            continue;
        } else if (owners.empty() && !line.empty()) {
            unplaced().add(number(place), line, "an owner stands here");
        } else if (!moduleText) {
            moduleText = place;
        }
    }
    endModuleText(textM.end());
}

FactReader::FactReader() : keptM(std::make_unique<Kept>()) {
}

FactReader::~FactReader() = default;

EventFacts const& FactReader::readOverview(EventText const& event) {
    Reading(*keptM, factsM, event).readOverview();
    return factsM;
}

EventFacts const& FactReader::read(EventText const& event) {
    Reading(*keptM, factsM, event).readAll();
    std::stable_sort(factsM.unplaced.begin(), factsM.unplaced.end(),
                     [](auto const& one, auto const& other) { return one.line < other.line; });
    return factsM;
}

} // namespace reader
