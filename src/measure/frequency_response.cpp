#include "measure/frequency_response.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "measure/spectrum.h"
#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr std::size_t kFewestSegments = 8;
constexpr std::size_t kShortestSegment = 16;

std::size_t SegmentFor(std::size_t size) {
    std::size_t length = kShortestSegment;
    while (SegmentsOf(size, 2 * length).size() >= kFewestSegments) {
        length *= 2;
    }
    return length;
}

/// Transforms one segment of a column, its mean taken off, under the window.
void TransformSegment(std::span<const double> values, const std::vector<double>& window, Fft* fft,
                      std::vector<double>* part, std::vector<Complex>* lines) {
    part->assign(values.begin(), values.end());
    TakeOffTrend(Detrend::kMean, *part);
    for (std::size_t i = 0; i < part->size(); ++i) {
        (*part)[i] *= window[i];
    }
    fft->Forward(*part, lines);
}

}  // namespace

double FrequencyResponse::Phase(std::size_t line) const {
    return std::arg(response[line]) * kDegrees;
}

double FrequencyResponse::RandomError(std::size_t line) const {
    const double told = coherence[line];
    if (!(told > 0.0)) {
        return std::numeric_limits<double>::infinity();
    }
    return std::sqrt((1.0 - told) / (2.0 * static_cast<double>(averages) * told));
}

Told<FrequencyResponse> FrequencyResponseOf(std::span<const double> commanded,
                                            std::span<const double> actual, double cycle_time,
                                            const ResponseSetup& setup) {
    using Result = Told<FrequencyResponse>;
    const std::array<std::span<const double>, 2> columns{commanded, actual};
    const auto stretches = WholeStretches(columns);
    const auto longest = std::ranges::max_element(stretches, {}, &Stretch::Size);
    const std::size_t size = longest == stretches.end() ? 0 : longest->Size();
    FrequencyResponse result;
    result.length = setup.segment > 0 ? setup.segment : SegmentFor(size);
    const auto segments = SegmentsOf(size, result.length);
    if (segments.size() < kFewestSegments) {
        return Result::Not("too few values: coherence needs 8 segments or more");
    }
    const auto window = WindowOf(Window::kHann, result.length);
    const std::size_t lines = result.length / 2 + 1;
    std::vector<Complex> cross(lines);
    std::vector<double> power_in(lines, 0.0);
    std::vector<double> power_out(lines, 0.0);
    Fft fft;
    std::vector<double> part;
    std::vector<Complex> in;
    std::vector<Complex> out;
    for (const Stretch& segment : segments) {
        const std::size_t first = longest->first + segment.first;
        TransformSegment(commanded.subspan(first, result.length), window, &fft, &part, &in);
        TransformSegment(actual.subspan(first, result.length), window, &fft, &part, &out);
        for (std::size_t k = 0; k < lines; ++k) {
            cross[k] += std::conj(in[k]) * out[k];
            power_in[k] += std::norm(in[k]);
            power_out[k] += std::norm(out[k]);
        }
    }
    if (*std::ranges::max_element(power_in) == 0.0) {
        return Result::Not("no excitation: the commanded value does not move");
    }
    result.spacing = 1.0 / (static_cast<double>(result.length) * cycle_time);
    result.averages = segments.size();
    result.used = {longest->first, longest->first + segments.back().end};
    for (std::size_t k = 0; k < lines; ++k) {
        const bool excited = power_in[k] > 0.0;
        result.response.push_back(excited ? cross[k] / power_in[k] : Complex());
        result.coherence.push_back(excited && power_out[k] > 0.0
                                       ? std::norm(cross[k]) / (power_in[k] * power_out[k])
                                       : 0.0);
        if (k > 0 && 2 * k < result.length && result.coherence[k] >= setup.least_coherence) {
            ++result.trusted;
        }
    }
    return result;
}

}  // namespace wavo::measure
