#include "facts/FactReader.h"

#include "facts/EventEnd.h"
#include "text/Hash.h"
#include "text/PlugInLines.h"
#include "text/SentencePattern.h"

#include <span>

namespace reader {

namespace {

constexpr std::size_t mostKeptBytes = std::size_t{4} << 20U;

// What the sentences of our own modules say: the pattern, and where its values go in their order.
struct SentenceMeaning {
    std::string_view pattern;
    Fact AccountMemory::*account[4] = {};
    Fact PlanMemory::*plan[4] = {};
    bool AccountMemory::*isCustomerAbsent = nullptr;
    bool PlanMemory::*isPlanAbsent = nullptr;
    AskedList AccountMemory::*list = nullptr;
};

constexpr SentenceMeaning accountSentences[] = {
    {.pattern = "Customer identifier {}: not in memory",
     .account = {&AccountMemory::customer},
     .isCustomerAbsent = &AccountMemory::isCustomerAbsent},
    {.pattern = "Customer identifier {}", .account = {&AccountMemory::customer}},
    {.pattern = "  Account {}: status {}, currency {}, parent account {}",
     .account = {&AccountMemory::id, &AccountMemory::status, &AccountMemory::currency,
                 &AccountMemory::parent}},
    {.pattern = "  Account {}: status {}, currency {}, parent {}",
     .account = {&AccountMemory::id, &AccountMemory::status, &AccountMemory::currency,
                 &AccountMemory::parent}},
    {.pattern = "  Products for service {} and event type {}: {} of {}",
     .list = &AccountMemory::products},
    {.pattern = "  Discounts for service {} and event type {}: {} of {}",
     .list = &AccountMemory::discounts},
};

constexpr SentenceMeaning planSentences[] = {
    {.pattern = "Rate plan {} version {}: not in memory",
     .plan = {&PlanMemory::code, &PlanMemory::version},
     .isPlanAbsent = &PlanMemory::isAbsent},
    {.pattern = "Rate plan {} version {}", .plan = {&PlanMemory::code, &PlanMemory::version}},
    {.pattern = "  Rate plan id {}, model {}, valid from {} to {}",
     .plan = {&PlanMemory::id, &PlanMemory::model, &PlanMemory::validFrom, &PlanMemory::validTo}},
    {.pattern =
         "  Entries, all charged, for service code {}, service class {} and impact category {}: "
         "{} of {}",
     .plan = {&PlanMemory::serviceCode, &PlanMemory::serviceClass, &PlanMemory::impactCategory}},
    // As older hosts write it.
    {.pattern = "  Entries for service code {}, service class {} and impact category {}: {} of {}",
     .plan = {&PlanMemory::serviceCode, &PlanMemory::serviceClass, &PlanMemory::impactCategory}},
};

constexpr std::string_view othersPattern = "  Others: {}";

// Objects of which modules say how many were asked for, then each or its absence.
struct AskedObjects {
    std::string_view noun;
    std::string_view begin; // of an object's first line
};
enum AskedKind : std::uint8_t { prices, groups, discounts, sponsorships, models, nothing };
constexpr AskedObjects askedObjects[] = {
    {"price model", "  price model "},           {"balance group", "  balance group "},
    {"discount object", "    discount object "}, {"sponsorship object", "    sponsorship object "},
    {"discount model", "    discount model "},
};

constexpr std::string_view absence = ": not in memory";

// " 2 price models asked", which a wide first number begins at the line's begin.
AskedKind askedIn(std::string_view line, std::string_view& count) {
    constexpr std::string_view ending = " asked";
    if (!line.ends_with(ending)) {
        return nothing;
    }
    line.remove_suffix(ending.size());
    line.remove_prefix(indentOf(line));
    count = line.substr(0, line.find(' '));
    if (count.empty() || count.find_first_not_of("0123456789") != std::string_view::npos ||
        count.size() == line.size()) {
        return nothing;
    }
    auto noun = line.substr(count.size() + 1);
    noun.remove_suffix(noun.ends_with('s') ? 1 : 0);
    for (std::size_t i = 0; i < std::size(askedObjects); ++i) {
        if (noun == askedObjects[i].noun) {
            return static_cast<AskedKind>(i);
        }
    }
    return nothing;
}

// Lines that only the plug-in writes, at the begin of a line.
constexpr std::string_view sectionLines[] = {"Event Account Info:",
                                             "Used Rating product Info:",
                                             "Used Rate Plan code: ",
                                             "Used Price model codes: ",
                                             "Event's own Discount:",
                                             "Event's owner Balance Information:",
                                             "All DiscountSharing & Sponsorship Information:"};

bool isSectionLine(std::string_view line) {
    if (line.empty() || (line[0] != 'E' && line[0] != 'U' && line[0] != 'A')) {
        return false;
    }
    return std::any_of(std::begin(sectionLines), std::end(sectionLines),
                       [&](auto known) { return line.starts_with(known); });
}

std::string_view withoutLastLine(std::string_view text, LineNumber firstLine,
                                 LineNumber& lastLine) {
    auto const end = text.find_last_not_of('\n');
    if (end == std::string_view::npos) {
        lastLine = firstLine;
        return {};
    }
    auto const begin = text.rfind('\n', end);
    auto const kept = text.substr(0, begin == std::string_view::npos ? 0 : begin + 1);
    lastLine = firstLine + lineEndsIn(kept);
    return kept;
}

} // namespace

// Outlives events: the catalogue's objects, and containers whose memory is used again.
struct FactReader::Kept {
    struct CatalogueObject {
        std::string text;
        LineNumber lines = 0;
        MemoryObject object;
    };

