// The tree that what reads the screen walks: nothing that takes the keyboard is without a name.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QDialog>
#include <QLineEdit>
#include <QVBoxLayout>
#include <set>
#include <string>
#include <vector>

#include "accessible_walk.h"
#include "all_windows.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::AllDialogs;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::NamedDialog;
using testing::WholeFrame;

struct Walk {
    std::vector<std::string> unnamed;
    int focusable = 0;
    int visited = 0;
};

bool IsCell(QAccessible::Role role) {
    return role == QAccessible::Cell || role == QAccessible::ListItem ||
           role == QAccessible::TreeItem;
}

void WalkTree(QAccessibleInterface& node, Walk& walk) {
    ++walk.visited;
    const QAccessible::State state = node.state();
    // A cell is named by what it holds, which may be nothing.
    if (state.focusable && !state.invisible && !IsCell(node.role())) {
        ++walk.focusable;
        if (node.text(QAccessible::Name).trimmed().isEmpty()) {
            const auto* const widget = qobject_cast<QWidget*>(node.object());
            walk.unnamed.push_back(widget == nullptr ? "role " + std::to_string(node.role())
                                                     : testing::NameOfWidget(*widget));
        }
    }
    for (int i = 0; i < node.childCount(); ++i) {
        QAccessibleInterface* const child = node.child(i);
        if (child != nullptr) {
            WalkTree(*child, walk);
        }
    }
}

Walk WalkOf(QWidget& window) {
    Walk walk;
    WalkTree(*QAccessible::queryAccessibleInterface(&window), walk);
    return walk;
}

TEST(AccessibleTree, OfTheFrameNamesAllThatTakesTheKeyboard) {
    WholeFrame frame;
    const Walk bare = WalkOf(*frame);
    EXPECT_THAT(bare.unnamed, IsEmpty());
    EXPECT_GT(bare.focusable, 30);
    for (const CommandId pane : WholeFrame::Panes()) {
        frame.ShowPane(pane);
        const Walk walk = WalkOf(*frame);
        EXPECT_THAT(walk.unnamed, IsEmpty()) << static_cast<int>(pane);
        EXPECT_THAT(testing::WithoutAccessibleTexts(*frame), IsEmpty()) << static_cast<int>(pane);
        EXPECT_GT(walk.focusable, bare.focusable) << static_cast<int>(pane);
    }
    frame.OpenRecording();
    const Walk past = WalkOf(*frame);
    EXPECT_THAT(past.unnamed, IsEmpty());
    EXPECT_THAT(testing::WithoutAccessibleTexts(*frame), IsEmpty());
}

class EveryDialogsTree : public ::testing::TestWithParam<NamedDialog> {};

TEST_P(EveryDialogsTree, NamesAllThatTakesTheKeyboard) {
    const std::unique_ptr<QDialog> dialog = GetParam().make();
    dialog->show();
    const Walk walk = WalkOf(*dialog);
    EXPECT_THAT(walk.unnamed, IsEmpty());
    EXPECT_GE(walk.focusable, 1);
    EXPECT_THAT(testing::WithoutAccessibleTexts(*dialog), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Dialogs, EveryDialogsTree, ::testing::ValuesIn(AllDialogs()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(AccessibleTree, FindsAControlWithoutAName) {
    QDialog dialog;
    auto* const column = new QVBoxLayout(&dialog);
    for (const char* const name : {"", "named"}) {
        auto* const edit = new QLineEdit;
        edit->setObjectName(QStringLiteral("edit"));
        edit->setAccessibleName(QLatin1String(name));
        column->addWidget(edit);
    }
    dialog.show();
    const Walk walk = WalkOf(dialog);
    EXPECT_THAT(walk.unnamed, ElementsAre("QLineEdit edit"));
    EXPECT_EQ(walk.focusable, 2);
}

}  // namespace
}  // namespace wavo
