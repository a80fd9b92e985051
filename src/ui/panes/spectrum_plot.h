// The picture of a spectrum with its cursors and its zoom, as those of the graphs are used.
//
//   right button, dragged to the right   zooms; to the left steps back
//   wheel                                zooms at the pointer, with Shift moves
//   middle button                        moves what is under the pointer
//   Plus; Minus, Backspace               zooms to the middle half; steps back
//   Home, End, Page Up, Page Down        move the band that is seen
//   drag of a cursor or its label        moves it and makes it active
//   Ctrl + click                         puts A there; with Shift too B
//   A, B                                 make a cursor active, and show it
//   Tab                                  makes the other one active
//   Left, Right                          move the active one by a pixel; with Ctrl by a line of the
//                                        spectrum, with Shift by a tenth of what is seen
//   P                                    jumps to the next marked peak; with Shift to the one
//   before Escape                               makes no cursor active Delete takes the active one
//   away
#pragma once

#include <QImage>
#include <QWidget>

#include "ui/panes/spectrum_picture.h"

namespace wavo {

class SpectrumPlot : public QWidget {
    Q_OBJECT

 public:
    explicit SpectrumPlot(QWidget* parent);

    /// Shows another spectrum; band and cursors stay, as far as they are within it.
    void Show(SpectrumScene scene);
    [[nodiscard]] const SpectrumScene& Scene() const { return m_scene; }
    [[nodiscard]] SpectrumPlaces Places() const { return {m_scene, rect()}; }

    /// Shows a part of the frequencies; StepBack takes it back.
    void ZoomTo(const FrequencyBand& band);
    /// Without a zoom before: shows all.
    void StepBack();

    /// Puts a cursor onto the line that is nearest to a frequency, and makes it active.
    void PutCursor(CursorName name, double frequency);
    /// The same, and brings it into sight.
    void JumpTo(CursorName name, double frequency);
    [[nodiscard]] std::optional<double> Cursor(CursorName name) const {
        return m_scene.cursors[static_cast<std::size_t>(name)];
    }
    [[nodiscard]] std::optional<CursorName> Active() const { return m_scene.active; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

 Q_SIGNALS:
    /// A cursor was put somewhere else, activated or taken away.
    void CursorsChanged();

 protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

 private:
    /// What a button drags.
    struct Drag {
        Qt::MouseButton button;
        QPoint from;
        QPoint to;
        FrequencyBand band;                ///< that was seen
        std::optional<CursorName> cursor;  ///< with the left button
    };

    [[nodiscard]] FrequencyBand All() const;
    /// The band, or what there is nearest to it.
    [[nodiscard]] FrequencyBand Fitted(FrequencyBand band) const;
    void SetBand(const FrequencyBand& band);
    void ZoomAt(double frequency, double factor);
    void MoveBy(double bands);
    [[nodiscard]] std::optional<CursorName> Meets(const QPoint& point) const;
    void Activate(std::optional<CursorName> name);
    bool MoveActive(int direction, Qt::KeyboardModifiers modifiers);
    bool JumpToPeak(bool forward);
    bool CursorKey(int key, Qt::KeyboardModifiers modifiers);
    bool ZoomKey(int key);

    SpectrumScene m_scene;
    std::vector<FrequencyBand> m_steps;  ///< bands before those that were zoomed to
    bool m_is_zoomed = false;            ///< else all is seen, also of another spectrum
    std::optional<Drag> m_drag;
};

}  // namespace wavo
