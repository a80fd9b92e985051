#include "master/options.h"

#include <algorithm>

namespace wavo::master {

std::string SetAxisNames(std::string_view value, std::vector<std::string>* axes) {
    *axes = Split(value, ',');
    for (auto axis = axes->begin(); axis != axes->end(); ++axis) {
        if (axis->empty()) {
            return "an axis name is empty";
        }
        if (std::find(axes->begin(), axis, *axis) != axis) {
            return "axis " + *axis + " is there twice";
        }
    }
    return {};
}

}  // namespace wavo::master
