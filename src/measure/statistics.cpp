#include "measure/statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace wavo::measure {

namespace {

/// Values that are read twice while they stay in the nearest cache.
constexpr std::size_t kCachedBlock = 1024;
/// Two doubles in one register, which every processor of ours has.
using Pair = double __attribute__((vector_size(16)));
/// Independent sums, so that several values are added at a time.
constexpr std::size_t kPairs = 4;
constexpr std::size_t kLanes = 2 * kPairs;
using Lanes = std::array<Pair, kPairs>;

Pair LoadPair(const double* from) {
    Pair pair;
    std::memcpy(&pair, from, sizeof(pair));
    return pair;
}

double SumOf(const Lanes& lanes) {
    double sum = 0.0;
    for (const Pair& pair : lanes) {
        sum += pair[0];
        sum += pair[1];
    }
    return sum;
}

struct FirstRead {
    double sum = 0.0;  ///< of value - shift; not finite where a value is not
    double minimum = 0.0;
    double maximum = 0.0;
};

/// REQUIRES: a multiple of kLanes values.
FirstRead ReadFirst(std::span<const double> values, double shift) {
    Lanes sum{};
    Lanes minimum;
    Lanes maximum;
    for (std::size_t lane = 0; lane < kPairs; ++lane) {
        minimum[lane] = maximum[lane] = LoadPair(&values[2 * lane]);
    }
    for (std::size_t i = 0; i < values.size(); i += kLanes) {
        for (std::size_t lane = 0; lane < kPairs; ++lane) {
            const Pair value = LoadPair(&values[i + 2 * lane]);
            sum[lane] += value - shift;
            minimum[lane] = value < minimum[lane] ? value : minimum[lane];
            maximum[lane] = value > maximum[lane] ? value : maximum[lane];
        }
    }
    FirstRead read{SumOf(sum), minimum[0][0], maximum[0][0]};
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        read.minimum = std::min(read.minimum, minimum[lane / 2][lane % 2]);
        read.maximum = std::max(read.maximum, maximum[lane / 2][lane % 2]);
    }
    return read;
}

/// Sums about the mean; the second read of a block.
void ReadSecond(std::span<const double> values, double shift, double mean, Moments* moments) {
    Lanes sum{};
    Lanes square{};
    Lanes product{};  // with the place of the first lane
    double place = 0.0;
    for (std::size_t i = 0; i < values.size(); i += kLanes) {
        for (std::size_t lane = 0; lane < kPairs; ++lane) {
            const Pair deviation = (LoadPair(&values[i + 2 * lane]) - shift) - mean;
            sum[lane] += deviation;
            square[lane] += deviation * deviation;
            product[lane] += deviation * place;
        }
        place += static_cast<double>(kLanes);
    }
    moments->m2 = SumOf(square);
    moments->ctx = SumOf(product) - SumOf(sum) * moments->cycle_mean;
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        moments->ctx += static_cast<double>(lane) * sum[lane / 2][lane % 2];
    }
}

/// The place of the first value that is `wanted`. REQUIRES: there is one.
std::size_t PlaceOf(std::span<const double> values, double wanted) {
    using Mask = decltype(Pair{} == Pair{});
    constexpr std::size_t kCompared = 32;  // at a time
    std::size_t place = 0;
    for (; place + kCompared <= values.size(); place += kCompared) {
        Mask equal{};
        for (std::size_t i = 0; i < kCompared; i += 2) {
            equal |= LoadPair(&values[place + i]) == wanted;
        }
        if ((equal[0] | equal[1]) != 0) {
            break;
        }
    }
    while (values[place] != wanted) {
        ++place;
    }
    return place;
}

/// The block's moments; false when it holds values that are not finite. Where its extremes lie is
/// only looked for where they are beyond those of `before`.
bool BlockMoments(std::span<const double> values, Cycle first_cycle, const Moments& before,
                  Moments* moments) {
    const double shift = values.front();
    const FirstRead first = ReadFirst(values, shift);
    if (!std::isfinite(first.sum)) {
        return false;
    }
    const auto count = static_cast<double>(values.size());
    *moments = {};
    moments->count = static_cast<std::int64_t>(values.size());
    moments->shift = shift;
    moments->cycle_shift = first_cycle;
    moments->mean = first.sum / count;
    moments->cycle_mean = (count - 1.0) / 2.0;
    moments->ctt = count * (count * count - 1.0) / 12.0;
    ReadSecond(values, shift, moments->mean, moments);
    moments->minimum = first.minimum;
    moments->maximum = first.maximum;
    const auto place = [&](double extreme) {
        return first_cycle + static_cast<Cycle>(PlaceOf(values, extreme));
    };
    if (before.count == 0 || first.minimum < before.minimum) {
        moments->minimum_cycle = place(first.minimum);
    }
    if (before.count == 0 || first.maximum > before.maximum) {
        moments->maximum_cycle = place(first.maximum);
    }
    return true;
}

}  // namespace

