// What the graph editor does to a graph record, without any window.
//
// Invariants:
// 1. A record that has one entry per y axis in all of its lists keeps them so. One with fewer
//    (from a damaged file) is never read beyond what it has.
// 2. A record without y axes may have one y scale too many; the first axis that is added takes
//    its place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "graph/model/wavo_graph.h"

namespace wavo {

struct AxisCapabilities;

/// Values that are typed as bounds of a scale are held within plus and minus this.
inline constexpr double kLargestBound = 1e8;

/// Seconds that a graph over time shows where it was told none.
inline constexpr double kDefaultTimeRange = 10.0;

/// Size of the area that a graph's curves are drawn in, pixels; 0 before the first layout.
struct PlotSize {
    std::int32_t width = 0;
    std::int32_t height = 0;
};

/// The derivation order of a y axis; 0 for one that the record does not tell.
std::int32_t DerivationOf(const WavoGraph& graph, std::size_t axis);

/// The y axis of a name and a derivation order; of several the last, which was added last.
std::optional<std::size_t> FindYAxis(const WavoGraph& graph, const std::string& name,
                                     std::int32_t derivation);

/// The y axes as one text: "X,X',Y".
std::string YAxesText(const WavoGraph& graph);

/// Makes x the time. A time range below the shortest becomes 10 s.
void MakeXTime(WavoGraph& graph);

/// Makes x the axis `name` (may be empty) and keeps the first y axis alone, with derivation 0. An
/// x scale that never had a range gets that of the y axis.
void MakeXAxis(WavoGraph& graph, const std::string& name, const PlotSize& plot);

struct YAxisToAdd {
    std::string name;
    ColorRef color = 0;
    std::int32_t derivation = 0;
};

/// Appends a y axis. Its manual scale comes from the limits for its derivation, within
/// kLargestBound; -1000 to 1000 for limits that are not known.
void AddYAxis(WavoGraph& graph, const YAxisToAdd& axis,
              const std::optional<AxisCapabilities>& limits);

/// Removes a y axis with its colour, derivation, trigger and scale; a missing colour or derivation
/// is reported.
void RemoveYAxis(WavoGraph& graph, std::size_t axis);

/// Over an axis, with round circles: makes a unit as long in x as in y on a plot of that size, by
/// moving the x maximum.
/// Nothing with another graph, before the graph was laid out, or for a y range that does not go up.
void KeepCirclesRound(WavoGraph& graph, std::size_t y_scale, const PlotSize& plot);

/// What the user says of the x scale.
struct XScaleChoice {
    bool is_time = true;
    std::optional<double> time_range;  ///< seconds; nothing: as it is
    bool is_manual = false;            ///< of a scale of axis values
    double minimum = 0.0;
    double maximum = 0.0;
};

/// Takes an x scale. A time range below the shortest becomes kDefaultTimeRange; a manual range that
/// goes down becomes an automatic one.
void SetXScale(WavoGraph& graph, const XScaleChoice& choice);

/// What became of a bound that was typed.
struct BoundChange {
    bool is_taken = false;  ///< else the scale is not manual
    bool goes_up = false;   ///< the scale is a range to draw with
    bool moved_x = false;   ///< of a y bound: the x maximum followed, so that circles stay round
};

/// Takes the minimum, else the maximum, of a manual x scale, held within kLargestBound.
BoundChange SetXBound(WavoGraph& graph, bool is_minimum, double value, const PlotSize& plot);
/// The same of the y scale of an axis.
BoundChange SetYBound(WavoGraph& graph, std::size_t axis, bool is_minimum, double value,
                      const PlotSize& plot);

/// Whether circles are to be round from now on; the x scale, and the y scale of the axis, where it
/// has one, are then manual.
void SetAutoCircle(WavoGraph& graph, bool is_on, std::optional<std::size_t> axis);

/// Takes the radius of the inner, else the outer guiding circle; nothing: none. False where the
/// graph has no circles.
bool SetCircle(WavoGraph& graph, bool is_inner, std::optional<double> radius);

/// Takes a time that is above zero and another than before. False for all others.
bool SetFadeOutTime(WavoGraph& graph, double time);

/// Whether a scale is manual. One that is not waits with what was typed for a range.
bool IsManual(const ScaleDefinition& scale);

/// Whether a scale is manual, or was given a range before. One that never was leaves its edits free
/// for one.
bool HasBounds(const ScaleDefinition& scale);

/// The radius of a guiding circle; nothing for one that is not set.
std::optional<double> RadiusOf(double dx);

/// Whether a graph has start triggers and stop triggers.
bool MixesTriggers(const WavoGraph& graph);

/// The trigger entry to edit for a y axis: that of the record, or none; with an axis name.
TriggerEntry TriggerOf(const WavoGraph& graph, std::size_t axis);

/// Puts the trigger of a y axis into the record.
void SetTrigger(WavoGraph& graph, std::size_t axis, const TriggerEntry& trigger);

}  // namespace wavo
