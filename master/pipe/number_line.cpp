#include "master/pipe/number_line.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>

namespace wavo::master {

namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

bool IsBlank(char character) {
    return character == ' ' || character == '\t';
}

/// The nearest double to a number that begins at `at`: digits with a point among them, at most 15
/// of them. Such a number and the power of ten that it is divided by are exact, so the quotient is
/// the nearest. Null: it looks different; `*value` is not touched then.
const char* ReadPlainNumber(const char* at, const char* end, double* value) {
    constexpr int kMostDigits = 15;
    const bool negative = at != end && *at == '-';
    at += negative ? 1 : 0;
    std::uint64_t digits = 0;
    const char* const first = at;
    for (; at != end && IsDigit(*at); ++at) {
        digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    auto count = at - first;
    std::ptrdiff_t decimals = 0;
    if (at != end && *at == '.') {
        const char* const point = at++;
        for (; at != end && IsDigit(*at); ++at) {
            digits = digits * 10 + static_cast<std::uint64_t>(*at - '0');
        }
        decimals = at - point - 1;
        count += decimals;
    }
    if (count == 0 || count > kMostDigits || (at != end && (*at | 0x20) == 'e')) {
        return nullptr;
    }
    const double number = static_cast<double>(digits) / kPowersOfTen[decimals];
    *value = negative ? -number : number;
    return at;
}

/// The same for everything that is a number or "nan".
const char* ReadNumber(const char* at, const char* end, double* value) {
    if (const char* const behind = ReadPlainNumber(at, end, value); behind != nullptr) {
        return behind;
    }
    if (at != end && *at == '+' && at + 1 != end && at[1] != '-') {
        ++at;
    }
    const auto [behind, error] = std::from_chars(at, end, *value);
    return error == std::errc() && !std::isinf(*value) ? behind : nullptr;
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

/// The value of a whole field; nothing when it is none.
std::optional<double> ValueOf(std::string_view field, Separator separator) {
    field = Trimmed(field);
    if (field.empty()) {
        return kMissing;
    }
    double value = 0.0;
    const char* const end = field.data() + field.size();
    if (ReadNumber(field.data(), end, &value) == end) {
        return value;
    }
    const auto comma = field.find(',');
    if (separator == Separator::kComma || comma == std::string_view::npos) {
        return std::nullopt;
    }
    std::string pointed(field);
    pointed[comma] = '.';
    const char* const pointed_end = pointed.data() + pointed.size();
    if (ReadNumber(pointed.data(), pointed_end, &value) == pointed_end) {
        return value;
    }
    return std::nullopt;
}

/// Walks over the fields of a line.
class Fields {
 public:
    Fields(std::string_view line, Separator separator)
        : m_at(line.data()), m_end(line.data() + line.size()), m_separator(separator) {
        if (m_separator == Separator::kBlank) {
            while (m_at != m_end && IsBlank(m_end[-1])) {
                --m_end;
            }
            SkipBlanks();
            // A line of blanks has one field, which is empty, like a line of nothing.
        }
    }

    /// Takes the next field when it is a plain number that ends with the field.
    bool TakePlainNumber(double* value) {
        const char* at = m_at;
        while (at != m_end && *at == ' ') {
            ++at;
        }
        at = ReadPlainNumber(at, m_end, value);
        if (at == nullptr || (at != m_end && !Separates(*at))) {
            return false;
        }
        Pass(at);
        return true;
    }

    std::string_view Take() {
        const char* const begin = m_at;
        const char* const end =
            std::find_if(m_at, m_end, [this](char character) { return Separates(character); });
        Pass(end);
        return {begin, static_cast<std::size_t>(end - begin)};
    }

    [[nodiscard]] bool more() const { return m_more; }

 private:
    [[nodiscard]] bool Separates(char character) const {
        return character == static_cast<char>(m_separator) ||
               (m_separator == Separator::kBlank && character == '\t');
    }

    void SkipBlanks() {
        while (m_at != m_end && IsBlank(*m_at)) {
            ++m_at;
        }
    }

    /// Goes behind the separator at `at`, if there is one.
    void Pass(const char* at) {
        m_more = at != m_end;
        m_at = m_more ? at + 1 : at;
        if (m_separator == Separator::kBlank) {
            SkipBlanks();
        }
    }

    const char* m_at;
    const char* m_end;
    const Separator m_separator;
    bool m_more = true;
};

}  // namespace

Separator FindSeparator(std::string_view line) {
    for (const Separator separator : {Separator::kSemicolon, Separator::kTab, Separator::kComma}) {
        if (line.find(static_cast<char>(separator)) != std::string_view::npos) {
            return separator;
        }
    }
    return Separator::kBlank;
}

std::vector<std::string_view> SplitFields(std::string_view line, Separator separator) {
    std::vector<std::string_view> fields;
    for (Fields rest(line, separator); rest.more();) {
        fields.push_back(Trimmed(rest.Take()));
    }
    return fields;
}

bool IsValue(std::string_view field, Separator separator) {
    return ValueOf(field, separator).has_value();
}

ParsedLine ParseLine(std::string_view line, Separator separator, std::span<double> values) {
    Fields rest(line, separator);
    std::size_t count = 0;
    while (rest.more()) {
        if (count == values.size()) {
            return {LineFault::kTooManyFields, SplitFields(line, separator).size(), {}};
        }
        double* const place = &values[count++];
        if (rest.TakePlainNumber(place)) {
            continue;
        }
        const std::string_view field = rest.Take();
        const std::optional<double> value = ValueOf(field, separator);
        if (!value) {
            return {LineFault::kNoNumber, 0, Trimmed(field)};
        }
        *place = *value;
    }
    if (count < values.size()) {
        return {LineFault::kTooFewFields, count, {}};
    }
    return {};
}

}  // namespace wavo::master
