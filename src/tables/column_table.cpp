#include "tables/column_table.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "tables/table_reader.h"

namespace wavo::tables {

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::string_view kCycleColumn = "cycle";
/// Lines that a jump of the cycle number may stand for.
constexpr double kLongestGap = 1e7;
/// As many columns as anybody has.
constexpr std::size_t kMostColumns = 1'000'000;

/// Lines of missing values up to the cycle that comes; false when it comes too late or too early.
bool FillGap(double cycle, std::size_t place, ColumnTable& table) {
    if (table.Lines() == 0) {
        return std::isfinite(cycle);
    }
    const double missing = cycle - table.columns[place].back() - 1.0;
    if (!(missing >= 0.0 && missing <= kLongestGap) || missing != std::floor(missing)) {
        return false;
    }
    for (auto& column : table.columns) {
        const bool numbers = &column == &table.columns[place];
        for (double i = 0.0; i < missing; ++i) {
            column.push_back(numbers ? column.back() + 1.0 : kNoNumber);
        }
    }
    return true;
}

/// What is wrong with the names; empty when nothing is.
std::string WrongNames(const std::vector<std::string>& names) {
    if (names.empty()) {
        return "no names of columns in the first line";
    }
    if (std::ranges::find(names, "") != names.end()) {
        return "a column without a name";
    }
    std::vector<std::string_view> sorted(names.begin(), names.end());
    std::ranges::sort(sorted);
    const auto twice = std::ranges::adjacent_find(sorted);
    return twice == sorted.end() ? std::string() : "two columns named " + std::string(*twice);
}

/// The fault that is told: one of the gzip data before those that come of it.
Fault FaultOf(TableReader& reader, std::string text) {
    reader.Drain();
    const std::string end = reader.Bytes().EndText();
    return Fault{end.empty() ? std::move(text) : end};
}

MaybeFault ReadRows(TableReader& reader, ColumnTable& table) {
    const auto cycle = std::ranges::find(table.names, kCycleColumn);
    const auto place = static_cast<std::size_t>(cycle - table.names.begin());
    std::vector<double> values(table.names.size());
    for (;;) {
        const TableReader::Row row = reader.Next(values);
        if (row == TableReader::Row::kEnd) {
            return std::nullopt;
        }
        if (row == TableReader::Row::kFault) {
            return FaultOf(reader, FaultText(reader.Fault(), table.names));
        }
        if (cycle != table.names.end() && !FillGap(values[place], place, table)) {
            return FaultOf(reader, "line " + std::to_string(reader.LineNumber()) +
                                       ": the cycle does not follow the one before");
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            table.columns[i].push_back(values[i]);
        }
    }
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

Expected<ColumnTable> ReadColumns(std::unique_ptr<TableBytes> bytes) {
    auto opened = TableReader::Open(std::move(bytes));
    if (!opened) {
        return opened.Why();
    }
    TableReader& reader = **opened;
    reader.SetRules({.takes_open_end = false});
    auto names = reader.ReadNames(kMostColumns);
    if (!names) {
        return FaultOf(reader, names.Why().text);
    }
    ColumnTable table;
    table.names = std::move(*names);
    if (std::string wrong = WrongNames(table.names); !wrong.empty()) {
        return FaultOf(reader, std::move(wrong));
    }
    table.columns.resize(table.names.size());
    if (MaybeFault fault = ReadRows(reader, table)) {
        return *fault;
    }
    if (std::string end = reader.Bytes().EndText(); !end.empty()) {
        return Fault{std::move(end)};
    }
    if (table.Lines() == 0) {
        return Fault{"no lines of values"};
    }
    return table;
}

Expected<ColumnTable> ParseColumns(std::string_view text) {
    return ReadColumns(TableBytes::Of(text));
}

}  // namespace wavo::tables
