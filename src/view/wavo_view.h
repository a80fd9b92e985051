// The view: the widget that shows all graphs.
//
// It hands events on to those who know what they mean, and puts together who works for it: the
// session (everything without a window), the screen (drawing and exposing), zooms, commands.
#pragma once

#include <QWidget>
#include <memory>
#include <string>

#include "session/session.h"
#include "ui/graph_editor/ax_select.h"
#include "ui/messages.h"
#include "ui/prompts.h"
#include "view/cursor_input.h"
#include "view/data_export.h"
#include "view/graph_board.h"
#include "view/graph_cursors.h"
#include "view/graph_printer.h"
#include "view/graph_screen.h"
#include "view/measurements.h"
#include "view/past_control.h"
#include "view/session_display.h"
#include "view/value_sources.h"
#include "view/view_commands.h"
#include "view/view_keys.h"
#include "view/view_mouse.h"
#include "view/view_news.h"
#include "view/zoom_control.h"

namespace wavo {

class CWavoView : public QWidget {
    Q_OBJECT

 public:
    /// `prompts` is not owned and outlives the view. `source`: where the values come from.
    explicit CWavoView(const Prompts& prompts, QWidget* parent = nullptr,
                       std::unique_ptr<ValueSource> source = MakeSource(kMasterSource));
    ~CWavoView() override;

    /// The first update, once the frame stands: settings, trace level, link to the master, graphs.
    /// `graph_file` is the path of the graph file to open, with the settings that it holds; empty:
    /// the settings file.
    void OnInitialUpdate(const std::string& graph_file = {});

    /// The frame closes: values that come later are ignored.
    void OnClose();

    [[nodiscard]] Session& Work() { return m_session; }
    [[nodiscard]] GraphBoard& Board() { return m_board; }
    [[nodiscard]] CAxSelect& Editor() { return *m_editor; }
    [[nodiscard]] GraphScreen& Screen() { return m_screen; }
    [[nodiscard]] PastControl& Past() { return m_past; }
    [[nodiscard]] ZoomControl& Zooms() { return m_zooms; }
    [[nodiscard]] ViewCommands& Commands() { return m_commands; }
    [[nodiscard]] GraphPrinter& Printer() { return m_printer; }
    [[nodiscard]] ViewNews& News() { return m_news; }
    [[nodiscard]] GraphCursors& Cursors() { return m_cursors; }
    [[nodiscard]] Measurements& Measured() { return m_measurements; }

 protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

 private:
    /// Messages of the graph editor.
    std::int64_t OnAppMessage(const AppMessageEvent& message);
    void ShowEditor(bool show);

    ViewNews m_news;
    std::unique_ptr<ValueSource> m_source;
    bool m_is_made = false;  // what the editor tells while it is made is told to nobody
    std::unique_ptr<CAxSelect> m_editor;  // a child; goes behind the session that it refers to
    SessionDisplay m_display;
    Session m_session;
    GraphBoard m_board;
    GraphScreen m_screen;
    PastControl m_past;
    ZoomControl m_zooms;
    ViewMouse m_mouse;
    ViewKeys m_keys;
    GraphCursors m_cursors;
    Measurements m_measurements;
    CursorInput m_cursor_input;
    DataExport m_data_export;
    GraphPrinter m_printer;
    ViewCommands m_commands;
    bool m_shows_focus = false;  // the keyboard was brought here by keys
};

}  // namespace wavo
