#include "graph/values/min_max_pyramid.h"

#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

constexpr std::uint8_t kHoldsNaN = 1;
constexpr std::uint8_t kHoldsInfinite = 2;

/// Stretches up to this are quicker read one by one.
constexpr std::size_t kReadEach = 48;

/// Two numbers that are handled at once.
using Pair = double __attribute__((vector_size(16), aligned(8), may_alias));

Pair LoadPair(const double* from) {
    return *reinterpret_cast<const Pair*>(from);
}

/// The smaller of each two; `kept` where the candidate is NaN.
Pair Least(Pair kept, Pair candidate) {
    return candidate < kept ? candidate : kept;
}

Pair Largest(Pair kept, Pair candidate) {
    return candidate > kept ? candidate : kept;
}

/// Minimum and maximum in the making. Several side by side: none waits for the one before it.
class Extent {
 public:
    /// Takes samples in.
    [[gnu::always_inline]] void Take(const double* samples, std::size_t count) {
        Take(samples, samples, count);
    }

    /// Takes `count` minima and as many maxima in. Taking one twice does no harm: the last four
    /// may overlap those before.
    [[gnu::always_inline]] void Take(const double* minima, const double* maxima,
                                     std::size_t count) {
        if (count < 4) {
            for (std::size_t i = 0; i < count; ++i) {
                m_least[0] = Least(m_least[0], Pair{minima[i], minima[i]});
                m_largest[0] = Largest(m_largest[0], Pair{maxima[i], maxima[i]});
            }
            return;
        }
        std::size_t i = 0;
        for (; i + 4 <= count; i += 4) {
            TakeFour(minima + i, maxima + i);
        }
        if (i != count) {
            TakeFour(minima + count - 4, maxima + count - 4);
        }
    }

    [[nodiscard]] MinMax Result() const {
        const Pair least = Least(m_least[0], m_least[1]);
        const Pair largest = Largest(m_largest[0], m_largest[1]);
        return {std::min(least[0], least[1]), std::max(largest[0], largest[1])};
    }

 private:
    void TakeFour(const double* minima, const double* maxima) {
        m_least[0] = Least(m_least[0], LoadPair(minima));
        m_least[1] = Least(m_least[1], LoadPair(minima + 2));
        m_largest[0] = Largest(m_largest[0], LoadPair(maxima));
        m_largest[1] = Largest(m_largest[1], LoadPair(maxima + 2));
    }

    static constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Pair m_least[2] = {{kInfinity, kInfinity}, {kInfinity, kInfinity}};
    Pair m_largest[2] = {{-kInfinity, -kInfinity}, {-kInfinity, -kInfinity}};
};

std::uint8_t MarksOf(const double* samples, std::size_t count) {
    // Only NaN and infinite samples leave anything but 0.
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += samples[i] * 0.0;
    }
    if (sum == 0.0) {
        return 0;
    }
    std::uint8_t marks = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isnan(samples[i])) {
            marks |= kHoldsNaN;
        } else if (std::isinf(samples[i])) {
            marks |= kHoldsInfinite;
        }
    }
    return marks;
}

std::size_t CeilDivide(std::size_t dividend, std::size_t divisor) {
    return (dividend + divisor - 1) / divisor;
}

/// Calls `work` with the one or two ranges of slots (begin, end) that a stretch of the ring
/// occupies. Stops when it returns false.
template <typename Work>
void ForSlots(const SampleRing& ring, std::uint64_t sequence, std::size_t count, Work work) {
    if (count == 0) {
        return;
    }
    const std::size_t begin = ring.SlotOfSequence(sequence);
    const std::size_t in_first = std::min(count, ring.Slots().size() - begin);
    if (work(begin, begin + in_first) && in_first < count) {
        work(0, count - in_first);
    }
}

}  // namespace

MinMax FiniteExtremesOf(std::span<const double> samples) {
    Extent extent;
    extent.Take(samples.data(), samples.size());
    const MinMax range = extent.Result();
    if (range.IsEmpty() || (std::isfinite(range.minimum) && std::isfinite(range.maximum))) {
        return range;
    }
    MinMax finite;
    for (const double sample : samples) {
        if (std::isfinite(sample)) {
            finite = {std::min(finite.minimum, sample), std::max(finite.maximum, sample)};
        }
    }
    return finite;
}

