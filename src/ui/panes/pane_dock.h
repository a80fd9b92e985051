// A pane that docks to each side of the frame, floats, or hides itself at the edge: then a strip
// with its title stands there, and the pane comes out over the view while it is used.
//
// Invariant: the content is a child of the dock, or of what comes out; it is never lost.
#pragma once

#include <QDockWidget>
#include <QMainWindow>
#include <QPoint>
#include <QSize>

class QFrame;

namespace wavo {

class PaneDock : public QDockWidget {
    Q_OBJECT

 public:
    /// `content` becomes the dock's. The dock is a child of `frame`, at its bottom, and hidden.
    PaneDock(const QString& title, QWidget* content, QMainWindow& frame);
    ~PaneDock() override;

    /// Open: docked, floating, or a strip at the edge.
    [[nodiscard]] bool IsOpen() const { return !isHidden(); }

    void SetAutoHide(bool hides);
    [[nodiscard]] bool HidesAtEdge() const { return m_hides; }
    /// Whether a pane that hides has come out.
    [[nodiscard]] bool IsOut() const;

 Q_SIGNALS:
    void OpenChanged();
    void AutoHideChanged();

 protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void OnPointed();
    void ComeOut();
    /// To the first control of the content.
    void GiveKeyboard();
    void GoIn();
    /// Unless it is used: by the keyboard, or below the pointer.
    void GoInUnlessUsed();
    void OnFocusChanged(QWidget* before, QWidget* now);
    /// The strip stands or lies, as the side asks for it.
    void FitToSide();
    [[nodiscard]] Qt::DockWidgetArea Side() { return m_frame.dockWidgetArea(this); }
    [[nodiscard]] bool IsUpright();
    [[nodiscard]] QRect PlaceOut();
    [[nodiscard]] bool Holds(const QWidget* widget) const;

    QMainWindow& m_frame;
    QWidget* const m_content;
    QWidget* const m_title;  ///< while it does not hide
    QWidget* const m_strip;  ///< while it hides
    QFrame* const m_out;     ///< what comes out; a child of the frame
    QSize m_size;            ///< of the content as it was docked last
    QPoint m_pointer_at_hiding;
    bool m_hides = false;
};

}  // namespace wavo
