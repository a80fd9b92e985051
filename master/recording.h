// Recordings of machine movements as comma-separated text, one line per cycle.
//
// The first line names the columns; every further line has one number per column. Files may be
// compressed with gzip.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "master/line_source.h"
#include "tables/table_bytes.h"

namespace wavo::master {

class Recording : public LineSource {
 public:
    /// Reads the columns `axes` of a file, in that order. Without `axes`: those of X, Y, Z, A, B
    /// and C that the file has, or else all columns. `path` is UTF-8.
    /// Returns null on failure; `*error` then names the file, the line and what is wrong with it.
    static std::unique_ptr<Recording> Read(const std::string& path,
                                           const std::vector<std::string>& axes,
                                           std::string* error);

    /// The same from text in memory.
    static std::unique_ptr<Recording> Parse(std::string_view text,
                                            const std::vector<std::string>& axes,
                                            std::string* error);

    [[nodiscard]] const std::vector<std::string>& AxisNames() const override { return m_axes; }
    [[nodiscard]] std::uint64_t LinesPerRound() const override { return m_line_count; }
    void Line(std::uint64_t number, std::span<double> values) const override;

 private:
    Recording() = default;

    static std::unique_ptr<Recording> ReadRows(std::unique_ptr<tables::TableBytes> bytes,
                                               const std::vector<std::string>& axes,
                                               std::string* error);

    std::vector<std::string> m_axes;
    std::uint64_t m_line_count = 0;
    std::vector<double> m_values;  ///< line after line
};

}  // namespace wavo::master
