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

/// Brings closer what graphs show of the past and have not drawn exactly.
class PastDrawing {
 public:
    virtual ~PastDrawing() = default;
    /// The graphs were drawn.
    virtual void OnDrawn() = 0;
    /// The next drawing may take as long as it needs to be exact.
    virtual void AllowAll() = 0;
    /// What stands over the picture.
    virtual void PaintMarks(QPainter& painter) = 0;
};

class GraphScreen {
 public:
    /// None of the references is owned; all outlive the screen. `editor` lies over the top of
    /// `widget` while it is shown. `stopped`: a trigger has stopped a graph, or the last is stopped
    /// no more.
    GraphScreen(QWidget& widget, QWidget& editor, Session& session, GraphBoard& board,
                std::function<void()> stopped);

    /// From now on there is something to draw.
    void Begin() { m_ready_for_painting = true; }

    /// Who is asked from now on; not owned, outlives the screen.
    void SetPast(PastDrawing* past) { m_past = past; }
    /// Paints over what is exposed, from now on; it is not on the picture.
    void SetOver(std::function<void(QPainter&)> over) { m_over = std::move(over); }
    /// A widget below the graphs, as high as it wants to be while it is shown; not owned.
    void SetFooter(QWidget* footer) { m_footer = footer; }

    /// Where the graphs are: below the editor, above the footer.
    [[nodiscard]] QRect GraphArea() const;
    [[nodiscard]] bool IsEditorShown() const;
    [[nodiscard]] bool IsFooterShown() const;
    /// Shows or hides the editor; the graphs take what is left. Draws nothing.
    void ShowEditor(bool show);

    /// Tells curves apart by their dashes, or does so no more; shown at once, and kept in the
    /// settings file.
    void SwitchLineStyles();
    [[nodiscard]] bool ShowsLineStyles() const;

    /// The widget has another size, or the footer was shown or hidden.
    void Resize();
    /// Makes all graphs of the document anew; draws nothing. Returns faults for the user.
    [[nodiscard]] std::vector<std::string> MakeGraphs();
    /// Shows the graphs again that were set aside; draws nothing. False when they have to be made.
    [[nodiscard]] bool BringGraphsBack();
    /// One drawing step, shown at once where the widget is visible. With `restart` the graphs begin
    /// anew. While nobody sees the widget a step writes no pixels; they come when somebody does, or
    /// asks for the picture.
    void DrawAndShow(bool restart = false);
    /// True while all graphs are being drawn.
    [[nodiscard]] bool IsDrawing() const { return m_drawing; }

    /// Paints the part `exposed` of the widget: picture and bands of zooms.
    void Expose(QPainter& painter, const QRect& exposed);

    [[nodiscard]] QWidget& Widget() { return m_widget; }
    /// Somebody may see the widget.
    [[nodiscard]] bool IsSeen() const;
    /// The picture as the last step shows it, exact.
    [[nodiscard]] const QImage& Picture();

 private:
    void CatchUp();
    void LayOut();
    void ResizePicture();
    [[nodiscard]] BandText AdditionalText() const;
    /// The graph area without the band of the additional text.
    [[nodiscard]] QRect AreaAboveText();

    QWidget& m_widget;
    QWidget& m_editor;
    Session& m_session;
    GraphBoard& m_board;
    const std::function<void()> m_stopped;
    PastDrawing* m_past = nullptr;
    QWidget* m_footer = nullptr;
    std::function<void(QPainter&)> m_over;
    GraphMutex m_graph_lock;
    GraphPicture m_picture;
    QRect m_laid_out;  ///< where the graphs were placed last
    bool m_ready_for_painting = false;
    bool m_restart = false;  ///< the next drawing step starts all graphs anew
    bool m_drawing = false;
};

}  // namespace wavo
