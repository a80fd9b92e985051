// The questions of the application: each has its dialog.
#include "ui/dialogs/dialog_prompts.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMessageBox>

#include "graph/model/wavo_graph.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/trigger_condition_controls.h"

namespace wavo {
namespace {

/// Does something to the dialog that is shown next.
template <typename Dialog, typename Action>
void WithShown(const Action& action) {
    QMetaObject::invokeMethod(
        qApp,
        [action] {
            auto* const dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            action(*dialog);
        },
        Qt::QueuedConnection);
}

TEST(DialogPrompts, NoneIsEmpty) {
    const Prompts prompts = DialogPrompts();
    EXPECT_TRUE(prompts.box);
    EXPECT_TRUE(prompts.color);
    EXPECT_TRUE(prompts.font);
    EXPECT_TRUE(prompts.open_file);
    EXPECT_TRUE(prompts.save_file);
    EXPECT_TRUE(prompts.trigger);
    EXPECT_TRUE(prompts.print);
    EXPECT_TRUE(prompts.page_setup);
    EXPECT_TRUE(prompts.print_preview);
    EXPECT_TRUE(prompts.open_page);
}

TEST(DialogPrompts, AFaultIsABoxOfItsOwnKind) {
    const Prompts prompts = DialogPrompts();
    bool looked = false;
    WithShown<QMessageBox>([&looked](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), QStringLiteral("ERROR"));
        EXPECT_EQ(box.text(), QStringLiteral("what is wrong"));
        EXPECT_EQ(box.icon(), QMessageBox::Warning);
        EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
        looked = true;
        box.accept();
    });
    prompts.ShowError(nullptr, "what is wrong");
    EXPECT_TRUE(looked);
}

TEST(DialogPrompts, ATriggerIsEditedInItsDialog) {
    const Prompts prompts = DialogPrompts();
    TriggerEntry trigger{TriggerTypeCode::kStartAbove, 2.0, "X"};
    WithShown<CTriggerCondition>([](CTriggerCondition& dialog) {
        FindControl<QAbstractButton>(dialog, trigger_condition::kStopBelow)->click();
        dialog.accept();
    });
    EXPECT_TRUE(prompts.trigger(nullptr, trigger));
    EXPECT_EQ(trigger, (TriggerEntry{TriggerTypeCode::kStopBelow, 2.0, "X"}));
    WithShown<CTriggerCondition>([](CTriggerCondition& dialog) { dialog.reject(); });
    EXPECT_FALSE(prompts.trigger(nullptr, trigger));
}

}  // namespace
}  // namespace wavo
