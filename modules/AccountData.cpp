#include "AccountData.h"

#include "DumpText.h"

namespace MOD {

namespace {

constexpr Column<Account> accountColumns[] = {
    {"ACCOUNT_ID", &Account::id},
    {"STATUS", &Account::status},
    {"CURRENCY", &Account::currency},
    {"PARENT_ID", &Account::parentId},
};
constexpr Table<Account> accountTable{"ACCOUNT", 1, accountColumns};

constexpr Column<CustomerIdentifier> customerColumns[] = {
    {"IDENTIFIER", &CustomerIdentifier::identifier},
    {"ACCOUNT_ID", &CustomerIdentifier::accountId},
};
constexpr Table<CustomerIdentifier> customerTable{"CUSTOMER_IDENTIFIER", 1, customerColumns};

constexpr Column<AccountService> serviceColumns[] = {
    {"ACCOUNT_ID", &AccountService::accountId}, {"SERVICE_ID", &AccountService::id},
    {"SERVICE_TYPE", &AccountService::type},    {"LOGIN", &AccountService::login},
    {"STATUS", &AccountService::status},
};
constexpr Table<AccountService> serviceTable{"ACCOUNT_SERVICE", 2, serviceColumns};

constexpr Column<OwnedItem> productColumns[] = {
    {"ACCOUNT_ID", &OwnedItem::accountId}, {"PRODUCT_ID", &OwnedItem::id},
    {"RATEPLAN_CODE", &OwnedItem::model},  {"SERVICE_ID", &OwnedItem::serviceId},
    {"EVENT_TYPE", &OwnedItem::eventType}, {"STATUS", &OwnedItem::status},
    {"VALID_FROM", &OwnedItem::validFrom}, {"VALID_TO", &OwnedItem::validTo},
};
constexpr Table<OwnedItem> productTable{"ACCOUNT_PRODUCT", 2, productColumns};

constexpr Column<OwnedItem> discountColumns[] = {
    {"ACCOUNT_ID", &OwnedItem::accountId}, {"DISCOUNT_ID", &OwnedItem::id},
    {"MODEL_NAME", &OwnedItem::model},     {"SERVICE_ID", &OwnedItem::serviceId},
    {"EVENT_TYPE", &OwnedItem::eventType}, {"STATUS", &OwnedItem::status},
    {"VALID_FROM", &OwnedItem::validFrom}, {"VALID_TO", &OwnedItem::validTo},
};
constexpr Table<OwnedItem> discountTable{"ACCOUNT_DISCOUNT", 2, discountColumns};

constexpr ListColumn<AccountService> serviceList[] = {
    {"Service", &AccountService::id},
    {"Type", &AccountService::type},
    {"Login", &AccountService::login},
    {"Status", &AccountService::status},
};

constexpr ListColumn<OwnedItem> productList[] = {
    {"Product", &OwnedItem::id},
    {"Rate plan", &OwnedItem::model},
    {"Service", &OwnedItem::serviceId, "all"},
    {"Event type", &OwnedItem::eventType},
    {"Status", &OwnedItem::status},
    {"Valid from", &OwnedItem::validFrom},
    {"Valid to", &OwnedItem::validTo},
};

constexpr ListColumn<OwnedItem> discountList[] = {
    {"Discount", &OwnedItem::id},
    {"Discount model", &OwnedItem::model},
    {"Service", &OwnedItem::serviceId, "all"},
    {"Event type", &OwnedItem::eventType},
    {"Status", &OwnedItem::status},
    {"Valid from", &OwnedItem::validFrom},
    {"Valid to", &OwnedItem::validTo},
};

template <class Row>
std::span<Row const> rowsOfAccount(std::vector<Row> const& rows, std::uint64_t accountId) {
    return equalRows(rows, [&](Row const& row) { return row.accountId <=> accountId; });
}

// An event type stands for itself and for the types below it; "*" for all.
bool covers(std::string_view eventType, std::string_view asked) {
    return eventType == "*" || (asked.starts_with(eventType) && (asked.size() == eventType.size() ||
                                                                 asked[eventType.size()] == '/'));
}

bool applies(OwnedItem const& item, AccountData::Asked const& asked, TextPool const& texts) {
    bool const ofService =
        !item.serviceId || *item.serviceId == static_cast<std::uint64_t>(asked.serviceId);
    return ofService && covers(texts[item.eventType], asked.eventType);
}

void listServices(DumpText& dump, std::span<AccountService const> services,
                  AccountService const* askedService, AccountData::Asked const& asked,
                  TextPool const& texts) {
    dump.line("");
    dump.line("  Services (> is the service of the event)");
    dump.list(6, std::span<ListColumn<AccountService> const>(serviceList), services, askedService);
    if (askedService == nullptr) {
        dump.line("    Service {}: not in memory", asked.serviceId);
    } else if (texts[askedService->type] != asked.serviceType) {
        dump.line("    Service {}: the event has it as type {}", asked.serviceId,
                  shownText(asked.serviceType));
    }
}

void listItems(DumpText& dump, char const* heading, std::span<ListColumn<OwnedItem> const> columns,
               std::span<OwnedItem const> items, AccountData::Asked const& asked,
               TextPool const& texts) {
    std::vector<OwnedItem> found;
    std::string others;
    for (auto const& item : items) {
        if (applies(item, asked, texts)) {
            found.push_back(item);
        } else {
            others += fmt::format("{}{} {}", others.empty() ? "" : ", ", item.id,
                                  shownValue(item.model, texts));
        }
    }
    dump.line("");
    dump.line("  {} for service {} and event type {}: {} of {}", heading, asked.serviceId,
              shownText(asked.eventType), found.size(), items.size());
    dump.list(4, columns, std::span<OwnedItem const>(found));
    if (!others.empty()) {
        dump.line("  Others: {}", others);
    }
}

} // namespace

std::vector<DAT::LoadedTable> AccountData::load(RWDBConnection const& connection,
                                                RowReport const& report, std::stop_token stop) {
    TableLoader tables(connection, textsM, report, std::move(stop));
    accountsM = tables.load(accountTable);
    // An account without its parent is left out and so can't be a parent itself.
    RowFault<Account> const unknownParent = [this](Account const& row) {
        return row.parentId && account(*row.parentId) == nullptr
                   ? noUsableRow("ACCOUNT", {{"ACCOUNT_ID", std::to_string(*row.parentId)}})
                   : std::string();
    };
    while (tables.leaveOut(accountTable, accountsM, unknownParent)) {
    }
    customersM = tables.load<CustomerIdentifier>(
        customerTable, [this](auto const& row) { return unknownAccount(row.accountId); });
    servicesM = tables.load<AccountService>(
        serviceTable, [this](auto const& row) { return unknownAccount(row.accountId); });
    RowFault<OwnedItem> const itemFault = [this](OwnedItem const& item) {
        auto reason = unknownAccount(item.accountId);
        reason = reason.empty() ? unknownService(item) : reason;
        return reason.empty() ? validityFault(item) : reason;
    };
    productsM = tables.load(productTable, itemFault);
    discountsM = tables.load(discountTable, itemFault);
    return tables.loaded();
}

void AccountData::dump(std::ostream& out, Asked const& asked) const {
    DumpText text(textsM);
    auto const* const found = customer(asked.customerId);
    if (found == nullptr) {
        text.line("Customer identifier {}: not in memory", shownText(asked.customerId));
        text.writeUpToLastLineEnd(out);
        return;
    }
    auto const& own = *account(found->accountId);
    text.line("Customer identifier {}", shownText(asked.customerId));
    text.line("  Account {}: status {}, currency {}, parent {}", own.id,
              shownValue(own.status, textsM), shownValue(own.currency, textsM),
              own.parentId ? "account " + std::to_string(*own.parentId) : "none");
    listServices(text, rowsOfAccount(servicesM, own.id),
                 service(own.id, static_cast<std::uint64_t>(asked.serviceId)), asked, textsM);
    listItems(text, "Products", productList, rowsOfAccount(productsM, own.id), asked, textsM);
    listItems(text, "Discounts", discountList, rowsOfAccount(discountsM, own.id), asked, textsM);
    text.writeUpToLastLineEnd(out);
}

std::string AccountData::unknownAccount(std::uint64_t accountId) const {
    return account(accountId) == nullptr
               ? noUsableRow("ACCOUNT", {{"ACCOUNT_ID", std::to_string(accountId)}})
               : std::string();
}

std::string AccountData::unknownService(OwnedItem const& item) const {
    return item.serviceId && service(item.accountId, *item.serviceId) == nullptr
               ? noUsableRow("ACCOUNT_SERVICE", {{"ACCOUNT_ID", std::to_string(item.accountId)},
                                                 {"SERVICE_ID", std::to_string(*item.serviceId)}})
               : std::string();
}

Account const* AccountData::account(std::uint64_t accountId) const {
    return equalRow(accountsM, [&](Account const& row) { return row.id <=> accountId; });
}

AccountService const* AccountData::service(std::uint64_t accountId, std::uint64_t serviceId) const {
    return equalRow(servicesM, [&](AccountService const& row) {
        auto const order = row.accountId <=> accountId;
        return std::is_eq(order) ? row.id <=> serviceId : order;
    });
}

CustomerIdentifier const* AccountData::customer(std::string_view identifier) const {
    return equalRow(customersM, [&](CustomerIdentifier const& row) {
        return textsM[row.identifier] <=> identifier;
    });
}

} // namespace MOD