void Moments::Add(Cycle cycle, double value) {
    if (!std::isfinite(value)) {
        ++not_finite;
        return;
    }
    if (count == 0) {
        shift = minimum = maximum = value;
        cycle_shift = minimum_cycle = maximum_cycle = cycle;
    } else if (value < minimum) {
        minimum = value;
        minimum_cycle = cycle;
    } else if (value > maximum) {
        maximum = value;
        maximum_cycle = cycle;
    }
    ++count;
    const double offset = value - shift;
    const auto cycle_offset = static_cast<double>(cycle - cycle_shift);
    const double deviation = offset - mean;
    const double cycle_deviation = cycle_offset - cycle_mean;
    mean += deviation / static_cast<double>(count);
    cycle_mean += cycle_deviation / static_cast<double>(count);
    m2 += deviation * (offset - mean);
    ctx += cycle_deviation * (offset - mean);
    ctt += cycle_deviation * (cycle_offset - cycle_mean);
}

void Moments::Merge(const Moments& other) {
    not_finite += other.not_finite;
    if (other.count == 0) {
        return;
    }
    if (count == 0) {
        const std::int64_t left_out = not_finite;
        *this = other;
        not_finite = left_out;
        return;
    }
    const auto ours = static_cast<double>(count);
    const auto theirs = static_cast<double>(other.count);
    const double total = ours + theirs;
    const double apart = (other.shift - shift) + (other.mean - mean);
    const double cycles_apart =
        static_cast<double>(other.cycle_shift - cycle_shift) + (other.cycle_mean - cycle_mean);
    const double weight = ours * theirs / total;
    m2 += other.m2 + apart * apart * weight;
    ctx += other.ctx + cycles_apart * apart * weight;
    ctt += other.ctt + cycles_apart * cycles_apart * weight;
    mean += apart * theirs / total;
    cycle_mean += cycles_apart * theirs / total;
    count += other.count;
    if (other.minimum < minimum) {
        minimum = other.minimum;
        minimum_cycle = other.minimum_cycle;
    }
    if (other.maximum > maximum) {
        maximum = other.maximum;
        maximum_cycle = other.maximum_cycle;
    }
}

Moments MomentsOf(std::span<const double> values, Cycle first_cycle) {
    Moments all;
    while (!values.empty()) {
        std::size_t size = std::min(values.size(), kCachedBlock);
        size = size >= kLanes ? size / kLanes * kLanes : size;
        const auto block = values.first(size);
        Moments moments;
        if (size % kLanes == 0 && BlockMoments(block, first_cycle, all, &moments)) {
            all.Merge(moments);
        } else {
            for (std::size_t i = 0; i < size; ++i) {
                all.Add(first_cycle + static_cast<Cycle>(i), block[i]);
            }
        }
        values = values.subspan(size);
        first_cycle += static_cast<Cycle>(size);
    }
    return all;
}

Statistics StatisticsOf(const Moments& moments, double cycle_time, Divisor divisor) {
    Statistics figures;
    figures.count = moments.count;
    figures.not_finite = moments.not_finite;
    if (moments.count == 0) {
        const auto none = Figure::Not("no values");
        figures.mean = figures.rms = figures.deviation = figures.slope = none;
        figures.peak_to_peak = figures.minimum = figures.maximum = none;
        return figures;
    }
    const auto count = static_cast<double>(moments.count);
    const double mean = moments.shift + moments.mean;
    figures.mean = mean;
    figures.rms = std::hypot(mean, std::sqrt(moments.m2 / count));
    figures.minimum = moments.minimum;
    figures.maximum = moments.maximum;
    figures.peak_to_peak = moments.maximum - moments.minimum;
    figures.minimum_cycle = moments.minimum_cycle;
    figures.maximum_cycle = moments.maximum_cycle;
    if (moments.count == 1) {
        figures.deviation = figures.slope = Figure::Not("one value only");
        return figures;
    }
    figures.deviation = std::sqrt(moments.m2 / (divisor == Divisor::kSample ? count - 1.0 : count));
    figures.slope = moments.ctx / moments.ctt / cycle_time;
    return figures;
}

Statistics StatisticsBetween(const Series& series, double a, double b, Divisor divisor) {
    if (series.values.empty() || !std::isfinite(a) || !std::isfinite(b)) {
        return StatisticsOf({}, series.cycle_time, divisor);
    }
    if (a > b) {
        std::swap(a, b);
    }
    // Compared as times before they become cycles, which they might be too large for.
    const auto last_of_all = static_cast<double>(series.CycleOf(series.values.size() - 1));
    const auto first_of_all = static_cast<double>(series.CycleOf(0));
    const double low = std::ceil((a - kTimeTolerance) / series.cycle_time);
    const double high = std::floor((b + kTimeTolerance) / series.cycle_time);
    if (low > last_of_all || high < first_of_all || high < low) {
        return StatisticsOf({}, series.cycle_time, divisor);
    }
    const auto first_cycle = static_cast<Cycle>(std::max(low, first_of_all));
    const auto last_cycle = static_cast<Cycle>(std::min(high, last_of_all));
    const std::size_t first = series.PlaceFrom(first_cycle);
    const std::size_t end = series.PlaceFrom(last_cycle + 1);
    Moments moments;
    if (series.cycles.empty()) {
        moments = MomentsOf(series.values.subspan(first, end - first), first_cycle);
    } else {
        for (std::size_t i = first; i < end; ++i) {
            moments.Add(series.cycles[i], series.values[i]);
        }
    }
    Statistics figures = StatisticsOf(moments, series.cycle_time, divisor);
    figures.missing = last_cycle - first_cycle + 1 - static_cast<std::int64_t>(end - first);
    return figures;
}

}  // namespace wavo::measure
