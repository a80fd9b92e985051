// Which columns of a source make a plane that can be tested.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

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

}  // namespace wavo
