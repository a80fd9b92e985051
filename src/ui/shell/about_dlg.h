// The about box.
#pragma once

#include <span>
#include <string>

#include "ui/dialogs/table_dialog.h"

namespace wavo {

namespace about {

enum Control : int {
    kOk = 1,
    kIcon = 128,
    kText = 1057,
    kDetails = 1058,  ///< shows licences and notices
};

/// All controls, each once, in reading order.
std::span<const ControlRow> Controls();

}  // namespace about

class CAboutDlg : public TableDialog {
 public:
    /// Shows `text` (UTF-8, plain, several lines).
    explicit CAboutDlg(const std::string& text, QWidget* parent = nullptr);

 private:
    void ShowDetails();
};

}  // namespace wavo
