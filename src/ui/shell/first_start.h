// Without graphs, master and recording there is nothing to be seen: a page says so in the place of
// the graphs and offers what one can do. It stands over the view, which knows nothing of it: prints
// and pictures of the view are as they are without.
#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <string>

#include "ui/shell/demo_player.h"

class QToolButton;

namespace wavo {

class CMainFrame;
class CWavoView;
class FirstPage;
struct Prompts;

class FirstStart : public QObject {
    Q_OBJECT

 public:
    /// Shows the page from now on whenever it fits, once events are handled. `frame` and `prompts`
    /// are not owned and outlive this object. Without a demo or a manual there is no button for it.
    FirstStart(CMainFrame& frame, const Prompts& prompts, DemoFiles demo, bool has_manual = false);
    ~FirstStart() override;

    [[nodiscard]] FirstPage& Page();
    /// Ends the demo; shown while it runs.
    [[nodiscard]] QToolButton& EndButton();

    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    [[nodiscard]] bool IsWanted() const;
    [[nodiscard]] QRect PlaceOfPage() const;
    /// Looks anew, once events are handled.
    void LookLater();
    void Look();
    void ShowPage(bool show);
    void ShowEndButton(bool show);

    void PlayDemo();
    void EndDemo();
    /// A master is there, and the viewer is connected to it.
    bool ConnectsToAnother();
    [[nodiscard]] bool ShowGraphs();

    CMainFrame& m_frame;
    CWavoView& m_view;
    const Prompts& m_prompts;
    DemoPlayer m_demo;
    QPointer<FirstPage> m_page;   // the view's child
    QPointer<QToolButton> m_end;  // the status bar's
    bool m_looks_later = false;
    bool m_is_starting = false;
};

}  // namespace wavo
