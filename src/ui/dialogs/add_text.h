// The dialog "Additional": a line of text that stands below the graphs.
//
// Invariant: the text changes with OK alone.
#pragma once

#include <string>

#include "ui/dialogs/table_dialog.h"

namespace wavo {

class CAddText : public TableDialog {
 public:
    /// Edits `text` (UTF-8), which is not owned and outlives the dialog.
    explicit CAddText(std::string& text, QWidget* parent = nullptr);

    void accept() override;

 private:
    std::string& m_text;
};

}  // namespace wavo
