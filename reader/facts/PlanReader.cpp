#include "facts/PlanReader.h"

#include "facts/ModuleSentences.h"
#include "facts/PlugInItems.h"
#include "text/Hash.h"
#include "text/SentencePattern.h"

namespace reader {

namespace {

constexpr std::size_t mostPlanBytes = std::size_t{4} << 20U;
constexpr std::size_t mostOfOneLine = 16; // that are kept
constexpr Heading followingHeadings[] = {balancesHeading, ownDiscountsHeading, sharingHeading};

constexpr SentencePattern planPattern =
    "Used Rate Plan code: {} , Intern RatePlan Id: {} , Intern RatePlan Version: {} , "
    "Impact Catagory: {}";
constexpr Fact EventFacts::*planFacts[] = {&EventFacts::ratePlan, &EventFacts::ratePlanId,
                                           &EventFacts::ratePlanVersion,
                                           &EventFacts::impactCategory};

bool readPlanLine(std::string_view line, LineNumber number, EventFacts& facts) {
    Captures values;
    if (!planPattern.matches(line, values)) {
        return false;
    }
    for (std::size_t i = 0; i < std::size(planFacts); ++i) {
        facts.*planFacts[i] = {values[i], number};
    }
    return true;
}

// Where the label of the codes begins, which may follow a module's text within a line; the end of
// the text when there is none.
Place findCodes(LinedText const& text, Place from) {
    auto const label = findText(text.bytes(), codesLabel, from.at);
    return label == std::string_view::npos ? text.end() : text.placeOf(label);
}

// Where the codes begin after their label.
Place afterLabel(Place label) {
    return {label.at + codesLabel.size(), label.line};
}

// Where the ruler below the codes begins, with the end of their line. The end of their line when
// there is no ruler.
Place findRuler(LinedText const& text, Place codes) {
    auto const ruler = findText(text.bytes(), codesRuler, codes.at);
    return ruler == std::string_view::npos ? Place{text.endOf(codes.line), codes.line}
                                           : text.placeOf(ruler);
}

Place afterRuler(LinedText const& text, Place ruler) {
    bool const isThere = text.bytes().substr(ruler.at).starts_with(codesRuler);
    return isThere ? Place{ruler.at + codesRuler.size(), ruler.line + 2} : ruler;
}

Place endOfPlan(LinedText const& text, Place begin) {
    auto const label = findCodes(text, text.nextLine(begin));
    if (label.at == text.size()) {
        return label;
    }
    // The line end of the ruler may be the first of a heading.
    auto const prices = afterRuler(text, findRuler(text, afterLabel(label)));
    bool const isLineBegin = text.bytes()[prices.at - 1] == '\n';
    return findHeading(text, isLineBegin ? Place{prices.at - 1, prices.line - 1} : prices,
                       followingHeadings);
}

template <class Owner, std::size_t size>
void showFacts(Fact Owner::*const (&members)[size], Owner const& from, Owner& to,
               LineNumber linesBefore) {
    for (auto const member : members) {
        auto const& fact = from.*member;
        to.*member = {fact.text, fact.isTold() ? fact.line + linesBefore : 0};
    }
}

} // namespace

// The text of a rate plan and its price models, and what was read of it. Lines count from its
// first, which is 1.
struct PlanReader::Plan {
    std::string text; // when it is kept
    std::size_t lines = 0;
    ModuleText content;
    EventFacts facts;

