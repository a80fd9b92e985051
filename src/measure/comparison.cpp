#include "measure/comparison.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "measure/fft.h"
#include "measure/stepped_fft.h"

namespace wavo::measure {

/// Sums of all values, and of their squares, before each place. A part of coroutines that can be
/// seen from outside, and therefore not of an unnamed namespace.
class SumsBefore {
 public:
    /// REQUIRES: `sums` ends before the values do.
    static Steps<bool> Take(std::span<const double> values, SumsBefore* sums) {
        sums->m_sums.resize(values.size() + 1);
        sums->m_squares.resize(values.size() + 1);
        for (std::size_t i = 0; i < values.size(); ++i) {
            sums->m_sums[i + 1] = sums->m_sums[i] + values[i];
            sums->m_squares[i + 1] = sums->m_squares[i] + values[i] * values[i];
            if (i % kRowsPerStep == 0) {
                co_await Pause{};
            }
        }
        co_return true;
    }

    [[nodiscard]] double Sum(std::size_t first, std::size_t count) const {
        return m_sums[first + count] - m_sums[first];
    }
    /// Sum of the squared deviations from the mean of a stretch.
    [[nodiscard]] double Energy(std::size_t first, std::size_t count) const {
        const double sum = Sum(first, count);
        return m_squares[first + count] - m_squares[first] - sum * sum / static_cast<double>(count);
    }
    [[nodiscard]] double WholeEnergy() const { return m_squares.back(); }

 private:
    std::vector<double> m_sums;
    std::vector<double> m_squares;
};

namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kShortest = 8;

/// Overlaps in which less moves than this part of all have no likeness.
constexpr double kLeastMotion = 1e-5;
/// Where motion alone leaves a choice, as on a straight way, what lies on each other counts; where
/// that does, too, as in what repeats, the longest overlap.
constexpr double kOfOffset = 1e-3;
constexpr double kOfMissed = 1e-6;

/// The finite values less their mean, others as 0, with zeros behind up to the length of `centred`.
Steps<bool> Centre(std::span<const double> values, std::vector<double>* centred,
                   double* whole_mean) {
    double shift = 0.0;
    double sum = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isfinite(values[i])) {
            shift = count == 0 ? values[i] : shift;
            sum += values[i] - shift;
            ++count;
        }
        if (i % kRowsPerStep == 0) {
            co_await Pause{};
        }
    }
    const double mean = count > 0 ? sum / static_cast<double>(count) : 0.0;
    *whole_mean = shift + mean;
    for (std::size_t i = 0; i < values.size(); ++i) {
        (*centred)[i] = std::isfinite(values[i]) ? (values[i] - shift) - mean : 0.0;
        if (i % kRowsPerStep == 0) {
            co_await Pause{};
        }
    }
    co_return true;
}

Steps<bool> Transform(std::span<const double> values, SteppedFft* fft) {
    fft->Begin(values);
    while (fft->Step()) {
        co_await Pause{};
    }
    co_return true;
}

/// The sums of values[i + shift] * reference[i], at place shift, or length + shift; both are as
/// long, with zeros behind.
Steps<bool> Correlate(std::span<const double> reference, std::span<const double> values,
                      std::vector<double>* products) {
    const std::size_t length = reference.size();
    SteppedFft ours;
    SteppedFft theirs;
    co_await Transform(reference, &ours);
    co_await Transform(values, &theirs);
    // The lines P of the products are those of real values. Real part and imaginary part, added
    // up, are real themselves, and their transform is that of P, turned round and sheared: real
    // part and imaginary part of it add up to the products.
    std::vector<double> folded(length);
    std::vector<Complex> our_lines(kRowsPerStep);
    std::vector<Complex> their_lines(kRowsPerStep);
    for (std::size_t first = 0; first <= length / 2; first += kRowsPerStep) {
        const std::size_t count = std::min(kRowsPerStep, length / 2 + 1 - first);
        ours.Lines(first, std::span(our_lines).first(count));
        theirs.Lines(first, std::span(their_lines).first(count));
        for (std::size_t i = 0; i < count; ++i) {
            const Complex product = their_lines[i] * std::conj(our_lines[i]);
            const std::size_t k = first + i;
            folded[k] = product.real() + product.imag();
            folded[(length - k) % length] = product.real() - product.imag();
        }
        co_await Pause{};
    }
    co_await Transform(folded, &ours);
    products->resize(length);
    const auto scale = 1.0 / static_cast<double>(length);
    for (std::size_t first = 0; first <= length / 2; first += kRowsPerStep) {
        const std::size_t count = std::min(kRowsPerStep, length / 2 + 1 - first);
        ours.Lines(first, std::span(our_lines).first(count));
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t n = first + i;
            (*products)[n] = (our_lines[i].real() + our_lines[i].imag()) * scale;
            (*products)[(length - n) % length] =
                (our_lines[i].real() - our_lines[i].imag()) * scale;
        }
        co_await Pause{};
    }
    co_return true;
}

