#include "master/recording.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include "master/gzip.h"

namespace wavo::master {

namespace {

constexpr std::string_view kUsualAxes[] = {"X", "Y", "Z", "A", "B", "C"};

std::string_view Trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// Takes lines off a text, without their ends.
class LineReader {
 public:
    explicit LineReader(std::string_view text) : m_rest(text) {}

    /// The next line that is not blank; nothing at the end.
    std::optional<std::string_view> Next() {
        while (!m_rest.empty()) {
            const auto end = m_rest.find('\n');
            std::string_view line = m_rest.substr(0, end);
            m_rest.remove_prefix(end == std::string_view::npos ? m_rest.size() : end + 1);
            ++m_number;
            if (!line.empty() && line.back() == '\r') {
                line.remove_suffix(1);
            }
            if (!Trimmed(line).empty()) {
                return line;
            }
        }
        return std::nullopt;
    }

    /// Number of the line that came last, counted from 1.
    [[nodiscard]] std::size_t number() const { return m_number; }

 private:
    std::string_view m_rest;
    std::size_t m_number = 0;
};

/// Cuts a line at its commas into `*fields`.
void SplitFields(std::string_view line, std::vector<std::string_view>* fields) {
    fields->clear();
    while (true) {
        const auto comma = line.find(',');
        fields->push_back(Trimmed(line.substr(0, comma)));
        if (comma == std::string_view::npos) {
            return;
        }
        line.remove_prefix(comma + 1);
    }
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMost = 40;
    std::string quoted = "\"";
    quoted.append(text.substr(0, kMost));
    quoted.append(text.size() > kMost ? "...\"" : "\"");
    return quoted;
}

bool ParseNumber(std::string_view text, double* value) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') {
            return false;
        }
    }
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, *value);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(*value);
}

/// The columns to take when nobody says: the usual axes, or all.
std::vector<std::string> DefaultAxes(const std::vector<std::string_view>& columns) {
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
std::optional<std::vector<std::size_t>> FindColumns(const std::vector<std::string_view>& columns,
                                                    const std::vector<std::string>& axes,
                                                    std::string* error) {
    std::vector<std::size_t> places;
    for (const std::string& axis : axes) {
        const auto found = std::ranges::find(columns, axis);
        if (found == columns.end()) {
            *error = "line 1: no column " + Quoted(axis) + "; there are";
            for (const std::string_view column : columns) {
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

bool ReadFile(const std::string& path, std::string* text, std::string* error) {
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    std::error_code failure;
    if (!std::filesystem::exists(file, failure)) {
        *error = path + ": no such file";
        return false;
    }
    std::ifstream stream(file, std::ios::binary);
    std::array<char, 1U << 16U> chunk{};
    while (stream) {
        stream.read(chunk.data(), chunk.size());
        text->append(chunk.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad() || !stream.eof()) {
        *error = path + ": cannot be read";
        return false;
    }
    return true;
}

}  // namespace

std::unique_ptr<Recording> Recording::Read(const std::string& path,
                                           const std::vector<std::string>& axes,
                                           std::string* error) {
    std::string text;
    if (!ReadFile(path, &text, error)) {
        return nullptr;
    }
    if (IsGzip(text)) {
        std::string unpacked;
        if (!Gunzip(text, &unpacked)) {
            *error = path + ": the gzip data is damaged or cut off";
            return nullptr;
        }
        text = std::move(unpacked);
    }
    auto recording = Parse(text, axes, error);
    if (!recording) {
        *error = path + ": " + *error;
    }
    return recording;
}

std::unique_ptr<Recording> Recording::Parse(std::string_view text,
                                            const std::vector<std::string>& axes,
                                            std::string* error) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    LineReader lines(text);
    std::vector<std::string_view> fields;
    if (const auto header = lines.Next()) {
        SplitFields(*header, &fields);
    } else {
        *error = "the file is empty";
        return nullptr;
    }
    const std::size_t column_count = fields.size();
    std::unique_ptr<Recording> recording(new Recording);
    recording->m_axes = axes.empty() ? DefaultAxes(fields) : axes;
    const auto places = FindColumns(fields, recording->m_axes, error);
    if (!places) {
        return nullptr;
    }
    while (const auto line = lines.Next()) {
        SplitFields(*line, &fields);
        const std::string where = "line " + std::to_string(lines.number()) + ": ";
        if (fields.size() != column_count) {
            *error = where + std::to_string(fields.size()) + " fields instead of " +
                     std::to_string(column_count);
            return nullptr;
        }
        for (std::size_t axis = 0; axis < places->size(); ++axis) {
            const std::string_view field = fields[(*places)[axis]];
            double value = 0.0;
            if (!ParseNumber(field, &value)) {
                *error = where + Quoted(field) + " in column " + Quoted(recording->m_axes[axis]) +
                         " is not a number";
                return nullptr;
            }
            recording->m_values.push_back(value);
        }
        ++recording->m_line_count;
    }
    if (recording->m_line_count == 0) {
        *error = "there are no lines after the names of the columns";
        return nullptr;
    }
    return recording;
}

void Recording::Line(std::uint64_t number, std::span<double> values) const {
    const std::size_t first = (number % m_line_count) * m_axes.size();
    std::copy_n(m_values.begin() + static_cast<std::ptrdiff_t>(first), m_axes.size(),
                values.begin());
}

}  // namespace wavo::master
