// The lines of two axes that make a plane, with their commanded values and the axes that ought to
// stand still, as they come: kept for as long as a test of the plane needs them, whatever graphs
// show.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "session/line_tap.h"
#include "source/history.h"

namespace wavo {

struct PlaneAxes {
    std::string first;   ///< as they are called: "X"
    std::string second;  ///< "Y"
    /// Names of the columns: both actual ones, then the commanded ones where there are any, then
    /// those of other axes.
    std::vector<std::string> columns;
    bool has_commanded = false;

    [[nodiscard]] std::size_t FirstOther() const { return has_commanded ? 4 : 2; }

    friend bool operator==(const PlaneAxes&, const PlaneAxes&) = default;
};

/// The plane of two axes of a source, each named by itself or by one of its columns: X_cmd belongs
/// to X, X_act or X_fb. Of the axes X, Y, Z those outside the plane ought to stand still.
PlaneAxes PlaneOf(const std::string& first, const std::string& second,
                  const std::vector<std::string>& names);

class PlaneLines final : public LineTap {
 public:
    /// So many lines are kept; of more the oldest ones go.
    static constexpr std::int64_t kMost = std::int64_t{1} << 19;

    explicit PlaneLines(PlaneAxes axes);

    [[nodiscard]] const PlaneAxes& Axes() const { return m_axes; }
    [[nodiscard]] LineRange Lines() const;
    /// Values of successive lines of a column, NaN for those that are not there. REQUIRES: the
    /// column is one of the plane.
    void Read(std::size_t column, std::int64_t first, std::span<double> values) const;
    /// Lines before this one are not needed any more.
    void KeepFrom(std::int64_t line);

    // LineTap
    void TakeAxes(const std::vector<std::string>& names) override;
    void TakeLines(std::int64_t first, const ValueBatch& batch) override;
    void BeginAnew() override;

 private:
    [[nodiscard]] std::size_t Count() const { return m_values.front().size() - m_dropped; }
    void MakeRoom(std::size_t count);

    PlaneAxes m_axes;
    std::vector<std::size_t> m_places;          ///< of the columns in a line
    std::vector<std::vector<double>> m_values;  ///< per column; never beyond what is reserved
    std::size_t m_dropped = 0;                  ///< values at the front that are not needed
    std::int64_t m_first = 0;                   ///< line of the first that is
};

}  // namespace wavo
