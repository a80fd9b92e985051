#include "ui/dialogs/choose_several.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace wavo {

namespace {

constexpr int kRows = static_cast<int>(SeveralId::kRows);
constexpr int kOk = static_cast<int>(SeveralId::kOk);

constexpr ControlRow kControls[] = {
    {kRows, ControlKind::kList, "rows:", "Tick a row with a click on its box or the space key"},
    {kOk, ControlKind::kOk, "OK", "Do it with the rows that are ticked"},
    {static_cast<int>(SeveralId::kCancel), ControlKind::kCancel, "Cancel", "Change nothing"},
};

/// Width of the list in characters.
constexpr int kListWidth = 72;

}  // namespace

SeveralDialog::SeveralDialog(const SeveralQuestion& question, QWidget* parent)
    : TableDialog(question.caption, kControls, parent) {
    QLabel* const text = LabelOf(kRows);
    text->setText(question.text);
    auto& list = Control<QListWidget>(kRows);
    list.setTextElideMode(Qt::ElideMiddle);
    list.setMinimumWidth(fontMetrics().averageCharWidth() * kListWidth);
    for (const QString& row : question.rows) {
        auto* const item = new QListWidgetItem(row, &list);
        item->setToolTip(row);
        item->setCheckState(Qt::Unchecked);
    }
    list.setCurrentRow(0);
    auto& ok = Control<QPushButton>(kOk);
    ok.setText(question.button);
    ok.setEnabled(false);
    connect(&list, &QListWidget::itemChanged, this,
            [this, &ok] { ok.setEnabled(!Chosen().empty()); });
    auto* const column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addWidget(&list);
    column->addWidget(Buttons());
}

std::vector<int> SeveralDialog::Chosen() const {
    const auto& list = Control<QListWidget>(kRows);
    std::vector<int> chosen;
    for (int row = 0; row < list.count(); ++row) {
        if (list.item(row)->checkState() == Qt::Checked) {
            chosen.push_back(row);
        }
    }
    return chosen;
}

std::vector<int> ChooseSeveral(QWidget* parent, const SeveralQuestion& question) {
    SeveralDialog dialog(question, parent);
    return dialog.exec() == QDialog::Accepted ? dialog.Chosen() : std::vector<int>();
}

}  // namespace wavo
