// The definition of one graph: what is drawn on its coordinates, how they are scaled, how the
// curve is drawn, and which condition starts or stops the recording.
//
// Invariants:
// 1. The y axis names, colours, derivations, triggers and y scales have one entry per y axis, in
//    the same order. Exception: a record that InitGraph made without an axis name has one y scale
//    more than y axes; the y scales are addressed by the y axis index only.
// 2. With XCoorType kAxis there is one y axis at most.
// 3. A graph holds start triggers or stop triggers, never both.
// 4. GraphNumber is unique within a list of graphs.
//
// The enumeration codes are stored in graph files and never change.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "support/color_ref.h"

namespace wavo {

class AxisLimitsSource;

enum class GraphMode : std::int32_t { kClassic = 1, kContinuity = 2 };
enum class AxisDrawMode : std::int32_t { kLines = 1, kPoints = 2 };
enum class CoorType : std::int32_t { kTime = 1, kAxis = 2 };
enum class ScaleTypeCode : std::int32_t { kTime = 1, kAxis = 2 };
enum class ScaleAxCode : std::int32_t { kAutomatic = 1, kManual = 2 };
enum class TriggerTypeCode : std::int32_t {
    kNone = 1,
    kStartAbove = 2,
    kStartBelow = 3,
    kStopAbove = 4,
    kStopBelow = 5,
};

inline bool IsStartTrigger(TriggerTypeCode type) {
    return type == TriggerTypeCode::kStartAbove || type == TriggerTypeCode::kStartBelow;
}
inline bool IsStopTrigger(TriggerTypeCode type) {
    return type == TriggerTypeCode::kStopAbove || type == TriggerTypeCode::kStopBelow;
}
/// Whether it fires at all.
inline bool IsTrigger(TriggerTypeCode type) {
    return IsStartTrigger(type) || IsStopTrigger(type);
}
/// Whether values above its limit fire it, else those below. REQUIRES: IsTrigger.
inline bool FiresAbove(TriggerTypeCode type) {
    return type == TriggerTypeCode::kStartAbove || type == TriggerTypeCode::kStopAbove;
}

/// A guiding circle radius that is not set.
inline constexpr double kNoRadius = std::numeric_limits<double>::max();

/// Seconds that the buffers of a graph without a time range cover.
inline constexpr double kShortestStreamRange = 1.0;

/// Shortest time range of a scale, seconds.
inline constexpr double kMinTimeRange = 0.0001;

struct TriggerEntry {
    TriggerTypeCode TriggerType{};
    double TriggerValue = 0.0;  ///< limit, in the units of the axis and derivation
    std::string AxName;

    friend bool operator==(const TriggerEntry&, const TriggerEntry&) = default;
};

struct ScaleDefinition {
    ScaleTypeCode ScaleType{};
    double TimeRange = 0.0;  ///< seconds; for ScaleType kTime
    ScaleAxCode ScaleAx{};   ///< for ScaleType kAxis
    double Minimum = 0.0;    ///< axis units
    double Maximum = 0.0;    ///< axis units, above Minimum for a manual range

    friend bool operator==(const ScaleDefinition&, const ScaleDefinition&) = default;
};

class WavoGraph {
 public:
    WavoGraph() = default;
    virtual ~WavoGraph() = default;
    WavoGraph(const WavoGraph&) = default;
    WavoGraph& operator=(const WavoGraph&) = default;
    WavoGraph(WavoGraph&&) = default;
    WavoGraph& operator=(WavoGraph&&) = default;

    friend bool operator==(const WavoGraph&, const WavoGraph&) = default;

    /// Sets the defaults of a new graph. `axis_name` may be null (no y axis). The curve gets the
    /// complement of `colour`. The y scale comes from the limits of the axis in `limits` (may be
    /// null), clamped to ±1e8; -10 to 10 for an axis that is not known there.
    void InitGraph(std::uint32_t graph_number, const char* axis_name, ColorRef colour,
                   AxisLimitsSource* limits);

    /// Recomputes the DY radii of the guiding circles from the DX radii and the scales.
    void UpdateGuidingCircles();

    std::uint32_t GraphNumber = 0;
    GraphMode Mode{};
    AxisDrawMode ModeAx{};
    bool AutoCircle = false;
    bool ZeroLines = false;
    double FadeOutTime = 0.0;  ///< seconds; for XCoorType kAxis
    CoorType XCoorType{};
    std::string XCoorAxName;
    std::vector<std::string> YCoorAxName;
    std::vector<ColorRef> YCoorAxColor;
    std::vector<std::int32_t> YCoorAxDerivation;  ///< 0 position, 1 velocity, 2 acceleration
    std::vector<TriggerEntry> Triggers;
    ScaleDefinition XScale;
    std::vector<ScaleDefinition> YScales;
    double InnerGuidingCircleDX = kNoRadius;  ///< x units
    double InnerGuidingCircleDY = kNoRadius;  ///< units of the first y axis; derived
    double OuterGuidingCircleDX = kNoRadius;
    double OuterGuidingCircleDY = kNoRadius;
};

/// The time range, seconds, that the buffers of a graph have to cover; above 0.
double GraphTimeRange(const WavoGraph& graph);

/// Text for a curve: the axis name with one "'" per derivation order (X, X', X'').
std::string AxisLabel(const std::string& axis_name, std::int32_t derivation);

}  // namespace wavo
