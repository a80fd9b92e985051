// The commands about the spectrum, and its pane.
#pragma once

#include <QObject>

#include "view/command_target.h"

class QMainWindow;
class QSettings;

namespace wavo {

class CWavoView;
class PaneDock;
class SpectrumPane;
struct Prompts;

class SpectrumControl final : public QObject, public CommandTarget {
    Q_OBJECT

 public:
    /// As MeasureControl, which has it.
    SpectrumControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                    QSettings* settings);

    void Restore();
    void Store() const;

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;
    [[nodiscard]] bool IsChecked(CommandId id) const;

    /// The cursors of the graphs are needed.
    [[nodiscard]] bool WantsCursors() const;

    [[nodiscard]] PaneDock& Dock() { return *m_dock; }
    [[nodiscard]] SpectrumPane& Pane() { return *m_pane; }

 Q_SIGNALS:
    /// What can be commanded may have changed, or WantsCursors.
    void Changed();

 private:
    QSettings* const m_settings;
    SpectrumPane* const m_pane;  ///< a child of the dock
    PaneDock* const m_dock;      ///< a child of the frame
};

}  // namespace wavo
