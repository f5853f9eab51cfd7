// The balance groups of the event and of those who share with it.
#include "facts/Amount.h"
#include "findings/Judgement.h"

#include <fmt/format.h>

namespace reader {

namespace {

void judgeBalanceRows(Judgement& judgement, ShownObject const& group, Table const& balances) {
    auto const amount = balances.column("Amount");
    auto const limit = balances.column("Credit limit");
    auto const from = balances.column("Valid from");
    auto const to = balances.column("Valid to");
    for (std::size_t row = 0; row < balances.rowCount; ++row) {
        auto const subject = [&] {
            return fmt::format("balance {} of group {}", balances.cell(row, "Resource"),
                               group.object->name);
        };
        auto const line = group.lineOf(balances, row);
        judgement.requireValid(Kind::balanceNotValid, line, subject, balances.cell(row, from),
                               balances.cell(row, to));
        auto const order = compareAmounts(balances.cell(row, amount), balances.cell(row, limit));
        if (order && std::is_gt(*order)) {
            judgement.add(Kind::overCreditLimit, line, subject(), {},
                          fmt::format("amount {}, credit limit {} {}", balances.cell(row, amount),
                                      balances.cell(row, limit), balances.cell(row, "Unit")),
                          "above the limit");
        }
    }
}

// Who may own the group: an account, and perhaps the one that pays for it.
struct GroupOwners {
    std::string_view account;
    std::string_view parent;
    bool areKnown = true;
};

void judgeGroup(Judgement& judgement, ShownObject const& group, GroupOwners const& owners,
                std::string_view who) {
    auto const& object = *group.object;
    auto const subject = [&] { return fmt::format("balance group {}", object.name); };
    if (object.isAbsent) {
        judgement.add(Kind::balanceGroupAbsent, group.line, subject(),
                      fmt::format("of {} {}", who, owners.account), "not in memory");
        return;
    }
    bool const isOwners =
        object.about == owners.account || (!owners.parent.empty() && object.about == owners.parent);
    if (owners.areKnown && !object.about.empty() && !isOwners) {
        judgement.add(Kind::balanceGroupOfOtherAccount, group.line, subject(),
                      fmt::format("of {} {}", who, owners.account),
                      fmt::format("of account {}", object.about));
    }
    if (auto const* const balances = object.table("Balances")) {
        judgeBalanceRows(judgement, group, *balances);
    }
}

} // namespace

void judgeBalances(Judgement& judgement) {
    auto const& event = judgement.event;
    auto const& account = event.accountMemory;
    // The parent is known when the account is the one in memory.
    bool const knowsParent = account.id.isTold() && account.id.text == event.account.text;
    std::vector<std::string_view> judged;
    for (auto const& group : event.memory.balanceGroups) {
        judgeGroup(judgement, group, {event.account.text, account.parent.text, knowsParent},
                   "account");
        judged.push_back(group.object->name);
    }
    for (auto const& owner : event.owners) {
        for (auto const& group : owner.memory.balanceGroups) {
            if (std::find(judged.begin(), judged.end(), group.object->name) == judged.end()) {
                judgeGroup(judgement, group, {owner.account.text, {}, true}, "sharing account");
                judged.push_back(group.object->name);
            }
        }
    }
}

} // namespace reader
