// Moments of any stretch of a stream whose past stays as it is, without reading it twice: for
// figures that are renewed with each batch, and for long bands.
//
// Cycles are grouped in blocks of 4096, these by 16, and so on. A block keeps its moments from the
// first stretch on that holds all of it; so do the two ends of the stretch that was asked for last.
#pragma once

#include <array>
#include <cstddef>
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
        bool is_whole = true;  ///< false: they are to come yet
    };
    /// As many values from cycle `first` on as there is room for: in that, or where they lie.
    using Read = std::function<Part(Cycle first, std::span<double> room)>;

    struct Result {
        Moments moments;
        bool is_whole = true;  ///< false: they are those of what comes before a part not whole
    };

    /// Moments from cycle `first` to before `end`. Reads what is not known, in the order of time,
    /// up to the first part that is not whole; asked again, it goes on there. REQUIRES: all of it
    /// is past.
    [[nodiscard]] Result Of(Cycle first, Cycle end, const Read& read);

    /// Drops what lies wholly before a cycle.
    void Forget(Cycle before);
    void Clear() { *this = MomentBlocks(); }

    /// What is kept; grows with the length of the stream by 2 kB for a million cycles.
    [[nodiscard]] std::size_t Size() const;

 private:
    static constexpr Cycle kBlock = 4096;
    static constexpr Cycle kFan = 16;
    /// So many of the smallest blocks are kept where larger ones know what they say.
    static constexpr std::size_t kMostSmallest = 1024;

    /// A stretch that is no whole block: an end of what was asked for.
    struct End {
        Cycle first = 0;
        Cycle end = 0;
        Moments moments;
    };

    [[nodiscard]] static Cycle SizeOf(std::size_t level);
    [[nodiscard]] Result OfPart(Cycle first, Cycle end, const Read& read);
    /// Moments of a whole block, by its number in its level.
    Result OfBlock(std::size_t level, Cycle number, const Read& read);
    void Keep(std::size_t level, Cycle number, const Moments& moments);

    std::vector<std::map<Cycle, Moments>> m_levels;  ///< by number; smallest blocks first
    std::size_t m_sweep_at = 2 * kMostSmallest;
    std::array<End, 2> m_ends;  ///< asked for last
    std::size_t m_oldest_end = 0;
};

}  // namespace wavo::measure
