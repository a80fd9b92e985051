#include "ui/panes/measure_control.h"

#include <QMainWindow>
#include <QSettings>

#include "ui/panes/measurements_pane.h"
#include "ui/panes/pane_dock.h"
#include "view/view_access.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

constexpr char kAutoHideSetting[] = "MeasureAutoHide";
/// At most twenty times a second, by batches.
constexpr auto kLeastBetweenBatches = std::chrono::milliseconds(50);

}  // namespace

MeasureControl::MeasureControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                               QSettings* settings)
    : m_view(view),
      m_settings(settings),
      m_pane(new MeasurementsPane(view, prompts, settings, nullptr)),
      m_dock(new PaneDock(QStringLiteral("Measurements"), m_pane, frame)),
      m_spectrum(frame, view, prompts, settings) {
    m_dock->setObjectName(QStringLiteral("measurements"));
    connect(m_dock, &PaneDock::OpenChanged, this, &MeasureControl::ShowCursors);
    connect(m_dock, &PaneDock::AutoHideChanged, this, &MeasureControl::CommandsChanged);
    connect(&m_spectrum, &SpectrumControl::Changed, this, &MeasureControl::ShowCursors);
    connect(&view.News(), &ViewNews::BatchShown, this, &MeasureControl::OnBatch);
    connect(&view.News(), &ViewNews::MeasureChanged, this, &MeasureControl::Refresh);
}

void MeasureControl::Restore() {
    const bool hides =
        m_settings != nullptr && m_settings->value(QLatin1String(kAutoHideSetting)).toBool();
    m_dock->SetAutoHide(hides && !m_dock->isFloating());
    m_spectrum.Restore();
    ShowCursors();
}

void MeasureControl::Store() const {
    m_spectrum.Store();
    if (m_settings != nullptr) {
        m_settings->setValue(QLatin1String(kAutoHideSetting), m_dock->HidesAtEdge());
    }
}

bool MeasureControl::IsEnabled(CommandId id) const {
    return id == CommandId::kMeasurements || id == CommandId::kLineStyles ||
           id == CommandId::kDescribeGraph ||
           (id == CommandId::kHideMeasurements && m_dock->IsOpen()) || m_spectrum.IsEnabled(id);
}

bool MeasureControl::IsChecked(CommandId id) const {
    if (id == CommandId::kSpectrum || id == CommandId::kHideSpectrum) {
        return m_spectrum.IsChecked(id);
    }
    if (id == CommandId::kLineStyles) {
        return m_view.Screen().ShowsLineStyles();
    }
    return id == CommandId::kMeasurements ? m_dock->IsOpen() : m_dock->HidesAtEdge();
}

void MeasureControl::Execute(CommandId id) {
    if (id == CommandId::kMeasurements) {
        m_dock->setVisible(!m_dock->IsOpen());
    } else if (id == CommandId::kHideMeasurements) {
        m_dock->SetAutoHide(!m_dock->HidesAtEdge());
    } else if (id == CommandId::kLineStyles) {
        m_view.Screen().SwitchLineStyles();
    } else if (id == CommandId::kDescribeGraph) {
        Q_EMIT m_view.News().PaneTextChanged(StatusPane::kMessage, SelectedGraphInWords(m_view));
    } else {
        m_spectrum.Execute(id);
    }
}

void MeasureControl::ShowCursors() {
    m_view.Cursors().Show(m_dock->IsOpen() || m_spectrum.WantsCursors());
    Q_EMIT CommandsChanged();
}

void MeasureControl::OnBatch() {
    const Clock::time_point now = m_now();
    if (!m_refreshed || now - *m_refreshed >= kLeastBetweenBatches) {
        m_refreshed = now;
        Refresh();
    }
}

void MeasureControl::Refresh() {
    if (m_pane->isVisible()) {
        m_pane->Refresh();
    }
}

}  // namespace wavo
