#include "facts/Amount.h"

#include <algorithm>

namespace reader {

namespace {

constexpr std::string_view digits = "0123456789";

// Without sign, leading zeros of the whole part and closing zeros of the fraction.
struct Amount {
    bool isNegative = false;
    std::string_view whole;
    std::string_view fraction;

    bool isZero() const { return whole.empty() && fraction.empty(); }
};

std::optional<Amount> amountOf(std::string_view text) {
    Amount amount;
    amount.isNegative = text.starts_with('-');
    text.remove_prefix(amount.isNegative || text.starts_with('+') ? 1 : 0);
    auto const point = std::min(text.find('.'), text.size());
    amount.whole = text.substr(0, point);
    amount.fraction = text.substr(std::min(point + 1, text.size()));
    bool const hasDigits = !amount.whole.empty() || !amount.fraction.empty();
    if (!hasDigits || amount.whole.find_first_not_of(digits) != std::string_view::npos ||
        amount.fraction.find_first_not_of(digits) != std::string_view::npos) {
        return std::nullopt;
    }
    amount.whole.remove_prefix(std::min(amount.whole.find_first_not_of('0'), amount.whole.size()));
    amount.fraction = amount.fraction.substr(0, amount.fraction.find_last_not_of('0') + 1);
    return amount;
}

} // namespace

std::optional<std::strong_ordering> compareAmounts(std::string_view one, std::string_view other) {
    auto const a = amountOf(one);
    auto const b = amountOf(other);
    if (!a || !b) {
        return std::nullopt;
    }
    bool const aNegative = a->isNegative && !a->isZero();
    bool const bNegative = b->isNegative && !b->isZero();
    if (aNegative != bNegative) {
        return aNegative ? std::strong_ordering::less : std::strong_ordering::greater;
    }
    auto const& x = aNegative ? *b : *a;
    auto const& y = aNegative ? *a : *b;
    auto order = x.whole.size() <=> y.whole.size();
    if (std::is_eq(order)) {
        order = x.whole <=> y.whole;
    }
    if (std::is_eq(order)) {
        order = x.fraction <=> y.fraction;
    }
    return order;
}

} // namespace reader
