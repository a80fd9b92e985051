#include "golden/scenes.h"

#include <algorithm>
#include <cmath>

namespace wavo::testing {

std::vector<Scene> AllScenes() {
    std::vector<Scene> all;
    for (const std::vector<Scene>& some :
         {TimeScenes(), AxisScenes(), LabelScenes(), LooksScenes()}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

ScopeLooks Looks(const QSize& size, const QColor& background, int font_height) {
    ScopeLooks looks;
    looks.size = size;
    looks.settings.background = static_cast<ColorRef>(background.red() | (background.green() << 8) |
                                                      (background.blue() << 16));
    looks.settings.font.face = "DejaVu Sans";
    looks.settings.font.height = -font_height;
    return looks;
}

Scope MakeScope(const WavoGraph& graph, const ScopeLooks& looks) {
    return Scope(graph, kCycle, QRect(QPoint(0, 0), looks.size), 0.0, looks);
}

std::vector<double> Sine(int count, double period, double amplitude, double middle, double phase) {
    constexpr double kTurn = 6.283185307179586;
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const double value = middle + amplitude * std::sin(kTurn * (i / period + phase));
        values.push_back(std::round(value * 1e6) / 1e6);
    }
    return values;
}

void AddCurve(WavoGraph& graph, const std::string& name, ColorRef color,
              const ScaleDefinition& scale, std::int32_t derivation) {
    AddAxis(graph, name, scale, TriggerTypeCode::kNone, 0.0, derivation);
    graph.YCoorAxColor.back() = color;
}

void FeedInSteps(Scope& scope, const std::vector<std::vector<double>>& values, std::size_t step) {
    std::size_t length = 0;
    for (const std::vector<double>& stream : values) {
        length = std::max(length, stream.size());
    }
    for (std::size_t first = 0; first < length; first += step) {
        std::vector<std::vector<double>> batch;
        for (const std::vector<double>& stream : values) {
            const auto from = static_cast<std::ptrdiff_t>(std::min(first, stream.size()));
            const auto to = static_cast<std::ptrdiff_t>(std::min(first + step, stream.size()));
            batch.emplace_back(stream.begin() + from, stream.begin() + to);
        }
        scope.Feed(batch);
    }
}

QImage PictureOf(const WavoGraph& graph, const std::vector<std::vector<double>>& values,
                 const ScopeLooks& looks) {
    Scope scope = MakeScope(graph, looks);
    scope.Draw();
    FeedInSteps(scope, values, 10);
    return scope.Image();
}

}  // namespace wavo::testing