    // By a hash of its text, and the last one by a hash of its first line.
    std::unordered_map<std::uint64_t, std::unique_ptr<CatalogueObject>> catalogue;
    std::unordered_map<std::uint64_t, CatalogueObject const*> byFirstLine;
    std::size_t catalogueBytes = 0;
    std::deque<MemoryObject> objects;
    std::size_t usedObjects = 0;
    std::deque<ModuleText> texts;
    std::size_t usedTexts = 0;

    void beginEvent() {
        usedObjects = 0;
        usedTexts = 0;
        if (catalogueBytes > mostKeptBytes) {
            catalogue.clear();
            byFirstLine.clear();
            catalogueBytes = 0;
        }
    }
    MemoryObject& object() {
        return usedObjects < objects.size() ? objects[usedObjects++]
                                            : (++usedObjects, objects.emplace_back());
    }
    ModuleText& text() {
        return usedTexts < texts.size() ? texts[usedTexts++] : (++usedTexts, texts.emplace_back());
    }
};

// Reads one event.
class FactReader::Reading {
public:
    Reading(Kept& kept, EventFacts& facts, EventText const& event);

    void readOverview();
    void readAll();

private:
    // A place in the event's text, whose lines are counted as it moves on.
    struct Place {
        std::size_t at = 0;
        LineNumber line = 0;
    };

    void moveTo(std::size_t at);
    std::string_view partUpTo(std::size_t end) const {
        return textM.substr(placeM.at, std::min(end, textM.size()) - placeM.at);
    }
    bool isOpenEnded(std::string_view part) const {
        return factsM.cutLine != 0 && part.data() + part.size() == textM.data() + textM.size();
    }
    void reportUnplaced(LineNumber line, std::string_view text, char const* reason);

    void readKey();
    void readEventRows(std::size_t end);
    void readPlanLine();
    void readCodes();
    void addSection(SectionName name, std::string_view text);

    void readReport();
    bool readReportLine(std::string_view line, LineNumber number);
    bool readOwnerRow(std::string_view line, LineNumber number);
    bool readItemLine(std::string_view line, LineNumber number, std::string_view objectStart,
                      std::string_view modelStart, std::vector<UsedItem>& items);

