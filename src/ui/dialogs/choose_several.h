// Lets the user tick some rows of a list.
#pragma once

#include <vector>

#include "ui/dialogs/table_dialog.h"
#include "ui/prompts.h"

namespace wavo {

enum class SeveralId : int { kRows = 1101, kOk = 1, kCancel = 2 };

class SeveralDialog : public TableDialog {
 public:
    SeveralDialog(const SeveralQuestion& question, QWidget* parent);

    /// The rows that are ticked, from 0 on.
    [[nodiscard]] std::vector<int> Chosen() const;
};

/// As Prompts::choose_several asks.
std::vector<int> ChooseSeveral(QWidget* parent, const SeveralQuestion& question);

}  // namespace wavo
