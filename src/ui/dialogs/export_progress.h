// Shows how far a long export has come, and lets the user end it.
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

class ExportProgress : public TableDialog {
 public:
    /// `path` is the file that is written, UTF-8.
    ExportProgress(const std::string& path, QWidget* parent);

    /// Shows that `written` of `total` rows are in the file.
    void SetRows(std::uint64_t written, std::uint64_t total);

    /// Whether the user wants it to end: the button, Esc, or the window closed.
    [[nodiscard]] bool WasCancelled() const { return m_was_cancelled; }

    void reject() override;

 private:
    bool m_was_cancelled = false;
};

}  // namespace wavo
