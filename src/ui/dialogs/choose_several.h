// Lets the user tick some rows of a list.
#pragma once

#include <QDialog>
#include <QStringList>
#include <vector>

#include "ui/prompts.h"

class QListWidget;

namespace wavo {

class SeveralDialog : public QDialog {
 public:
    SeveralDialog(const SeveralQuestion& question, QWidget* parent);

    /// The rows that are ticked, from 0 on.
    [[nodiscard]] std::vector<int> Chosen() const;

 private:
    QListWidget* const m_list;  // child
};

/// As Prompts::choose_several asks.
std::vector<int> ChooseSeveral(QWidget* parent, const SeveralQuestion& question);

}  // namespace wavo
