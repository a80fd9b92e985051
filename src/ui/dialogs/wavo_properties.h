// The dialog "Properties": how graphs look, whether the graph editor is shown, and how values are
// exported.
//
// Invariants:
// 1. The settings change with OK alone; the trace level never does.
// 2. Nothing is refused: what cannot be read becomes its default.
#pragma once

#include <QDialog>

#include "settings/view_settings.h"

class QFormLayout;
class QGroupBox;
class QLayout;

namespace wavo {

class CWavoProperties : public QDialog {
 public:
    /// Edits `settings`, which are not owned and outlive the dialog.
    explicit CWavoProperties(ViewSettings& settings, QWidget* parent = nullptr);

    void accept() override;

 private:
    void CreateControls();
    QFormLayout* CreateDisplayPart();
    QGroupBox* CreateExportPart();
    QLayout* CreateButtons();

    void ShowSettings();
    void ShowFont();
    void SelectBackground();
    void SelectFont();
    void SelectDataFile();
    void SetDefaultValues();
    void SetText(int id, const QString& text);

    ViewSettings& m_settings;  ///< the caller's
    ViewSettings m_edited;     ///< background and font as chosen; the rest stands in the controls
};

}  // namespace wavo
