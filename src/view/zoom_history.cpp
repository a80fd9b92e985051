#include "view/zoom_history.h"

#include <algorithm>
#include <iterator>

namespace wavo {

std::optional<ZoomState> ZoomHistory::Pop(std::uint32_t graph_number) {
    const auto last = std::find_if(
        m_entries.rbegin(), m_entries.rend(),
        [graph_number](const Entry& entry) { return entry.graph_number == graph_number; });
    if (last == m_entries.rend()) {
        return std::nullopt;
    }
    const ZoomState before = last->before;
    m_entries.erase(std::next(last).base());
    return before;
}

}  // namespace wavo
