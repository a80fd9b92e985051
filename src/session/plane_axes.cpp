#include "session/plane_axes.h"

#include <algorithm>

#include "measure/axis_test.h"

namespace wavo {

namespace {

measure::AxisPair PairOf(const std::string& axis, const std::vector<std::string>& names) {
    for (const measure::AxisPair& pair : measure::FindAxisPairs(names)) {
        if (pair.axis == axis || pair.actual == axis || pair.commanded == axis) {
            return pair;
        }
    }
    return {axis, "", axis};
}

}  // namespace

PlaneAxes PlaneOf(const std::string& first, const std::string& second,
                  const std::vector<std::string>& names) {
    const measure::AxisPair x = PairOf(first, names);
    const measure::AxisPair y = PairOf(second, names);
    PlaneAxes plane;
    plane.first = x.axis;
    plane.second = y.axis;
    plane.columns = {x.actual, y.actual};
    plane.has_commanded = !x.commanded.empty() && !y.commanded.empty();
    if (plane.has_commanded) {
        plane.columns.insert(plane.columns.end(), {x.commanded, y.commanded});
    }
    for (const char* letter : {"X", "Y", "Z"}) {
        const measure::AxisPair other = PairOf(letter, names);
        if (other.axis != x.axis && other.axis != y.axis &&
            std::ranges::count(names, other.actual)) {
            plane.columns.push_back(other.actual);
        }
    }
    return plane;
}

}  // namespace wavo
