// The dialog "Properties": how graphs look, whether the graph editor is shown, and how values are
// exported.
//
// Invariants:
// 1. The settings change with OK alone; the trace level never does.
// 2. Nothing is refused: what cannot be read becomes its default.
#pragma once

#include "settings/view_settings.h"
#include "ui/dialogs/table_dialog.h"
#include "ui/prompts.h"

class QFormLayout;
class QLabel;

namespace wavo {

class CWavoProperties : public TableDialog {
 public:
    /// Edits `settings`; these and `prompts` are not owned and outlive the dialog.
    CWavoProperties(ViewSettings& settings, const Prompts& prompts, QWidget* parent = nullptr);

    void accept() override;

 private:
    void LayOut();
    void FillDisplayPart(QFormLayout& form);
    void FillExportPart(QFormLayout& form);

    void ShowSettings();
    void ShowFont();
    void SelectBackground();
    void SelectFont();
    void SelectDataFile();
    void SetDefaultValues();

    const Prompts& m_prompts;
    ViewSettings& m_settings;  ///< the caller's
    ViewSettings m_edited;     ///< background and font as chosen; the rest stands in the controls
    QLabel* m_font_name = nullptr;  // child
};

}  // namespace wavo
