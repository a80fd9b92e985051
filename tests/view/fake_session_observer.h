// What a session tells, without a window: records what the user would see.
#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "session/session.h"
#include "view/graph_board.h"

namespace wavo::testing {

/// The graph editor; records what it is told, never posts anything.
struct FakeEditor {
    bool Init(const GraphList& graphs, const std::vector<std::string>& axes) {
        happened.push_back("init " + std::to_string(graphs.Graphs().size()) + " " +
                           std::to_string(axes.size()));
        initialised = !graphs.IsEmpty();
        return !fails;
    }

    bool initialised = false;
    bool fails = false;
    double cycle = 0.0;
    std::vector<std::string> happened;
};

class FakeHost : public SessionObserver {
 public:
    explicit FakeHost(FakeEditor& fake_editor) : editor(fake_editor) {}

    void PaneTextChanged(StatusPane pane, const std::string& text) override {
        panes[pane] = text;
        if (pane == StatusPane::kMessage) {
            messages.push_back(text);
            if (on_message) {
                on_message(text);
            }
        }
    }
    void TitleChanged(const std::string& title) override {
        const auto run_state = title.rfind(" - ");
        happened.push_back("title " + (full_titles || run_state == std::string::npos
                                           ? title
                                           : title.substr(run_state + 3)));
        if (on_title) {
            on_title();
        }
    }
    void CommandsChanged() override {}
    void FileOpened(const std::string& path) override {
        happened.push_back("recent " + FileNameOf(path));
    }
    bool EditDocument(bool forget) override {
        if (forget) {
            EXPECT_TRUE(session->ValueLock().IsHeld());
            editor.initialised = false;
            editor.happened.emplace_back("not initialised");
            editor.happened.emplace_back("reset selection");
        }
        editor.cycle = session->Values().CycleTime();
        return editor.Init(session->Graphs(), session->Values().AxisNames());
    }
    [[nodiscard]] bool HasEditedGraphs() const override { return editor.initialised; }
    void GraphsChanged() override {
        EXPECT_TRUE(session->ValueLock().IsHeld());
        happened.emplace_back(on_graphs ? on_graphs() : "rebuild");
        board->SetOfRecording(session->Recording() != nullptr);
        if (std::exchange(live_comes_back, false) &&
            board->BringBack({0, 0, 400, 200}, session->Values().AxisNames(), settings)) {
            return;
        }
        for (const std::string& fault :
             board->CreateAllGraphRects({0, 0, 400, 200}, session->Values().CycleTime(),
                                        session->Values().AxisNames(), settings)) {
            ShowError(fault);
        }
    }
    void LiveGraphsLeave() override {
        happened.emplace_back("live leave");
        board->SetAside();
    }
    void LiveGraphsComeBack() override {
        happened.emplace_back("live come back");
        live_comes_back = true;
    }
    void ValuesArrived() override {
        happened.emplace_back("draw");
        if (on_draw) {
            on_draw();
        }
        QImage image(400, 200, QImage::Format_RGB32);
        board->DrawAll(image, false);
        session->Values().AnswerDrawn();
    }
    [[nodiscard]] bool IsDrawing() const override { return drawing; }
    void RunBegins(bool anew) override {
        happened.emplace_back(anew ? "forget zooms" : "leave zooms");
        happened.emplace_back(anew ? "restart" : "redraw");
        QImage image(400, 200, QImage::Format_RGB32);
        board->DrawAll(image, anew);
    }
    void RunStateChanged(bool values_flow) override {
        editor.happened.emplace_back(values_flow ? "acquisition runs" : "acquisition stands");
        happened.emplace_back("changed");
    }
    void ShowError(const std::string& text) override {
        happened.push_back("box " + text);
        if (on_box) {
            std::exchange(on_box, nullptr)();
        }
    }
    void EndProcess() override { happened.emplace_back("end process"); }

    std::vector<std::string> Take() {
        messages.clear();
        return std::exchange(happened, {});
    }

    FakeEditor& editor;
    GraphBoard* board = nullptr;
    Session* session = nullptr;
    ViewSettings settings;
    bool drawing = false;
    bool live_comes_back = false;                        // with the next rebuild
    bool full_titles = false;                            // with the name of the document
    std::function<void()> on_box;                        // runs once, while the next box is shown
    std::function<void()> on_draw;                       // runs before each drawing step
    std::function<void()> on_title;                      // runs with each title
    std::function<std::string()> on_graphs;              // names a rebuild
    std::function<void(const std::string&)> on_message;  // runs with each text of the first pane
    std::map<StatusPane, std::string> panes;
    std::vector<std::string> messages;  // of the first pane, since the last Take
    std::vector<std::string> happened;
};

}  // namespace wavo::testing
