#include "ui/bars/tool_bars.h"

#include <QMainWindow>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>
#include <QWidgetAction>
#include <algorithm>

#include "ui/bars/commands.h"
#include "ui/bars/menu_button.h"
#include "ui/controls/control_table.h"

namespace wavo {

namespace {

void Fill(QToolBar& bar, const std::vector<int>& items, const CommandActions& actions) {
    bar.clear();
    for (const int item : items) {
        if (item == kSeparatorItem) {
            bar.addSeparator();
            continue;
        }
        QAction* const action = actions.Find(static_cast<CommandId>(item));
        bar.addAction(action);
        SetAccessibleTexts(*bar.widgetForAction(action), action->text(), action->statusTip());
    }
}

}  // namespace

QAction* MakeCustomizeItem(QMainWindow& frame, QAction& customize) {
    auto* const menu = new QMenu(&frame);
    menu->addAction(&customize);
    QToolButton* const button = MakeMenuButton(*menu);
    button->setObjectName(QStringLiteral("customize_button"));
    button->setToolTip(customize.toolTip());
    SetAccessibleTexts(*button, button->toolTip(), customize.statusTip());
    auto* const item = new QWidgetAction(&frame);
    item->setDefaultWidget(button);
    return item;
}

void ShowToolBars(QMainWindow& frame, const QToolBar& other, const CommandActions& actions,
                  const BarSetup& setup, QAction& last) {
    frame.setIconSize(QSize(setup.icon_size, setup.icon_size));
    QList<QToolBar*> before = frame.findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly);
    before.removeOne(&other);
    for (const BarContent& content : setup.bars) {
        const QString name = QStringLiteral("tool_bar_") + content.name;
        const auto same = std::find_if(before.begin(), before.end(), [&](const QToolBar* bar) {
            return bar->objectName() == name;
        });
        QToolBar* const bar = same != before.end() ? *same : frame.addToolBar(content.name);
        if (same != before.end()) {
            before.erase(same);
        }
        bar->setObjectName(name);
        bar->setAllowedAreas(Qt::AllToolBarAreas);
        SetAccessibleTexts(*bar, content.name, QStringLiteral("Buttons of commands"));
        Fill(*bar, content.items, actions);
        if (&content == &setup.bars.front()) {
            bar->addAction(&last);
        }
    }
    qDeleteAll(before);
}

}  // namespace wavo