    void readAccount(std::string_view text);
    void readRatePlan(std::string_view text);
    bool readSentence(std::span<SentenceMeaning const> sentences, std::string_view line,
                      LineNumber number);
    void splitCodes(std::string_view codes, LineNumber line);

    void readHeldSections();
    void readBalances(std::size_t end);
    void readOwnDiscounts(std::string_view text);
    void readSharing(std::string_view text);
    void readObjects(std::string_view text, LineNumber line, HeldMemory& memory);
    struct ObjectSize {
        std::size_t bytes;
        LineNumber lines;
    };
    ObjectSize readObject(std::string_view text, LineNumber line, AskedKind kind,
                          HeldMemory& memory);
    Kept::CatalogueObject const* knownObject(std::string_view text, std::string_view firstLine,
                                             AskedKind kind) const;
    void readObjectList(std::string_view text, LineNumber line, AskedKind kind, HeldMemory& memory);
    MemoryObject const& takeApart(std::string_view text, AskedKind kind);
    void compareCodesWithAsked();

    Kept& keptM;
    EventFacts& factsM;
    std::string_view textM;
    Place placeM;
};

FactReader::Reading::Reading(Kept& kept, EventFacts& facts, EventText const& event)
    : keptM(kept), factsM(facts), textM(event.bytes), placeM{0, event.line} {
    keptM.beginEvent();
    auto priceModels = std::move(factsM.priceModels);
    priceModels.clear();
    auto& f = factsM;
    f.kind = event.kind;
    f.bytes = event.bytes;
    f.line = event.line;
    f.number = event.number;
    f.cutLine = 0;
    for (auto* const fact :
         {&f.customer, &f.service, &f.serviceId, &f.serviceType, &f.eventType, &f.chargingStart,
          &f.account, &f.balanceGroup, &f.ratePlan, &f.ratePlanId, &f.ratePlanVersion,
          &f.impactCategory, &f.codes, &f.priceModelsAsked}) {
        *fact = Fact();
    }
    f.hasRecord = false;
    f.priceModels = std::move(priceModels);
    f.ownDiscounts.clear();
    f.owners.clear();
    f.accountMemory = AccountMemory();
    f.planMemory = PlanMemory();
    f.priceModelMemory.clear();
    f.memory.clear();
    f.sections.clear();
    f.unplaced.clear();
}

void FactReader::Reading::moveTo(std::size_t at) {
    placeM.line += lineEndsIn(textM.substr(placeM.at, at - placeM.at));
    placeM.at = at;
}

void FactReader::Reading::reportUnplaced(LineNumber line, std::string_view text,
                                         char const* reason) {
    // The last line of what was cut may be a heading whose ruler is missing.
    auto const end = static_cast<std::size_t>(text.data() + text.size() - textM.data());
    bool const isLast = textM.find_first_not_of('\n', end) == std::string_view::npos;
    if (factsM.cutLine != 0 && isLast) {
        return;
    }
    factsM.unplaced.push_back({line, text, reason});
}

void FactReader::Reading::readOverview() {
    readKey();
    if (factsM.kind == TextKind::report) {
        readReport();
        return;
    }
    readEventRows(std::min(findText(textM, accountHeading, placeM.at), textM.size()));
    readPlanLine();
    readCodes();
}

void FactReader::Reading::readAll() {
    if (isCut({factsM.kind, factsM.bytes, factsM.line, factsM.number, false, false})) {
        textM = withoutLastLine(textM, factsM.line, factsM.cutLine);
    }
    readKey();
    if (factsM.kind == TextKind::report) {
        readReport();
        return;
    }
    auto const account = findText(textM, accountHeading, placeM.at);
    readEventRows(std::min(account, textM.size()));
    if (account != std::string_view::npos) {
        moveTo(account + accountHeading.size());
        auto const end = std::min(findText(textM, productHeading, placeM.at - 1), textM.size());
        readAccount(partUpTo(std::max(end, placeM.at)));
    }
    readPlanLine();
    if (factsM.ratePlan.isTold()) {
        auto const codes = findText(textM, codesLabel, placeM.at);
        readRatePlan(partUpTo(std::min(codes, textM.size())));
    }
    readCodes();
    readHeldSections();
}

// From "Begin" to the end of the key line. The code of a service has no such label within.
void FactReader::Reading::readKey() {
    auto const label = factsM.kind == TextKind::dump ? dumpKeyLabel : reportKeyLabel;
    auto const key = findText(textM, label);
    if (key == std::string_view::npos) {
        moveTo(textM.size());
        return;
    }
    moveTo(key + label.size());
    auto const end = std::min(textM.find('\n', placeM.at), textM.size());
    auto const line = partUpTo(end);
    auto const split = line.rfind(serviceCodeLabel);
    if (split == std::string_view::npos) {
        factsM.customer = {line, placeM.line};
        reportUnplaced(placeM.line, line, "a key line has \"   Service Code = \"");
    } else {
        factsM.customer = {line.substr(0, split), placeM.line};
        factsM.service = {line.substr(split + serviceCodeLabel.size()), placeM.line};
    }
    moveTo(std::min(end + 1, textM.size()));
}

void FactReader::Reading::readEventRows(std::size_t end) {
    Fact* const rows[] = {&factsM.serviceId,     &factsM.serviceType, &factsM.eventType,
                          &factsM.chargingStart, &factsM.account,     &factsM.balanceGroup};
    std::size_t expected = 0;
    Lines lines(partUpTo(end), placeM.line);
    std::string_view line;
    while (lines.next(line)) {
        if (expected < eventRowLabels.size() && line.starts_with(eventRowLabels[expected])) {
            *rows[expected] = {line.substr(eventRowLabels[expected].size()), lines.number()};
            factsM.hasRecord = true;
            ++expected;
        } else if (!line.empty()) {
            reportUnplaced(lines.number(), line, "the event's rows stand here");
        }
    }
    moveTo(end);
}

void FactReader::Reading::readPlanLine() {
    auto const heading = findText(textM, productHeading, placeM.at > 0 ? placeM.at - 1 : 0);
    if (heading == std::string_view::npos) {
        return;
    }
    moveTo(heading + productHeading.size());
    auto const end = std::min(textM.find('\n', placeM.at), textM.size());
    auto const line = partUpTo(end);
    Captures values;
    if (matches("Used Rate Plan code: {} , Intern RatePlan Id: {} , Intern RatePlan Version: {} , "
                "Impact Catagory: {}",
                line, values)) {
        Fact* const facts[] = {&factsM.ratePlan, &factsM.ratePlanId, &factsM.ratePlanVersion,
                               &factsM.impactCategory};
        for (std::size_t i = 0; i < std::size(facts); ++i) {
            *facts[i] = {values[i], placeM.line};
        }
    } else if (!line.empty()) {
        reportUnplaced(placeM.line, line, "the rate plan that was used stands here");
    }
    moveTo(std::min(end + 1, textM.size()));
}

// A code may hold a line end: the codes go to the ruler.
void FactReader::Reading::readCodes() {
    auto const label = findText(textM, codesLabel, placeM.at);
    if (label == std::string_view::npos) {
        return;
    }
    moveTo(label + codesLabel.size());
    auto const ruler = findText(textM, codesRuler, placeM.at);
    auto const end = std::min({ruler, textM.find('\n', placeM.at), textM.size()});
    auto const codes = partUpTo(end);
    if (ruler != std::string_view::npos && ruler != end) {
        reportUnplaced(placeM.line, partUpTo(ruler), "price model codes stand in one line");
    }
    splitCodes(codes, placeM.line);
    moveTo(ruler == std::string_view::npos ? end : ruler + codesRuler.size());
}

void FactReader::Reading::splitCodes(std::string_view codes, LineNumber line) {
    factsM.codes = {codes, line};
    while (!codes.empty()) {
        auto const gap = codes.find(codesGap);
        factsM.priceModels.push_back({codes.substr(0, gap), line});
        codes.remove_prefix(gap == std::string_view::npos ? codes.size() : gap + codesGap.size());
    }
}

void FactReader::Reading::addSection(SectionName name, std::string_view text) {
    factsM.sections.push_back({name, text, placeM.line});
}

// ---- The report --------------------------------------------------------------------------------

void FactReader::Reading::readReport() {
    auto const part = partUpTo(textM.size());
    auto const ruler = part.rfind(reportRuler);
    Lines lines(part, placeM.line);
    std::string_view line;
    while (lines.next(line)) {
        bool const isEnd = lines.begin() == ruler && line == reportRuler;
        if (!line.empty() && !isEnd && !readReportLine(line, lines.number())) {
            reportUnplaced(lines.number(), line, "a report has no such line");
        }
    }
}

bool FactReader::Reading::readReportLine(std::string_view line, LineNumber number) {
    Fact* const rows[] = {&factsM.serviceId,     &factsM.serviceType, &factsM.eventType,
                          &factsM.chargingStart, &factsM.account,     &factsM.balanceGroup};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        if (!rows[i]->isTold() && line.starts_with(eventRowLabels[i])) {
            *rows[i] = {line.substr(eventRowLabels[i].size()), number};
            factsM.hasRecord = true;
            return true;
        }
    }
    if (line.starts_with(reportPlanLabel) && !factsM.ratePlan.isTold()) {
        factsM.ratePlan = {line.substr(reportPlanLabel.size()), number};
        return true;
    }
    if (line.starts_with(reportCodesLabel) && !factsM.codes.isTold()) {
        splitCodes(line.substr(reportCodesLabel.size()), number);
        return true;
    }
    return line == reportProductHeading || line == reportOwnHeading ||
           line == reportSharingHeading || readOwnerRow(line, number) ||
           (factsM.owners.empty() &&
            readItemLine(line, number, objectLabel, modelLabel, factsM.ownDiscounts)) ||
           (!factsM.owners.empty() && readItemLine(line, number, sharedObjectLabel,
                                                   sharedModelLabel, factsM.owners.back().items));
}

