#include "measure/following_error.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <vector>

#include "measure/units.h"

namespace wavo::measure {

namespace {

constexpr double kLeastShareOfSpeed = 0.1;
constexpr double kSpeedHolds = 0.01;  // share of the speed that it may vary by
constexpr double kHoldTime = 0.2;     // s
constexpr std::size_t kFewestSamples = 10;
constexpr double kLeastShareOfSign = 0.1;
constexpr const char* kStandstill = "standstill: the axis does not move";

/// Commanded speed per place; NaN where it is not defined.
std::vector<double> SpeedsOf(std::span<const double> commanded, double cycle_time) {
    std::vector<double> speeds(commanded.size(), std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 1; i + 1 < commanded.size(); ++i) {
        speeds[i] = (commanded[i + 1] - commanded[i - 1]) / (2.0 * cycle_time);
    }
    return speeds;
}

/// Largest less smallest of the last values, value by value.
class SlidingRange {
 public:
    explicit SlidingRange(std::size_t window) : m_window(window) {}

    /// Nothing known (infinite) before the window is full.
    double Add(std::size_t place, double value) {
        if (!std::isfinite(value)) {
            m_low.clear();
            m_high.clear();
            m_count = 0;
            return std::numeric_limits<double>::infinity();
        }
        ++m_count;
        while (!m_low.empty() && m_low.back().second >= value) {
            m_low.pop_back();
        }
        while (!m_high.empty() && m_high.back().second <= value) {
            m_high.pop_back();
        }
        m_low.emplace_back(place, value);
        m_high.emplace_back(place, value);
        for (auto* queue : {&m_low, &m_high}) {
            while (queue->front().first + m_window < place + 1) {
                queue->pop_front();
            }
        }
        return m_count >= m_window ? m_high.front().second - m_low.front().second
                                   : std::numeric_limits<double>::infinity();
    }

 private:
    std::size_t m_window;
    std::size_t m_count = 0;
    std::deque<std::pair<std::size_t, double>> m_low;
    std::deque<std::pair<std::size_t, double>> m_high;
};

struct LagSample {
    double speed = 0.0;
    double error = 0.0;
};

std::vector<LagSample> Chosen(std::span<const double> commanded, std::span<const double> actual,
                              const std::vector<double>& speeds, double cycle_time,
                              const Stretch& stretch, LagSamples samples) {
    double fastest = 0.0;
    for (std::size_t i = stretch.first; i < stretch.end; ++i) {
        fastest = std::isfinite(speeds[i]) ? std::max(fastest, std::abs(speeds[i])) : fastest;
    }
    SlidingRange range(CyclesIn(kHoldTime, cycle_time, 1) + 1);
    std::vector<LagSample> chosen;
    for (std::size_t i = stretch.first; i < stretch.end; ++i) {
        const double speed = speeds[i];
        const double varied = range.Add(i, speed);
        const double error = commanded[i] - actual[i];
        const bool moves = std::abs(speed) > kLeastShareOfSpeed * fastest;
        const bool holds = varied <= kSpeedHolds * std::abs(speed);
        if (std::isfinite(speed) && std::isfinite(error) &&
            (samples == LagSamples::kAll || (moves && (samples == LagSamples::kMoving || holds)))) {
            chosen.push_back({speed, error});
        }
    }
    return chosen;
}

void FitLag(const std::vector<LagSample>& samples, FollowingError* result) {
    const auto count = static_cast<double>(samples.size());
    const auto forward = static_cast<double>(
        std::ranges::count_if(samples, [](const LagSample& s) { return s.speed > 0.0; }));
    const auto backward = static_cast<double>(
        std::ranges::count_if(samples, [](const LagSample& s) { return s.speed < 0.0; }));
    const bool with_offset = std::min(forward, backward) >= kLeastShareOfSign * count;
    double mean_speed = 0.0;
    double mean_error = 0.0;
    if (with_offset) {
        for (const LagSample& sample : samples) {
            mean_speed += sample.speed / count;
            mean_error += sample.error / count;
        }
    }
    double squares = 0.0;
    double products = 0.0;
    for (const LagSample& sample : samples) {
        squares += (sample.speed - mean_speed) * (sample.speed - mean_speed);
        products += (sample.speed - mean_speed) * (sample.error - mean_error);
    }
    if (!(squares > 0.0)) {
        result->lag = result->offset = result->gain = result->linear_gain =
            Figure::Not(kStandstill);
        return;
    }
    const double lag = products / squares;
    result->lag = lag * kMilliseconds;
    result->offset = with_offset ? Figure((mean_error - lag * mean_speed) * kMicrometres)
                                 : Figure::Not("the axis moves in one direction only");
    if (lag > 0.0) {
        result->gain = 1.0 / lag;
        result->linear_gain = 0.06 / lag;
    } else {
        result->gain = result->linear_gain = Figure::Not("no lag");
    }
}

}  // namespace

FollowingError FollowingErrorOf(std::span<const double> commanded, std::span<const double> actual,
                                double cycle_time, const Stretch& stretch, LagSamples samples) {
    const auto speeds = SpeedsOf(commanded, cycle_time);
    FollowingError result;
    result.samples = samples;
    auto chosen = Chosen(commanded, actual, speeds, cycle_time, stretch, samples);
    if (chosen.size() < kFewestSamples && samples == LagSamples::kConstantSpeed) {
        result.samples = LagSamples::kMoving;
        chosen = Chosen(commanded, actual, speeds, cycle_time, stretch, result.samples);
    }
    result.count = chosen.size();
    if (chosen.size() < kFewestSamples) {
        result.largest = result.rms = result.lag = result.offset = result.gain =
            result.linear_gain =
                Figure::Not(chosen.empty() ? kStandstill : "too few lines in motion");
        return result;
    }
    double largest = 0.0;
    double squares = 0.0;
    for (const LagSample& sample : chosen) {
        largest = std::max(largest, std::abs(sample.error));
        squares += sample.error * sample.error;
    }
    result.largest = largest * kMicrometres;
    result.rms = std::sqrt(squares / static_cast<double>(chosen.size())) * kMicrometres;
    FitLag(chosen, &result);
    return result;
}

std::string NameOf(LagSamples samples) {
    switch (samples) {
        case LagSamples::kConstantSpeed:
            return "constant speed";
        case LagSamples::kMoving:
            return "moving";
        case LagSamples::kAll:
            return "all";
    }
    return {};
}

}  // namespace wavo::measure
