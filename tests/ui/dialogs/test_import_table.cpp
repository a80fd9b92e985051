// The dialog that asks when the lines of a table are, and what is remembered of its answers.
#include "ui/dialogs/import_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <string>

#include "accessible_walk.h"
#include "dialog_driver.h"
#include "temporary_folder.h"
#include "ui/dialogs/remembered_tables.h"

namespace wavo {
namespace {

using tables::TablePreview;
using tables::TimeChoice;
using ::testing::IsEmpty;

constexpr int Id(ImportTableId id) {
    return static_cast<int>(id);
}

TablePreview SomePreview() {
    TablePreview preview;
    preview.path = "/data/run.csv";
    preview.names = {"X", "state", "time [ms]"};
    preview.is_text = {false, true, false};
    preview.rows = {{"1.5", "on", "0"}, {"2.5", "off", "4"}, {"3"}};
    return preview;
}

class ImportTableTest : public ::testing::Test {
 protected:
    explicit ImportTableTest(const TimeChoice& initial = {})
        : m_dialog(SomePreview(), initial, nullptr) {
        m_dialog.show();
    }
    template <typename Widget>
    Widget& Get(ImportTableId id) {
        return testing::Control<Widget>(m_dialog, Id(id));
    }
    bool Enabled(ImportTableId id) { return Get<QWidget>(id).isEnabled(); }

