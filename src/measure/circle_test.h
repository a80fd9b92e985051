// The circle test: from the columns of a plane to the figures of a machine.
//
// Terms and symbols of ISO 230-4:2022, evaluated from the control's own feedback signals; errors
// behind the encoders are not seen.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "measure/circle_fit.h"
#include "measure/circle_runs.h"
#include "measure/circle_shape.h"
#include "measure/figure.h"
#include "measure/series.h"

namespace wavo::measure {

/// An axis outside the plane, which has to stand still.
struct OtherAxis {
    std::string name;
    std::span<const double> values;
};

struct CircleSetup {
    std::optional<double> radius;  ///< nominal, mm; else the one fitted to commanded values
    std::optional<double> feed;    ///< programmed, mm/s; only compared with
    std::optional<Circle> centre;  ///< nominal centre for F; else the least-squares centre
    bool minimum_zone = false;     ///< also evaluate G and G(b) about the minimum zone's centre
    RunSetup run;
    ShapeSetup shape;
    std::vector<OtherAxis> others;
};

/// One evaluated turn.
struct CircleTurn {
    std::size_t run = 0;  ///< index of its run
    Sense sense = Sense::kCounterClockwise;
    Stretch stretch;              ///< places of the turn
    Circle circle;                ///< least squares
    double feed = 0.0;            ///< mean path feed, mm/s
    double feed_deviation = 0.0;  ///< largest deviation of the feed from its mean, %
    Figure nominal_radius;        ///< mm
    Figure circular_error;        ///< G, um
    Figure circular_error_zone;   ///< G about the centre of the minimum zone, um
    Figure radial_error_max;      ///< F max, um
    Figure radial_error_min;      ///< F min, um
    double closure = 0.0;         ///< change of the radius over the turn, um
};

/// Two turns of different senses that belong together, or one without a partner.
struct CircleEvaluation {
    std::vector<std::size_t> turns;   ///< one or two, counter-clockwise first
    std::optional<Circle> common;     ///< circle through both turns, about which G(b) stands
    Figure bidirectional_error;       ///< G(b), um
    Figure bidirectional_error_zone;  ///< um
    Figure mean_radial_error;         ///< D, um
    Told<CircleShape> shape;
};

struct CircleResult {
    double cycle_time = 0.001;  ///< s
    std::size_t lines = 0;
    bool from_commanded = false;  ///< the turns were found in the commanded values
    std::vector<CircleRun> runs;
    std::vector<CircleTurn> turns;
    std::vector<CircleEvaluation> evaluations;  ///< pairs and single turns in the order of time
    std::vector<std::string> notes;             ///< what the user should know, in words
};

/// REQUIRES: columns of one size.
CircleResult TestCircle(const PlanePath& path, const CircleSetup& setup = {});

/// The same in steps, for programs with one thread. REQUIRES: the columns stay as they are until
/// the end, those of other axes too.
Steps<CircleResult> TestCircleInSteps(PlanePath path, CircleSetup setup);

/// The evaluation that a report is about: the first pair, or else the first turn, of those whose
/// feed is within 5 % of the one given in mm/s. Nothing where there is none.
std::optional<std::size_t> ChosenEvaluation(const CircleResult& result,
                                            const std::optional<double>& feed);

/// The figures of a given turn. Not told where its points make no circle.
Told<CircleTurn> EvaluateTurn(const PlanePath& path, const Stretch& stretch, Sense sense,
                              const CircleSetup& setup = {});

/// The figures of one turn, or of two of different senses.
CircleEvaluation EvaluateTurns(const PlanePath& path, std::span<const CircleTurn> turns,
                               const CircleSetup& setup = {});

}  // namespace wavo::measure
