// A group of the graph editor's strip: a grid of controls, which closes up where the strip is too
// narrow for all groups side by side.
//
// Invariants:
// 1. The size hint is that of the group at ease, the minimum one that of the group closed up,
//    whatever it is at present.
// 2. Closing up moves and narrows; no control goes, and no text is shortened.
#pragma once

#include <QGroupBox>
#include <functional>
#include <utility>

class QGridLayout;

namespace wavo {

class EditorGroup : public QGroupBox {
 public:
    EditorGroup(const QString& title, QWidget* parent);

    [[nodiscard]] QGridLayout& Grid() const { return m_grid; }
    /// What else is done when the group closes up (true) and when it is at ease again (false).
    void SetArrangement(std::function<void(bool)> arrange) { m_arrange = std::move(arrange); }
    /// To be called when all controls are in their places.
    void Measure();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

 private:
    void Arrange(bool closed_up);
    [[nodiscard]] int PresentWidth() const { return QGroupBox::sizeHint().width(); }

    QGridLayout& m_grid;  ///< owned by the toolkit
    std::function<void(bool)> m_arrange;
    bool m_is_closed_up = false;
    int m_width = 0;  ///< at ease
    int m_closed_up_width = 0;
};

}  // namespace wavo
