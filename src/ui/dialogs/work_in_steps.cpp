#include "ui/dialogs/work_in_steps.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>
#include <array>

#include "support/flag_scope.h"

namespace wavo {

namespace {

constexpr int WorkNumber(WorkProgressId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 3> kWorkProgressRows{{
    {WorkNumber(WorkProgressId::kWhat), ControlKind::kElidedStatic, "file", ""},
    {WorkNumber(WorkProgressId::kBar), ControlKind::kProgress, "progress",
     "How much of the work is done"},
    {WorkNumber(WorkProgressId::kCancel), ControlKind::kCancel, "Cancel",
     "End it; nothing of it is left"},
}};

/// Steps of the bar.
constexpr int kBarSteps = 1000;
/// Width in characters.
constexpr int kBarCharacters = 56;

}  // namespace

WorkProgress::WorkProgress(const QString& title, const QString& what, QWidget* parent)
    : TableDialog(title, kWorkProgressRows, parent) {
    setWindowModality(Qt::WindowModal);
    auto& file = Control<QLabel>(WorkNumber(WorkProgressId::kWhat));
    file.setText(what);
    // Its tool tip is for what does not fit.
    file.setAccessibleDescription(QStringLiteral("The file that is worked on"));
    auto& bar = Control<QProgressBar>(WorkNumber(WorkProgressId::kBar));
    bar.setRange(0, kBarSteps);
    bar.setMinimumWidth(fontMetrics().averageCharWidth() * kBarCharacters);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(&file);
    column->addWidget(&bar);
    column->addWidget(Buttons());
}

void WorkProgress::SetPart(double part) {
    Control<QProgressBar>(WorkNumber(WorkProgressId::kBar))
        .setValue(static_cast<int>(part * kBarSteps));
}

void WorkProgress::reject() {
    // It stays until the work has ended.
    m_was_cancelled = true;
    Control(WorkNumber(WorkProgressId::kCancel)).setEnabled(false);
}

std::chrono::milliseconds WorkInSteps::SteadyClock() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

WorkInSteps::Ending WorkInSteps::Run(tables::SteppedWork& work, const QString& title,
                                     const QString& what, QWidget* parent) {
    const FlagScope under_way(m_is_under_way);
    m_is_cancelled = false;
    std::unique_ptr<WorkProgress> progress;
    const std::chrono::milliseconds begin = m_clock();
    std::chrono::milliseconds handled = begin;
    for (;;) {
        const tables::StepState state = work.Step();
        if (state != tables::StepState::kWorking) {
            return state == tables::StepState::kDone ? Ending::kDone : Ending::kFailed;
        }
        const std::chrono::milliseconds now = m_clock();
        if (now - handled < kEventPause) {
            continue;
        }
        if (progress == nullptr && now - begin > kPatience) {
            progress = std::make_unique<WorkProgress>(title, what, parent);
            progress->show();
        }
        if (progress != nullptr) {
            progress->SetPart(work.Part());
        }
        QCoreApplication::processEvents();
        handled = m_clock();
        if (m_is_cancelled || (progress != nullptr && progress->WasCancelled())) {
            return Ending::kCancelled;
        }
    }
}

}  // namespace wavo
