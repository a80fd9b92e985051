#include "view/graph_screen.h"

#include <QPainter>
#include <QWidget>
#include <QWindow>
#include <algorithm>
#include <mutex>
#include <utility>

#include "view/zoom_band.h"

namespace wavo {

namespace {

/// Rows of pixels that the editor leaves to the graphs where there are as many again.
constexpr int kLeastGraphs = 120;

}  // namespace

GraphScreen::GraphScreen(QWidget& widget, QWidget& editor, Session& session, GraphBoard& board,
                         std::function<void()> stopped)
    : m_widget(widget),
      m_editor(editor),
      m_session(session),
      m_board(board),
      m_stopped(std::move(stopped)) {}

bool GraphScreen::IsEditorShown() const {
    return m_editor.isVisibleTo(&m_widget);
}

bool GraphScreen::IsFooterShown() const {
    return m_footer != nullptr && m_footer->isVisibleTo(&m_widget);
}

QRect GraphScreen::GraphArea() const {
    QRect area = m_widget.rect();
    if (IsEditorShown()) {
        area.setTop(std::min(m_editor.y() + m_editor.height() + 1, m_widget.height()));
    }
    if (IsFooterShown()) {
        area.setBottom(std::max(area.top(), area.bottom() - m_footer->sizeHint().height()));
    }
    return area;
}

BandText GraphScreen::AdditionalText() const {
    const ViewSettings& settings = m_session.Settings().Current();
    return {m_session.Files().AdditionalText(), settings.font,
            ComplementColor(settings.background)};
}

QRect GraphScreen::AreaAboveText() {
    QRect area = GraphArea();
    if (!m_session.Files().AdditionalText().empty() && !m_picture.IsEmpty()) {
        area.setBottom(std::min(area.bottom(), m_picture.EndOfGraphs(AdditionalText()) - 1));
    }
    return area;
}

void GraphScreen::ShowEditor(bool show) {
    m_editor.setVisible(show);
    LayOut();
}

bool GraphScreen::ShowsLineStyles() const {
    return m_session.Settings().Current().line_styles;
}

void GraphScreen::SwitchLineStyles() {
    ViewSettings& settings = m_session.Settings().Current();
    settings.line_styles = !settings.line_styles;
    m_session.SaveSettings();
    m_board.SetLineStyles(settings.line_styles);
    DrawAndShow();
}

void GraphScreen::LayOut() {
    if (IsEditorShown()) {
        const int width = m_widget.width();
        // It scrolls where it would leave nothing for the graphs.
        const int most = std::max(m_widget.height() - kLeastGraphs, m_widget.height() / 2);
        m_editor.setGeometry(0, 0, width, std::min(m_editor.heightForWidth(width), most));
    }
    if (IsFooterShown()) {
        const int height = m_footer->sizeHint().height();
        m_footer->setGeometry(0, m_widget.height() - height, m_widget.width(), height);
    }
    const std::lock_guard guard(m_graph_lock);
    m_laid_out = AreaAboveText();
    m_board.Layout(m_laid_out);
    m_picture.Invalidate();
}

void GraphScreen::Resize() {
    ResizePicture();
    LayOut();
}

void GraphScreen::ResizePicture() {
    const int below = IsFooterShown() ? m_footer->sizeHint().height() : 0;
    m_picture.Resize({m_widget.width(), std::max(0, m_widget.height() - below)},
                     m_widget.devicePixelRatioF());
}

std::vector<std::string> GraphScreen::MakeGraphs() {
    const std::lock_guard guard(m_graph_lock);
    m_laid_out = AreaAboveText();
    m_board.SetUnits(m_session.Computed().Units());
    m_board.SetOfRecording(m_session.Recording() != nullptr);
    std::vector<std::string> faults =
        m_board.CreateAllGraphRects(m_laid_out, m_session.Values().CycleTime(),
                                    m_session.Values().AxisNames(), m_session.Settings().Current());
    m_picture.Invalidate();
    return faults;
}

bool GraphScreen::BringGraphsBack() {
    const std::lock_guard guard(m_graph_lock);
    m_board.SetOfRecording(false);
    const QRect area = AreaAboveText();
    if (!m_board.BringBack(area, m_session.Values().AxisNames(), m_session.Settings().Current())) {
        return false;
    }
    m_laid_out = area;
    m_picture.Invalidate();
    return true;
}

void GraphScreen::DrawAndShow(bool restart) {
    m_restart = m_restart || restart;
    if (m_ready_for_painting && !m_picture.IsEmpty()) {
        if (m_picture.Image().devicePixelRatio() != m_widget.devicePixelRatioF()) {
            // Moved to another screen.
            ResizePicture();
        }
        if (AreaAboveText() != m_laid_out) {
            LayOut();  // there is another text, or none
        }
        const bool was_stopped = m_board.IsAnyStopped();
        m_drawing = true;
        m_picture.Draw(m_board, m_session.Settings().Current().background, m_restart,
                       AdditionalText(), IsSeen() ? PixelWriting::kNow : PixelWriting::kLater);
        m_restart = false;
        m_drawing = false;
        if (m_board.IsAnyStopped() != was_stopped) {
            m_stopped();
        }
        if (m_past != nullptr) {
            m_past->OnDrawn();
        }
        if (m_widget.isVisible()) {
            m_widget.repaint();
        }
    }
    m_session.Values().AnswerDrawn();
}

bool GraphScreen::IsSeen() const {
    const QWindow* const window = m_widget.window()->windowHandle();
    return m_widget.isVisible() && window != nullptr && window->isExposed();
}

void GraphScreen::CatchUp() {
    if (!m_drawing && !m_picture.IsEmpty() && m_picture.CatchUp(m_board) && m_past != nullptr) {
        m_past->OnDrawn();  // these pixels may be coarse
    }
}

const QImage& GraphScreen::Picture() {
    CatchUp();
    // Scales may follow what came with the drawing before.
    constexpr int kMostDrawings = 4;
    for (int i = 0; i < kMostDrawings && m_past != nullptr && !m_drawing && !m_board.IsExact();
         ++i) {
        m_past->AllowAll();
        DrawAndShow();
        m_past->AllowAll();  // where nobody sees the widget the pixels come now
        CatchUp();
        m_past->OnDrawn();  // the next drawing may take no longer than others
    }
    return m_picture.Image();
}

void GraphScreen::Expose(QPainter& painter, const QRect& exposed) {
    CatchUp();
    const ColorRef background = m_session.Settings().Current().background;
    if (!m_ready_for_painting || m_picture.IsEmpty()) {  // nothing was drawn yet
        painter.fillRect(exposed, ToQColor(background));
    } else {
        m_picture.CopyTo(painter, exposed);
        PaintBands(painter, m_board, background);
        if (m_past != nullptr) {
            m_past->PaintMarks(painter);
        }
        if (m_over) {
            m_over(painter);
        }
    }
}

}  // namespace wavo
