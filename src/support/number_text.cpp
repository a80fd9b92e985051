#include "support/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace wavo {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

/// Bounds that are wider than those of every integer that is read, and far from overflow.
constexpr std::int64_t kIntegerBound = std::int64_t{1} << 40;
constexpr std::int64_t kExponentBound = 1'000'000'000;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes white space and a sign off the front; true for a minus.
bool TakeSign(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    if (text.empty() || (text.front() != '-' && text.front() != '+')) {
        return false;
    }
    const bool negative = text.front() == '-';
    text.remove_prefix(1);
    return negative;
}

/// Takes the digits off the front; their value, at most `bound`.
std::int64_t TakeDigits(std::string_view& text, std::int64_t bound) {
    std::int64_t value = 0;
    while (!text.empty() && IsDigit(text.front())) {
        value = std::min(bound, value * 10 + (text.front() - '0'));
        text.remove_prefix(1);
    }
    return value;
}

/// Takes an integer off the front; nothing when there is no digit.
std::optional<std::int64_t> TakeInteger(std::string_view& text) {
    const bool negative = TakeSign(text);
    if (text.empty() || !IsDigit(text.front())) {
        return std::nullopt;
    }
    const std::int64_t value = TakeDigits(text, kIntegerBound);
    return negative ? -value : value;
}

template <typename Integer>
Integer Saturated(std::int64_t value) {
    using Limits = std::numeric_limits<Integer>;
    return static_cast<Integer>(
        std::clamp(value, std::int64_t{Limits::min()}, std::int64_t{Limits::max()}));
}

/// Whether a decimal number (digits, point, exponent; no sign) is 1 or more.
bool IsAtLeastOne(std::string_view number) {
    // Decimal places of the first digit that is not 0: 1 for "7", 3 for "700", 0 for "0.7".
    std::int64_t places = 0;
    number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
    while (!number.empty() && IsDigit(number.front())) {
        ++places;
        number.remove_prefix(1);
    }
    if (!number.empty() && number.front() == '.') {
        number.remove_prefix(1);
        while (places <= 0 && !number.empty() && number.front() == '0') {
            --places;
            number.remove_prefix(1);
        }
    }
    const std::size_t mark = number.find_first_of("eE");
    if (mark == std::string_view::npos) {
        return places > 0;
    }
    number.remove_prefix(mark + 1);
    const bool negative = TakeSign(number);
    const std::int64_t exponent = TakeDigits(number, kExponentBound);
    return places + (negative ? -exponent : exponent) > 0;
}

}  // namespace

std::int32_t ReadInteger(std::string_view text) noexcept {
    return Saturated<std::int32_t>(TakeInteger(text).value_or(0));
}

std::uint32_t ReadUnsigned(std::string_view text) noexcept {
    return Saturated<std::uint32_t>(TakeInteger(text).value_or(0));
}

std::optional<std::int32_t> ReadWholeNumber(std::string_view text) noexcept {
    const std::optional<std::int64_t> value = TakeInteger(text);
    if (!value.has_value() || text.find_first_not_of(kWhiteSpace) != std::string_view::npos) {
        return std::nullopt;
    }
    return Saturated<std::int32_t>(*value);
}

double ReadDouble(std::string_view text) noexcept {
    return FindDouble(text).value_or(0.0);
}

std::optional<double> FindDouble(std::string_view text) noexcept {
    const bool negative = TakeSign(text);
    // The words for infinity and for what is no number, which from_chars knows, are no numbers
    // here: nothing could be drawn with them.
    const std::string_view first_digit = text.starts_with('.') ? text.substr(1) : text;
    if (first_digit.empty() || !IsDigit(first_digit.front())) {
        return std::nullopt;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        const std::string_view number(text.data(), static_cast<std::size_t>(end - text.data()));
        value = IsAtLeastOne(number) ? std::numeric_limits<double>::max() : 0.0;
    }
    return negative ? -value : value;
}

std::string FormatSixDecimals(double value) {
    // The largest double has 309 digits before the point.
    std::array<char, 352> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
    return error == std::errc() ? std::string(text.data(), end) : std::string();
}

}  // namespace wavo
