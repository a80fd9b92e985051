// What mouse and keys select and zoom.
#pragma once

#include <QRect>
#include <cstdint>

#include "graph/values/time_window.h"

namespace wavo {

class ZoomTarget {
 public:
    virtual ~ZoomTarget() = default;
    /// The graph editor shows the graph of that number.
    virtual void Select(std::uint32_t graph_number) = 0;
    /// Number of the graph that the editor shows; of none in the list when it shows none.
    [[nodiscard]] virtual std::uint32_t Selected() const = 0;
    /// The user allows zooming.
    [[nodiscard]] virtual bool IsEnabled() const = 0;
    /// Graphs are being drawn.
    [[nodiscard]] virtual bool IsBusy() const = 0;
    /// Seconds per line of the master.
    [[nodiscard]] virtual double TimeStep() const = 0;
    /// Zooms the graph of that number to a span of its displayed time axis, seconds, and all others
    /// over time if the user wants so; shown at once.
    virtual void ZoomTo(std::uint32_t graph_number, const TimeWindow& span) = 0;
    /// Takes the last zoom of the graph back, and that of all others if the user wants so; shown
    /// at once.
    virtual void ZoomOut(std::uint32_t graph_number) = 0;
    /// A part of the view has to be exposed anew: soon, or now.
    virtual void UpdatePart(const QRect& part) = 0;
    virtual void RepaintPart(const QRect& part) = 0;
};

}  // namespace wavo
