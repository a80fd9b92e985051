#include "ui/dialogs/add_text.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <array>

#include "ui/dialogs/add_text_controls.h"

namespace wavo {

namespace add_text {

namespace {

constexpr std::array<ControlRow, 3> kControls{{
    {kText, ControlKind::kEdit, "text below the graphs:",
     "Stands in the middle of the last line of the graphs, on paper too; empty for none"},
    {kOk, ControlKind::kOk, "OK", "Show this text"},
    {kCancel, ControlKind::kCancel, "Cancel", "Leave the text as it was"},
}};
constexpr int kWidth = 50;  // characters

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace add_text

CAddText::CAddText(std::string& text, QWidget* parent)
    : TableDialog(QStringLiteral("Additional"), add_text::Controls(), parent), m_text(text) {
    QLineEdit& edit = WideEdit(add_text::kText, add_text::kWidth);
    edit.setText(QString::fromStdString(text));
    edit.selectAll();
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(LabelOf(add_text::kText));
    layout->addWidget(&edit);
    layout->addStretch();
    layout->addWidget(Buttons());
}

void CAddText::accept() {
    m_text = EditText(add_text::kText).toStdString();
    QDialog::accept();
}

}  // namespace wavo
