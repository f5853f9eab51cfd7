// What the judges of the sections share: the event, its charging start, and where findings go.
#pragma once

#include "facts/EventFacts.h"
#include "findings/Finding.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace reader {

inline constexpr std::string_view activeStatus = "ACTIVE";

// "from 2026-10-01T00:00:00Z to open"
std::string validityText(std::string_view from, std::string_view to);

class Judgement {
public:
    Judgement(EventFacts const& judged, std::vector<Finding>& findings);

    EventFacts const& event;

    // As ISO 8601; empty when it can't be judged.
    std::string const& start() const noexcept { return startM; }
    // "2026-11-20T19:31:50Z (1795203110)"
    std::string startText() const;

    void add(Kind kind, LineNumber line, std::string subject, std::string says, std::string holds,
             std::string relation = {});

    // What the charging start's relation to a validity is: "ended 20 days before the charging
    // start". Empty when it is within, or when one of the times is none.
    std::string outside(std::string_view from, std::string_view to) const;
    bool isOutside(std::string_view from, std::string_view to) const;
    // Adds a finding when the charging start is outside the validity. The subject is called for its
    // text only then.
    template <class Subject>
    void requireValid(Kind kind, LineNumber line, Subject const& subject, std::string_view from,
                      std::string_view to) {
        if (isOutside(from, to)) {
            add(kind, line, subject(), startText(), "valid " + validityText(from, to),
                outside(from, to));
        }
    }
    template <class Subject>
    void requireActive(Kind kind, LineNumber line, Subject const& subject,
                       std::string_view status) {
        if (!status.empty() && status != activeStatus) {
            add(kind, line, subject(), {}, "status " + std::string(status));
        }
    }

    // Which entries of the rate plan match is known to the last.
    bool knowsEntries() const;
    // Earlier price models are of other rate plans than the one that is shown.
    bool hasSeveralPlans() const;
    // A product of the account, for the event's service, has the plan that is shown. Nobody buys
    // the plans by which an event's wholesale side is charged.
    bool isPlanOfProduct() const;

private:
    std::vector<Finding>& findingsM;
    std::string startM;
};

inline std::string_view nameOf(Fact const& number) {
    return number.text;
}
inline std::string_view nameOf(ShownObject const& shown) {
    return shown.object->name;
}
inline std::pair<std::string_view, std::string_view> nameOf(UsedItem const& item) {
    return {item.object.text, item.model.text};
}
// What was used or asked for twice stands twice in a list: only the first is judged.
template <class Item>
bool isRepeated(std::vector<Item> const& list, Item const& item) {
    return std::any_of(list.data(), &item,
                       [&](Item const& earlier) { return nameOf(earlier) == nameOf(item); });
}

// Whether a row has the text below the heading.
bool hasCell(Table const& table, std::string_view heading, std::string_view text);
bool isAmongEntries(Table const& entries, std::string_view priceModel);

// The judges, one a section.
void judgeHead(Judgement& judgement);
void judgeAccount(Judgement& judgement);
void judgeRatePlan(Judgement& judgement);
void judgePriceModels(Judgement& judgement);
void judgeBalances(Judgement& judgement);
void judgeDiscounts(Judgement& judgement);

} // namespace reader
