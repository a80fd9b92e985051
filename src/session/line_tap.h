// Takes all lines that are handed out, whatever graphs show.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "source/value_source.h"

namespace wavo {

class LineTap {
 public:
    virtual ~LineTap() = default;

    /// Names of the columns of the lines to come; they may be as before.
    virtual void TakeAxes(const std::vector<std::string>& names) = 0;
    /// The lines of a batch, the first of which has this number. Numbers that are left out have no
    /// line.
    virtual void TakeLines(std::int64_t first, const ValueBatch& batch) = 0;
    /// The next lines do not follow those before.
    virtual void BeginAnew() = 0;
};

}  // namespace wavo
