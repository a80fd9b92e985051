// What the acquisition needs of the graph editor.
#pragma once

#include <string>
#include <vector>

namespace wavo {

class GraphList;

class GraphEditor {
 public:
    virtual ~GraphEditor() = default;

    /// Takes the document to edit (not owned, outlives the editor) and the axis names that the
    /// master offers, and announces the graphs to the view with a posted kGraphChanged. False on
    /// failure.
    virtual bool Init(GraphList& graphs, const std::vector<std::string>& axis_names) = 0;

    /// Whether there was a graph to edit since SetNotInitialised.
    [[nodiscard]] virtual bool IsInitialised() const = 0;
    virtual void SetNotInitialised() = 0;

    /// Drops all zooms that could be stepped back from.
    virtual void ResetSelection() = 0;

    /// Seconds per line of the master.
    virtual void SetCycleTime(double cycle_time) = 0;

    /// Whether values flow into the graphs.
    virtual void SetAcquisitionRuns(bool runs) = 0;
};

}  // namespace wavo
