#include "ui/panes/spectrum_control.h"

#include <QMainWindow>
#include <QSettings>

#include "ui/panes/pane_dock.h"
#include "ui/panes/spectrum_pane.h"

namespace wavo {

namespace {

constexpr char kSpectrumAutoHide[] = "SpectrumAutoHide";

}  // namespace

SpectrumControl::SpectrumControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                                 QSettings* settings)
    : m_settings(settings),
      m_pane(new SpectrumPane(view, prompts, settings, nullptr)),
      m_dock(new PaneDock(QStringLiteral("Spectrum"), m_pane, frame)) {
    m_dock->setObjectName(QStringLiteral("spectrum"));
    connect(m_dock, &PaneDock::OpenChanged, this, &SpectrumControl::Changed);
    connect(m_dock, &PaneDock::AutoHideChanged, this, &SpectrumControl::Changed);
    connect(m_pane, &SpectrumPane::ChoiceChanged, this, &SpectrumControl::Changed);
}

void SpectrumControl::Restore() {
    const bool hides =
        m_settings != nullptr && m_settings->value(QLatin1String(kSpectrumAutoHide)).toBool();
    m_dock->SetAutoHide(hides && !m_dock->isFloating());
}

void SpectrumControl::Store() const {
    if (m_settings != nullptr) {
        m_settings->setValue(QLatin1String(kSpectrumAutoHide), m_dock->HidesAtEdge());
    }
}

bool SpectrumControl::IsEnabled(CommandId id) const {
    return id == CommandId::kSpectrum || (id == CommandId::kHideSpectrum && m_dock->IsOpen());
}

bool SpectrumControl::IsChecked(CommandId id) const {
    return id == CommandId::kSpectrum ? m_dock->IsOpen() : m_dock->HidesAtEdge();
}

void SpectrumControl::Execute(CommandId id) {
    if (id == CommandId::kSpectrum) {
        m_dock->setVisible(!m_dock->IsOpen());
    } else if (id == CommandId::kHideSpectrum) {
        m_dock->SetAutoHide(!m_dock->HidesAtEdge());
    }
}

bool SpectrumControl::WantsCursors() const {
    return m_dock->IsOpen() && m_pane->IsBetweenCursors();
}

}  // namespace wavo
