// What became of every line and every batch, since the start of the program.
//
// Invariants:
// 1. lines_read = lines_shown + lines_not_shown.
// 2. batches_announced = batches_answered + batches_unanswered + batches_refused + batches_drained
//    + batches_failed, but for one that is under way.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace wavo {

struct LinkCounters {
    std::uint64_t lines_read = 0;         ///< taken out of value FIFOs and accepted
    std::uint64_t lines_shown = 0;        ///< of these, handed to the graphs
    std::uint64_t lines_not_shown = 0;    ///< of these, read while the view was stopped
    std::uint64_t lines_thrown_away = 0;  ///< taken out of a FIFO and not accepted
    std::uint64_t lines_left = 0;         ///< still in a FIFO when its link ended

    std::uint64_t batches_announced = 0;   ///< by a master
    std::uint64_t batches_answered = 0;    ///< the master took the "ready for new values"
    std::uint64_t batches_unanswered = 0;  ///< read, but the master did not take the answer
    std::uint64_t batches_refused = 0;     ///< came while drawing, or announced again
    std::uint64_t batches_drained = 0;     ///< their lines were thrown away
    std::uint64_t batches_failed = 0;      ///< could not be read

    std::uint64_t links = 0;         ///< value FIFOs opened
    std::uint64_t links_broken = 0;  ///< ended because a FIFO was damaged
    std::uint64_t overruns = 0;      ///< reported by a master

    friend bool operator==(const LinkCounters&, const LinkCounters&) = default;
};

/// A counter as the user sees it.
struct CounterLine {
    std::string name;
    std::uint64_t count = 0;
};

/// All counters, in the order in which they are shown.
std::vector<CounterLine> Describe(const LinkCounters& counters);

}  // namespace wavo
