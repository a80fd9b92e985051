// Moments of any stretch of a stream whose past stays as it is, without reading it twice: for
// figures that are renewed with each batch, and for long bands.
//
// Cycles are grouped in blocks of 4096, these by 16, and so on. A block keeps its moments from the
// first stretch on that holds all of it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <vector>

#include "measure/series.h"
#include "measure/statistics.h"

namespace wavo::measure {

class MomentBlocks {
 public:
    /// Values of successive cycles, NaN for those that have none.
    struct Part {
        std::span<const double> values;
        bool is_whole = true;  ///< false: some are to come yet
    };
    /// As many values from cycle `first` on as there is room for: in that, or where they lie.
    using Read = std::function<Part(Cycle first, std::span<double> room)>;

    /// Moments from cycle `first` to before `end`. Reads what no block knows, at least the ends
    /// that are no whole blocks. REQUIRES: all of it is past.
    [[nodiscard]] Moments Of(Cycle first, Cycle end, const Read& read);

    /// Drops what lies wholly before a cycle.
    void Forget(Cycle before);
    void Clear() { m_levels.clear(); }

 private:
    static constexpr Cycle kBlock = 4096;
    static constexpr Cycle kFan = 16;

    [[nodiscard]] static Cycle SizeOf(std::size_t level);
    [[nodiscard]] static Moments ReadPart(Cycle first, Cycle end, const Read& read, bool* is_whole);
    /// Moments of a whole block, by its number in its level.
    Moments OfBlock(std::size_t level, Cycle number, const Read& read, bool* is_whole);

    std::vector<std::map<Cycle, Moments>> m_levels;  ///< by number; smallest blocks first
};

}  // namespace wavo::measure
