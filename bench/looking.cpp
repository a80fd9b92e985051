#include "bench/looking.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <memory>
#include <numeric>
#include <utility>

namespace wavo::bench {

namespace {

/// The 99th percentile.
double Percentile(std::vector<double>& times) {
    if (times.empty()) {
        return 0.0;
    }
    const auto place = times.begin() + static_cast<std::ptrdiff_t>(times.size() * 99 / 100);
    std::nth_element(times.begin(), place, times.end());
    return *place;
}

double ResidentBytes() {
    constexpr double kPage = 4096.0;
    std::ifstream file("/proc/self/statm");
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    file >> total >> resident;
    return static_cast<double>(resident) * kPage;
}

}  // namespace

WavoGraph MakeLookedAt() {
    WavoGraph graph;
    graph.GraphNumber = 1;
    graph.Mode = GraphMode::kContinuity;
    graph.ModeAx = AxisDrawMode::kLines;
    graph.XCoorType = CoorType::kTime;
    graph.XScale = {ScaleTypeCode::kTime, 10.0, ScaleAxCode{}, 0.0, 0.0};
    graph.FadeOutTime = 1.0;
    for (std::size_t i = 0; i < kLookedCurves; ++i) {
        graph.YCoorAxName.push_back("A" + std::to_string(8 * i));
        graph.YCoorAxColor.push_back(0x00FFFF - 0x1000 * static_cast<ColorRef>(i));
        graph.YCoorAxDerivation.push_back(0);
        graph.Triggers.push_back({TriggerTypeCode::kNone, 0.0, graph.YCoorAxName.back()});
        graph.YScales.push_back({ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual,
                                 -100.0 - 9.0 * static_cast<double>(i), 100.0});
    }
    return graph;
}

const LongRecording& RecordingOf(std::int64_t samples, LongRecording::Values values) {
    static std::map<std::pair<std::int64_t, LongRecording::Values>, std::unique_ptr<LongRecording>>
        recordings;
    if (samples == 1'000'000'000 && values == LongRecording::Values::kSmooth) {
        return LargestRecording();
    }
    auto& recording = recordings[{samples, values}];
    if (recording == nullptr) {
        recording = std::make_unique<LongRecording>(samples / 64, values);
    }
    return *recording;
}

std::string DigitsOf(std::int64_t samples) {
    return "1e" + std::to_string(std::lround(std::log10(static_cast<double>(samples))));
}

bool IsMissing(benchmark::State& state, const LongRecording& recording) {
    if (!recording.IsThere()) {
        state.SkipWithError("no room for the recording");
    }
    return !recording.IsThere();
}

void MakeWarm(const LongRecording& recording) {
    std::vector<char> part(std::size_t{4} << 20U);
    std::ifstream file(recording.path(), std::ios::binary);
    while (file.read(part.data(), static_cast<std::streamsize>(part.size()))) {
    }
}

void FrameTimes::Begin() {
    m_begin_by_clock = std::chrono::steady_clock::now();
    m_begin = std::clock();
}

double FrameTimes::End() {
    const double taken = static_cast<double>(std::clock() - m_begin) / CLOCKS_PER_SEC;
    m_clock.push_back(std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() -
                                                               m_begin_by_clock)
                          .count());
    m_processor.push_back(taken * 1e9);
    return taken;
}

double FrameTimes::Measure(const std::function<void()>& frame) {
    Begin();
    frame();
    return End();
}

void FrameTimes::Report(benchmark::State& state) {
    const auto mean = [](const std::vector<double>& values) {
        return std::accumulate(values.begin(), values.end(), 0.0) /
               static_cast<double>(std::max<std::size_t>(values.size(), 1));
    };
    state.counters["ns_per_item"] = mean(m_processor);
    state.counters["clock"] = mean(m_clock);
    state.counters["percentile_99"] = Percentile(m_processor);
    state.counters["percentile_99_clock"] = Percentile(m_clock);
    state.counters["resident"] = ResidentBytes();
}

}  // namespace wavo::bench