/// Places of the reference that have a partner at a shift.
Stretch Overlap(std::size_t reference, std::size_t values, std::int64_t shift) {
    const std::int64_t first = std::max<std::int64_t>(0, -shift);
    const std::int64_t end =
        std::min(static_cast<std::int64_t>(reference), static_cast<std::int64_t>(values) - shift);
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(std::max(first, end))};
}

double ValueAt(std::span<const double> values, std::size_t place, std::int64_t shift) {
    const std::int64_t at = static_cast<std::int64_t>(place) + shift;
    return at >= 0 && at < static_cast<std::int64_t>(values.size())
               ? values[static_cast<std::size_t>(at)]
               : kNoValue;
}

}  // namespace

/// What two runs have in common at each shift, summed over their axes. All is in parts of what
/// moves in an axis at all, so that each counts the same whatever its unit.
struct SharedMotion {
    SharedMotion(std::size_t reference, std::size_t values, double least)
        : first(1 - static_cast<std::int64_t>(reference)),
          least_overlap(std::max(
              static_cast<std::size_t>(least * static_cast<double>(std::min(reference, values))),
              kShortest)),
          own(reference + values - 1, 0.0),
          shared(own.size(), 0.0),
          apart(own.size(), 0.0) {}

    const std::int64_t first;         ///< shift that the entries begin with
    const std::size_t least_overlap;  ///< shorter ones are left at 0
    std::vector<double> own;          ///< what moves in either
    std::vector<double> shared;       ///< of that, in both alike
    std::vector<double> apart;        ///< of that, how far they lie apart in the mean; at most all
};

/// Adds an axis. False, and nothing added, where it does not move in both.
Steps<bool> AddAxis(std::span<const double> reference, std::span<const double> values,
                    SharedMotion* motion) {
    // Even, so that two values are transformed as one.
    const std::size_t length = 2 * GoodLengthFrom((reference.size() + values.size()) / 2);
    std::vector<double> ours(length, 0.0);
    std::vector<double> theirs(length, 0.0);
    double our_mean = 0.0;
    double their_mean = 0.0;
    co_await Centre(reference, &ours, &our_mean);
    co_await Centre(values, &theirs, &their_mean);
    SumsBefore our_sums;
    SumsBefore their_sums;
    co_await SumsBefore::Take({ours.data(), reference.size()}, &our_sums);
    co_await SumsBefore::Take({theirs.data(), values.size()}, &their_sums);
    if (our_sums.WholeEnergy() == 0.0 || their_sums.WholeEnergy() == 0.0) {
        co_return false;
    }
    const double weight = 1.0 / (our_sums.WholeEnergy() + their_sums.WholeEnergy());
    std::vector<double> products;
    co_await Correlate(ours, theirs, &products);
    for (std::size_t i = 0; i < motion->own.size(); ++i) {
        if (i % kRowsPerStep == 0) {
            co_await Pause{};
        }
        const std::int64_t shift = motion->first + static_cast<std::int64_t>(i);
        const Stretch overlap = Overlap(reference.size(), values.size(), shift);
        const std::size_t size = overlap.Size();
        if (size < motion->least_overlap) {
            continue;
        }
        const auto count = static_cast<double>(size);
        const auto at = static_cast<std::size_t>(static_cast<std::int64_t>(overlap.first) + shift);
        const double our_sum = our_sums.Sum(overlap.first, size);
        const double their_sum = their_sums.Sum(at, size);
        const double own = our_sums.Energy(overlap.first, size) + their_sums.Energy(at, size);
        const std::int64_t place = shift >= 0 ? shift : static_cast<std::int64_t>(length) + shift;
        const double product = products[static_cast<std::size_t>(place)];
        const double offset = (their_mean - our_mean) + (their_sum - our_sum) / count;
        const double square = offset * offset * count;
        motion->own[i] += weight * own;
        motion->shared[i] += weight * 2.0 * (product - our_sum * their_sum / count);
        motion->apart[i] += own > 0.0 ? weight * own * (square / (square + own)) : 0.0;
    }
    co_return true;
}

