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

MomentBlocks::Result MomentBlocks::OfPart(Cycle first, Cycle end, const Read& read) {
    for (const End& known : m_ends) {
        if (known.first == first && known.end == end) {
            return {known.moments, true};
        }
    }
    std::array<double, kBlock> values;  // NOLINT(cppcoreguidelines-pro-type-member-init): read into
    const Part part = read(first, std::span(values).first(static_cast<std::size_t>(end - first)));
    return {part.is_whole ? MomentsOf(part.values, first) : Moments(), part.is_whole};
}

MomentBlocks::Result MomentBlocks::OfBlock(std::size_t level, Cycle number, const Read& read) {
    if (m_levels.size() <= level) {
        m_levels.resize(level + 1);
    }
    const auto known = m_levels[level].find(number);
    if (known != m_levels[level].end()) {
        return {known->second, true};
    }
    Result result;
    if (level == 0) {
        result = OfPart(number * kBlock, (number + 1) * kBlock, read);
    }
    for (Cycle child = number * kFan; level > 0 && child < (number + 1) * kFan; ++child) {
        const Result of_child = OfBlock(level - 1, child, read);
        result.moments.Merge(of_child.moments);
        if (!of_child.is_whole) {
            result.is_whole = false;
            break;
        }
    }
    if (result.is_whole) {
        Keep(level, number, result.moments);
    }
    return result;
}

void MomentBlocks::Keep(std::size_t level, Cycle number, const Moments& moments) {
    m_levels[level].emplace_hint(m_levels[level].end(), number, moments);
    if (m_levels.size() == 1 || m_levels[0].size() < m_sweep_at) {
        return;
    }
    std::erase_if(m_levels[0], [&parents = m_levels[1]](const auto& block) {
        return parents.contains(NumberOf(block.first, kFan));
    });
    m_sweep_at = 2 * std::max(kMostSmallest, m_levels[0].size());
}

MomentBlocks::Result MomentBlocks::Of(Cycle first, Cycle end, const Read& read) {
    Result result;
    while (first < end && result.is_whole) {
        Cycle number = NumberOf(first, kBlock);
        Result part;
        if (first != number * kBlock || end - first < kBlock) {
            const Cycle part_end = std::min(end, (number + 1) * kBlock);
            part = OfPart(first, part_end, read);
            if (part.is_whole) {
                m_ends[m_oldest_end] = {first, part_end, part.moments};
                m_oldest_end = 1 - m_oldest_end;
            }
            first = part_end;
        } else {
            // The largest block that begins here and is wholly asked for.
            std::size_t level = 0;
            Cycle size = kBlock;
            while (number % kFan == 0 && end - first >= size * kFan) {
                number /= kFan;
                size *= kFan;
                ++level;
            }
            part = OfBlock(level, number, read);
            first += size;
        }
        result.moments.Merge(part.moments);
        result.is_whole = part.is_whole;
    }
    return result;
}

void MomentBlocks::Forget(Cycle before) {
    for (std::size_t level = 0; level < m_levels.size(); ++level) {
        auto& blocks = m_levels[level];
        const Cycle number = NumberOf(before, SizeOf(level));
        blocks.erase(blocks.begin(), blocks.lower_bound(number));
    }
}

std::size_t MomentBlocks::Size() const {
    std::size_t size = 0;
    for (const auto& blocks : m_levels) {
        size += blocks.size();
    }
    return size;
}

}  // namespace wavo::measure
