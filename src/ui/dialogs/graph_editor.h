// What the view needs of the graph editor.
#pragma once

#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"

class QObject;

namespace wavo {

class GraphEditor {
 public:
    virtual ~GraphEditor() = default;

    /// Takes the graphs to edit (the view's own list) and the axis names that the master offers,
    /// and announces the graphs to the view with a posted kGraphChanged. False on failure.
    virtual bool Init(std::vector<WavoGraph>& graphs,
                      const std::vector<std::string>& axis_names) = 0;

    /// Whether Init was given at least one graph since SetNotInitialised.
    [[nodiscard]] virtual bool IsInitialised() const = 0;
    virtual void SetNotInitialised() = 0;

    virtual void ResetSelection() = 0;

    /// Seconds per line of the master.
    virtual void SetCycleTime(double cycle_time) = 0;

    /// Whether values flow into the graphs.
    virtual void SetAcquisitionRuns(bool runs) = 0;
};

/// The editor of a viewer without an editor window: keeps track of initialisation and announces
/// the graphs, so that the graphs are laid out the same way with and without the window.
class WindowlessGraphEditor : public GraphEditor {
 public:
    /// `view` gets the messages; not owned.
    explicit WindowlessGraphEditor(QObject* view) : m_view(view) {}

    bool Init(std::vector<WavoGraph>& graphs, const std::vector<std::string>& axis_names) override;
    [[nodiscard]] bool IsInitialised() const override { return m_initialised; }
    void SetNotInitialised() override { m_initialised = false; }
    void ResetSelection() override {}
    void SetCycleTime(double) override {}
    void SetAcquisitionRuns(bool) override {}

 private:
    QObject* m_view;
    bool m_initialised = false;
};

}  // namespace wavo
