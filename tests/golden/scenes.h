// The pictures that have a reference image: each is one graph with values, drawn as a user sees it.
//
// Invariants:
// 1. A scene is named as its reference file; the names are unique.
// 2. A picture depends on nothing but the code that draws it: no clock, no settings of the machine,
//    no numbers that an unlike processor or library rounds differently.
#pragma once

#include <QImage>
#include <vector>

#include "graph/draw/drawing_fixture.h"

namespace wavo::testing {

struct Scene {
    const char* name;
    QImage (*paint)();
};

std::vector<Scene> TimeScenes();
std::vector<Scene> AxisScenes();
std::vector<Scene> LabelScenes();
std::vector<Scene> LooksScenes();
std::vector<Scene> ComputedScenes();
std::vector<Scene> DialogScenes();
std::vector<Scene> ReferenceScenes();
std::vector<Scene> FirstMinutesScenes();

/// All of them.
std::vector<Scene> AllScenes();

// What scenes are made of.

inline constexpr ColorRef kYellow = 0x00D8FF;
inline constexpr ColorRef kGreen = 0x60D040;
inline constexpr ColorRef kBlue = 0xFFA040;
inline constexpr ColorRef kRed = 0x4040FF;
inline constexpr ColorRef kViolet = 0xFF60C0;

/// Seconds from value to value in all scenes.
inline constexpr double kCycle = 0.01;

/// A size and background, with the font of the scenes (`font_height` pixels) and 5 and 3 lines.
ScopeLooks Looks(const QSize& size = QSize(400, 160), const QColor& background = Qt::black,
                 int font_height = 12);

/// A graph that fills its picture.
Scope MakeScope(const WavoGraph& graph, const ScopeLooks& looks = Looks());

/// `count` values of a sine, `period` values long, around `middle`; rounded to six decimals.
std::vector<double> Sine(int count, double period, double amplitude, double middle = 0.0,
                         double phase = 0.0);

/// A y axis in a colour.
void AddCurve(WavoGraph& graph, const std::string& name, ColorRef color,
              const ScaleDefinition& scale, std::int32_t derivation = 0);

/// Gives every stream its values in steps of `step` values, as they come from a machine.
void FeedInSteps(Scope& scope, const std::vector<std::vector<double>>& values, std::size_t step);

/// The picture of a graph after these values.
QImage PictureOf(const WavoGraph& graph, const std::vector<std::vector<double>>& values,
                 const ScopeLooks& looks = Looks());

}  // namespace wavo::testing