bool FactReader::Reading::readOwnerRow(std::string_view line, LineNumber number) {
    if (line == ownerHeading) {
        factsM.owners.emplace_back();
        return true;
    }
    if (factsM.owners.empty()) {
        return false;
    }
    auto& owner = factsM.owners.back();
    Fact* const rows[] = {&owner.account, &owner.id, &owner.type, &owner.balanceGroup};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        if (!rows[i]->isTold() && line.starts_with(ownerRowLabels[i])) {
            *rows[i] = {line.substr(ownerRowLabels[i].size()), number};
            return true;
        }
    }
    return false;
}

bool FactReader::Reading::readItemLine(std::string_view line, LineNumber number,
                                       std::string_view objectStart, std::string_view modelStart,
                                       std::vector<UsedItem>& items) {
    if (line.starts_with(objectStart)) {
        items.push_back({{line.substr(objectStart.size()), number}, {}});
        return true;
    }
    if (line.starts_with(modelStart) && !items.empty() && !items.back().model.isTold()) {
        items.back().model = {line.substr(modelStart.size()), number};
        return true;
    }
    return false;
}

// ---- Account and rate plan ---------------------------------------------------------------------

void FactReader::Reading::readAccount(std::string_view text) {
    addSection(SectionName::account, text);
    auto& content = keptM.text();
    content.read(text, placeM.line, isOpenEnded(text));
    auto& memory = factsM.accountMemory;
    AskedList* list = nullptr;
    for (auto const& item : content.items()) {
        if (item.table) {
            auto const& table = content.tables()[*item.table];
            if (table.title.starts_with("  Services")) {
                memory.services = &table;
            } else if (list != nullptr && list->table == nullptr) {
                list->table = &table;
            }
            continue;
        }
        Captures values;
        if (list != nullptr && matches(othersPattern, item.text, values)) {
            list->others = {values[0], item.line};
        } else if (readSentence(accountSentences, item.text, item.line)) {
            list = memory.discounts.service.isTold()  ? &memory.discounts
                   : memory.products.service.isTold() ? &memory.products
                                                      : nullptr;
        } else if (isSectionLine(item.text)) {
            reportUnplaced(item.line, item.text, "the account module's text stands here");
        }
    }
}

