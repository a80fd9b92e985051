#include <gtest/gtest.h>

#include <QGroupBox>
#include <QRadioButton>

#include "dialog_driver.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/trigger_condition_controls.h"

namespace wavo {
namespace {

using namespace testing;
namespace tc = trigger_condition;

constexpr int kRadios[] = {tc::kNone, tc::kStartAbove, tc::kStartBelow, tc::kStopAbove,
                           tc::kStopBelow};

/// The radio buttons that are checked.
std::vector<int> Checked(const QDialog& dialog) {
    std::vector<int> checked;
    for (const int id : kRadios) {
        if (Control<QRadioButton>(dialog, id).isChecked()) {
            checked.push_back(id);
        }
    }
    return checked;
}

/// Lets every radio button be what it likes, whatever the others are.
void Check(QDialog& dialog, const std::vector<int>& ids) {
    for (const int id : kRadios) {
        Control<QRadioButton>(dialog, id).setAutoExclusive(false);
    }
    for (const int id : kRadios) {
        Control<QRadioButton>(dialog, id).setChecked(std::count(ids.begin(), ids.end(), id) > 0);
    }
}

TEST(TriggerCondition, HasTheControlsOfItsTable) {
    TriggerEntry entry{TriggerTypeCode::kNone, 0.0, "X"};
    CTriggerCondition dialog(entry);
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Trigger condition"));
    EXPECT_EQ(dialog.findChild<QGroupBox*>()->title(), QStringLiteral("trigger mode"));
    ExpectControlsOfTable(dialog, tc::Controls());
}

TEST(TriggerCondition, ControlsHaveTheirNumbersAndTexts) {
    const std::vector<std::pair<int, std::string>> texts = {
        {1054, "none"},
        {1049, "value > trigger limit, start"},
        {1051, "value < trigger limit, start"},
        {1050, "value > trigger limit, stop"},
        {1052, "value < trigger limit, stop"},
        {1078, "ax.name:"},
        {1032, "trigger value:"},
        {1, "OK"},
        {2, "Cancel"},
    };
    EXPECT_EQ(tc::Controls().size(), texts.size());
    for (const auto& [id, text] : texts) {
        EXPECT_EQ(FindRow(tc::Controls(), id).text, text);
    }
}

TEST(TriggerCondition, ShowsTheEntry) {
    const struct {
        double value;
        const char* text;
        int type;
        int radio;
    } rows[] = {
        {1.5, "1.500000", 2, 1049},
        {-12.25, "-12.250000", 3, 1051},
        {1e8, "100000000.000000", 4, 1050},
        {0.0000004, "0.000000", 5, 1052},
        {-0.0, "-0.000000", 2, 1049},
        {7.0, "", 1, 1054},
        {7.0, "", 0, 1054},
        {7.0, "", 6, 1054},
        {7.0, "", -1, 1054},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        TriggerEntry entry{static_cast<TriggerTypeCode>(row.type), row.value, "A<b>&1"};
        const TriggerEntry before = entry;
        const CTriggerCondition dialog(entry);
        EXPECT_EQ(Checked(dialog), std::vector{row.radio});
        EXPECT_EQ(TextOf(dialog, 1032), row.text);
        EXPECT_EQ(Control<QLabel>(dialog, 1078).text(), QStringLiteral("A<b>&1"));
        EXPECT_EQ(entry, before);
    }
}

TEST(TriggerCondition, OkTakesTheCheckedTypeAndTheValue) {
    const struct {
        const char* typed;
        double value;
        int radio;
        int type;
    } rows[] = {
        {"2.5", 2.5, 1049, 2},    {"-3", -3.0, 1051, 3}, {"1e3", 1000.0, 1050, 4},
        {" .5xyz", 0.5, 1052, 5}, {"abc", 0.0, 1049, 2},  // no number is 0
        {" ", 0.0, 1049, 2},      {"1,5", 1.0, 1049, 2},  // a comma is no decimal point
        {"", 42.0, 1051, 3},                              // empty keeps the value
        {"17", 42.0, 1054, 1},                            // the value is not read
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        TriggerEntry entry{TriggerTypeCode::kStopBelow, 42.0, "X"};
        CTriggerCondition dialog(entry);
        dialog.show();
        Click(dialog, row.radio);
        Type(dialog, 1032, QString::fromLatin1(row.typed));
        EXPECT_EQ(entry, (TriggerEntry{TriggerTypeCode::kStopBelow, 42.0, "X"}));
        Click(dialog, 1);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(entry, (TriggerEntry{static_cast<TriggerTypeCode>(row.type), row.value, "X"}));
    }
}

TEST(TriggerCondition, AnEntryWithoutTriggerKeepsItsValueUnlessOneIsTyped) {
    TriggerEntry entry{TriggerTypeCode::kNone, 42.0, "X"};
    CTriggerCondition dialog(entry);
    dialog.show();
    Click(dialog, tc::kStartAbove);
    EXPECT_EQ(TextOf(dialog, tc::kValue), "");
    Click(dialog, tc::kOk);
    EXPECT_EQ(entry, (TriggerEntry{TriggerTypeCode::kStartAbove, 42.0, "X"}));
}

TEST(TriggerCondition, AnUnknownTypeBecomesNoneWithOk) {
    TriggerEntry entry{static_cast<TriggerTypeCode>(9), 42.0, "X"};
    CTriggerCondition dialog(entry);
    dialog.show();
    Click(dialog, tc::kOk);
    EXPECT_EQ(entry, (TriggerEntry{TriggerTypeCode::kNone, 42.0, "X"}));
}

TEST(TriggerCondition, WithNoRadioCheckedOkChangesNothing) {
    TriggerEntry entry{TriggerTypeCode::kStopAbove, 42.0, "X"};
    CTriggerCondition dialog(entry);
    dialog.show();
    Check(dialog, {});
    Type(dialog, tc::kValue, QStringLiteral("7"));
    Click(dialog, tc::kOk);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(entry, (TriggerEntry{TriggerTypeCode::kStopAbove, 42.0, "X"}));
}

TEST(TriggerCondition, TheFirstCheckedCountsNoneBeforeAll) {
    const struct {
        std::vector<int> checked;
        TriggerTypeCode type;
    } rows[] = {
        {{1054, 1049, 1051, 1050, 1052}, TriggerTypeCode::kNone},
        {{1049, 1051, 1050, 1052}, TriggerTypeCode::kStartAbove},
        {{1051, 1050, 1052}, TriggerTypeCode::kStartBelow},
        {{1050, 1052}, TriggerTypeCode::kStopAbove},
    };
    for (const auto& row : rows) {
        TriggerEntry entry{TriggerTypeCode::kStopBelow, 42.0, "X"};
        CTriggerCondition dialog(entry);
        dialog.show();
        Check(dialog, row.checked);
        Click(dialog, tc::kOk);
        EXPECT_EQ(entry.TriggerType, row.type);
    }
}

TEST(TriggerCondition, CancelAndEscapeLeaveTheEntry) {
    for (const bool escape : {false, true}) {
        TriggerEntry entry{TriggerTypeCode::kStopAbove, 42.0, "X"};
        CTriggerCondition dialog(entry);
        dialog.show();
        Click(dialog, tc::kStartBelow);
        Type(dialog, tc::kValue, QStringLiteral("7"));
        if (escape) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
        } else {
            Click(dialog, tc::kCancel);
        }
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
        EXPECT_EQ(entry, (TriggerEntry{TriggerTypeCode::kStopAbove, 42.0, "X"}));
    }
}

TEST(TriggerCondition, ReturnInTheValueIsOk) {
    TriggerEntry entry{TriggerTypeCode::kStopAbove, 42.0, "X"};
    CTriggerCondition dialog(entry);
    dialog.show();
    Type(dialog, tc::kValue, QStringLiteral("7"));
    QTest::keyClick(&Control<QLineEdit>(dialog, tc::kValue), Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(entry, (TriggerEntry{TriggerTypeCode::kStopAbove, 7.0, "X"}));
}

TEST(TriggerCondition, ALongNameDoesNotWidenTheDialog) {
    TriggerEntry shorter{TriggerTypeCode::kNone, 0.0, "X"};
    TriggerEntry longer{TriggerTypeCode::kNone, 0.0, std::string(500, 'n')};
    EXPECT_EQ(CTriggerCondition(longer).sizeHint(), CTriggerCondition(shorter).sizeHint());
}

}  // namespace
}  // namespace wavo
