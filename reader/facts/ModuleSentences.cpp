#include "facts/ModuleSentences.h"

#include "text/SentencePattern.h"

namespace reader {

namespace {

// The pattern of a sentence, and where its values go in their order.
template <class Memory>
struct SentenceMeaning {
    SentencePattern pattern;
    Fact Memory::*facts[4] = {};
    bool Memory::*isAbsent = nullptr;
};

constexpr SentenceMeaning<AccountMemory> accountSentences[] = {
    {"Customer identifier {}: not in memory",
     {&AccountMemory::customer},
     &AccountMemory::isCustomerAbsent},
    {"Customer identifier {}", {&AccountMemory::customer}},
    {"  Account {}: status {}, currency {}, parent account {}",
     {&AccountMemory::id, &AccountMemory::status, &AccountMemory::currency,
      &AccountMemory::parent}},
    {"  Account {}: status {}, currency {}, parent {}",
     {&AccountMemory::id, &AccountMemory::status, &AccountMemory::currency,
      &AccountMemory::parent}},
    {"  Services{}"},
    {"    Service {}: not in memory"},
    {"    Service {}: the event has it as type {}"},
};

constexpr SentenceMeaning<AskedList> productSentences[] = {
    {"  Products for service {} and event type {}: {} of {}",
     {&AskedList::service, &AskedList::eventType, &AskedList::found, &AskedList::owned}},
};
constexpr SentenceMeaning<AskedList> discountSentences[] = {
    {"  Discounts for service {} and event type {}: {} of {}",
     {&AskedList::service, &AskedList::eventType, &AskedList::found, &AskedList::owned}},
};
constexpr SentencePattern othersPattern = "  Others: {}";

constexpr SentenceMeaning<PlanMemory> planSentences[] = {
    {"Rate plan {} version {}: not in memory",
     {&PlanMemory::code, &PlanMemory::version},
     &PlanMemory::isAbsent},
    {"Rate plan {} version {}", {&PlanMemory::code, &PlanMemory::version}},
    {"  Rate plan id {}, model {}, valid from {} to {}",
     {&PlanMemory::id, &PlanMemory::model, &PlanMemory::validFrom, &PlanMemory::validTo}},
    {"  Entries, all charged, for service code {}, service class {} and impact category {}: "
     "{} of {}",
     {&PlanMemory::serviceCode, &PlanMemory::serviceClass, &PlanMemory::impactCategory}},
    // As older hosts write it.
    {"  Entries for service code {}, service class {} and impact category {}: {} of {}",
     {&PlanMemory::serviceCode, &PlanMemory::serviceClass, &PlanMemory::impactCategory}},
    {"  Versions in memory: {}"},
};

template <class Memory, std::size_t size>
bool readSentence(SentenceMeaning<Memory> const (&sentences)[size], ModuleText::Item const& line,
                  Memory& memory) {
    Captures values;
    for (auto const& sentence : sentences) {
        if (!sentence.pattern.matches(line.text, values)) {
            continue;
        }
        for (std::size_t i = 0; i < std::size(sentence.facts); ++i) {
            if (sentence.facts[i] != nullptr) {
                memory.*sentence.facts[i] = {values[i], line.line};
            }
        }
        if (sentence.isAbsent != nullptr) {
            memory.*sentence.isAbsent = true;
        }
        return true;
    }
    return false;
}

// Of a text that is known by its first sentence, every line has to be. In another module's text
// only the plug-in's lines are out of place.
void addUnplaced(std::vector<ModuleText::Item> const& lines, bool isKnownText, char const* reason,
                 UnplacedLines& unplaced) {
    for (auto const& line : lines) {
        if (isKnownText || isSectionLine(line.text)) {
            unplaced.add(line.line, line.text, reason);
        }
    }
}

} // namespace

void readAccountText(ModuleText const& text, AccountMemory& memory, UnplacedLines& unplaced) {
    AskedList* list = nullptr; // whose table and other lines follow
    Captures values;
    std::vector<ModuleText::Item> unknown;
    for (auto const& item : text.items()) {
        if (item.table) {
            auto const& table = text.tables()[*item.table];
            if (table.title.starts_with("  Services")) {
                memory.services = &table;
            } else if (list != nullptr && list->table == nullptr) {
                list->table = &table;
            }
        } else if (list != nullptr && othersPattern.matches(item.text, values)) {
            list->others = {values[0], item.line};
        } else if (readSentence(productSentences, item, memory.products)) {
            list = &memory.products;
        } else if (readSentence(discountSentences, item, memory.discounts)) {
            list = &memory.discounts;
        } else if (!readSentence(accountSentences, item, memory)) {
            unknown.push_back(item);
        }
    }
    addUnplaced(unknown, memory.customer.isTold(), "the account module's text stands here",
                unplaced);
}

void readRatePlanText(ModuleText const& text, PlanMemory& memory, UnplacedLines& unplaced) {
    std::vector<ModuleText::Item> unknown;
    for (auto const& item : text.items()) {
        if (item.table) {
            memory.entries = memory.serviceCode.isTold() ? &text.tables()[*item.table] : nullptr;
        } else if (!readSentence(planSentences, item, memory)) {
            unknown.push_back(item);
        }
    }
    addUnplaced(unknown, memory.code.isTold(), "the rate plan module's text stands here", unplaced);
}

} // namespace reader
