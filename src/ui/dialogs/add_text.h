// The dialog "Additional": a line of text that stands below the graphs.
//
// Invariant: the text changes with OK alone.
#pragma once

#include <QDialog>
#include <string>

namespace wavo {

class CAddText : public QDialog {
 public:
    /// Edits `text` (UTF-8), which is not owned and outlives the dialog.
    explicit CAddText(std::string& text, QWidget* parent = nullptr);

    void accept() override;

 private:
    std::string& m_text;
};

}  // namespace wavo
