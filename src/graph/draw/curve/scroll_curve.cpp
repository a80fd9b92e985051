#include "graph/draw/curve/scroll_curve.h"

#include "graph/draw/curve/report_texts.h"
#include "support/diagnostics.h"

namespace wavo {

namespace {

/// Places from one remembered sum of steps to the next.
constexpr std::uint64_t kSumDistance = 4096;

}  // namespace

bool ScrollCurve::Add(std::span<const double> samples, bool /*at_start*/, double /*range*/,
                      const SampleOrigin& origin) {
    if (samples.size() > MaxPoints()) {
        MERRLOG(curve_texts::kTooManyNewValues);
        return false;
    }
    Push(samples, origin);
    if (!OwnTimesAreSums()) {
        m_sums.clear();
        return true;
    }
    if (m_sums.empty()) {
        m_sums.push_back(0.0);
    }
    while (Own().Size() > m_sums.size() * kSumDistance) {
        double time = m_sums.back();
        for (std::uint64_t i = 0; i < kSumDistance; ++i) {
            time += Step();
        }
        m_sums.push_back(time);
    }
    return true;
}

double ScrollCurve::OwnTime(std::uint64_t place) const {
    if (!OwnTimesAreSums()) {
        return static_cast<double>(place) * Step();
    }
    double time = m_sums[place / kSumDistance];
    for (std::uint64_t i = place % kSumDistance; i > 0; --i) {
        time += Step();
    }
    return time;
}

}  // namespace wavo
