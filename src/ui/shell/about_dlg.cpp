#include "ui/shell/about_dlg.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <array>

#include "ui/bars/command_icons.h"
#include "ui/controls/controls.h"

namespace wavo {

namespace about {

namespace {

constexpr std::array<ControlRow, 3> kControls{{
    {kIcon, "", "The sign of this program"},
    {kText, "",
     "Product and version, version of this program, copyright; can be marked and copied"},
    {kOk, "OK", "Close this box"},
}};
constexpr int kIconSize = 48;

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace about

CAboutDlg::CAboutDlg(const std::string& text, QWidget* parent) : QDialog(parent) {
    const auto row = [](int id) -> const ControlRow& { return FindRow(about::Controls(), id); };
    setWindowTitle(QStringLiteral("About Wavo"));

    auto* const icon = new QLabel;
    InitControl(*icon, row(about::kIcon));
    icon->setPixmap(
        ProgramIcon().pixmap(QSize(about::kIconSize, about::kIconSize), devicePixelRatioF()));
    auto* const label = new QLabel;
    InitControl(*label, row(about::kText));
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setText(QString::fromStdString(text));

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    InitControl(*buttons->button(QDialogButtonBox::Ok), row(about::kOk));
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });

    auto* const layout = new QGridLayout(this);
    layout->setHorizontalSpacing(16);
    layout->addWidget(icon, 0, 0, Qt::AlignTop);
    layout->addWidget(label, 0, 1);
    layout->addWidget(buttons, 1, 0, 1, 2);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    buttons->button(QDialogButtonBox::Ok)->setFocus();
}

}  // namespace wavo
