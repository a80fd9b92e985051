#include "ui/dialogs/add_text.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <array>

#include "ui/controls/controls.h"
#include "ui/controls/line_edits.h"
#include "ui/dialogs/add_text_controls.h"

namespace wavo {

namespace add_text {

namespace {

constexpr std::array<ControlRow, 3> kControls{{
    {kText, "text below the graphs:",
     "Stands in the middle of the last line of the graphs, on paper too; empty for none"},
    {kOk, "OK", "Show this text"},
    {kCancel, "Cancel", "Leave the text as it was"},
}};

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace add_text

CAddText::CAddText(std::string& text, QWidget* parent) : QDialog(parent), m_text(text) {
    const auto row = [](int id) -> const ControlRow& { return FindRow(add_text::Controls(), id); };
    setWindowTitle(QStringLiteral("Additional"));

    auto* const edit = new QLineEdit(QString::fromStdString(text));
    InitControl(*edit, row(add_text::kText));
    edit->setMinimumWidth(edit->fontMetrics().averageCharWidth() * 50);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    InitControl(*buttons->button(QDialogButtonBox::Ok), row(add_text::kOk));
    InitControl(*buttons->button(QDialogButtonBox::Cancel), row(add_text::kCancel));
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(MakeLabel(row(add_text::kText), *edit));
    layout->addWidget(edit);
    layout->addStretch();
    layout->addWidget(buttons);
    KeepOneLineInEdits(*this);
    edit->selectAll();
}

void CAddText::accept() {
    m_text = EditText(*this, add_text::kText).toStdString();
    QDialog::accept();
}

}  // namespace wavo
