#include "tables/number_field.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace wavo::tables {

namespace {

/// Longest number with a decimal comma; more digits than any double can have.
constexpr std::size_t kLongestNumber = 1100;

/// Quotation marks may keep blanks in a field.
std::string_view WithoutBlanks(std::string_view field) {
    const std::size_t first = field.find_first_not_of(" \t");
    return first == std::string_view::npos
               ? std::string_view()
               : field.substr(first, field.find_last_not_of(" \t") - first + 1);
}

bool IsMissing(std::string_view field) {
    constexpr std::string_view kName = "nan";
    return field.empty() || (field.size() == kName.size() &&
                             std::equal(field.begin(), field.end(), kName.begin(),
                                        [](char a, char b) { return (a | 0x20) == b; }));
}

bool Parse(std::string_view text, double& value) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-' && text[1] != '+') {
        text.remove_prefix(1);
    }
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

NumberKind ReadNumber(std::string_view field, char& decimal_point, double& value) {
    field = WithoutBlanks(field);
    if (IsMissing(field)) {
        value = std::numeric_limits<double>::quiet_NaN();
        return NumberKind::kMissing;
    }
    const std::size_t point = field.find_first_of(".,");
    if (point == std::string_view::npos || field[point] == '.') {
        if ((decimal_point == ',' && point != std::string_view::npos) || !Parse(field, value)) {
            return NumberKind::kNoNumber;
        }
        decimal_point = point == std::string_view::npos ? decimal_point : '.';
        return NumberKind::kValue;
    }
    std::array<char, kLongestNumber> copy{};
    if (decimal_point == '.' || field.size() > copy.size()) {
        return NumberKind::kNoNumber;
    }
    std::copy(field.begin(), field.end(), copy.begin());
    copy[point] = '.';
    if (!Parse({copy.data(), field.size()}, value)) {
        return NumberKind::kNoNumber;
    }
    decimal_point = ',';
    return NumberKind::kValue;
}

}  // namespace wavo::tables