void MinMaxPyramid::Level::Resize(std::size_t blocks, std::size_t expected) {
    minimum.reserve(expected);
    maximum.reserve(expected);
    marks.reserve(expected);
    minimum.resize(blocks);
    maximum.resize(blocks);
    marks.resize(blocks);
}

void MinMaxPyramid::Level::Set(std::size_t block, const MinMax& range, std::uint8_t block_marks) {
    minimum[block] = range.minimum;
    maximum[block] = range.maximum;
    marks[block] = block_marks;
}

void MinMaxPyramid::ResizeLevels(std::size_t slots, std::size_t expected_slots) {
    m_slots_taken = slots;
    std::size_t level = 0;
    std::size_t blocks = slots;
    std::size_t expected = expected_slots;
    do {
        blocks = CeilDivide(blocks, kFanOut);
        expected = CeilDivide(expected, kFanOut);
        if (level == m_levels.size()) {
            m_levels.emplace_back();
            if (level != 0) {
                // What the level below holds already has no block here yet.
                m_levels[level].Resize(blocks, expected);
                UpdateLevel(level, 0, blocks - 1);
            }
        }
        m_levels[level].Resize(blocks, expected);
        ++level;
    } while (blocks > kFanOut);
}

void MinMaxPyramid::Update(const SampleRing& ring) {
    if (m_started && m_moves == ring.Moves() && m_appended == ring.Appended()) {
        return;
    }
    const std::uint64_t oldest = ring.FirstKept();
    const std::uint64_t appended = ring.Appended();
    const bool anew = !m_started || m_moves != ring.Moves() || m_appended < oldest;
    if (anew) {
        m_levels.clear();
        m_slots_taken = 0;
    }
    const std::uint64_t first = anew ? oldest : m_appended;
    m_started = true;
    m_moves = ring.Moves();
    m_appended = appended;
    if (first == appended) {
        return;
    }
    // Where the samples lie around the end, all slots have been written before.
    const std::size_t newest_slot = ring.SlotOfSequence(appended - 1);
    const bool around_end = ring.SlotOfSequence(oldest) > newest_slot;
    const std::size_t taken =
        std::max(m_slots_taken, around_end ? ring.Slots().size() : newest_slot + 1);
    if (taken != m_slots_taken) {
        ResizeLevels(taken, ring.Slots().size());
    }
    const double* const samples = ring.Slots().data();
    ForSlots(ring, first, static_cast<std::size_t>(appended - first),
             [&](std::size_t begin, std::size_t end) {
                 UpdateSlots(samples, begin, end);
                 return true;
             });
}

void MinMaxPyramid::UpdateSlots(const double* samples, std::size_t begin, std::size_t end) {
    std::size_t first = begin / kFanOut;
    std::size_t last = (end - 1) / kFanOut;
    UpdateLowest(samples, first, last);
    for (std::size_t level = 1; level < m_levels.size(); ++level) {
        first /= kFanOut;
        last /= kFanOut;
        UpdateLevel(level, first, last);
    }
}

void MinMaxPyramid::UpdateLowest(const double* samples, std::size_t first_block,
                                 std::size_t last_block) {
    for (std::size_t block = first_block; block <= last_block; ++block) {
        const std::size_t begin = block * kFanOut;
        const std::size_t count = std::min(kFanOut, m_slots_taken - begin);
        Extent extent;
        extent.Take(samples + begin, count);
        m_levels[0].Set(block, extent.Result(), MarksOf(samples + begin, count));
    }
}

void MinMaxPyramid::UpdateLevel(std::size_t level, std::size_t first_block,
                                std::size_t last_block) {
    const Level& below = m_levels[level - 1];
    for (std::size_t block = first_block; block <= last_block; ++block) {
        const std::size_t begin = block * kFanOut;
        const std::size_t end = std::min(begin + kFanOut, below.Size());
        Extent extent;
        extent.Take(below.minimum.data() + begin, below.maximum.data() + begin, end - begin);
        std::uint8_t marks = 0;
        for (std::size_t i = begin; i < end; ++i) {
            marks |= below.marks[i];
        }
        m_levels[level].Set(block, extent.Result(), marks);
    }
}