    ImportTable m_dialog;
};

TEST_F(ImportTableTest, ShowsTheFirstLines) {
    EXPECT_EQ(m_dialog.windowTitle(), "Import Table");
    EXPECT_EQ(Get<QLabel>(ImportTableId::kFile).text(), "/data/run.csv");
    auto& lines = Get<QTableWidget>(ImportTableId::kLines);
    ASSERT_EQ(lines.columnCount(), 3);
    ASSERT_EQ(lines.rowCount(), 3);
    EXPECT_EQ(lines.horizontalHeaderItem(2)->text(), "time [ms]");
    EXPECT_EQ(lines.item(1, 1)->text(), "off");
    EXPECT_EQ(lines.item(2, 1), nullptr) << "the line has fewer fields";
    EXPECT_THAT(testing::WithoutAccessibleTexts(m_dialog), IsEmpty());
}

TEST_F(ImportTableTest, TheCycleTimeIsTypedWithPointOrComma) {
    EXPECT_TRUE(Get<QRadioButton>(ImportTableId::kByCycle).isChecked());
    EXPECT_EQ(Get<QLineEdit>(ImportTableId::kCycleTime).text(), "0.001");
    EXPECT_EQ(m_dialog.Choice(), TimeChoice());
    testing::Type(m_dialog, Id(ImportTableId::kCycleTime), QStringLiteral("0,00025"));
    EXPECT_EQ(m_dialog.Choice(), (TimeChoice{std::nullopt, 1.0, 0.00025}));
    for (const char* text : {"", "x", "0", "-1", "1e9", "1 s", "nan"}) {
        testing::Type(m_dialog, Id(ImportTableId::kCycleTime), QString::fromLatin1(text));
        EXPECT_FALSE(Enabled(ImportTableId::kOk)) << text;
    }
    testing::Type(m_dialog, Id(ImportTableId::kCycleTime), QStringLiteral("2"));
    EXPECT_TRUE(Enabled(ImportTableId::kOk));
    testing::Click(m_dialog, Id(ImportTableId::kOk));
    EXPECT_EQ(m_dialog.result(), QDialog::Accepted);
}

TEST_F(ImportTableTest, AColumnOfNumbersMayHaveTheTime) {
    auto& columns = Get<QComboBox>(ImportTableId::kColumn);
    EXPECT_FALSE(columns.isEnabled());
    testing::Click(m_dialog, Id(ImportTableId::kByColumn));
    EXPECT_TRUE(columns.isEnabled());
    EXPECT_FALSE(Enabled(ImportTableId::kCycleTime));
    ASSERT_EQ(columns.count(), 2) << "not the texts";
    EXPECT_EQ(m_dialog.Choice().column, 0U);
    QTest::keyClick(&columns, Qt::Key_Down);
    EXPECT_EQ(columns.currentText(), "time [ms]");
    QTest::keyClick(&Get<QComboBox>(ImportTableId::kUnit), Qt::Key_Down);
    EXPECT_EQ(m_dialog.Choice(), (TimeChoice{2, 1e-3, 0.001}));
    EXPECT_TRUE(Enabled(ImportTableId::kOk));
    QTest::keyClick(&m_dialog, Qt::Key_Escape);
    EXPECT_EQ(m_dialog.result(), QDialog::Rejected);
}

TEST(ImportTable, BeginsWithWhatIsGiven) {
    const TimeChoice by_column{2, 1e-3, 0.004};
    const ImportTable dialog(SomePreview(), by_column, nullptr);
    EXPECT_EQ(dialog.Choice(), by_column);
    const ImportTable of_texts(SomePreview(), TimeChoice{1, 1.0, 0.5}, nullptr);
    EXPECT_EQ(of_texts.Choice(), (TimeChoice{std::nullopt, 1.0, 0.5})) << "that column has texts";
    TablePreview texts = SomePreview();
    texts.is_text = {true, true, true};
    const ImportTable none(texts, {}, nullptr);
    EXPECT_FALSE(
        testing::Control<QWidget>(none, static_cast<int>(ImportTableId::kByColumn)).isEnabled());
}

class RememberedTablesTest : public ::testing::Test {
 protected:
    const testing::TemporaryFolder m_folder;
    QSettings m_settings{QString::fromStdString(m_folder.File("settings.ini")),
                         QSettings::IniFormat};
};

TEST_F(RememberedTablesTest, AnswersAreRememberedByTheColumns) {
    RememberedTables answers(&m_settings);
    TablePreview preview = SomePreview();
    EXPECT_EQ(answers.Find(preview), std::nullopt);
    const TimeChoice by_column{2, 1e-3, 0.001};
    answers.Remember(preview, by_column);
    EXPECT_EQ(answers.Find(preview), by_column);
    preview.path = "/data/another.csv";
    EXPECT_EQ(RememberedTables(&m_settings).Find(preview), by_column);
    const TimeChoice by_cycle{std::nullopt, 1.0, 1.0 / 3.0};
    answers.Remember(preview, by_cycle);
    EXPECT_EQ(answers.Find(preview), by_cycle);
    preview.names[0] = "Y";
    EXPECT_EQ(answers.Find(preview), std::nullopt);
    RememberedTables nowhere(nullptr);
    nowhere.Remember(preview, by_cycle);
    EXPECT_EQ(nowhere.Find(preview), std::nullopt);
}

TEST_F(RememberedTablesTest, WhatMakesNoSenseIsNotTaken) {
    RememberedTables answers(&m_settings);
    TablePreview preview = SomePreview();
    answers.Remember(preview, {2, 1e-3, 0.001});
    preview.is_text[2] = true;
    EXPECT_EQ(answers.Find(preview), std::nullopt) << "the column has texts now";
    preview.is_text[2] = false;
    for (const char* rest :
         {" 7 1 0.001", " none 0 0.001", " none 1 0", " none 1", " none 1 x", ""}) {
        const QString key = m_settings.value(QStringLiteral("ImportedTables"))
                                .toStringList()[0]
                                .section(u' ', 0, 0);
        m_settings.setValue(QStringLiteral("ImportedTables"),
                            QStringList{key + QString::fromLatin1(rest)});
        EXPECT_EQ(answers.Find(preview), std::nullopt) << rest;
    }
}

TEST_F(RememberedTablesTest, OldAnswersFallAway) {
    RememberedTables answers(&m_settings);
    TablePreview preview = SomePreview();
    for (int i = 0; i <= RememberedTables::kMost; ++i) {
        preview.names[0] = "X" + std::to_string(i);
        answers.Remember(preview, {});
    }
    EXPECT_TRUE(answers.Find(preview));
    preview.names[0] = "X1";
    EXPECT_TRUE(answers.Find(preview));
    preview.names[0] = "X0";
    EXPECT_FALSE(answers.Find(preview));
}

/// Answers the dialog that opens next.
void AnswerNext(const std::function<void(ImportTable&)>& answer) {
    QTimer::singleShot(0, [answer] {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (auto* const dialog = dynamic_cast<ImportTable*>(window);
                dialog != nullptr && dialog->isVisible()) {
                answer(*dialog);
                return;
            }
        }
        ADD_FAILURE() << "no dialog";
    });
}

TEST_F(RememberedTablesTest, TablesAreAskedForOnce) {
    TablePreview preview = SomePreview();
    preview.guess = TimeChoice{2, 1e-3};
    AnswerNext([](ImportTable& dialog) {
        EXPECT_EQ(dialog.Choice(), (TimeChoice{2, 1e-3})) << "as guessed";
        dialog.reject();
    });
    EXPECT_EQ(TimeOfTable(nullptr, &m_settings, preview, AskTime::kUnlessRemembered), std::nullopt);
    AnswerNext([](ImportTable& dialog) {
        testing::Click(dialog, Id(ImportTableId::kByCycle));
        testing::Type(dialog, Id(ImportTableId::kCycleTime), QStringLiteral("0.5"));
        testing::Click(dialog, Id(ImportTableId::kOk));
    });
    const TimeChoice chosen{std::nullopt, 1.0, 0.5};
    EXPECT_EQ(TimeOfTable(nullptr, &m_settings, preview, AskTime::kUnlessRemembered), chosen);
    EXPECT_EQ(TimeOfTable(nullptr, &m_settings, preview, AskTime::kUnlessRemembered), chosen)
        << "without a dialog";
    AnswerNext([&](ImportTable& dialog) {
        EXPECT_EQ(dialog.Choice(), chosen);
        dialog.accept();
    });
    EXPECT_EQ(TimeOfTable(nullptr, &m_settings, preview, AskTime::kAlways), chosen);
}

}  // namespace
}  // namespace wavo
