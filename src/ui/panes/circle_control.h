// The command Circle Test and its pane: the test runs exactly while the pane is open.
#pragma once

#include <QObject>
#include <QString>

#include "view/circle_watch.h"
#include "view/command_target.h"

class QMainWindow;
class QSettings;

namespace wavo {

class CirclePane;
class CWavoView;
class PaneDock;
struct Prompts;

class CircleControl final : public QObject, public CommandTarget {
    Q_OBJECT

 public:
    /// The pane is a child of `frame`. No reference is owned; all outlive this object. Without
    /// settings nothing is remembered. `made_by`: what reports say of the program.
    CircleControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts, QSettings* settings,
                  const QString& made_by);
    ~CircleControl() override;

    /// Takes over how the frame was laid out.
    void Restore() { OnOpenChanged(); }

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;
    [[nodiscard]] bool IsChecked(CommandId id) const;

    [[nodiscard]] CircleWatch& Watch() { return m_watch; }
    [[nodiscard]] PaneDock& Dock() { return *m_dock; }
    [[nodiscard]] CirclePane& Pane() { return *m_pane; }

 Q_SIGNALS:
    /// What can be commanded may have changed.
    void CommandsChanged();

 private:
    void OnOpenChanged();

    CWavoView& m_view;
    CircleWatch m_watch;
    CirclePane* const m_pane;  ///< a child of the dock
    PaneDock* const m_dock;    ///< a child of the frame
};

}  // namespace wavo