void FactReader::Reading::readRatePlan(std::string_view text) {
    addSection(SectionName::ratePlan, text);
    auto& content = keptM.text();
    content.read(text, placeM.line, isOpenEnded(text));
    for (auto const& item : content.items()) {
        if (item.table) {
            factsM.planMemory.entries =
                factsM.planMemory.serviceCode.isTold() ? &content.tables()[*item.table] : nullptr;
        } else if (!readSentence(planSentences, item.text, item.line) && isSectionLine(item.text)) {
            reportUnplaced(item.line, item.text, "the rate plan module's text stands here");
        }
    }
}

bool FactReader::Reading::readSentence(std::span<SentenceMeaning const> sentences,
                                       std::string_view line, LineNumber number) {
    Captures values;
    for (auto const& sentence : sentences) {
        if (!matches(sentence.pattern, line, values)) {
            continue;
        }
        for (std::size_t i = 0; i < std::size(sentence.account); ++i) {
            if (sentence.account[i] != nullptr) {
                factsM.accountMemory.*sentence.account[i] = {values[i], number};
            }
            if (sentence.plan[i] != nullptr) {
                factsM.planMemory.*sentence.plan[i] = {values[i], number};
            }
        }
        if (sentence.isCustomerAbsent != nullptr) {
            factsM.accountMemory.*sentence.isCustomerAbsent = true;
        }
        if (sentence.isPlanAbsent != nullptr) {
            factsM.planMemory.*sentence.isPlanAbsent = true;
        }
        if (sentence.list != nullptr) {
            auto& list = factsM.accountMemory.*sentence.list;
            Fact* const facts[] = {&list.service, &list.eventType, &list.found, &list.owned};
            for (std::size_t i = 0; i < std::size(facts); ++i) {
                *facts[i] = {values[i], number};
            }
        }
        return true;
    }
    return false;
}

