// From where to where a scale reaches.
#pragma once

namespace wavo {

struct ScaleRange {
    double minimum = 0.0;
    double maximum = 0.0;

    friend bool operator==(const ScaleRange&, const ScaleRange&) = default;
};

}  // namespace wavo
