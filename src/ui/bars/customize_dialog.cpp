#include "ui/bars/customize_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "ui/bars/command_icons.h"
#include "ui/bars/commands.h"
#include "ui/controls/controls.h"
#include "ui/controls/line_edits.h"

namespace wavo {

namespace customize {

namespace {

constexpr std::array<ControlRow, 17> kControls{{
    {kBar, "tool &bar:", "The tool bar that is arranged here"},
    {kNewBar, "&New", "Make another tool bar"},
    {kDeleteBar, "De&lete", "Delete this tool bar; the tool bar Standard stays"},
    {kBarName, "na&me:", "Name of a tool bar of your own; no name stands twice"},
    {kCommands, "&commands:", "All commands that a tool bar can hold"},
    {kButtons, "b&uttons:", "What the tool bar holds, from left to right"},
    {kAdd, "&Add >", "Put the command behind the selected button"},
    {kRemove, "< &Remove", "Take the selected button away"},
    {kUp, "U&p", "Move the selected button to the left"},
    {kDown, "&Down", "Move the selected button to the right"},
    {kSeparator, "&Separator", "Put a separator behind the selected button"},
    {kImage, "ima&ge:", "Image of the selected button: its own, or one of UserImages.bmp"},
    {kIconSize, "icon si&ze:", "Size of the icons in pixels, before the scaling of the screen"},
    {kFullMenus, "always show &full menus",
     "Not checked: menus show the basic commands and those that you use, the others on demand"},
    {kReset, "R&eset", "All as it was at first"},
    {kOk, "OK", "Arrange the bars like this"},
    {kCancel, "Cancel", "Leave the bars as they were"},
}};

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace customize

namespace {

using namespace customize;

QString ItemText(int item) {
    if (item == kSeparatorItem) {
        return QStringLiteral("(separator)");
    }
    QString text = MenuText(*FindCommand(static_cast<CommandId>(item)));
    return text.remove(u'&').remove(QStringLiteral("..."));
}

}  // namespace

template <typename Widget>
Widget* CustomizeDialog::Make(Control id) {
    auto* const widget = new Widget;
    InitControl(*widget, FindRow(Controls(), id));
    return widget;
}

QPushButton* CustomizeDialog::MakeButton(Control id, void (CustomizeDialog::*handler)()) {
    auto* const button = Make<QPushButton>(id);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, handler);
    return button;
}

CustomizeDialog::CustomizeDialog(BarSetup setup, std::vector<QIcon> user_images, QWidget* parent)
    : QDialog(parent), m_setup(std::move(setup)), m_images(std::move(user_images)) {
    setWindowTitle(QStringLiteral("Customize"));
    auto* const layout = new QGridLayout;
    BuildBarRow(*layout);
    BuildLists(*layout);
    BuildOptions(*layout);
    auto* const outer = new QVBoxLayout(this);
    outer->addLayout(layout);
    auto* const last = new QGridLayout;
    BuildButtons(*last);
    outer->addLayout(last);
    KeepOneLineInEdits(*this);
    ShowAll();
}

void CustomizeDialog::BuildBarRow(QGridLayout& layout) {
    auto* const bar = Make<QComboBox>(kBar);
    connect(bar, &QComboBox::currentIndexChanged, this, [this] { ShowBar(0); });
    auto* const name = Make<QLineEdit>(kBarName);
    connect(name, &QLineEdit::editingFinished, this, &CustomizeDialog::RenameBar);
    layout.addWidget(MakeLabel(FindRow(Controls(), kBar), *bar), 0, 0);
    layout.addWidget(bar, 1, 0);
    auto* const buttons = new QVBoxLayout;
    buttons->addWidget(MakeButton(kNewBar, &CustomizeDialog::NewBar));
    buttons->addWidget(MakeButton(kDeleteBar, &CustomizeDialog::DeleteBar));
    layout.addLayout(buttons, 0, 1, 2, 1);
    layout.addWidget(MakeLabel(FindRow(Controls(), kBarName), *name), 0, 2);
    layout.addWidget(name, 1, 2);
}

void CustomizeDialog::BuildLists(QGridLayout& layout) {
    auto* const commands = Make<QListWidget>(kCommands);
    for (const CommandId id : ToolBarCommands()) {
        auto* const item =
            new QListWidgetItem(CommandIcon(id), ItemText(static_cast<int>(id)), commands);
        item->setData(Qt::UserRole, static_cast<int>(id));
    }
    commands->setCurrentRow(0);
    connect(commands, &QListWidget::itemDoubleClicked, this, &CustomizeDialog::Add);
    auto* const buttons = Make<QListWidget>(kButtons);
    connect(buttons, &QListWidget::currentRowChanged, this, &CustomizeDialog::ShowEnabling);
    auto* const middle = new QVBoxLayout;
    middle->addWidget(MakeButton(kAdd, &CustomizeDialog::Add));
    middle->addWidget(MakeButton(kRemove, &CustomizeDialog::Remove));
    middle->addWidget(MakeButton(kSeparator, &CustomizeDialog::AddSeparator));
    middle->addWidget(MakeButton(kUp, &CustomizeDialog::Up));
    middle->addWidget(MakeButton(kDown, &CustomizeDialog::Down));
    middle->addStretch();
    layout.addWidget(MakeLabel(FindRow(Controls(), kCommands), *commands), 2, 0);
    layout.addWidget(commands, 3, 0);
    layout.addLayout(middle, 3, 1);
    layout.addWidget(MakeLabel(FindRow(Controls(), kButtons), *buttons), 2, 2);
    layout.addWidget(buttons, 3, 2);
}

void CustomizeDialog::BuildOptions(QGridLayout& layout) {
    auto* const image = Make<QComboBox>(kImage);
    image->addItem(QStringLiteral("its own"));
    for (std::size_t index = 0; index < m_images.size(); ++index) {
        image->addItem(m_images[index], QString::number(index + 1));
    }
    connect(image, &QComboBox::activated, this, &CustomizeDialog::ChooseImage);
    auto* const size = Make<QComboBox>(kIconSize);
    for (const int pixels : kIconSizes) {
        size->addItem(QString::number(pixels), pixels);
    }
    connect(size, &QComboBox::activated, this,
            [this, size] { m_setup.icon_size = size->currentData().toInt(); });
    auto* const full = Make<QCheckBox>(kFullMenus);
    connect(full, &QCheckBox::clicked, this, [this](bool on) { m_setup.full_menus = on; });
    layout.addWidget(MakeLabel(FindRow(Controls(), kIconSize), *size), 4, 0);
    layout.addWidget(size, 5, 0);
    layout.addWidget(MakeLabel(FindRow(Controls(), kImage), *image), 4, 2);
    layout.addWidget(image, 5, 2);
    layout.addWidget(full, 6, 0, 1, 3);
}

void CustomizeDialog::BuildButtons(QGridLayout& layout) {
    auto* const box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    InitControl(*box->button(QDialogButtonBox::Ok), FindRow(Controls(), kOk));
    InitControl(*box->button(QDialogButtonBox::Cancel), FindRow(Controls(), kCancel));
    box->addButton(MakeButton(kReset, &CustomizeDialog::Reset), QDialogButtonBox::ResetRole);
    connect(box, &QDialogButtonBox::accepted, this, [this] {
        RenameBar();
        accept();
    });
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout.addWidget(box, 0, 0);
}

void CustomizeDialog::ShowAll() {
    auto& bars = *FindControl<QComboBox>(*this, kBar);
    {
        const QSignalBlocker blocker(bars);
        bars.clear();
        for (const BarContent& bar : m_setup.bars) {
            bars.addItem(bar.name);
        }
    }
    auto& size = *FindControl<QComboBox>(*this, kIconSize);
    size.setCurrentIndex(size.findData(m_setup.icon_size));
    FindControl<QCheckBox>(*this, kFullMenus)->setChecked(m_setup.full_menus);
    ShowBar(0);
}

void CustomizeDialog::ShowBar(int row_of_button) {
    auto& buttons = *FindControl<QListWidget>(*this, kButtons);
    {
        const QSignalBlocker blocker(buttons);
        buttons.clear();
        const int side = buttons.style()->pixelMetric(QStyle::PM_ListViewIconSize);
        QPixmap nothing(side, side);  // the texts stand below each other
        nothing.fill(Qt::transparent);
        for (const int item : Bar().items) {
            buttons.addItem(new QListWidgetItem(
                item == kSeparatorItem ? QIcon(nothing) : CommandIcon(static_cast<CommandId>(item)),
                ItemText(item)));
        }
        buttons.setCurrentRow(std::min(row_of_button, buttons.count() - 1));
    }
    FindControl<QLineEdit>(*this, kBarName)->setText(Bar().name);
    ShowEnabling();
}

void CustomizeDialog::ShowEnabling() {
    const int row = FindControl<QListWidget>(*this, kButtons)->currentRow();
    const int count = static_cast<int>(Bar().items.size());
    const bool own_bar = FindControl<QComboBox>(*this, kBar)->currentIndex() > 0;
    FindControl(*this, kDeleteBar)->setEnabled(own_bar);
    FindControl(*this, kBarName)->setEnabled(own_bar);
    FindControl(*this, kRemove)->setEnabled(row >= 0);
    FindControl(*this, kUp)->setEnabled(row > 0);
    FindControl(*this, kDown)->setEnabled(row >= 0 && row + 1 < count);
    ShowImage();
}

void CustomizeDialog::ShowImage() {
    auto& image = *FindControl<QComboBox>(*this, kImage);
    const auto chosen = m_setup.user_images.find(SelectedItem());
    image.setEnabled(SelectedItem() != kSeparatorItem && !m_images.empty());
    image.setCurrentIndex(chosen != m_setup.user_images.end() && chosen->second + 1 < image.count()
                              ? chosen->second + 1
                              : 0);
}

BarContent& CustomizeDialog::Bar() {
    const int index = FindControl<QComboBox>(*this, kBar)->currentIndex();
    return m_setup.bars[static_cast<std::size_t>(std::max(index, 0))];
}

int CustomizeDialog::SelectedItem() const {
    const int bar = std::max(FindControl<QComboBox>(*this, kBar)->currentIndex(), 0);
    const auto& items = m_setup.bars[static_cast<std::size_t>(bar)].items;
    const int row = FindControl<QListWidget>(*this, kButtons)->currentRow();
    return row >= 0 && row < static_cast<int>(items.size()) ? items[static_cast<std::size_t>(row)]
                                                            : kSeparatorItem;
}

void CustomizeDialog::NewBar() {
    RenameBar();
    QString name;
    auto& bars = *FindControl<QComboBox>(*this, kBar);
    for (int number = 2; name.isEmpty() || bars.findText(name) >= 0; ++number) {
        name = QStringLiteral("Tool bar %1").arg(number);
    }
    m_setup.bars.push_back({name, {}});
    bars.addItem(name);
    bars.setCurrentIndex(bars.count() - 1);
}

void CustomizeDialog::DeleteBar() {
    auto& bars = *FindControl<QComboBox>(*this, kBar);
    const int index = bars.currentIndex();
    m_setup.bars.erase(m_setup.bars.begin() + index);
    bars.removeItem(index);
    ShowBar(0);
}

void CustomizeDialog::RenameBar() {
    auto& bars = *FindControl<QComboBox>(*this, kBar);
    auto& edit = *FindControl<QLineEdit>(*this, kBarName);
    const QString name = edit.text().trimmed();
    if (name.isEmpty() || bars.findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive) >= 0) {
        edit.setText(Bar().name);
        return;
    }
    Bar().name = name;
    bars.setItemText(bars.currentIndex(), name);
}

void CustomizeDialog::Add() {
    const QListWidgetItem* const command =
        FindControl<QListWidget>(*this, kCommands)->currentItem();
    if (command != nullptr) {
        const int id = command->data(Qt::UserRole).toInt();
        const auto& items = Bar().items;
        if (std::find(items.begin(), items.end(), id) == items.end()) {
            Insert(id);
        }
    }
}

void CustomizeDialog::AddSeparator() {
    Insert(kSeparatorItem);
}

void CustomizeDialog::Insert(int item) {
    const int row = FindControl<QListWidget>(*this, kButtons)->currentRow() + 1;
    Bar().items.insert(Bar().items.begin() + row, item);
    ShowBar(row);
}

void CustomizeDialog::Remove() {
    const int row = FindControl<QListWidget>(*this, kButtons)->currentRow();
    Bar().items.erase(Bar().items.begin() + row);
    ShowBar(row);
}

void CustomizeDialog::Move(int step) {
    const int row = FindControl<QListWidget>(*this, kButtons)->currentRow();
    const auto item = Bar().items.begin() + row;
    std::iter_swap(item, item + step);
    ShowBar(row + step);
}

void CustomizeDialog::ChooseImage() {
    const int chosen = FindControl<QComboBox>(*this, kImage)->currentIndex();
    if (chosen > 0) {
        m_setup.user_images[SelectedItem()] = chosen - 1;
    } else {
        m_setup.user_images.erase(SelectedItem());
    }
}

void CustomizeDialog::Reset() {
    m_setup = DefaultBarSetup();
    ShowAll();
}

}  // namespace wavo
