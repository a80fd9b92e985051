// The title of a pane with its buttons, and the strip that stands at the edge for a pane that
// hides.
#pragma once

#include <QAbstractButton>
#include <QWidget>

class QToolButton;

namespace wavo {

/// Title, and buttons for hiding at the edge, floating and closing. It leaves the mouse to the dock
/// below it, which is dragged by it.
class PaneTitle : public QWidget {
    Q_OBJECT

 public:
    /// `hides`: the pane hides at the edge.
    PaneTitle(const QString& title, bool hides, QWidget* parent);

 Q_SIGNALS:
    void PinClicked();
    void FloatClicked();
    void CloseClicked();
};

/// A button that shows its text along the side that it stands at.
class EdgeStrip : public QAbstractButton {
    Q_OBJECT

 public:
    EdgeStrip(const QString& title, QWidget* parent);

    /// The text runs from top to bottom.
    void SetUpright(bool upright);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

 Q_SIGNALS:
    /// The pointer has come over the strip.
    void Pointed();

 protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;

 private:
    bool m_upright = false;
};

}  // namespace wavo