// ---- Price models, balances and discounts ------------------------------------------------------

void FactReader::Reading::readHeldSections() {
    if (!factsM.codes.isTold()) {
        return;
    }
    auto const search = placeM.at - 1;
    auto const sharing = std::min(findText(textM, sharingHeading, search), textM.size());
    auto const upToSharing = textM.substr(0, sharing);
    auto const own = std::min(findText(upToSharing, ownDiscountsHeading, search), sharing);
    auto const balances = std::min(findText(textM.substr(0, own), balancesHeading, search), own);
    auto const priceText = partUpTo(std::max(balances, placeM.at));
    addSection(SectionName::priceModels, priceText);
    readObjects(priceText, placeM.line, factsM.memory);
    compareCodesWithAsked();
    if (balances < own) {
        moveTo(balances + balancesHeading.size());
        readBalances(own);
    }
    if (own < sharing) {
        moveTo(own + ownDiscountsHeading.size());
        readOwnDiscounts(partUpTo(sharing));
    }
    if (sharing < textM.size()) {
        moveTo(sharing + sharingHeading.size());
        readSharing(partUpTo(textM.size()));
    }
}

void FactReader::Reading::compareCodesWithAsked() {
    auto const& asked = factsM.priceModelsAsked;
    if (asked.isTold() && asked.text != std::to_string(factsM.priceModels.size())) {
        reportUnplaced(asked.line, asked.text,
                       "the codes are ambiguous: the price module was asked for another number of "
                       "them than stand above");
        factsM.priceModels.clear();
    }
}

