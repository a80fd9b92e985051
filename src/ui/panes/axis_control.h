// The command Axis Test and its pane: lines are gathered exactly while the pane is open.
#pragma once

#include <QObject>
#include <QString>

#include "view/axis_watch.h"
#include "view/command_target.h"

class QMainWindow;
class QSettings;

namespace wavo {

class AxisPane;
class CWavoView;
class PaneDock;
struct Prompts;

class AxisControl final : public QObject, public CommandTarget {
    Q_OBJECT

 public:
    /// The pane is a child of `frame`. No reference is owned; all outlive this object. Without
    /// settings nothing is remembered. `made_by`: what reports say of the program.
    AxisControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts, QSettings* settings,
                const QString& made_by);
    ~AxisControl() override;

    /// Takes over how the frame was laid out.
    void Restore() { OnOpenChanged(); }

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override { return id == CommandId::kAxisTest; }
    void Execute(CommandId id) override;
    [[nodiscard]] bool IsChecked(CommandId id) const;

    [[nodiscard]] AxisWatch& Watch() { return m_watch; }
    [[nodiscard]] PaneDock& Dock() { return *m_dock; }
    [[nodiscard]] AxisPane& Pane() { return *m_pane; }

 Q_SIGNALS:
    /// What can be commanded may have changed.
    void CommandsChanged();

 private:
    void OnOpenChanged();

    AxisWatch m_watch;
    AxisPane* const m_pane;  ///< a child of the dock
    PaneDock* const m_dock;  ///< a child of the frame
};

}  // namespace wavo
