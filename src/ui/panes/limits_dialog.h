// The dialog "Limits": what each figure of a test may be.
#pragma once

#include <span>
#include <vector>

#include "measure/verdict.h"
#include "ui/dialogs/table_dialog.h"
#include "ui/prompts.h"

class QSettings;

namespace wavo {

enum class LimitsId {
    kOk = 1,
    kCancel = 2,
    kTable = 1401,
    kFault = 1402,
    kOpen = 1403,
    kSave = 1404,
    kClear = 1405,
};

class LimitsDialog : public TableDialog {
 public:
    /// A row for each of `figures`, and for each limit on a figure that is not among them.
    /// `prompts` is not owned and outlives the dialog. `folder`: where files are looked for first.
    LimitsDialog(std::span<const measure::NamedFigure> figures, const measure::Limits& limits,
                 const Prompts& prompts, const QString& folder, QWidget* parent);

    /// Lets the user edit `limits`; true when they were changed. The folder of their files is kept
    /// in `settings`, which may be null.
    static bool Edit(std::span<const measure::NamedFigure> figures, measure::Limits* limits,
                     const Prompts& prompts, QSettings* settings, QWidget* parent);

    /// As the table says it. REQUIRES: the dialog was accepted.
    [[nodiscard]] const measure::Limits& Limits() const { return m_limits; }
    [[nodiscard]] const QString& Folder() const { return m_folder; }

 private:
    void MakeTable();
    void Show();
    /// Takes what the table says; shows the first fault.
    void Take();
    void Open();
    void Save();
    void Clear();

    const Prompts& m_prompts;
    const std::vector<measure::NamedFigure> m_figures;
    std::vector<std::string> m_keys;  ///< by row
    measure::Limits m_limits;
    QString m_folder;
    bool m_is_showing = false;
};

}  // namespace wavo