Steps<Told<Match>> BestMatchInSteps(RunColumns reference, RunColumns values, double least) {
    if (reference.empty()) {
        co_return Told<Match>::Not("no axis to align by");
    }
    const std::size_t our_size = reference.front().size();
    const std::size_t their_size = values.front().size();
    const std::size_t shorter = std::min(our_size, their_size);
    if (shorter < kShortest) {
        co_return Told<Match>::Not("too few values to align");
    }
    SharedMotion motion(our_size, their_size, least);
    double moving = 0.0;
    for (std::size_t axis = 0; axis < reference.size(); ++axis) {
        const bool moves = co_await AddAxis(reference[axis], values[axis], &motion);
        moving += moves ? 1.0 : 0.0;
    }
    Match best;
    double least_difference = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < motion.own.size(); ++i) {
        if (i % kRowsPerStep == 0) {
            co_await Pause{};
        }
        if (motion.own[i] <= kLeastMotion * moving) {
            continue;
        }
        const std::int64_t shift = motion.first + static_cast<std::int64_t>(i);
        const std::size_t overlap = Overlap(our_size, their_size, shift).Size();
        const double likeness = motion.shared[i] / motion.own[i];
        const double missed = 1.0 - static_cast<double>(overlap) / static_cast<double>(shorter);
        const double difference =
            1.0 - likeness + kOfOffset * motion.apart[i] / motion.own[i] + kOfMissed * missed;
        if (difference < least_difference) {
            least_difference = difference;
            best = {shift, likeness, overlap};
        }
    }
    co_return best.overlap > 0 ? Told<Match>(best)
                               : Told<Match>::Not("nothing moves: no best match");
}

Steps<Told<Match>> BestMatchInSteps(std::span<const double> reference,
                                    std::span<const double> values, double least) {
    return BestMatchInSteps(RunColumns(1, reference), RunColumns(1, values), least);
}

Told<Match> BestMatch(std::span<const double> reference, std::span<const double> values,
                      double least) {
    return BestMatchInSteps(reference, values, least).Compute();
}

std::vector<double> DifferenceFrom(std::span<const double> reference,
                                   std::span<const double> values, std::int64_t shift) {
    std::vector<double> difference(reference.size());
    for (std::size_t i = 0; i < reference.size(); ++i) {
        difference[i] = ValueAt(values, i, shift) - reference[i];
    }
    return difference;
}

ToleranceBand AbsoluteBand(std::span<const double> reference, double width) {
    return {{reference.begin(), reference.end()}, std::vector<double>(reference.size(), width)};
}

Steps<ToleranceBand> SpreadBandInSteps(std::vector<std::span<const double>> runs, double times,
                                       double least) {
    std::size_t size = 0;
    for (const auto run : runs) {
        size = std::max(size, run.size());
    }
    ToleranceBand band{std::vector<double>(size, kNoValue), std::vector<double>(size, kNoValue)};
    for (std::size_t i = 0; i < size; ++i) {
        if (i % kRowsPerStep == 0) {
            co_await Pause{};
        }
        double shift = 0.0;
        double mean = 0.0;
        double squares = 0.0;
        double count = 0.0;
        for (const auto run : runs) {
            if (i >= run.size() || !std::isfinite(run[i])) {
                continue;
            }
            shift = count == 0.0 ? run[i] : shift;
            ++count;
            const double deviation = (run[i] - shift) - mean;
            mean += deviation / count;
            squares += deviation * ((run[i] - shift) - mean);
        }
        if (count >= 2.0) {
            band.middle[i] = shift + mean;
            band.width[i] = std::max(least, times * std::sqrt(squares / (count - 1.0)));
        } else if (count == 1.0 && times == 0.0) {
            band.middle[i] = shift;
            band.width[i] = least;
        }
    }
    co_return band;
}

ToleranceBand SpreadBand(std::span<const std::span<const double>> runs, double times,
                         double least) {
    return SpreadBandInSteps({runs.begin(), runs.end()}, times, least).Compute();
}

Steps<Told<Compared>> CompareInSteps(const ToleranceBand& band, std::span<const double> values,
                                     std::int64_t shift) {
    Compared result;
    double furthest = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < band.middle.size(); ++i) {
        if (i % kRowsPerStep == 0) {
            co_await Pause{};
        }
        const double difference = ValueAt(values, i, shift) - band.middle[i];
        if (!std::isfinite(difference) || std::isnan(band.width[i])) {
            continue;
        }
        ++result.compared;
        const double beyond = std::abs(difference) - band.width[i];
        result.outside += beyond > 0.0 ? 1 : 0;
        if (beyond > furthest) {
            furthest = beyond;
            result.worst_at = i;
            result.worst = difference;
            result.worst_width = band.width[i];
        }
    }
    if (result.compared == 0) {
        co_return Told<Compared>::Not("the runs have no values in common");
    }
    result.passed = result.outside == 0;
    co_return result;
}

Told<Compared> CompareWith(const ToleranceBand& band, std::span<const double> values,
                           std::int64_t shift) {
    return CompareInSteps(band, values, shift).Compute();
}

}  // namespace wavo::measure
