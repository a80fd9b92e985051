// The dialog in which computed axes are written.
#include "ui/dialogs/computed_axes_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "accessible_walk.h"
#include "dialog_driver.h"

namespace wavo {
namespace {

using computed::ComputedAxis;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int Id(ComputedAxesId id) {
    return static_cast<int>(id);
}

const std::vector<std::string> kNames{"X", "Y", "Spindle load"};
const std::vector<ComputedAxis> kTwo{{"err", "X - Y", "mm"}, {"v", "d(err)", "mm/s"}};

class ComputedAxesDialogTest : public ::testing::Test {
 protected:
    void Show(std::vector<ComputedAxis> axes) {
        m_dialog = std::make_unique<ComputedAxesDialog>(std::move(axes), kNames, nullptr);
        m_dialog->show();
        m_dialog->activateWindow();
    }
    template <typename Widget = QWidget>
    Widget& Get(ComputedAxesId id) {
        return testing::Control<Widget>(*m_dialog, Id(id));
    }
    bool Enabled(ComputedAxesId id) { return Get(id).isEnabled(); }
    void Click(ComputedAxesId id) { testing::Click(*m_dialog, Id(id)); }
    void Type(ComputedAxesId id, const char* text) {
        testing::Type(*m_dialog, Id(id), QString::fromUtf8(text));
    }
    std::string Wrong() { return Get<QLabel>(ComputedAxesId::kWrong).text().toStdString(); }
    std::string Cell(int row, int column) {
        return Get<QTableWidget>(ComputedAxesId::kTable).item(row, column)->text().toStdString();
    }
    std::vector<std::string> Listed() {
        std::vector<std::string> names;
        for (const ComputedAxis& axis : m_dialog->Axes()) {
            names.push_back(axis.name);
        }
        return names;
    }
    /// Chooses an entry of the menu Insert by the keys.
    void Insert(int menu, int entry) {
        QTimer::singleShot(0, m_dialog.get(), [&] {
            QMenu& top = *Get<QPushButton>(ComputedAxesId::kInsert).menu();
            for (int i = 0; i <= menu; ++i) {
                QTest::keyClick(&top, Qt::Key_Down);
            }
            QTest::keyClick(&top, Qt::Key_Right);
            QMenu& sub = *top.actions()[menu]->menu();
            for (int i = 0; i < entry; ++i) {
                QTest::keyClick(&sub, Qt::Key_Down);
            }
            QTest::keyClick(&sub, Qt::Key_Return);
        });
        Get<QPushButton>(ComputedAxesId::kInsert).setFocus();
        QTest::keyClick(&Get(ComputedAxesId::kInsert), Qt::Key_Space);
    }

