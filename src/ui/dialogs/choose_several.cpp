#include "ui/dialogs/choose_several.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace wavo {

namespace {

/// Width in characters.
constexpr int kListWidth = 72;

}  // namespace

SeveralDialog::SeveralDialog(const SeveralQuestion& question, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget(this)) {
    setWindowTitle(question.caption);
    auto* const text = new QLabel(question.text, this);
    m_list->setAccessibleName(question.text);
    m_list->setAccessibleDescription(QStringLiteral("Tick with the space key"));
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setMinimumWidth(fontMetrics().averageCharWidth() * kListWidth);
    for (const QString& row : question.rows) {
        auto* const item = new QListWidgetItem(row, m_list);
        item->setToolTip(row);
        item->setCheckState(Qt::Unchecked);
    }
    m_list->setCurrentRow(0);
    auto* const buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* const ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(question.button);
    ok->setEnabled(false);
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Cancel"));
    connect(m_list, &QListWidget::itemChanged, this,
            [this, ok] { ok->setEnabled(!Chosen().empty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addWidget(m_list);
    column->addWidget(buttons);
}

std::vector<int> SeveralDialog::Chosen() const {
    std::vector<int> chosen;
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->checkState() == Qt::Checked) {
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
