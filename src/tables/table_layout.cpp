#include "tables/table_layout.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <optional>
#include <utility>
#include <vector>

#include "tables/field_cutter.h"
#include "tables/number_field.h"

namespace wavo::tables {

namespace {

constexpr std::string_view kPeriod = "Sampling period";
constexpr std::array<std::pair<std::string_view, double>, 4> kPeriodUnits{
    {{"ns", 1e-9}, {"us", 1e-6}, {"ms", 1e-3}, {"s", 1.0}}};

/// A text of so many bytes may be the beginning of a longer one, and its last line cut.
constexpr std::size_t kLongBeginning = FieldCutter::kLongestField / 2;

std::string_view LineOf(std::string_view text) {
    return text.substr(0, text.find_first_of("\r\n"));
}

/// The text behind the line that it begins with.
std::string_view Behind(std::string_view text) {
    const std::size_t end = text.find_first_of("\r\n");
    return end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
}

std::string_view AtContent(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

/// The fields of the line that `text` begins with.
std::vector<std::string> FieldsOf(std::string_view text, char separator) {
    const auto bytes = TableBytes::Of(LineOf(text));
    FieldCutter cutter(*bytes);
    cutter.SetSeparator(separator);
    std::vector<std::string> fields;
    for (Field field; cutter.Next(field) == FieldCutter::Cut::kField;) {
        fields.emplace_back(field.text);
    }
    return fields;
}

bool IsNumber(const std::string& field) {
    char decimal_point = '\0';
    double value = 0.0;
    return ReadNumber(field, decimal_point, value) != NumberKind::kNoNumber;
}

bool AreNumbers(const std::vector<std::string>& fields) {
    return std::ranges::all_of(fields, IsNumber);
}

char SeparatorOf(std::string_view text) {
    const std::string_view second = AtContent(Behind(text));
    for (const bool both : {true, false}) {
        for (const char separator : {';', '\t', ','}) {
            const std::size_t fields = FieldsOf(text, separator).size();
            if (fields > 1 && (!both || FieldsOf(second, separator).size() == fields)) {
                return separator;
            }
        }
    }
    const std::vector<std::string> fields = FieldsOf(text, ' ');
    if (fields.size() < 2 || second.empty()) {
        return fields.size() > 1 && AreNumbers(fields) ? ' ' : kNoSeparator;
    }
    std::vector<std::string> numbers = FieldsOf(second, ' ');
    const bool is_cut = LineOf(second).size() == second.size() && numbers.size() < fields.size();
    if (is_cut && text.size() > kLongBeginning) {
        numbers.pop_back();
        return AreNumbers(numbers) ? ' ' : kNoSeparator;
    }
    return numbers.size() == fields.size() && AreNumbers(numbers) ? ' ' : kNoSeparator;
}

/// Seconds that a line "Sampling period is 1000000 ns" tells.
std::optional<double> PeriodOf(std::string_view line) {
    if (!line.starts_with(kPeriod)) {
        return std::nullopt;
    }
    const std::size_t digits = line.find_first_of("0123456789");
    double number = 0.0;
    if (digits == std::string_view::npos) {
        return std::nullopt;
    }
    const auto read = std::from_chars(line.data() + digits, line.data() + line.size(), number);
    std::string unit(AtContent(line.substr(static_cast<std::size_t>(read.ptr - line.data()))));
    std::ranges::transform(unit, unit.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const auto& [name, seconds] : kPeriodUnits) {
        if (unit.starts_with(name) && number > 0.0) {
            return number * seconds;
        }
    }
    return std::nullopt;
}

/// Names and numbers in turn.
bool HasLabels(std::string_view text) {
    const std::vector<std::string> fields = FieldsOf(text, ' ');
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (IsNumber(fields[i]) != (i % 2 == 1)) {
            return false;
        }
    }
    return !fields.empty() && fields.size() % 2 == 0;
}

}  // namespace

Expected<TableLayout> FindLayout(std::string_view beginning) {
    if (beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF")) {
        return Fault{"the text is UTF-16; save it as UTF-8"};
    }
    TableLayout layout;
    std::string_view text = AtContent(beginning);
    if (const std::optional<double> period = PeriodOf(LineOf(text))) {
        layout.cycle_time = *period;
        layout.lines_before = 1;
        text = AtContent(Behind(text));
        layout.has_labels = HasLabels(text);
    }
    if (layout.has_labels) {
        layout.separator = ' ';
        layout.has_names = false;
        return layout;
    }
    layout.separator = SeparatorOf(text);
    layout.has_names = !AreNumbers(FieldsOf(text, layout.separator));
    return layout;
}

}  // namespace wavo::tables
