// The command Reference and its pane: good runs are compared with, and lie behind the graphs,
// exactly while the pane is open.
#pragma once

#include <QObject>

#include "view/command_target.h"
#include "view/reference_watch.h"

class QMainWindow;
class QSettings;

namespace wavo {

class CWavoView;
class PaneDock;
class ReferencePane;
struct Prompts;

class ReferenceControl final : public QObject, public CommandTarget {
    Q_OBJECT

 public:
    /// The pane is a child of `frame`. No reference is owned; all outlive this object. Without
    /// settings nothing is remembered. `made_by`: what results say of the program.
    ReferenceControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                     QSettings* settings, const QString& made_by);
    ~ReferenceControl() override;

    /// Takes over how the frame was laid out.
    void Restore() { OnOpenChanged(); }

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override {
        return id == CommandId::kReference;
    }
    void Execute(CommandId id) override;
    [[nodiscard]] bool IsChecked(CommandId id) const;

    [[nodiscard]] ReferenceWatch& Watch() { return m_watch; }
    [[nodiscard]] PaneDock& Dock() { return *m_dock; }
    [[nodiscard]] ReferencePane& Pane() { return *m_pane; }

 Q_SIGNALS:
    /// What can be commanded may have changed.
    void CommandsChanged();

 private:
    void OnOpenChanged();
    /// Shows what lies behind the graphs now.
    void DrawGraphs();

    CWavoView& m_view;
    ReferenceWatch m_watch;
    ReferencePane* const m_pane;  ///< a child of the dock
    PaneDock* const m_dock;       ///< a child of the frame
};

}  // namespace wavo