template <typename Taker>
void MinMaxPyramid::TakeSlots(const double* samples, std::size_t begin, std::size_t end,
                              Taker& result) const {
    Taker extent = result;  // stays in registers
    if (end - begin <= kReadEach) {
        extent.Take(samples + begin, end - begin);
        result = extent;
        return;
    }
    std::size_t first = CeilDivide(begin, kFanOut);
    std::size_t last = end / kFanOut;
    extent.Take(samples + begin, first * kFanOut - begin);
    extent.Take(samples + last * kFanOut, end - last * kFanOut);
    for (std::size_t level = 0;; ++level) {
        const double* const minima = m_levels[level].minimum.data();
        const double* const maxima = m_levels[level].maximum.data();
        if (last - first <= kReadEach || level + 1 == m_levels.size()) {
            extent.Take(minima + first, maxima + first, last - first);
            result = extent;
            return;
        }
        const std::size_t next_first = CeilDivide(first, kFanOut);
        const std::size_t next_last = last / kFanOut;
        const std::size_t edge = next_last * kFanOut;
        extent.Take(minima + first, maxima + first, next_first * kFanOut - first);
        extent.Take(minima + edge, maxima + edge, last - edge);
        first = next_first;
        last = next_last;
    }
}

MinMax MinMaxPyramid::Of(const SampleRing& ring, std::uint64_t sequence, std::size_t count) const {
    const double* const samples = ring.Slots().data();
    Extent extent;
    ForSlots(ring, sequence, count, [&](std::size_t begin, std::size_t end) {
        TakeSlots(samples, begin, end, extent);
        return true;
    });
    return extent.Result();
}

MinMax MinMaxPyramid::OfSlots(const double* slots, std::size_t begin, std::size_t end) const {
    Extent extent;
    TakeSlots(slots, begin, end, extent);
    return extent.Result();
}

std::size_t MinMaxPyramid::DetailOf(std::size_t count) const {
    constexpr std::size_t kLeastBlocks = 3;
    std::size_t detail = 0;
    while (detail < m_levels.size() && count >= kLeastBlocks * BlockSize(detail + 1)) {
        ++detail;
    }
    return detail;
}

MinMaxPyramid::Blocks MinMaxPyramid::BlocksOf(const double* slots, std::size_t detail) const {
    return detail == 0
               ? Blocks{slots, slots}
               : Blocks{m_levels[detail - 1].minimum.data(), m_levels[detail - 1].maximum.data()};
}

void MinMaxPyramid::LimitsOfRow(std::span<const std::size_t> bounds, std::size_t detail,
                                const RowLimits& found) const {
    const auto [minima, maxima] = BlocksOf(nullptr, detail);
    const std::size_t bits = kFanOutBits * detail;
    const std::size_t round_up = BlockSize(detail) - 1;
    for (std::size_t column = 0; column + 1 < bounds.size(); ++column) {
        const std::size_t begin = bounds[column] >> bits;
        const std::size_t end = (bounds[column + 1] - 1) >> bits;
        const std::size_t first = (bounds[column] + round_up) >> bits;
        const std::size_t last = bounds[column + 1] >> bits;
        Extent extent;
        if (first < last) {
            extent.Take(minima + first, maxima + first, last - first);
        }
        const MinMax inner = extent.Result();
        found.inner_minimum[column] = inner.minimum;
        found.inner_maximum[column] = inner.maximum;
        found.outer_minimum[column] = std::min({inner.minimum, minima[begin], minima[end]});
        found.outer_maximum[column] = std::max({inner.maximum, maxima[begin], maxima[end]});
    }
}

void MinMaxPyramid::Narrow(const double* slots, std::size_t begin, std::size_t end,
                           std::size_t detail, MinMax& inner, MinMax& outer) const {
    const auto [minima, maxima] = BlocksOf(slots, detail);
    const std::size_t bits = kFanOutBits * detail;
    const std::size_t first = (begin + BlockSize(detail) - 1) >> bits;
    const std::size_t last = end >> bits;
    // What the whole blocks above hold is known.
    const std::size_t known_first = (first + kFanOut - 1) / kFanOut * kFanOut;
    const std::size_t known_last = last / kFanOut * kFanOut;
    Extent extent;
    if (known_first < known_last) {
        extent.Take(minima + first, maxima + first, known_first - first);
        extent.Take(minima + known_last, maxima + known_last, last - known_last);
    } else if (first < last) {
        extent.Take(minima + first, maxima + first, last - first);
    }
    const MinMax found = extent.Result();
    inner = {std::min(inner.minimum, found.minimum), std::max(inner.maximum, found.maximum)};
    const std::size_t at_begin = begin >> bits;
    const std::size_t at_end = (end - 1) >> bits;
    outer = {std::min({inner.minimum, minima[at_begin], minima[at_end]}),
             std::max({inner.maximum, maxima[at_begin], maxima[at_end]})};
}

