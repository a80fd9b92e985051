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

namespace wavo {

namespace customize {

namespace {

constexpr std::array<ControlRow, 17> kControls{{
    {kBar, ControlKind::kCombo, "tool &bar:", "The tool bar that is arranged here"},
    {kNewBar, ControlKind::kButton, "&New", "Make another tool bar"},
    {kDeleteBar, ControlKind::kButton, "De&lete",
     "Delete this tool bar; the tool bar Standard stays"},
    {kBarName, ControlKind::kEdit,
     "na&me:", "Name of a tool bar of your own; no name stands twice"},
    {kCommands, ControlKind::kList, "&commands:", "All commands that a tool bar can hold"},
    {kAdd, ControlKind::kButton, "&Add >", "Put the command behind the selected button"},
    {kRemove, ControlKind::kButton, "< &Remove", "Take the selected button away"},
    {kSeparator, ControlKind::kButton, "&Separator", "Put a separator behind the selected button"},
    {kUp, ControlKind::kButton, "U&p", "Move the selected button to the left"},
    {kDown, ControlKind::kButton, "&Down", "Move the selected button to the right"},
    {kButtons, ControlKind::kList, "b&uttons:", "What the tool bar holds, from left to right"},
    {kIconSize, ControlKind::kCombo,
     "icon si&ze:", "Size of the icons in pixels, before the scaling of the screen"},
    {kImage, ControlKind::kCombo,
     "ima&ge:", "Image of the selected button: its own, or one of UserImages.bmp"},
    {kFullMenus, ControlKind::kCheck, "always show &full menus",
     "Not checked: menus show the basic commands and those that you use, the others on demand"},
    {kReset, ControlKind::kButton, "R&eset", "All as it was at first"},
    {kOk, ControlKind::kOk, "OK", "Arrange the bars like this"},
    {kCancel, ControlKind::kCancel, "Cancel", "Leave the bars as they were"},
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

CustomizeDialog::CustomizeDialog(BarSetup setup, std::vector<QIcon> user_images, QWidget* parent)
    : TableDialog(QStringLiteral("Customize"), Controls(), parent),
      m_setup(std::move(setup)),
      m_images(std::move(user_images)) {
    LayOut();
    FillChoices();
    ConnectControls();
    ShowAll();
}

void CustomizeDialog::LayOut() {
    auto* const layout = new QGridLayout;
    LayOutBarRow(*layout);
    LayOutLists(*layout);
    LayOutOptions(*layout);
    Buttons()->addButton(&Control<QPushButton>(kReset), QDialogButtonBox::ResetRole);
    auto* const last = new QGridLayout;
    last->addWidget(Buttons(), 0, 0);
    auto* const outer = new QVBoxLayout(this);
    outer->addLayout(layout);
    outer->addLayout(last);
    QWidget* before = &Control(kFullMenus);
    for (const int id : {kOk, kCancel, kReset}) {  // what is wanted least comes last
        setTabOrder(before, &Control(id));
        before = &Control(id);
    }
}

void CustomizeDialog::LayOutBarRow(QGridLayout& layout) {
    layout.addWidget(LabelOf(kBar), 0, 0);
    layout.addWidget(&Control(kBar), 1, 0);
    auto* const buttons = new QVBoxLayout;
    buttons->addWidget(&Control(kNewBar));
    buttons->addWidget(&Control(kDeleteBar));
    layout.addLayout(buttons, 0, 1, 2, 1);
    layout.addWidget(LabelOf(kBarName), 0, 2);
    layout.addWidget(&Control(kBarName), 1, 2);
}

void CustomizeDialog::LayOutLists(QGridLayout& layout) {
    auto* const middle = new QVBoxLayout;
    for (const int id : {kAdd, kRemove, kSeparator, kUp, kDown}) {
        middle->addWidget(&Control(id));
    }
    middle->addStretch();
    layout.addWidget(LabelOf(kCommands), 2, 0);
    layout.addWidget(&Control(kCommands), 3, 0);
    layout.addLayout(middle, 3, 1);
    layout.addWidget(LabelOf(kButtons), 2, 2);
    layout.addWidget(&Control(kButtons), 3, 2);
}

void CustomizeDialog::LayOutOptions(QGridLayout& layout) {
    layout.addWidget(LabelOf(kIconSize), 4, 0);
    layout.addWidget(&Control(kIconSize), 5, 0);
    layout.addWidget(LabelOf(kImage), 4, 2);
    layout.addWidget(&Control(kImage), 5, 2);
    layout.addWidget(&Control(kFullMenus), 6, 0, 1, 3);
}

void CustomizeDialog::FillChoices() {
    auto& commands = Control<QListWidget>(kCommands);
    for (const CommandId id : ToolBarCommands()) {
        auto* const item =
            new QListWidgetItem(CommandIcon(id), ItemText(static_cast<int>(id)), &commands);
        item->setData(Qt::UserRole, static_cast<int>(id));
    }
    commands.setCurrentRow(0);
    auto& image = Control<QComboBox>(kImage);
    image.addItem(QStringLiteral("its own"));
    for (std::size_t index = 0; index < m_images.size(); ++index) {
        image.addItem(m_images[index], QString::number(index + 1));
    }
    for (const int pixels : kIconSizes) {
        Control<QComboBox>(kIconSize).addItem(QString::number(pixels), pixels);
    }
}

void CustomizeDialog::ConnectControls() {
    OnClick(kNewBar, &CustomizeDialog::NewBar);
    OnClick(kDeleteBar, &CustomizeDialog::DeleteBar);
    OnClick(kAdd, &CustomizeDialog::Add);
    OnClick(kRemove, &CustomizeDialog::Remove);
    OnClick(kSeparator, &CustomizeDialog::AddSeparator);
    OnClick(kUp, &CustomizeDialog::Up);
    OnClick(kDown, &CustomizeDialog::Down);
    OnClick(kReset, &CustomizeDialog::Reset);
    connect(&Control<QComboBox>(kBar), &QComboBox::currentIndexChanged, this,
            [this] { ShowBar(0); });
    connect(&Control<QLineEdit>(kBarName), &QLineEdit::editingFinished, this,
            &CustomizeDialog::RenameBar);
    connect(&Control<QListWidget>(kCommands), &QListWidget::itemDoubleClicked, this,
            &CustomizeDialog::Add);
    connect(&Control<QListWidget>(kButtons), &QListWidget::currentRowChanged, this,
            &CustomizeDialog::ShowEnabling);
    connect(&Control<QComboBox>(kImage), &QComboBox::activated, this,
            &CustomizeDialog::ChooseImage);
    auto& size = Control<QComboBox>(kIconSize);
    connect(&size, &QComboBox::activated, this,
            [this, &size] { m_setup.icon_size = size.currentData().toInt(); });
    connect(&Control<QCheckBox>(kFullMenus), &QCheckBox::clicked, this,
            [this](bool on) { m_setup.full_menus = on; });
}

void CustomizeDialog::accept() {
    RenameBar();
    QDialog::accept();
}

void CustomizeDialog::ShowAll() {
    auto& bars = Control<QComboBox>(kBar);
    {
        const QSignalBlocker blocker(bars);
        bars.clear();
        for (const BarContent& bar : m_setup.bars) {
            bars.addItem(bar.name);
        }
    }
    auto& size = Control<QComboBox>(kIconSize);
    size.setCurrentIndex(size.findData(m_setup.icon_size));
    Control<QCheckBox>(kFullMenus).setChecked(m_setup.full_menus);
    ShowBar(0);
}

void CustomizeDialog::ShowBar(int row_of_button) {
    auto& buttons = Control<QListWidget>(kButtons);
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
    Control<QLineEdit>(kBarName).setText(Bar().name);
    ShowEnabling();
}

void CustomizeDialog::ShowEnabling() {
    const int row = Control<QListWidget>(kButtons).currentRow();
    const int count = static_cast<int>(Bar().items.size());
    const bool own_bar = Control<QComboBox>(kBar).currentIndex() > 0;
    Control(kDeleteBar).setEnabled(own_bar);
    Control(kBarName).setEnabled(own_bar);
    Control(kRemove).setEnabled(row >= 0);
    Control(kUp).setEnabled(row > 0);
    Control(kDown).setEnabled(row >= 0 && row + 1 < count);
    ShowImage();
}

void CustomizeDialog::ShowImage() {
    auto& image = Control<QComboBox>(kImage);
    const auto chosen = m_setup.user_images.find(SelectedItem());
    image.setEnabled(SelectedItem() != kSeparatorItem && !m_images.empty());
    image.setCurrentIndex(chosen != m_setup.user_images.end() && chosen->second + 1 < image.count()
                              ? chosen->second + 1
                              : 0);
}

BarContent& CustomizeDialog::Bar() {
    const int index = Control<QComboBox>(kBar).currentIndex();
    return m_setup.bars[static_cast<std::size_t>(std::max(index, 0))];
}

int CustomizeDialog::SelectedItem() const {
    const int bar = std::max(Control<QComboBox>(kBar).currentIndex(), 0);
    const auto& items = m_setup.bars[static_cast<std::size_t>(bar)].items;
    const int row = Control<QListWidget>(kButtons).currentRow();
    return row >= 0 && row < static_cast<int>(items.size()) ? items[static_cast<std::size_t>(row)]
                                                            : kSeparatorItem;
}

void CustomizeDialog::NewBar() {
    RenameBar();
    QString name;
    auto& bars = Control<QComboBox>(kBar);
    for (int number = 2; name.isEmpty() || bars.findText(name) >= 0; ++number) {
        name = QStringLiteral("Tool bar %1").arg(number);
    }
    m_setup.bars.push_back({name, {}});
    bars.addItem(name);
    bars.setCurrentIndex(bars.count() - 1);
}

void CustomizeDialog::DeleteBar() {
    auto& bars = Control<QComboBox>(kBar);
    const int index = bars.currentIndex();
    m_setup.bars.erase(m_setup.bars.begin() + index);
    bars.removeItem(index);
    ShowBar(0);
}

void CustomizeDialog::RenameBar() {
    auto& bars = Control<QComboBox>(kBar);
    auto& edit = Control<QLineEdit>(kBarName);
    const QString name = edit.text().trimmed();
    if (name.isEmpty() || bars.findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive) >= 0) {
        edit.setText(Bar().name);
        return;
    }
    Bar().name = name;
    bars.setItemText(bars.currentIndex(), name);
}

void CustomizeDialog::Add() {
    const QListWidgetItem* const command = Control<QListWidget>(kCommands).currentItem();
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
    const int row = Control<QListWidget>(kButtons).currentRow() + 1;
    Bar().items.insert(Bar().items.begin() + row, item);
    ShowBar(row);
}

void CustomizeDialog::Remove() {
    const int row = Control<QListWidget>(kButtons).currentRow();
    Bar().items.erase(Bar().items.begin() + row);
    ShowBar(row);
}

void CustomizeDialog::Move(int step) {
    const int row = Control<QListWidget>(kButtons).currentRow();
    const auto item = Bar().items.begin() + row;
    std::iter_swap(item, item + step);
    ShowBar(row + step);
}

void CustomizeDialog::ChooseImage() {
    const int chosen = Control<QComboBox>(kImage).currentIndex();
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
