#include "graph/values/trigger_test.h"

namespace wavo {

std::optional<std::size_t> FirstBeyond(std::span<const double> values, TriggerSide side,
                                       double limit) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (IsBeyond(values[i], side, limit)) {
            return i;
        }
    }
    return std::nullopt;
}

}  // namespace wavo
