#include "session/link_counters.h"

namespace wavo {

std::vector<CounterLine> Describe(const LinkCounters& counters) {
    return {{"Lines read", counters.lines_read},
            {"Lines shown", counters.lines_shown},
            {"Lines read while stopped", counters.lines_not_shown},
            {"Lines thrown away", counters.lines_thrown_away},
            {"Lines left unread at a link's end", counters.lines_left},
            {"Batches announced", counters.batches_announced},
            {"Batches answered", counters.batches_answered},
            {"Batches whose answer was not taken", counters.batches_unanswered},
            {"Batches refused", counters.batches_refused},
            {"Batches drained away", counters.batches_drained},
            {"Batches that could not be read", counters.batches_failed},
            {"Value fifos opened", counters.links},
            {"Value fifos found damaged", counters.links_broken},
            {"Overruns reported", counters.overruns}};
}

}  // namespace wavo
