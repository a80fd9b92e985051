// Where the graphs are on the screen: their place in the widget, below the graph editor, the
// drawing step and the picture that is exposed.
//
// Drawing is one step, exposing another: a step takes the new values, draws all graphs into the
// picture, shows it where the widget is visible, and answers the batch. Exposing only copies.
#pragma once

#include <QRect>
#include <functional>
#include <string>
#include <vector>

#include "session/locks.h"
#include "session/session.h"
#include "view/graph_board.h"
#include "view/graph_picture.h"

class QPainter;
class QWidget;

namespace wavo {

class GraphScreen {
 public:
    /// None of the references is owned; all outlive the screen. `editor` lies over the top of
    /// `widget` while it is shown. `stopped`: a trigger has stopped a graph, or the last is stopped
    /// no more.
    GraphScreen(QWidget& widget, QWidget& editor, Session& session, GraphBoard& board,
                std::function<void()> stopped);

    /// From now on there is something to draw.
    void Begin() { m_ready_for_painting = true; }

    /// Where the graphs are: below the editor.
    [[nodiscard]] QRect GraphArea() const;
    [[nodiscard]] bool IsEditorShown() const;
    /// Shows or hides the editor; the graphs take what is left. Draws nothing.
    void ShowEditor(bool show);

    /// The widget has another size.
    void Resize();
    /// Makes all graphs of the document anew; draws nothing. Returns faults for the user.
    [[nodiscard]] std::vector<std::string> MakeGraphs();
    /// One drawing step, shown at once where the widget is visible. With `restart` the graphs begin
    /// anew. While nobody sees the widget a step writes no pixels; they come when somebody does, or
    /// asks for the picture.
    void DrawAndShow(bool restart = false);
    /// True while all graphs are being drawn.
    [[nodiscard]] bool IsDrawing() const { return m_drawing; }

    /// Paints the part `exposed` of the widget: picture and bands of zooms.
    void Expose(QPainter& painter, const QRect& exposed);

    [[nodiscard]] QWidget& Widget() { return m_widget; }
    /// The picture as the last step shows it.
    [[nodiscard]] const QImage& Picture();

 private:
    /// Somebody may see the widget.
    [[nodiscard]] bool IsSeen() const;
    void CatchUp();
    void LayOut();
    [[nodiscard]] BandText AdditionalText() const;
    /// The graph area without the band of the additional text.
    [[nodiscard]] QRect AreaAboveText();

    QWidget& m_widget;
    QWidget& m_editor;
    Session& m_session;
    GraphBoard& m_board;
    const std::function<void()> m_stopped;
    GraphMutex m_graph_lock;
    GraphPicture m_picture;
    QRect m_laid_out;  ///< where the graphs were placed last
    bool m_ready_for_painting = false;
    bool m_restart = false;  ///< the next drawing step starts all graphs anew
    bool m_drawing = false;
};

}  // namespace wavo
