// The commands of the menu Measure, and its panes. The cursors are shown while the measurements are
// open, or a spectrum is that between them.
#pragma once

#include <QObject>
#include <chrono>
#include <functional>
#include <optional>

#include "ui/panes/spectrum_control.h"
#include "view/command_target.h"

class QMainWindow;
class QSettings;

namespace wavo {

class CWavoView;
class MeasurementsPane;
class PaneDock;
struct Prompts;

class MeasureControl final : public QObject, public CommandTarget {
    Q_OBJECT

 public:
    using Clock = std::chrono::steady_clock;

    /// The pane is a child of `frame`. No reference is owned; all outlive this object. Without
    /// settings nothing is remembered.
    MeasureControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                   QSettings* settings);

    /// Takes over how the frame was laid out.
    void Restore();
    /// Keeps what the layout of the frame does not say.
    void Store() const;

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;
    [[nodiscard]] bool IsChecked(CommandId id) const;

    [[nodiscard]] PaneDock& Dock() { return *m_dock; }
    [[nodiscard]] MeasurementsPane& Pane() { return *m_pane; }
    [[nodiscard]] SpectrumControl& Spectrum() { return m_spectrum; }

    /// Takes the time from `now`, for tests.
    void SetClock(std::function<Clock::time_point()> now) { m_now = std::move(now); }

 Q_SIGNALS:
    /// What can be commanded may have changed.
    void CommandsChanged();

 private:
    void ShowCursors();
    void OnBatch();
    void Refresh();

    CWavoView& m_view;
    QSettings* const m_settings;
    MeasurementsPane* const m_pane;  ///< a child of the dock
    PaneDock* const m_dock;          ///< a child of the frame
    SpectrumControl m_spectrum;
    std::function<Clock::time_point()> m_now = Clock::now;
    std::optional<Clock::time_point> m_refreshed;  ///< by a batch
};

}  // namespace wavo
