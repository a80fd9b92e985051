// Shows how far a long export, or other long work, has come, and lets the user end it.
//
// It blocks the window below it while it shows. Who works moves it on and lets events be handled.
#pragma once

#include <cstdint>
#include <string>

#include "ui/dialogs/table_dialog.h"

namespace wavo {

enum class ExportProgressId {
    kCancel = 2,
    kBar = 1001,
    kRows = 1002,  ///< the text "5 of 1000 rows"
};

/// What a progress says of the work.
struct ProgressTexts {
    const char* caption;
    const char* subject_tip;  ///< of the line that names what is worked on
    const char* bar_tip;
    const char* count_tip;
    const char* cancel_tip;
    const char* unit;  ///< "rows" of "5 of 1000 rows"
};

class ExportProgress : public TableDialog {
 public:
    /// `path` is the file that is written, UTF-8.
    ExportProgress(const std::string& path, QWidget* parent);
    /// Of other work; `subject` names what is worked on, UTF-8.
    ExportProgress(const ProgressTexts& texts, const std::string& subject, QWidget* parent);

    /// Shows that `written` of `total` rows are done.
    void SetRows(std::uint64_t written, std::uint64_t total);

    /// Whether the user wants it to end: the button, Esc, or the window closed.
    [[nodiscard]] bool WasCancelled() const { return m_was_cancelled; }

    void reject() override;

 private:
    const ProgressTexts m_texts;
    bool m_was_cancelled = false;
};

}  // namespace wavo