void FactReader::Reading::readBalances(std::size_t end) {
    auto const lineEnd = std::min(textM.find('\n', placeM.at), end);
    moveTo(std::min(lineEnd + 1, textM.size()));
    auto const text = partUpTo(std::max(end, placeM.at));
    addSection(SectionName::balances, text);
    readObjects(text, placeM.line, factsM.memory);
}

void FactReader::Reading::readOwnDiscounts(std::string_view text) {
    addSection(SectionName::ownDiscounts, text);
    Lines lines(text, placeM.line);
    std::string_view line;
    while (lines.next(line)) {
        if (!line.empty() &&
            !readItemLine(line, lines.number(), objectLabel, modelLabel, factsM.ownDiscounts)) {
            readObjects(text.substr(lines.begin()), lines.number(), factsM.memory);
            return;
        }
    }
}

// The lines of owners and their items, and between them what the modules wrote.
void FactReader::Reading::readSharing(std::string_view text) {
    addSection(SectionName::sharing, text);
    Lines lines(text, placeM.line);
    std::string_view line;
    std::size_t moduleBegin = text.size();
    LineNumber moduleLine = 0;
    auto const endModuleText = [&](std::size_t end) {
        if (moduleBegin < end && !factsM.owners.empty()) {
            readObjects(text.substr(moduleBegin, end - moduleBegin), moduleLine,
                        factsM.owners.back().memory);
        }
        moduleBegin = text.size();
    };
    while (lines.next(line)) {
        auto const at = lines.begin();
        bool const mayBePlugIns = line.starts_with("    ") || line.starts_with(ownerBalancesLabel);
        bool isPlugIns = line.empty() && moduleBegin == text.size();
        if (mayBePlugIns) {
            if (line == ownerHeading) {
                endModuleText(at);
            }
            isPlugIns = (line.starts_with(ownerBalancesLabel) && !factsM.owners.empty()) ||
                        readOwnerRow(line, lines.number()) ||
                        (!factsM.owners.empty() &&
                         readItemLine(line, lines.number(), sharedObjectLabel, sharedModelLabel,
                                      factsM.owners.back().items));
        }
        if (isPlugIns) {
            endModuleText(at);
        } else if (factsM.owners.empty() && !line.empty()) {
            reportUnplaced(lines.number(), line, "an owner stands here");
        } else if (moduleBegin == text.size()) {
            moduleBegin = at;
            moduleLine = lines.number();
        }
    }
    endModuleText(text.size());
}

void FactReader::Reading::readObjects(std::string_view text, LineNumber firstLine,
                                      HeldMemory& memory) {
    auto asked = nothing;
    Lines lines(text, firstLine);
    std::string_view line;
    std::size_t listBegin = text.size();
    LineNumber listLine = 0;
    auto const endList = [&](std::size_t end) {
        if (listBegin < end) {
            readObjectList(text.substr(listBegin, end - listBegin), listLine, asked, memory);
        }
        listBegin = text.size();
    };
    while (lines.next(line)) {
        if (line.empty()) {
            continue;
        }
        std::string_view count;
        auto const askedNow =
            line[std::min<std::size_t>(1, line.size() - 1)] == ' ' && line[0] == ' '
                ? nothing
                : askedIn(line, count);
        if (askedNow != nothing) {
            endList(lines.begin());
            asked = askedNow;
            if (asked == prices) {
                factsM.priceModelsAsked = {count, lines.number()};
            } else if (asked == discounts || asked == sponsorships) {
                listBegin = lines.end();
                listLine = lines.number() + 1;
            }
        } else if (asked != nothing && asked != discounts && asked != sponsorships &&
                   line.starts_with(askedObjects[asked].begin)) {
            auto const size = readObject(text.substr(lines.begin()), lines.number(), asked, memory);
            lines.skipTo(lines.begin() + size.bytes, size.lines);
        } else if (isSectionLine(line)) {
            reportUnplaced(lines.number(), line, "a module's text stands here");
        }
    }
    endList(text.size());
}

