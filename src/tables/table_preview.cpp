#include "tables/table_preview.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "recording/recording_head.h"
#include "tables/number_field.h"
#include "tables/table_reader.h"

namespace wavo::tables {

namespace {

constexpr std::array<std::pair<std::string_view, double>, 10> kUnits{{{"s", 1.0},
                                                                      {"sec", 1.0},
                                                                      {"seconds", 1.0},
                                                                      {"ms", 1e-3},
                                                                      {"msec", 1e-3},
                                                                      {"us", 1e-6},
                                                                      {"usec", 1e-6},
                                                                      {"\xC2\xB5s", 1e-6},
                                                                      {"ns", 1e-9},
                                                                      {"nsec", 1e-9}}};
constexpr std::array<std::string_view, 6> kTimeNames{"time", "t",       "timestamp",
                                                     "zeit", "elapsed", "uptime"};

/// The words of a name in lower case: what stands between characters that are no letters.
std::vector<std::string> WordsOf(const std::string& name) {
    std::vector<std::string> words(1);
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalpha(byte) != 0 || byte >= 0x80) {
            words.back() += static_cast<char>(std::tolower(byte));
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    if (words.back().empty()) {
        words.pop_back();
    }
    return words;
}

/// Seconds per unit of a column that has the name of a time: "time", "t [ms]", "Time_us".
std::optional<double> TimeUnitOf(const std::string& name) {
    std::optional<double> unit;
    bool is_time = false;  // a unit alone tells it, too, but for "S", which may be anything
    for (const std::string& word : WordsOf(name)) {
        const auto found = std::ranges::find(kUnits, std::string_view(word),
                                             &std::pair<std::string_view, double>::first);
        if (std::ranges::find(kTimeNames, word) != kTimeNames.end()) {
            is_time = true;
        } else if (found != kUnits.end()) {
            unit = found->second;
            is_time = is_time || word.size() > 1;
        } else {
            return std::nullopt;
        }
    }
    return is_time ? std::optional(unit.value_or(1.0)) : std::nullopt;
}

/// The numbers of a column of the rows rise.
bool Rises(const std::vector<std::vector<std::string>>& rows, std::size_t column) {
    char decimal_point = '\0';
    double last = -HUGE_VAL;
    for (const auto& row : rows) {
        double value = 0.0;
        if (column >= row.size() ||
            ReadNumber(row[column], decimal_point, value) != NumberKind::kValue || value < last) {
            return false;
        }
        last = value;
    }
    double first = 0.0;
    return rows.size() > 1 &&
           ReadNumber(rows.front()[column], decimal_point, first) == NumberKind::kValue &&
           first < last;
}

std::optional<TimeChoice> GuessTime(const TablePreview& preview) {
    for (std::size_t i = 0; i < std::min(preview.names.size(), TablePreview::kColumns); ++i) {
        const std::optional<double> unit = TimeUnitOf(preview.names[i]);
        if (unit && Rises(preview.rows, i)) {
            return TimeChoice{i, *unit};
        }
    }
    if (preview.layout.cycle_time > 0.0) {
        return TimeChoice{std::nullopt, 1.0, preview.layout.cycle_time};
    }
    return std::nullopt;
}

/// Names for all columns, each but once, not empty, and without the comma that lists of axes are
/// kept with.
std::vector<std::string> DistinctNames(const std::vector<std::string>& names) {
    std::vector<std::string> distinct;
    std::map<std::string, std::size_t> seen;
    for (const std::string& given : names) {
        std::string name = given.empty() ? "column " + std::to_string(distinct.size() + 1) : given;
        std::ranges::replace(name, ',', '_');
        std::string candidate = name;
        while (seen.contains(candidate)) {
            candidate = name + " (" + std::to_string(++seen[name]) + ")";
        }
        seen.emplace(candidate, 1);
        distinct.push_back(std::move(candidate));
    }
    return distinct;
}

/// Which columns hold texts, as far as the rows tell.
class ColumnKinds {
 public:
    explicit ColumnKinds(std::size_t columns) : m_has_numbers(columns), m_has_texts(columns) {}

    void Take(const std::vector<std::string>& row) {
        for (std::size_t i = 0; i < std::min(row.size(), m_has_texts.size()); ++i) {
            char decimal_point = '\0';
            double value = 0.0;
            const NumberKind kind = ReadNumber(row[i], decimal_point, value);
            m_has_texts[i] = m_has_texts[i] || kind == NumberKind::kNoNumber;
            m_has_numbers[i] = m_has_numbers[i] || kind == NumberKind::kValue;
        }
    }
    [[nodiscard]] bool IsText(std::size_t column) const {
        return m_has_texts[column] && !m_has_numbers[column];
    }

 private:
    std::vector<bool> m_has_numbers;
    std::vector<bool> m_has_texts;
};

void ReadRows(TableReader& reader, ColumnKinds& kinds, TablePreview& preview) {
    std::vector<std::string> row;
    while (preview.rows.size() < TablePreview::kRows) {
        const TableReader::Row what = reader.NextTexts(row, preview.names.size());
        if (what == TableReader::Row::kEnd) {
            return;
        }
        kinds.Take(row);
        row.resize(std::min(row.size(), TablePreview::kColumns));
        preview.rows.push_back(row);
    }
}

}  // namespace

std::string TablePreview::Key() const {
    std::string key(1, layout.has_names ? 'n' : 'c');
    for (const std::string& name : names) {
        key += '\n' + name;
    }
    return key;
}

bool IsCycleTime(double seconds) {
    return recording::LineClock::CanRecord(seconds);
}

Expected<TablePreview> PreviewTable(const std::string& path) {
    // It is read more than once, from its beginning.
    std::error_code failure;
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    if (std::filesystem::exists(file, failure) &&
        !std::filesystem::is_regular_file(file, failure)) {
        return Fault{path + ": cannot be read"};
    }
    auto bytes = TableBytes::Open(path);
    if (!bytes) {
        return bytes.Why();
    }
    auto reader = TableReader::Open(std::move(*bytes));
    if (!reader) {
        return Fault{path + ": " + reader.Why().text};
    }
    auto names = (*reader)->ReadNames(kMostImportedColumns);
    if (!names) {
        return Fault{path + ": " + names.Why().text};
    }
    if (names->empty()) {
        const std::string end = (*reader)->Bytes().EndText();
        return Fault{path + ": " + (end.empty() ? "the file is empty" : end)};
    }
    TablePreview preview;
    preview.path = path;
    preview.layout = (*reader)->Layout();
    preview.names = *names;
    ColumnKinds kinds(names->size());
    ReadRows(**reader, kinds, preview);
    preview.names = DistinctNames(preview.names);
    for (std::size_t i = 0; i < preview.names.size(); ++i) {
        preview.is_text.push_back(kinds.IsText(i));
    }
    preview.guess = GuessTime(preview);
    return preview;
}

}  // namespace wavo::tables
