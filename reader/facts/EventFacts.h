// What one event of a report or dump says: the event's own facts, and what the data modules hold
// for it, each fact with its text as it stands and its line. Findings, the comparison of dumps,
// JSON and the page all start from here.
//
// Texts point into the event's bytes, or into objects that the FactReader keeps; both are valid
// until it reads the next event.
#pragma once

#include "text/EventReader.h"
#include "text/ModuleText.h"

#include <deque>
#include <vector>

namespace reader {

struct Fact {
    std::string_view text;
    LineNumber line = 0; // 0: the event does not say it

    bool isTold() const noexcept { return line != 0; }
};

// A discount or sponsorship that the event used.
struct UsedItem {
    Fact object;
    Fact model;
};

// What a module holds for one identifier: a price model, discount model or balance group. Lines
// count from the object's first, which is 0: equal texts are read once and shown by many events.
struct MemoryObject {
    std::string_view name;
    // What follows the name: a description, or the account of a balance group.
    std::string_view about;
    bool isAbsent = false;
    std::string_view text;
    ModuleText content;
    std::vector<LineNumber> unplaced; // lines that its module does not write

    // By the begin of its title; null when it isn't there.
    Table const* table(std::string_view title) const { return content.tableOf(title); }
};

struct ShownObject {
    MemoryObject const* object = nullptr;
    LineNumber line = 0; // of the object's first line

    LineNumber lineOf(Table const& table, std::size_t row) const {
        return line + table.lineOf(row);
    }
};

// "Products for service 3330 and event type /event/message: 1 of 3", and what is listed.
struct AskedList {
    Fact service;
    Fact eventType;
    Fact found;
    Fact owned;
    Table const* table = nullptr;
    // The others that the account owns, "ID MODEL", where the module tells them.
    Fact others;
};

struct AccountMemory {
    Fact customer;
    bool isCustomerAbsent = false;
    Fact id;
    Fact status;
    Fact currency;
    Fact parent; // "none", or a number
    Table const* services = nullptr;
    AskedList products;
    AskedList discounts;
};

struct PlanMemory {
    Fact code;
    Fact version;
    bool isAbsent = false;
    Fact id;
    Fact model;
    Fact validFrom;
    Fact validTo;
    Fact serviceCode; // asked for, as are the next two
    Fact serviceClass;
    Fact impactCategory;
    Table const* entries = nullptr; // those that match
    // The table's lines are counted from here: equal texts are read once and shown by many events.
    LineNumber linesBefore = 0;
};

// A list of discount or sponsorship objects.
struct ObjectList {
    Table const* table = nullptr;
    std::vector<Fact> absent; // numbers
};

// What the balance and discount modules hold for the event, or for one owner of shared discounts.
struct HeldMemory {
    std::vector<ShownObject> balanceGroups;
    ObjectList discounts;
    ObjectList sponsorships;
    std::vector<ShownObject> discountModels;

    void clear();
};

struct SharingOwner {
    Fact account;
    Fact id;
    Fact type;
    Fact balanceGroup;
    std::vector<UsedItem> items;
    HeldMemory memory;
};

enum class SectionName { account, ratePlan, priceModels, balances, ownDiscounts, sharing };
inline constexpr std::size_t sectionCount = 6;
inline constexpr std::string_view sectionNames[sectionCount] = {
    "account", "ratePlan", "priceModels", "balances", "ownDiscounts", "sharing"};

// What a module wrote into a section; of the sharing section, everything.
struct SectionText {
    SectionName name = SectionName::account;
    std::string_view text;
    LineNumber line = 0;
};

// A text of a module that nobody here knows.
struct ForeignText {
    SectionName section = SectionName::account;
    std::string_view owner; // whose number stands above it, in the sharing section
    std::string_view text;
    LineNumber line = 0;
};

// Lines that fit nowhere, and what would have fitted.
struct Unplaced {
    LineNumber line = 0;
    std::string_view text;
    char const* reason = "";
};

struct EventFacts {
    EventFacts() = default;
    EventFacts(EventFacts const&) = delete;
    EventFacts& operator=(EventFacts const&) = delete;

    TextKind kind = TextKind::dump;
    std::string_view bytes; // all of it
    LineNumber line = 0;
    std::uint64_t number = 0;
    // Where the text was cut; 0 when it wasn't. The line is the last, which is not among the facts.
    LineNumber cutLine = 0;

    Fact customer;
    Fact service;
    bool hasRecord = false;
    Fact serviceId;
    Fact serviceType;
    Fact eventType;
    Fact chargingStart;
    Fact account;
    Fact balanceGroup;

    Fact ratePlan;
    Fact ratePlanId;
    Fact ratePlanVersion;
    Fact impactCategory;
    Fact codes;                    // all price model codes, as they stand
    std::vector<Fact> priceModels; // each, in the order of the charge packets
    Fact priceModelsAsked;         // how many the price module was asked for

    std::vector<UsedItem> ownDiscounts;
    std::deque<SharingOwner> owners;

    AccountMemory accountMemory;
    PlanMemory planMemory;
    std::vector<ShownObject> priceModelMemory;
    HeldMemory memory; // the event's own balance group and discounts

    // The sections of a dump that are there, in their order.
    std::vector<SectionText> sections;
    std::vector<Unplaced> unplaced;
    std::vector<ForeignText> foreignTexts;

    SectionText const* section(SectionName name) const;
    // But for one of blanks and line ends.
    void addForeignText(SectionName name, std::string_view owner, std::string_view text,
                        LineNumber firstLine);
};

// Of customer and service, by which an event is known in every file.
std::uint64_t keyOf(EventFacts const& event);

} // namespace reader