// The kept object whose text stands here, when the text ends there as the object does.
FactReader::Kept::CatalogueObject const*
FactReader::Reading::knownObject(std::string_view text, std::string_view firstLine,
                                 AskedKind kind) const {
    auto const found = keptM.byFirstLine.find(hashOf(firstLine, kind));
    if (found == keptM.byFirstLine.end() || !text.starts_with(found->second->text)) {
        return nullptr;
    }
    auto const rest = text.substr(found->second->text.size());
    return !rest.empty() && indentOf(rest) <= indentOf(firstLine) ? found->second : nullptr;
}

// Returns the size of the object's text.
FactReader::Reading::ObjectSize FactReader::Reading::readObject(std::string_view text,
                                                                LineNumber line, AskedKind kind,
                                                                HeldMemory& memory) {
    auto& objects = kind == prices   ? factsM.priceModelMemory
                    : kind == groups ? memory.balanceGroups
                                     : memory.discountModels;
    Lines lines(text, line);
    std::string_view next;
    lines.next(next);
    if (auto const* const known = kind == groups ? nullptr : knownObject(text, next, kind)) {
        objects.push_back({&known->object, line});
        return {known->text.size(), known->lines};
    }
    auto const indent = indentOf(next);
    auto end = lines.end();
    LineNumber count = 1;
    while (lines.next(next) && indentOf(next) > indent) {
        end = lines.end();
        ++count;
    }
    objects.push_back({&takeApart(text.substr(0, end), kind), line});
    return {end, count};
}

MemoryObject const& FactReader::Reading::takeApart(std::string_view text, AskedKind kind) {
    bool const isOpen = isOpenEnded(text);
    auto const fill = [&](MemoryObject& object, std::string_view own) {
        auto const lineEnd = std::min(own.find('\n'), own.size());
        auto const first = own.substr(0, lineEnd).substr(askedObjects[kind].begin.size());
        object.text = own;
        object.content.read(own.substr(std::min(lineEnd + 1, own.size())), 1, isOpen);
        object.isAbsent = first.ends_with(absence) && object.content.items().empty();
        auto const separator = kind == groups && !object.isAbsent ? std::string_view(" of account ")
                                                                  : std::string_view(": ");
        auto const split = std::min(
            object.isAbsent ? first.size() - absence.size() : first.find(separator), first.size());
        object.name = first.substr(0, split);
        object.about = first.substr(std::min(split + separator.size(), first.size()));
    };
    if (kind == groups || isOpen) {
        auto& object = keptM.object();
        fill(object, text);
        return object;
    }
    auto& kept = keptM.catalogue[hashOf(text, kind)];
    if (kept == nullptr) {
        kept = std::make_unique<Kept::CatalogueObject>();
        kept->text = text;
        kept->lines = lineEndsIn(text);
        keptM.catalogueBytes += text.size() * 3;
        fill(kept->object, kept->text);
        keptM.byFirstLine[hashOf(text.substr(0, text.find('\n')), kind)] = kept.get();
    } else if (kept->text != text) {
        auto& object = keptM.object();
        fill(object, text);
        return object;
    }
    return kept->object;
}

void FactReader::Reading::readObjectList(std::string_view text, LineNumber line, AskedKind kind,
                                         HeldMemory& memory) {
    auto& content = keptM.text();
    content.read(text, line, isOpenEnded(text));
    auto& list = kind == discounts ? memory.discounts : memory.sponsorships;
    auto const begin = askedObjects[kind].begin;
    for (auto const& item : content.items()) {
        if (item.table) {
            list.table = &content.tables()[*item.table];
        } else if (item.text.starts_with(begin) && item.text.ends_with(absence) &&
                   item.text.size() >= begin.size() + absence.size()) {
            list.absent.push_back(
                {item.text.substr(begin.size(), item.text.size() - begin.size() - absence.size()),
                 item.line});
        }
    }
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
    return factsM;
}

} // namespace reader