void MinMaxPyramid::FetchToNarrow(const double* slots, std::size_t begin, std::size_t end,
                                  std::size_t detail) const {
    const auto [minima, maxima] = BlocksOf(slots, detail);
    const auto fetch = [](const double* from) {
        constexpr std::size_t kLine = 64 / sizeof(double);
        __builtin_prefetch(from);
        __builtin_prefetch(from + kLine);
    };
    const std::size_t bits = kFanOutBits * detail;
    const std::size_t first = begin >> bits;
    const std::size_t last = ((end - 1) >> bits) / kFanOut * kFanOut;
    fetch(minima + first);
    fetch(minima + last);
    if (detail != 0) {
        fetch(maxima + first);
        fetch(maxima + last);
    }
}

bool MinMaxPyramid::HasNaN() const {
    if (m_levels.empty()) {
        return false;
    }
    const std::vector<std::uint8_t>& marks = m_levels.back().marks;
    return std::any_of(marks.begin(), marks.end(),
                       [](std::uint8_t mark) { return (mark & kHoldsNaN) != 0; });
}

bool MinMaxPyramid::HasNaN(const SampleRing& ring, std::uint64_t sequence,
                           std::size_t count) const {
    if (!HasNaN() || count == 0) {
        return false;
    }
    const double* const samples = ring.Slots().data();
    bool found = false;
    ForSlots(ring, sequence, count, [&](std::size_t begin, std::size_t end) {
        found = SlotsHaveNaN(samples, begin, end);
        return !found;
    });
    return found;
}

MinMaxPyramid::CleanBlock MinMaxPyramid::LargestClean(std::size_t begin, std::size_t end,
                                                      std::uint8_t mark) const {
    CleanBlock largest;
    std::size_t slots = kFanOut;
    for (std::size_t level = 0; level < m_levels.size(); ++level, slots *= kFanOut) {
        if (begin % slots != 0 || end - begin < slots ||
            (m_levels[level].marks[begin / slots] & mark) != 0) {
            break;
        }
        largest = {level, slots};
    }
    return largest;
}

bool MinMaxPyramid::SlotsHaveNaN(const double* samples, std::size_t begin, std::size_t end) const {
    while (begin < end) {
        const CleanBlock clean = LargestClean(begin, end, kHoldsNaN);
        if (clean.slots == 0 && std::isnan(samples[begin])) {
            return true;
        }
        begin += std::max<std::size_t>(1, clean.slots);
    }
    return false;
}

MinMax MinMaxPyramid::FiniteOf(const SampleRing& ring, std::uint64_t sequence,
                               std::size_t count) const {
    const MinMax range = Of(ring, sequence, count);
    if (range.IsEmpty() || (std::isfinite(range.minimum) && std::isfinite(range.maximum))) {
        return range;
    }
    const double* const samples = ring.Slots().data();
    Extent extent;
    ForSlots(ring, sequence, count, [&](std::size_t begin, std::size_t end) {
        TakeFiniteSlots(samples, begin, end, extent);
        return true;
    });
    return extent.Result();
}

template <typename Taker>
void MinMaxPyramid::TakeFiniteSlots(const double* samples, std::size_t begin, std::size_t end,
                                    Taker& extent) const {
    while (begin < end) {
        const CleanBlock clean = LargestClean(begin, end, kHoldsInfinite);
        if (clean.slots != 0) {
            const Level& level = m_levels[clean.level];
            const std::size_t block = begin / clean.slots;
            extent.Take(&level.minimum[block], &level.maximum[block], 1);
        } else if (std::isfinite(samples[begin])) {
            extent.Take(samples + begin, 1);
        }
        begin += std::max<std::size_t>(1, clean.slots);
    }
}

}  // namespace wavo
