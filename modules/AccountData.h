// The accounts in memory: which account a customer identifier belongs to, its services, and the
// products and discounts that it owns. Loaded once, then only read; safe to read on any thread.
#pragma once

#include "TableLoader.h"

#include <iosfwd>

namespace MOD {

struct Account {
    std::uint64_t id = 0;
    Text status;
    Text currency;
    std::optional<std::uint64_t> parentId;
};

struct CustomerIdentifier {
    Text identifier;
    std::uint64_t accountId = 0;
};

struct AccountService {
    std::uint64_t accountId = 0;
    std::uint64_t id = 0;
    Text type;
    std::optional<Text> login;
    Text status;
};

// A product or a discount that an account owns.
struct OwnedItem {
    std::uint64_t accountId = 0;
    std::uint64_t id = 0;
    // The code or name of its prices.
    Text model;
    // The only service of the account to which it applies; none: all services.
    std::optional<std::uint64_t> serviceId;
    Text eventType;
    Text status;
    UtcTime validFrom;
    EndTime validTo;
};

class AccountData {
public:
    // Seen from which of the customer's services, and from which kind of event.
    struct Asked {
        std::string_view customerId;
        long serviceId;
        std::string_view serviceType;
        std::string_view eventType;
    };

    // Returns what each table gave. Throws std::runtime_error for a table that can't be read, and
    // when a stop is requested. Once for each object.
    std::vector<DAT::LoadedTable> load(RWDBConnection const& connection, RowReport const& report,
                                       std::stop_token stop = {});

    void dump(std::ostream& out, Asked const& asked) const;

private:
    std::string unknownAccount(std::uint64_t accountId) const;
    std::string unknownService(OwnedItem const& item) const;
    AccountService const* service(std::uint64_t accountId, std::uint64_t serviceId) const;
    Account const* account(std::uint64_t accountId) const;
    CustomerIdentifier const* customer(std::string_view identifier) const;

    TextPool textsM;
    std::vector<Account> accountsM;
    std::vector<CustomerIdentifier> customersM;
    std::vector<AccountService> servicesM;
    std::vector<OwnedItem> productsM;
    std::vector<OwnedItem> discountsM;
};

} // namespace MOD
