#include "ui/dialogs/export_part.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QRadioButton>
#include <QTest>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "accessible_walk.h"
#include "dialog_driver.h"
#include "real_prompts.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

using recording::LineSpan;
using tables::PartFormat;
using ::testing::IsEmpty;

constexpr int Id(ExportPartId id) {
    return static_cast<int>(id);
}

class ExportPartTest : public ::testing::Test {
 protected:
    ExportPartTest() {
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box);
            return m_box_answer;
        };
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            m_questions.push_back(question);
            return m_chosen;
        };
        m_stretches.visible = LineSpan{1000, 3500};
        m_stretches.marked = LineSpan{2000, 2001};
        m_stretches.everything = {0, 100'000};
        m_file.path = m_folder.File("part.mcap");
    }
    void Open() {
        m_dialog.emplace(m_stretches, m_file, m_prompts, nullptr);
        m_dialog->show();
    }
    template <typename Widget = QWidget>
    Widget& Get(ExportPartId id) {
        return testing::Control<Widget>(*m_dialog, Id(id));
    }
    void Choose(PartFormat format) {
        auto& formats = Get<QComboBox>(ExportPartId::kFormat);
        while (formats.currentIndex() != static_cast<int>(format)) {
            const bool is_below = formats.currentIndex() < static_cast<int>(format);
            QTest::keyClick(&formats, is_below ? Qt::Key_Down : Qt::Key_Up);
        }
    }
    std::string Path() { return m_dialog->File().path; }

    const testing::TemporaryFolder m_folder;
    Prompts m_prompts;
    BoxAnswer m_box_answer = BoxAnswer::kOk;
    std::optional<QString> m_chosen;
    std::vector<FileQuestion> m_questions;
    std::vector<Box> m_boxes;
    PartStretches m_stretches;
    tables::PartFile m_file;
    std::optional<ExportPart> m_dialog;
};

TEST_F(ExportPartTest, OffersTheParts) {
    Open();
    EXPECT_EQ(m_dialog->windowTitle(), "Export Part");
    EXPECT_EQ(Get<QRadioButton>(ExportPartId::kVisible).text(),
              "the &visible part: 1 s to 3.5 s, 2500 lines");
    EXPECT_EQ(Get<QRadioButton>(ExportPartId::kMarked).text(),
              "the &marked part: 2 s to 2.001 s, 1 line");
    EXPECT_EQ(m_dialog->Part(), (LineSpan{2000, 2001})) << "what is marked is meant";
    testing::Click(*m_dialog, Id(ExportPartId::kVisible));
    EXPECT_EQ(m_dialog->Part(), (LineSpan{1000, 3500}));
    testing::Click(*m_dialog, Id(ExportPartId::kEverything));
    EXPECT_EQ(m_dialog->Part(), (LineSpan{0, 100'000}));
    EXPECT_THAT(testing::WithoutAccessibleTexts(*m_dialog), IsEmpty());
}

TEST_F(ExportPartTest, PartsThatAreNotThereCannotBeChosen) {
    m_stretches.marked.reset();
    Open();
    EXPECT_EQ(m_dialog->Part(), (LineSpan{1000, 3500}));
    EXPECT_FALSE(Get(ExportPartId::kMarked).isEnabled());
    m_stretches.visible.reset();
    Open();
    EXPECT_EQ(m_dialog->Part(), (LineSpan{0, 100'000}));
}

TEST_F(ExportPartTest, TheExtensionIsThatOfTheFormat) {
    m_file.settings.separator = ';';
    Open();
    EXPECT_EQ(m_dialog->File().format, PartFormat::kRecording);
    Choose(PartFormat::kPackedTable);
    EXPECT_EQ(Path(), m_folder.File("part.csv.gz"));
    EXPECT_EQ(m_dialog->File().format, PartFormat::kPackedTable);
    EXPECT_EQ(m_dialog->File().settings.separator, ';');
    Choose(PartFormat::kTable);
    EXPECT_EQ(Path(), m_folder.File("part.csv"));
    testing::Type(*m_dialog, Id(ExportPartId::kPath), QStringLiteral("values.txt"));
    Choose(PartFormat::kRecording);
    EXPECT_EQ(Path(), "values.txt") << "another extension is the user's own";
}

TEST_F(ExportPartTest, TheFileIsTypedOrChosen) {
    Open();
    testing::Type(*m_dialog, Id(ExportPartId::kPath), QStringLiteral(" "));
    EXPECT_FALSE(Get(ExportPartId::kOk).isEnabled());
    Choose(PartFormat::kTable);
    m_chosen = QString::fromStdString(m_folder.File("chosen.csv"));
    testing::Click(*m_dialog, Id(ExportPartId::kBrowse));
    ASSERT_EQ(m_questions.size(), 1U);
    EXPECT_EQ(m_questions[0].default_suffix, "csv");
    EXPECT_EQ(m_questions[0].filters, "Tables|*.csv|All Files|*.*|");
    EXPECT_EQ(Path(), m_folder.File("chosen.csv"));
    m_chosen.reset();
    testing::Click(*m_dialog, Id(ExportPartId::kBrowse));
    EXPECT_EQ(Path(), m_folder.File("chosen.csv")) << "cancelled";
    testing::Click(*m_dialog, Id(ExportPartId::kOk));
    EXPECT_EQ(m_dialog->result(), QDialog::Accepted);
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(ExportPartTest, AFileThatIsThereIsAskedFor) {
    std::ofstream(m_folder.File("part.mcap")) << "before";
    Open();
    m_box_answer = BoxAnswer::kCancel;
    testing::Click(*m_dialog, Id(ExportPartId::kOk));
    EXPECT_TRUE(m_dialog->isVisible());
    ASSERT_EQ(m_boxes.size(), 1U);
    EXPECT_EQ(m_boxes[0].text, "file " + m_folder.File("part.mcap") + " already exist, override ?");
    m_box_answer = BoxAnswer::kOk;
    testing::Click(*m_dialog, Id(ExportPartId::kOk));
    EXPECT_EQ(m_dialog->result(), QDialog::Accepted);
}

}  // namespace
}  // namespace wavo
