#include "BalanceData.h"

#include "DumpText.h"

namespace MOD {

namespace {

constexpr Column<BalanceGroup> groupColumns[] = {
    {"BALANCE_GROUP_ID", &BalanceGroup::id},
    {"ACCOUNT_ID", &BalanceGroup::accountId},
};
constexpr Table<BalanceGroup> groupTable{"BALANCE_GROUP", 1, groupColumns};

constexpr Column<Balance> balanceColumns[] = {
    {"BALANCE_GROUP_ID", &Balance::groupId},
    {"RESOURCE", &Balance::resource},
    {"UNIT", &Balance::unit},
    {"AMOUNT", &Balance::amount},
    {"CREDIT_LIMIT", &Balance::creditLimit},
    {"VALID_FROM", &Balance::validFrom},
    {"VALID_TO", &Balance::validTo},
};
constexpr Table<Balance> balanceTable{"BALANCE", 2, balanceColumns};

constexpr Column<SubBalance> subBalanceColumns[] = {
    {"BALANCE_GROUP_ID", &SubBalance::groupId}, {"RESOURCE", &SubBalance::resource},
    {"SUB_BALANCE_NO", &SubBalance::number},    {"AMOUNT", &SubBalance::amount},
    {"VALID_FROM", &SubBalance::validFrom},     {"VALID_TO", &SubBalance::validTo},
};
constexpr Table<SubBalance> subBalanceTable{"SUB_BALANCE", 3, subBalanceColumns};

constexpr ListColumn<Balance> balanceList[] = {
    {"Resource", &Balance::resource},        {"Amount", &Balance::amount},
    {"Credit limit", &Balance::creditLimit}, {"Unit", &Balance::unit},
    {"Valid from", &Balance::validFrom},     {"Valid to", &Balance::validTo},
};

constexpr ListColumn<SubBalance> subBalanceList[] = {
    {"Resource", &SubBalance::resource}, {"Sub-balance", &SubBalance::number},
    {"Amount", &SubBalance::amount},     {"Valid from", &SubBalance::validFrom},
    {"Valid to", &SubBalance::validTo},
};

template <class Row>
std::span<Row const> rowsOfGroup(std::vector<Row> const& rows, std::uint64_t groupId) {
    return equalRows(rows, [&](Row const& row) { return row.groupId <=> groupId; });
}

} // namespace

std::vector<DAT::LoadedTable> BalanceData::load(RWDBConnection const& connection,
                                                RowReport const& report, std::stop_token stop) {
    TableLoader tables(connection, textsM, report, std::move(stop));
    groupsM = tables.load(groupTable);
    balancesM = tables.load<Balance>(balanceTable, [this](Balance const& row) {
        return group(row.groupId) == nullptr
                   ? noUsableRow("BALANCE_GROUP",
                                 {{"BALANCE_GROUP_ID", std::to_string(row.groupId)}})
                   : validityFault(row);
    });
    subBalancesM = tables.load<SubBalance>(subBalanceTable, [this](SubBalance const& row) {
        return balanceOf(row) == nullptr
                   ? noUsableRow("BALANCE", {{"BALANCE_GROUP_ID", std::to_string(row.groupId)},
                                             {"RESOURCE", std::string(textsM[row.resource])}})
                   : validityFault(row);
    });
    return tables.loaded();
}

void BalanceData::dump(std::ostream& out,
                       RWTValOrderedVector<unsigned long> const& groupIds) const {
    DumpText text(textsM);
    text.line("{} asked", counted(groupIds.entries(), "balance group"));
    for (auto const groupId : groupIds) {
        dumpGroup(text, groupId);
    }
    text.writeLines(out);
}

void BalanceData::dumpGroup(DumpText& text, std::uint64_t groupId) const {
    auto const* const found = group(groupId);
    if (found == nullptr) {
        text.line("  balance group {}: not in memory", groupId);
        return;
    }
    text.line("  balance group {} of account {}", groupId, found->accountId);
    text.line("    Balances");
    text.list<Balance>(6, balanceList, rowsOfGroup(balancesM, groupId));
    text.line("    Sub-balances, in the units of their balances");
    text.list<SubBalance>(6, subBalanceList, rowsOfGroup(subBalancesM, groupId));
}

BalanceGroup const* BalanceData::group(std::uint64_t groupId) const {
    return equalRow(groupsM, [&](BalanceGroup const& row) { return row.id <=> groupId; });
}

Balance const* BalanceData::balanceOf(SubBalance const& part) const {
    return equalRow(balancesM, [&](Balance const& row) {
        auto const order = row.groupId <=> part.groupId;
        return std::is_eq(order) ? compareValues(row.resource, part.resource, textsM) : order;
    });
}

} // namespace MOD
