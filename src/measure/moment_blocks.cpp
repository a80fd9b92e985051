#include "measure/moment_blocks.h"

#include <algorithm>
#include <array>

namespace wavo::measure {

namespace {

/// The number of the block that a cycle lies in; cycles may be negative.
Cycle NumberOf(Cycle cycle, Cycle size) {
    return cycle >= 0 ? cycle / size : -((-cycle + size - 1) / size);
}

}  // namespace

Cycle MomentBlocks::SizeOf(std::size_t level) {
    Cycle size = kBlock;
    for (; level > 0; --level) {
        size *= kFan;
    }
    return size;
}

Moments MomentBlocks::ReadPart(Cycle first, Cycle end, const Read& read, bool* is_whole) {
    std::array<double, kBlock> values;  // NOLINT(cppcoreguidelines-pro-type-member-init): read into
    const Part part = read(first, std::span(values).first(static_cast<std::size_t>(end - first)));
    *is_whole = *is_whole && part.is_whole;
    return MomentsOf(part.values, first);
}

Moments MomentBlocks::OfBlock(std::size_t level, Cycle number, const Read& read, bool* is_whole) {
    if (m_levels.size() <= level) {
        m_levels.resize(level + 1);
    }
    const auto known = m_levels[level].find(number);
    if (known != m_levels[level].end()) {
        return known->second;
    }
    bool whole = true;
    Moments moments;
    if (level == 0) {
        moments = ReadPart(number * kBlock, (number + 1) * kBlock, read, &whole);
    } else {
        for (Cycle child = number * kFan; child < (number + 1) * kFan; ++child) {
            moments.Merge(OfBlock(level - 1, child, read, &whole));
        }
    }
    if (whole) {
        m_levels[level].emplace_hint(m_levels[level].end(), number, moments);
    }
    *is_whole = *is_whole && whole;
    return moments;
}

Moments MomentBlocks::Of(Cycle first, Cycle end, const Read& read) {
    Moments moments;
    bool is_whole = true;
    while (first < end) {
        Cycle number = NumberOf(first, kBlock);
        if (first != number * kBlock || end - first < kBlock) {
            const Cycle part_end = std::min(end, (number + 1) * kBlock);
            moments.Merge(ReadPart(first, part_end, read, &is_whole));
            first = part_end;
            continue;
        }
        // The largest block that begins here and is wholly asked for.
        std::size_t level = 0;
        Cycle size = kBlock;
        while (number % kFan == 0 && end - first >= size * kFan) {
            number /= kFan;
            size *= kFan;
            ++level;
        }
        moments.Merge(OfBlock(level, number, read, &is_whole));
        first += size;
    }
    return moments;
}

void MomentBlocks::Forget(Cycle before) {
    for (std::size_t level = 0; level < m_levels.size(); ++level) {
        auto& blocks = m_levels[level];
        const Cycle number = NumberOf(before, SizeOf(level));
        blocks.erase(blocks.begin(), blocks.lower_bound(number));
    }
}

}  // namespace wavo::measure
