// Shows what a session tells: in the graphs, the graph editor and, through ViewNews, the frame.
#pragma once

#include <cstdint>
#include <string>

#include "session/session_observer.h"

class QWidget;

namespace wavo {

class CAxSelect;
class CWavoView;
class DataExport;
class GraphBoard;
class GraphScreen;
class Measurements;
class PastControl;
struct Prompts;
class Session;
class ViewKeys;
class ViewMouse;
class ViewNews;
class ZoomControl;

class SessionDisplay final : public SessionObserver {
 public:
    /// Who takes part; none is owned, all outlive the display. Not used before the session calls.
    struct Parts {
        QWidget& view;
        ViewNews& news;
        CAxSelect& editor;
        Session& session;
        GraphBoard& board;
        GraphScreen& screen;
        PastControl& past;
        ZoomControl& zooms;
        ViewMouse& mouse;
        ViewKeys& keys;
        DataExport& data_export;
        Measurements& measurements;
        const Prompts& prompts;
    };
    explicit SessionDisplay(const Parts& parts) : m_parts(parts) {}

    /// To be told when the graph editor shows another graph.
    void OnGraphShown();

    // SessionObserver
    void PaneTextChanged(StatusPane pane, const std::string& text) override;
    void TitleChanged(const std::string& title) override;
    void CommandsChanged() override;
    void FileOpened(const std::string& path) override;
    bool EditDocument(bool forget) override;
    [[nodiscard]] bool HasEditedGraphs() const override;
    void GraphsChanged() override;
    void LiveGraphsLeave() override;
    void LiveGraphsComeBack() override { m_live_comes_back = true; }
    void ValuesArrived() override;
    [[nodiscard]] bool IsDrawing() const override;
    void RunBegins(bool anew) override;
    void RunStateChanged(bool values_flow) override;
    void ShowError(const std::string& text) override;
    void EndProcess() override;

 private:
    void MakeGraphs();
    void BringLiveBack();

    const Parts m_parts;
    std::uint32_t m_selected_live = 0;  // the graph that was selected when the live ones left
    bool m_live_comes_back = false;     // with the next GraphsChanged
};

}  // namespace wavo
