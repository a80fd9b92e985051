// The about box.
#pragma once

#include <QDialog>
#include <span>
#include <string>

#include "ui/controls/control_table.h"

namespace wavo {

namespace about {

enum Control : int {
    kOk = 1,
    kIcon = 128,
    kText = 1057,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> Controls();

}  // namespace about

class CAboutDlg : public QDialog {
 public:
    /// Shows `text` (UTF-8, plain, several lines).
    explicit CAboutDlg(const std::string& text, QWidget* parent = nullptr);
};

}  // namespace wavo