    void read(LinedText const& from, bool isOpen, ObjectReader& objects);
    void readModuleText(LinedText const& from, LineNumber number, bool isOpen,
                        TableLayouts& layouts, UnplacedLines& unplaced);
    void show(EventFacts& shown, LineNumber linesBefore) const;
};

void PlanReader::Plan::read(LinedText const& from, bool isOpen, ObjectReader& objects) {
    UnplacedLines unplaced(from.bytes(), isOpen, facts.unplaced);
    auto const line = from.restOfLine({});
    if (!readPlanLine(line, 1, facts) && !line.empty()) {
        unplaced.add(1, line, "the rate plan that was used stands here");
    }
    auto const begin = from.nextLine({});
    auto const label = findCodes(from, begin);
    if (facts.ratePlan.isTold()) {
        readModuleText(from.part(begin, label), begin.line + 1, isOpen && label.at == from.size(),
                       objects.layouts(), unplaced);
    }
    if (label.at == from.size()) {
        return;
    }
    auto const codes = afterLabel(label);
    auto const ruler = findRuler(from, codes);
    splitCodes(from.restOfLine(codes), codes.line + 1, facts);
    bool const areInOneLine = ruler.line == codes.line;
    if (!areInOneLine) {
        unplaced.add(codes.line + 1, from.part(codes, ruler).bytes(),
                     "price model codes stand in one line");
    }
    auto const prices = afterRuler(from, ruler);
    auto const priceText = from.part(prices, from.end());
    facts.sections.push_back({SectionName::priceModels, priceText.bytes(), prices.line + 1});
    if (!objects.read(priceText, prices.line + 1, isOpen,
                      {&facts.priceModelMemory, &facts.priceModelsAsked, nullptr}, unplaced)) {
        facts.addForeignText(SectionName::priceModels, {}, priceText.bytes(), prices.line + 1);
    }
    auto const& asked = facts.priceModelsAsked;
    if (!areInOneLine) {
        facts.priceModels.clear();
    } else if (asked.isTold() && asked.text != std::to_string(facts.priceModels.size())) {
        unplaced.add(asked.line, asked.text,
                     "the codes are ambiguous: the price module was asked for another number of "
                     "them than stand above");
        facts.priceModels.clear();
    }
}

void PlanReader::Plan::readModuleText(LinedText const& from, LineNumber number, bool isOpen,
                                      TableLayouts& layouts, UnplacedLines& unplaced) {
    facts.sections.push_back({SectionName::ratePlan, from.bytes(), number});
    content.read(from, number, layouts, isOpen);
    readRatePlanText(content, facts.planMemory, unplaced);
    if (!facts.planMemory.code.isTold()) {
        facts.addForeignText(SectionName::ratePlan, {}, from.bytes(), number);
    }
}

void PlanReader::Plan::show(EventFacts& shown, LineNumber linesBefore) const {
    constexpr Fact EventFacts::*ownFacts[] = {
        &EventFacts::ratePlan,       &EventFacts::ratePlanId, &EventFacts::ratePlanVersion,
        &EventFacts::impactCategory, &EventFacts::codes,      &EventFacts::priceModelsAsked};
    constexpr Fact PlanMemory::*memoryFacts[] = {
        &PlanMemory::code,        &PlanMemory::version,      &PlanMemory::id,
        &PlanMemory::model,       &PlanMemory::validFrom,    &PlanMemory::validTo,
        &PlanMemory::serviceCode, &PlanMemory::serviceClass, &PlanMemory::impactCategory};
    showFacts(ownFacts, facts, shown, linesBefore);
    showFacts(memoryFacts, facts.planMemory, shown.planMemory, linesBefore);
    shown.planMemory.isAbsent = facts.planMemory.isAbsent;
    shown.planMemory.entries = facts.planMemory.entries;
    shown.planMemory.linesBefore = linesBefore;
    for (auto const& model : facts.priceModels) {
        shown.priceModels.push_back({model.text, model.line + linesBefore});
    }
    for (auto const& object : facts.priceModelMemory) {
        shown.priceModelMemory.push_back({object.object, object.line + linesBefore});
    }
    for (auto const& section : facts.sections) {
        shown.sections.push_back({section.name, section.text, section.line + linesBefore});
    }
    for (auto const& foreign : facts.foreignTexts) {
        shown.foreignTexts.push_back(
            {foreign.section, foreign.owner, foreign.text, foreign.line + linesBefore});
    }
    for (auto const& unplaced : facts.unplaced) {
        shown.unplaced.push_back({unplaced.line + linesBefore, unplaced.text, unplaced.reason});
    }
}

PlanReader::PlanReader(ObjectReader& objects) : objectsM(objects) {
}

PlanReader::~PlanReader() = default;

void PlanReader::clear() {
    keptM.clear();
    keptBytesM = 0;
}

void PlanReader::readOverview(LinedText const& text, Place begin, LineNumber number,
                              EventFacts& facts) {
    readPlanLine(text.restOfLine(begin), number, facts);
    auto const label = findCodes(text, text.nextLine(begin));
    if (label.at != text.size()) {
        auto const codes = afterLabel(label);
        splitCodes(text.restOfLine(codes), number + codes.line - begin.line, facts);
    }
}

Place PlanReader::read(LinedText const& text, Place begin, LineNumber number, bool isOpen,
                       EventFacts& facts) {
    if (keptBytesM > mostPlanBytes) {
        clear();
    }
    auto& sameLine = keptM[hashOf(text.restOfLine(begin))];
    for (auto const& plan : sameLine) {
        Place const end{begin.at + plan->text.size(), begin.line + plan->lines};
        if (text.bytes().substr(begin.at).starts_with(plan->text) &&
            std::any_of(std::begin(followingHeadings), std::end(followingHeadings),
                        [&](auto const& heading) { return isHeadingAt(text, end, heading); })) {
            plan->show(facts, number - 1);
            return end;
        }
    }
    auto const end = endOfPlan(text, begin);
    auto const part = text.part(begin, end);
    auto plan = std::make_unique<Plan>();
    bool const isKept = end.at < text.size() && sameLine.size() < mostOfOneLine;
    if (isKept) {
        plan->text = part.bytes();
        plan->lines = part.lineEnds();
        plan->read(LineIndex(plan->text), false, objectsM);
        constexpr std::size_t takenApart = 3; // what it takes besides its text, as many times
        keptBytesM += (1 + takenApart) * plan->text.size();
    } else {
        plan->read(part, isOpen, objectsM);
    }
    plan->show(facts, number - 1);
    if (isKept) {
        sameLine.push_back(std::move(plan));
    } else {
        notKeptM = std::move(plan);
    }
    return end;
}

} // namespace reader
