#include "support/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
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

/// Takes a floating-point number off the front; nothing when there is none.
std::optional<double> TakeDouble(std::string_view& text) noexcept {
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
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return negative ? -value : value;
}

/// Below this the whole part fits into 32 bits, and the millionths are known to half of one: their
/// number stays below 2^52.
constexpr double kLargestScaled = 4294967295.0;

/// The millionths nearest to a number, the even ones between two.
/// REQUIRES: 0 <= magnitude < kLargestScaled.
std::int64_t RoundedMillionths(double magnitude) noexcept {
    const double product = magnitude * 1e6;
    const auto below = static_cast<std::int64_t>(product);
    const double rest = product - static_cast<double>(below);
    // The product is off by no more than half its last place. So it lies on the same side of the
    // middle as the true one, unless it is the middle itself.
    if (rest == 0.5) {
        // The sign of this is exact.
        const double beyond = std::fma(magnitude, 1e6, -(static_cast<double>(below) + 0.5));
        return below + (beyond > 0.0 || (beyond == 0.0 && below % 2 == 1) ? 1 : 0);
    }
    return below + (rest > 0.5 ? 1 : 0);
}

/// The numbers below 1000 with three digits, and behind them how many of these lead with 0 (as many
/// as can be left out). Four bytes more, so that each can be read from its second digit on.
constexpr auto kTriples = [] {
    std::array<char, 4 * 1000 + 4> triples{};
    for (std::size_t number = 0; number < 1000; ++number) {
        char* const triple = triples.data() + 4 * number;
        triple[0] = static_cast<char>('0' + number / 100);
        triple[1] = static_cast<char>('0' + number / 10 % 10);
        triple[2] = static_cast<char>('0' + number % 10);
        triple[3] = static_cast<char>(number < 10 ? 2 : number < 100 ? 1 : 0);
    }
    return triples;
}();

/// Writes three digits, and one byte behind them.
void WriteTriple(std::uint32_t number, char* to) noexcept {
    std::memcpy(to, kTriples.data() + std::size_t{4} * number, 4);
}

/// The same without leading zeros; returns one past the last digit.
char* WriteLeadingTriple(std::uint32_t number, char* to) noexcept {
    const char* const triple = kTriples.data() + std::size_t{4} * number;
    const std::size_t zeros = static_cast<unsigned char>(triple[3]);
    std::memcpy(to, triple + zeros, 4);
    return to + 3 - zeros;
}

/// Writes an integer, and up to three bytes behind it; returns one past the last digit.
char* WriteWhole(std::uint32_t number, char* to) noexcept {
    if (number < 1000) {
        return WriteLeadingTriple(number, to);
    }
    to = WriteWhole(number / 1000, to);
    WriteTriple(number % 1000, to);
    return to + 3;
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
    return TakeDouble(text);
}

std::optional<double> FindWholeDouble(std::string_view text) noexcept {
    const std::optional<double> value = TakeDouble(text);
    return text.find_first_not_of(kWhiteSpace) == std::string_view::npos ? value : std::nullopt;
}

std::string FormatSixDecimals(double value) {
    std::array<char, kSixDecimalsRoom> text;
    return {text.data(), WriteSixDecimals(value, text.data())};
}

char* WriteSixDecimals(double value, char* to) noexcept {
    const double magnitude = std::fabs(value);
    if (!(magnitude < kLargestScaled)) {  // no number, too
        return std::to_chars(to, to + kSixDecimalsRoom, value, std::chars_format::fixed, 6).ptr;
    }
    *to = '-';
    to += std::signbit(value) ? 1 : 0;
    const auto millionths = static_cast<std::uint64_t>(RoundedMillionths(magnitude));
    to = WriteWhole(static_cast<std::uint32_t>(millionths / 1'000'000), to);
    const auto decimals = static_cast<std::uint32_t>(millionths % 1'000'000);
    *to = '.';
    WriteTriple(decimals / 1000, to + 1);
    WriteTriple(decimals % 1000, to + 4);
    return to + 7;
}

}  // namespace wavo
