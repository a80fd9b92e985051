#include "master/recording.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tables/table_reader.h"

namespace wavo::master {

namespace {

/// As many columns as anybody has.
constexpr std::size_t kMostColumns = 1'000'000;
constexpr std::string_view kUsualAxes[] = {"X", "Y", "Z", "A", "B", "C"};

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMost = 40;
    std::string quoted = "\"";
    quoted.append(text.substr(0, kMost));
    quoted.append(text.size() > kMost ? "...\"" : "\"");
    return quoted;
}

/// The columns to take when nobody says: the usual axes, or all.
std::vector<std::string> DefaultAxes(const std::vector<std::string>& columns) {
    std::vector<std::string> axes;
    for (const std::string_view axis : kUsualAxes) {
        if (std::ranges::find(columns, axis) != columns.end()) {
            axes.emplace_back(axis);
        }
    }
    if (axes.empty()) {
        axes.assign(columns.begin(), columns.end());
    }
    return axes;
}

/// Where each axis stands among the columns; nothing and a reason when one is missing or there
/// twice.
std::optional<std::vector<std::size_t>> FindColumns(const std::vector<std::string>& columns,
                                                    const std::vector<std::string>& axes,
                                                    std::string* error) {
    std::vector<std::size_t> places;
    for (const std::string& axis : axes) {
        const auto found = std::ranges::find(columns, axis);
        if (found == columns.end()) {
            *error = "line 1: no column " + Quoted(axis) + "; there are";
            for (const std::string& column : columns) {
                *error += " " + Quoted(column);
            }
            return std::nullopt;
        }
        if (std::find(found + 1, columns.end(), axis) != columns.end()) {
            *error = "line 1: more than one column " + Quoted(axis);
            return std::nullopt;
        }
        places.push_back(static_cast<std::size_t>(found - columns.begin()));
    }
    return places;
}

std::string TextOf(const tables::RowFault& fault, const std::vector<std::string>& columns) {
    const std::string where = "line " + std::to_string(fault.line) + ": ";
    switch (fault.kind) {
        case tables::RowFault::Kind::kFields:
            return where + std::to_string(fault.fields) + " fields instead of " +
                   std::to_string(columns.size());
        case tables::RowFault::Kind::kNoNumber:
        case tables::RowFault::Kind::kMissing:
            return where + Quoted(fault.text) + " in column " + Quoted(columns[fault.column]) +
                   " is not a number";
        case tables::RowFault::Kind::kQuote:
        case tables::RowFault::Kind::kTooLong:
            break;
    }
    return FaultText(fault, columns);
}

}  // namespace

std::unique_ptr<Recording> Recording::Read(const std::string& path,
                                           const std::vector<std::string>& axes,
                                           std::string* error) {
    auto bytes = tables::TableBytes::Open(path);
    if (!bytes) {
        *error = bytes.Why().text;
        return nullptr;
    }
    auto recording = ReadRows(std::move(*bytes), axes, error);
    if (!recording) {
        *error = path + ": " + *error;
    }
    return recording;
}

std::unique_ptr<Recording> Recording::Parse(std::string_view text,
                                            const std::vector<std::string>& axes,
                                            std::string* error) {
    return ReadRows(tables::TableBytes::Of(text), axes, error);
}

std::unique_ptr<Recording> Recording::ReadRows(std::unique_ptr<tables::TableBytes> bytes,
                                               const std::vector<std::string>& axes,
                                               std::string* error) {
    auto opened = tables::TableReader::Open(std::move(bytes), tables::TableLayout());
    if (!opened) {
        *error = opened.Why().text;
        return nullptr;
    }
    tables::TableReader& reader = **opened;
    reader.SetRules({.takes_missing = false, .takes_infinite = false, .takes_open_end = false});
    // What is wrong with the gzip data is told before what comes of it.
    const auto fail = [&](const std::string& why) {
        reader.Drain();
        const std::string end = reader.Bytes().EndText();
        *error = end.empty() ? why : end;
        return nullptr;
    };
    const auto columns = reader.ReadNames(kMostColumns);
    if (!columns || columns->empty()) {
        return fail(columns ? "the file is empty" : columns.Why().text);
    }
    std::unique_ptr<Recording> recording(new Recording);
    recording->m_axes = axes.empty() ? DefaultAxes(*columns) : axes;
    std::string wrong;
    const auto places = FindColumns(*columns, recording->m_axes, &wrong);
    if (!places) {
        return fail(wrong);
    }
    reader.Choose(*places);
    std::vector<double> values(places->size());
    tables::TableReader::Row row;
    while ((row = reader.Next(values)) == tables::TableReader::Row::kValues) {
        recording->m_values.insert(recording->m_values.end(), values.begin(), values.end());
        ++recording->m_line_count;
    }
    if (row == tables::TableReader::Row::kFault) {
        return fail(TextOf(reader.Fault(), *columns));
    }
    if (recording->m_line_count == 0 || !reader.Bytes().EndText().empty()) {
        return fail("there are no lines after the names of the columns");
    }
    return recording;
}

void Recording::Line(std::uint64_t number, std::span<double> values) const {
    const std::size_t first = (number % m_line_count) * m_axes.size();
    std::copy_n(m_values.begin() + static_cast<std::ptrdiff_t>(first), m_axes.size(),
                values.begin());
}

}  // namespace wavo::master
