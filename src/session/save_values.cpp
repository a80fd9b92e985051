#include "session/save_values.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/file.h"
#include "platform/last_error.h"
#include "support/diagnostics.h"
#include "support/fast_file.h"
#include "support/file_name.h"
#include "support/number_text.h"

namespace wavo {

namespace {

/// Bytes that are written at once, and some more to the end of a row.
constexpr std::size_t kPiece = 1U << 16U;
/// Longer texts of numbers are cut.
constexpr std::ptrdiff_t kLongestNumber = 127;

/// A file that is written in pieces, closed when it goes.
class DataFile {
 public:
    explicit DataFile(const std::string& path)
        : m_path(path), m_file(openwritefile(path, kWriteOverwrite)) {}
    ~DataFile() { Close(); }
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;

    [[nodiscard]] bool IsOpen() const { return m_file != platform::kInvalidFile; }

    bool Write(std::string_view text) {
        std::size_t written = 0;
        return text.empty() || write64(m_file, text.data(), text.size(), written);
    }

    bool Close() {
        if (!IsOpen()) {
            return true;
        }
        const bool is_closed = platform::Files().Close(m_file);
        m_file = platform::kInvalidFile;
        if (!is_closed) {
            MERRTRACE("%s(): CloseHandle() failed: %u", "SaveValues::CreateDataFile",
                      static_cast<unsigned>(platform::LastError()));
        }
        return is_closed;
    }

    /// Closes the file. False also when it has lost its name meanwhile: what is open can be written
    /// to the end all the same on some systems, and is gone with its last handle.
    bool Finish() {
        if (!Close()) {
            return false;
        }
        if (!platform::Files().Exists(m_path)) {
            MERRTRACE("SaveValues::CreateDataFile(): '%s' has gone", m_path.c_str());
            return false;
        }
        return true;
    }

 private:
    const std::string m_path;
    platform::FileHandle m_file;
};

/// Writes rows of text into memory.
class RowWriter {
 public:
    RowWriter(const ExportSettings& settings, std::vector<const double*> columns)
        : m_settings(settings), m_columns(std::move(columns)) {}

    /// Bytes that a row has at most.
    [[nodiscard]] std::size_t LongestRow() const {
        return m_columns.size() * (kLongestNumber + 1) + m_settings.end_of_line.size();
    }

    /// Writes a row, and up to kSixDecimalsRoom bytes behind it; returns one past its last byte.
    char* Write(std::uint64_t row, char* to) const {
        for (const double* const column : m_columns) {
            to = WriteNumber(column[row], to);
            *to++ = m_settings.separator;
        }
        // Behind the last column the line end takes the place of the separator.
        to -= m_columns.empty() ? 0 : 1;
        std::memcpy(to, m_settings.end_of_line.data(), m_settings.end_of_line.size());
        return to + m_settings.end_of_line.size();
    }

 private:
    char* WriteNumber(double value, char* to) const {
        char* const end = std::min(WriteSixDecimals(value, to), to + kLongestNumber);
        if (m_settings.decimal_point != '.') {
            std::replace(to, end, '.', m_settings.decimal_point);  // there is one at most
        }
        return end;
    }

    const ExportSettings& m_settings;
    const std::vector<const double*> m_columns;
};

}  // namespace

std::vector<double>& SaveValues::FindOrAddColumn(const std::string& axis_name) {
    const auto found = std::find_if(m_columns.begin(), m_columns.end(),
                                    [&](const Column& column) { return column.name == axis_name; });
    Column& column =
        found != m_columns.end() ? *found : m_columns.emplace_back(Column{axis_name, {}});
    column.values.clear();
    return column.values;
}

void SaveValues::Clear() {
    m_columns.clear();
    m_columns.shrink_to_fit();
}

std::string SaveValues::Header() const {
    std::string header;
    for (const Column& column : m_columns) {
        if (&column != &m_columns.front()) {
            header += m_settings.separator;
        }
        header += column.name;
    }
    return header + m_settings.end_of_line;
}

std::uint64_t SaveValues::RowCount() const {
    const auto shortest = std::min_element(
        m_columns.begin(), m_columns.end(),
        [](const Column& a, const Column& b) { return a.values.size() < b.values.size(); });
    return shortest == m_columns.end() ? 0 : shortest->values.size();
}

Expected<SaveValues::Ending> SaveValues::CreateDataFile(const Progress& progress) const {
    DataFile file(m_settings.data_file);
    const Fault failed{"cannot write " + m_settings.data_file +
                       FileNameFault(m_settings.data_file)};
    if (!file.IsOpen() || !file.Write(Header())) {
        return failed;
    }
    std::vector<const double*> columns;
    for (const Column& column : m_columns) {
        columns.push_back(column.values.data());
    }
    const RowWriter writer(m_settings, std::move(columns));
    std::vector<char> piece(kPiece + writer.LongestRow() + kSixDecimalsRoom);
    const std::uint64_t rows = RowCount();
    for (std::uint64_t row = 0; row < rows;) {
        char* end = piece.data();
        while (row < rows && end < piece.data() + kPiece) {
            end = writer.Write(row++, end);
        }
        if (!file.Write({piece.data(), static_cast<std::size_t>(end - piece.data())})) {
            return failed;
        }
        if (row < rows && progress && !progress(row, rows)) {
            if (!file.Finish()) {
                return failed;
            }
            return Ending::kCancelled;
        }
    }
    if (!file.Finish()) {
        return failed;
    }
    return Ending::kWritten;
}

}  // namespace wavo
