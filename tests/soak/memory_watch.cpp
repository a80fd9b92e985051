#include "memory_watch.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>

namespace wavo::testing {

std::uint64_t ResidentMemory() {
    std::uint64_t whole = 0;
    std::uint64_t resident = 0;
    std::ifstream("/proc/self/statm") >> whole >> resident;
    return resident * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

void MemoryWatch::Sample(std::int64_t second) {
    if (m_samples.empty() || m_samples.back().second != second) {
        m_samples.push_back({second, ResidentMemory()});
    }
}

std::uint64_t MemoryWatch::First() const {
    const auto first = std::find_if(m_samples.begin(), m_samples.end(),
                                    [](const Entry& entry) { return entry.second >= kWarmUp; });
    return first == m_samples.end() ? 0 : first->bytes;
}

std::uint64_t MemoryWatch::Last() const {
    return m_samples.empty() ? 0 : m_samples.back().bytes;
}

std::uint64_t MemoryWatch::Smallest() const {
    const auto smallest =
        std::min_element(m_samples.begin(), m_samples.end(),
                         [](const Entry& a, const Entry& b) { return a.bytes < b.bytes; });
    return smallest == m_samples.end() ? 0 : smallest->bytes;
}

std::string MemoryWatch::ByMinute() const {
    std::string text;
    std::int64_t due = 0;
    for (const Entry& entry : m_samples) {
        if (entry.second >= due) {
            char number[40];
            std::snprintf(number, sizeof number, "%s%.1f", text.empty() ? "" : " ",
                          static_cast<double>(entry.bytes) / 1048576.0);
            text += number;
            due += 60;
        }
    }
    return text;
}

double MemoryWatch::LargestChange() const {
    if (Smallest() == 0) {
        return std::numeric_limits<double>::infinity();
    }
    const auto first = static_cast<double>(First());
    double largest = 0.0;
    for (const Entry& entry : m_samples) {
        if (entry.second >= kWarmUp) {
            largest =
                std::max(largest, std::fabs(static_cast<double>(entry.bytes) - first) / first);
        }
    }
    return largest;
}

}  // namespace wavo::testing
