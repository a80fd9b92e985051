// The bar below the graphs that shows a whole recording: the envelope of the selected curve, where
// events and gaps are, and the window that the graphs over time show.
//
//   Left button in the window          drags it; on one of its borders, that border
//   Left button beside it              brings its middle there, then drags it
//   Wheel                              zooms at the middle of the window; with Shift moves
//   Left, Right                        move the window; with Shift its right border, with Ctrl its
//                                      left one
//   Up, Down, Plus, Minus              zoom
//   Home, End, Page Up, Page Down      as in the view
#pragma once

#include <QImage>
#include <QWidget>
#include <cstdint>
#include <functional>

#include "graph/draw/envelope.h"
#include "session/session.h"
#include "view/past_view.h"
#include "view/recording_marks.h"

namespace wavo {

class Navigator : public QWidget {
    Q_OBJECT

 public:
    /// A curve of the document.
    struct SelectedCurve {
        const WavoGraph* graph = nullptr;  ///< null: none is selected
        std::size_t axis = 0;
    };

    /// None of the references is owned; all outlive the bar.
    Navigator(Session& session, PastView& past, std::function<SelectedCurve()> selected,
              QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;

    /// The window has changed, or the curve, or the recording.
    void Renew();

    /// The columns, logical pixels, of a line of the recording, and of the borders of the window.
    [[nodiscard]] int ColumnOf(std::int64_t line) const;
    [[nodiscard]] int LeftBorder() const { return ColumnOf(m_past.Window().Seen().begin); }
    [[nodiscard]] int RightBorder() const { return ColumnOf(m_past.Window().Seen().end - 1); }
    /// The envelope as it is painted; it comes closer to the exact one with each painting.
    const QImage& DrawEnvelope();
    [[nodiscard]] bool IsExact() const { return m_envelope.IsExact(); }

 protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

 private:
    enum class Part { kNone, kWindow, kLeft, kRight };

    [[nodiscard]] Part PartAt(int x) const;
    [[nodiscard]] std::int64_t LineAt(int x) const;
    [[nodiscard]] LineRange Held() const { return m_past.Window().Held(); }
    void DragTo(int x);
    bool MoveBorder(Qt::KeyboardModifiers modifiers, int direction);
    void PaintMarks(QPainter& painter);
    void PaintWindow(QPainter& painter) const;
    [[nodiscard]] QString TextAt(int x) const;
    [[nodiscard]] QColor Background() const;

    Session& m_session;
    PastView& m_past;
    const std::function<SelectedCurve()> m_selected;

    Envelope m_envelope;
    RecordingMarks m_marks;
    std::uint64_t m_recording = 0;  // that the envelope is of; 0: none
    Part m_dragged = Part::kNone;
    std::int64_t m_drag_from = 0;  // the line under the pointer
    LineRange m_drag_window;       // as it was then
};

}  // namespace wavo