    std::unique_ptr<ComputedAxesDialog> m_dialog;
};

TEST_F(ComputedAxesDialogTest, ShowsTheAxesThatThereAre) {
    Show(kTwo);
    EXPECT_EQ(m_dialog->windowTitle(), "Computed Axes");
    auto& table = Get<QTableWidget>(ComputedAxesId::kTable);
    ASSERT_EQ(table.rowCount(), 2);
    EXPECT_EQ(table.horizontalHeaderItem(3)->text(), "what is wrong");
    EXPECT_EQ(Cell(0, 0), "err");
    EXPECT_EQ(Cell(0, 1), "X - Y");
    EXPECT_EQ(Cell(1, 2), "mm/s");
    EXPECT_EQ(Cell(1, 3), "");
    EXPECT_EQ(testing::TextOf(*m_dialog, Id(ComputedAxesId::kName)), "err");
    EXPECT_TRUE(Enabled(ComputedAxesId::kOk));
    EXPECT_EQ(m_dialog->Axes(), kTwo);
    EXPECT_THAT(testing::WithoutAccessibleTexts(*m_dialog), IsEmpty());
}

TEST_F(ComputedAxesDialogTest, TheTabKeyGoesInReadingOrder) {
    Show(kTwo);
    std::vector<int> order;
    for (const ControlRow& row : ComputedAxesControls()) {
        if ((testing::Control<QWidget>(*m_dialog, row.id).focusPolicy() & Qt::TabFocus) != 0) {
            order.push_back(row.id);
        }
    }
    EXPECT_EQ(testing::TabOrder(*m_dialog), order);
}

TEST_F(ComputedAxesDialogTest, BeginsWithNothingButAdd) {
    Show({});
    for (const ComputedAxesId id :
         {ComputedAxesId::kName, ComputedAxesId::kExpression, ComputedAxesId::kUnit,
          ComputedAxesId::kInsert, ComputedAxesId::kRemove, ComputedAxesId::kUp,
          ComputedAxesId::kDown}) {
        EXPECT_FALSE(Enabled(id)) << Id(id);
    }
    EXPECT_EQ(m_dialog->focusWidget(), &Get(ComputedAxesId::kAdd));
    EXPECT_TRUE(Enabled(ComputedAxesId::kOk));
    Click(ComputedAxesId::kAdd);
    EXPECT_EQ(m_dialog->focusWidget(), &Get(ComputedAxesId::kName));
    EXPECT_EQ(Wrong(), "The expression is missing (character 1)");
    EXPECT_FALSE(Enabled(ComputedAxesId::kOk));
    Type(ComputedAxesId::kName, "gantry");
    Type(ComputedAxesId::kExpression, "X - Y");
    Type(ComputedAxesId::kUnit, "mm");
    EXPECT_EQ(Wrong(), "");
    EXPECT_EQ(Cell(0, 0), "gantry");
    Click(ComputedAxesId::kOk);
    EXPECT_EQ(m_dialog->result(), QDialog::Accepted);
    EXPECT_THAT(m_dialog->Axes(), ElementsAre(ComputedAxis{"gantry", "X - Y", "mm"}));
}

TEST_F(ComputedAxesDialogTest, SaysWhatIsWrongWhileItIsTyped) {
    Show(kTwo);
    struct Row {
        ComputedAxesId id;
        const char* text;
        const char* wrong;
        bool ok;
    };
    const Row rows[] = {
        {ComputedAxesId::kExpression, "X -",
         "Something is missing at the end: a value (character 4)", false},
        {ComputedAxesId::kExpression, "Ä * )",
         "\")\" stands where a value is expected (character 5)", false},
        {ComputedAxesId::kExpression, "X - Q",
         "There is no axis \"Q\": the values are missing until there is", true},
        {ComputedAxesId::kExpression, "prev(v)", "\"err\" is computed of itself, through \"v\"",
         false},
        {ComputedAxesId::kExpression, "[Spindle load] / 2", "", true},
        {ComputedAxesId::kName, "X", "The machine has an axis with the name \"X\"", false},
        {ComputedAxesId::kName, "v", "", false},
        {ComputedAxesId::kName, "sin", "\"sin\" is the name of a function or number", false},
        {ComputedAxesId::kName, "", "The name is missing", false},
        {ComputedAxesId::kName, "err", "", true},
    };
    for (const Row& row : rows) {
        Type(row.id, row.text);
        EXPECT_EQ(Wrong(), row.wrong) << row.text;
        EXPECT_EQ(Cell(0, 3), row.wrong) << row.text;
        EXPECT_EQ(Enabled(ComputedAxesId::kOk), row.ok) << row.text;
        EXPECT_EQ(Get(ComputedAxesId::kWrong).accessibleDescription().toStdString(),
                  *row.wrong == '\0' ? "nothing" : row.wrong);
    }
}

TEST_F(ComputedAxesDialogTest, SaysItAlsoOfTheRowsThatAreNotSelected) {
    Show(kTwo);
    Type(ComputedAxesId::kName, "v");
    EXPECT_EQ(Cell(1, 3), "Another computed axis has the name \"v\"");
    Type(ComputedAxesId::kName, "w");
    EXPECT_EQ(Cell(1, 3), "There is no axis \"err\": the values are missing until there is");
}

TEST_F(ComputedAxesDialogTest, ANameThatTheMachineHasTakenSinceMayStay) {
    Show({{"X", "Y * 2", ""}, {"w", "Y", ""}});
    EXPECT_EQ(Wrong(), "The machine has an axis with the name \"X\"");
    EXPECT_TRUE(Enabled(ComputedAxesId::kOk));
    Get<QTableWidget>(ComputedAxesId::kTable).selectRow(1);
    Type(ComputedAxesId::kName, "Y");
    EXPECT_FALSE(Enabled(ComputedAxesId::kOk));
}

TEST_F(ComputedAxesDialogTest, AddsRemovesAndMoves) {
    Show(kTwo);
    EXPECT_FALSE(Enabled(ComputedAxesId::kUp));
    Click(ComputedAxesId::kDown);
    EXPECT_THAT(Listed(), ElementsAre("v", "err"));
    EXPECT_EQ(testing::TextOf(*m_dialog, Id(ComputedAxesId::kName)), "err") << "it stays selected";
    EXPECT_FALSE(Enabled(ComputedAxesId::kDown));
    Click(ComputedAxesId::kUp);
    Click(ComputedAxesId::kAdd);
    EXPECT_THAT(Listed(), ElementsAre("err", "computed1", "v"));
    Click(ComputedAxesId::kAdd);
    EXPECT_THAT(Listed(), ElementsAre("err", "computed1", "computed2", "v"));
    Click(ComputedAxesId::kRemove);
    EXPECT_EQ(testing::TextOf(*m_dialog, Id(ComputedAxesId::kName)), "v");
    Click(ComputedAxesId::kRemove);
    Click(ComputedAxesId::kRemove);
    EXPECT_THAT(Listed(), ElementsAre("err"));
    Click(ComputedAxesId::kRemove);
    EXPECT_THAT(Listed(), IsEmpty());
    EXPECT_EQ(testing::TextOf(*m_dialog, Id(ComputedAxesId::kExpression)), "");
    EXPECT_FALSE(Enabled(ComputedAxesId::kRemove));
    EXPECT_EQ(Wrong(), "");
}

TEST_F(ComputedAxesDialogTest, TheKeysSelectInTheTable) {
    Show(kTwo);
    EXPECT_EQ(m_dialog->focusWidget(), &Get(ComputedAxesId::kTable));
    QTest::keyClick(&Get(ComputedAxesId::kTable), Qt::Key_Down);
    EXPECT_EQ(testing::TextOf(*m_dialog, Id(ComputedAxesId::kExpression)), "d(err)");
    EXPECT_EQ(testing::TextOf(*m_dialog, Id(ComputedAxesId::kUnit)), "mm/s");
    EXPECT_EQ(m_dialog->Axes(), kTwo) << "nothing was typed";
}

TEST_F(ComputedAxesDialogTest, InsertsAxesAndFunctionsWhereTheCursorIs) {
    Show(kTwo);
    Type(ComputedAxesId::kExpression, "1 + ");
    Insert(0, 2);
    EXPECT_EQ(m_dialog->Axes()[0].expression, "1 + [Spindle load]");
    EXPECT_EQ(m_dialog->focusWidget(), &Get(ComputedAxesId::kExpression));
    Type(ComputedAxesId::kExpression, "2*");
    Insert(1, 0);
    QTest::keyClick(&Get(ComputedAxesId::kExpression), 'X');
    EXPECT_EQ(m_dialog->Axes()[0].expression, "2*d(X)") << "between the brackets";
    Type(ComputedAxesId::kExpression, "");
    Insert(0, 3);
    EXPECT_EQ(m_dialog->Axes()[0].expression, "v") << "not err, which is this one";
}

TEST_F(ComputedAxesDialogTest, CancelIsOffered) {
    Show(kTwo);
    Type(ComputedAxesId::kExpression, "X +");
    Click(ComputedAxesId::kCancel);
    EXPECT_EQ(m_dialog->result(), QDialog::Rejected);
}

TEST_F(ComputedAxesDialogTest, HoldsNoMoreAxesThanThereMayBe) {
    std::vector<ComputedAxis> axes;
    for (std::size_t i = 1; i < computed::kMostComputedAxes; ++i) {
        axes.push_back({"a" + std::to_string(i), "X", ""});
    }
    Show(axes);
    Click(ComputedAxesId::kAdd);
    EXPECT_FALSE(Enabled(ComputedAxesId::kAdd));
}

}  // namespace
}  // namespace wavo
