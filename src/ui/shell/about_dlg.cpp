#include "ui/shell/about_dlg.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <array>

#include "ui/bars/command_icons.h"
#include "ui/shell/third_parties.h"

namespace wavo {

namespace about {

namespace {

constexpr std::array<ControlRow, 4> kControls{{
    {kIcon, ControlKind::kStatic, "", "The sign of this program"},
    {kText, ControlKind::kStatic, "",
     "Product and version, version of this program, copyright; can be marked and copied"},
    {kDetails, ControlKind::kButton, "Details...",
     "Show what others have written and this program is made with: licences and notices"},
    {kOk, ControlKind::kOk, "OK", "Close this box"},
}};
constexpr int kIconSize = 48;

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace about

CAboutDlg::CAboutDlg(const std::string& text, QWidget* parent)
    : TableDialog(QStringLiteral("About Wavo"), about::Controls(), parent) {
    auto& icon = Control<QLabel>(about::kIcon);
    icon.setPixmap(
        ProgramIcon().pixmap(QSize(about::kIconSize, about::kIconSize), devicePixelRatioF()));
    icon.setAccessibleName(icon.toolTip());
    auto& label = Control<QLabel>(about::kText);
    label.setTextFormat(Qt::PlainText);
    label.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label.setText(QString::fromStdString(text));

    auto* const layout = new QGridLayout(this);
    layout->setHorizontalSpacing(16);
    layout->addWidget(&icon, 0, 0, Qt::AlignTop);
    layout->addWidget(&label, 0, 1);
    layout->addWidget(&Control(about::kDetails), 1, 0, 1, 2, Qt::AlignLeft);
    layout->addWidget(Buttons(), 1, 1);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    OnClick(about::kDetails, &CAboutDlg::ShowDetails);
    Control(about::kOk).setFocus();
}

void CAboutDlg::ShowDetails() {
    ThirdPartiesDialog(this).exec();
}

}  // namespace wavo
