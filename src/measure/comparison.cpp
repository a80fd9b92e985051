#include "measure/comparison.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "measure/fft.h"

namespace wavo::measure {

namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kShortest = 8;

/// The finite values less their mean, others as 0, with zeros behind up to `length`.
std::vector<double> Centred(std::span<const double> values, std::size_t length) {
    double shift = 0.0;
    double sum = 0.0;
    std::size_t count = 0;
    for (const double value : values) {
        if (std::isfinite(value)) {
            shift = count == 0 ? value : shift;
            sum += value - shift;
            ++count;
        }
    }
    const double mean = count > 0 ? sum / static_cast<double>(count) : 0.0;
    std::vector<double> centred(length, 0.0);
    for (std::size_t i = 0; i < values.size(); ++i) {
        centred[i] = std::isfinite(values[i]) ? (values[i] - shift) - mean : 0.0;
    }
    return centred;
}

/// Sums of all values, and of their squares, before each place.
class SumsBefore {
 public:
    explicit SumsBefore(std::span<const double> values)
        : m_sums(values.size() + 1, 0.0), m_squares(values.size() + 1, 0.0) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            m_sums[i + 1] = m_sums[i] + values[i];
            m_squares[i + 1] = m_squares[i] + values[i] * values[i];
        }
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

Told<Match> BestMatch(std::span<const double> reference, std::span<const double> values,
                      double least) {
    const std::size_t shorter = std::min(reference.size(), values.size());
    if (shorter < kShortest) {
        return Told<Match>::Not("too few values to align");
    }
    const std::size_t length = GoodLengthFrom(reference.size() + values.size() - 1);
    const auto ours = Centred(reference, length);
    const auto theirs = Centred(values, length);
    const SumsBefore our_sums({ours.data(), reference.size()});
    const SumsBefore their_sums({theirs.data(), values.size()});
    const double whole = our_sums.WholeEnergy() * their_sums.WholeEnergy();
    if (whole == 0.0) {
        return Told<Match>::Not("nothing moves: no best match");
    }
    Fft fft;
    std::vector<Complex> our_lines;
    std::vector<Complex> their_lines;
    fft.Forward(ours, &our_lines);
    fft.Forward(theirs, &their_lines);
    for (std::size_t k = 0; k < our_lines.size(); ++k) {
        their_lines[k] *= std::conj(our_lines[k]);
    }
    std::vector<double> products;  // at place shift, or length + shift
    fft.Inverse(their_lines, length, &products);
    const auto least_overlap = static_cast<std::size_t>(least * static_cast<double>(shorter));
    Match best;
    best.likeness = -2.0;
    const auto first = -static_cast<std::int64_t>(reference.size()) + 1;
    const auto end = static_cast<std::int64_t>(values.size());
    for (std::int64_t shift = first; shift < end; ++shift) {
        const Stretch overlap = Overlap(reference.size(), values.size(), shift);
        if (overlap.Size() < std::max(least_overlap, kShortest)) {
            continue;
        }
        const auto at = static_cast<std::size_t>(static_cast<std::int64_t>(overlap.first) + shift);
        const double energy =
            our_sums.Energy(overlap.first, overlap.Size()) * their_sums.Energy(at, overlap.Size());
        const std::int64_t place = shift >= 0 ? shift : static_cast<std::int64_t>(length) + shift;
        const double product = products[static_cast<std::size_t>(place)] -
                               our_sums.Sum(overlap.first, overlap.Size()) *
                                   their_sums.Sum(at, overlap.Size()) /
                                   static_cast<double>(overlap.Size());
        // Overlaps in which next to nothing moves have no likeness.
        if (energy > 1e-9 * whole && product > best.likeness * std::sqrt(energy)) {
            best = {shift, product / std::sqrt(energy), overlap.Size()};
        }
    }
    return best.overlap > 0 ? Told<Match>(best) : Told<Match>::Not("nothing moves: no best match");
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

ToleranceBand SpreadBand(std::span<const std::span<const double>> runs, double times,
                         double least) {
    std::size_t size = 0;
    for (const auto run : runs) {
        size = std::max(size, run.size());
    }
    ToleranceBand band{std::vector<double>(size, kNoValue), std::vector<double>(size, kNoValue)};
    for (std::size_t i = 0; i < size; ++i) {
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
        }
    }
    return band;
}

Told<Compared> CompareWith(const ToleranceBand& band, std::span<const double> values,
                           std::int64_t shift) {
    Compared result;
    double furthest = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < band.middle.size(); ++i) {
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
        return Told<Compared>::Not("the runs have no values in common");
    }
    result.passed = result.outside == 0;
    return result;
}

}  // namespace wavo::measure
