// Built-in motions: what a machine does in front of a scope when no recording is at hand.
//
//   circle  X and Y on a circle of 50 mm radius at 3000 mm/min. Where an axis reverses, friction
//           holds it back for some milliseconds and lets it jump: the spikes of a circle test.
//   jog     X, Y, Z and C moved by hand one after another, to and fro, each with its own velocity
//           and acceleration, with pauses between.
//   noise   X, Y and Z swing slowly under noise of known spread.
//
// Positions are millimetres, C is degrees.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "master/line_source.h"

namespace wavo::master {

enum class MotionKind { kCircle, kJog, kNoise };

/// The kind of a name ("circle", "jog", "noise"), or nothing.
std::optional<MotionKind> MotionKindOf(std::string_view name);

/// Makes a motion with the axes `axes` of it, in that order (empty: all of them).
/// `cycle_time` is seconds per line; `seed` chooses the noise, equal seeds give equal noise.
/// Returns null when the motion has no such axis; `*error` tells which.
/// REQUIRES: cycle_time > 0.
std::unique_ptr<LineSource> MakeMotion(MotionKind kind, const std::vector<std::string>& axes,
                                       double cycle_time, std::uint64_t seed, std::string* error);

}  // namespace wavo::master
