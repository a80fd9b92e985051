// The view's side of the acquisition cycle, without a window: records what the user would see.
#pragma once

#include <QImage>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ui/dialogs/view_settings.h"
#include "view/acquisition_cycle.h"

namespace wavo::testing {

class FakeHost : public AcquisitionHost, public GraphDrawHost {
 public:
    void ShowError(const std::string& text) override {
        happened.push_back("box " + text);
        if (on_box) {
            std::exchange(on_box, nullptr)();
        }
    }
    void SetPaneText(StatusPane pane, const std::string& text) override { panes[pane] = text; }
    void RebuildGraphs() override {
        happened.emplace_back("rebuild");
        board->CreateAllGraphRects({0, 0, 400, 200}, cycle->CycleTime(), cycle->AxisNames(),
                                   settings);
    }
    void DrawNewValues() override {
        happened.emplace_back("draw");
        if (on_draw) {
            on_draw();
        }
        QImage image(400, 200, QImage::Format_RGB32);
        board->DrawAll(image, false);
        cycle->SendPendingReady();
    }
    [[nodiscard]] bool IsDrawing() const override { return drawing; }
    void ShowRunTitle() override {
        happened.emplace_back(cycle->IsRunning() ? "title running" : "title stopped");
    }
    [[nodiscard]] ColorRef BackgroundColor() const override { return 0; }
    void LinkChanged() override {}
    void EndProcess() override { happened.emplace_back("end process"); }
    void RecordingEnded() override {}

    std::vector<std::string> Take() { return std::exchange(happened, {}); }

    GraphBoard* board = nullptr;
    AcquisitionCycle* cycle = nullptr;
    ViewSettings settings;
    bool drawing = false;
    std::function<void()> on_box;   // runs once, while the next box is shown
    std::function<void()> on_draw;  // runs before each drawing step
    std::map<StatusPane, std::string> panes;
    std::vector<std::string> happened;
};

}  // namespace wavo::testing
