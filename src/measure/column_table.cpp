#include "measure/column_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "measure/words.h"

namespace wavo::measure {

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::string_view kCycleColumn = "cycle";
/// Lines that a jump of the cycle number may stand for.
constexpr double kLongestGap = 1e7;

std::string_view WithoutBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(" \"\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \"\r") - first + 1);
}

/// The next line, without its end; nothing behind the last.
std::optional<std::string_view> TakeLine(std::string_view* text) {
    if (text->empty()) {
        return std::nullopt;
    }
    const auto end = text->find('\n');
    const std::string_view line = text->substr(0, end);
    text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
    return line;
}

std::vector<std::string_view> FieldsOf(std::string_view line, char separator) {
    std::vector<std::string_view> fields;
    while (true) {
        const auto end = line.find(separator);
        fields.push_back(WithoutBlanks(line.substr(0, end)));
        if (end == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(end + 1);
    }
}

bool ReadField(std::string_view field, double* value) {
    *value = kNoNumber;
    if (field.empty() || field == "nan" || field == "NaN") {
        return true;
    }
    if (field.front() == '+') {
        field.remove_prefix(1);
    }
    const auto result = std::from_chars(field.data(), field.data() + field.size(), *value);
    return result.ec == std::errc() && result.ptr == field.data() + field.size();
}

/// Lines of missing values up to the cycle that comes; false when it comes too late or too early.
bool FillGap(double cycle, std::size_t place, ColumnTable* table) {
    if (table->Lines() == 0) {
        return std::isfinite(cycle);
    }
    const double missing = cycle - table->columns[place].back() - 1.0;
    if (!(missing >= 0.0 && missing <= kLongestGap) || missing != std::floor(missing)) {
        return false;
    }
    for (auto& column : table->columns) {
        const bool numbers = &column == &table->columns[place];
        for (double i = 0.0; i < missing; ++i) {
            column.push_back(numbers ? column.back() + 1.0 : kNoNumber);
        }
    }
    return true;
}

}  // namespace

std::span<const double> ColumnTable::Find(std::string_view name) const {
    const auto found = std::ranges::find(names, name);
    return found == names.end() ? std::span<const double>()
                                : columns[static_cast<std::size_t>(found - names.begin())];
}

bool ColumnTable::Has(std::string_view name) const {
    return std::ranges::find(names, name) != names.end();
}

Told<ColumnTable> ParseColumns(std::string_view text) {
    using Result = Told<ColumnTable>;
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    const auto header = TakeLine(&text);
    if (!header || WithoutBlanks(*header).empty()) {
        return Result::Not("no names of columns in the first line");
    }
    char separator = ',';
    for (const char other : {';', '\t'}) {
        separator = header->find(other) != std::string_view::npos ? other : separator;
    }
    ColumnTable table;
    for (const std::string_view name : FieldsOf(*header, separator)) {
        if (name.empty() || table.Has(name)) {
            return Result::Not(name.empty() ? "a column without a name"
                                            : "two columns named " + std::string(name));
        }
        table.names.emplace_back(name);
    }
    table.columns.resize(table.names.size());
    const auto cycle = std::ranges::find(table.names, kCycleColumn);
    std::size_t number = 1;
    std::vector<double> values(table.names.size());
    while (const auto line = TakeLine(&text)) {
        ++number;
        if (WithoutBlanks(*line).empty()) {
            continue;
        }
        const auto fields = FieldsOf(*line, separator);
        if (fields.size() != table.names.size()) {
            return Result::Not(Words("line %zu: %zu fields instead of %zu", number, fields.size(),
                                     table.names.size()));
        }
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (!ReadField(fields[i], &values[i])) {
                return Result::Not(Words("line %zu: \"%.40s\" is not a number", number,
                                         std::string(fields[i]).c_str()));
            }
        }
        const auto place = static_cast<std::size_t>(cycle - table.names.begin());
        if (cycle != table.names.end() && !FillGap(values[place], place, &table)) {
            return Result::Not(Words("line %zu: the cycle does not follow the one before", number));
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            table.columns[i].push_back(values[i]);
        }
    }
    if (table.Lines() == 0) {
        return Result::Not("no lines of values");
    }
    return table;
}

}  // namespace wavo::measure
