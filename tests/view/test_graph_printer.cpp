#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>
#include <QTemporaryDir>

#include "expect_errors.h"
#include "printed_page.h"
#include "view/graph_printer.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A white picture with a black border of 10 pixels and a red left upper quarter.
QImage Picture(const QSize& size) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter painter(&picture);
    painter.fillRect(picture.rect().adjusted(10, 10, -10, -10), Qt::white);
    painter.fillRect(10, 10, size.width() / 2 - 10, size.height() / 2 - 10, Qt::red);
    return picture;
}

class Printing : public ::testing::Test {
 protected:
    Printing() {
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box);
            return m_answer;
        };
        m_prompts.print = [this](QWidget*, QPrinter& printer) {
            m_dialogs.emplace_back("print");
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(m_file);
            m_orientation = printer.pageLayout().orientation();
            return m_accept;
        };
        m_prompts.page_setup = [this](QWidget*, QPrinter&) {
            m_dialogs.emplace_back("page setup");
        };
        m_prompts.print_preview = [this](QWidget*, QPrinter& printer,
                                         const std::function<void(QPrinter&)>& paint) {
            m_dialogs.emplace_back("preview");
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(m_file);
            paint(printer);
        };
    }
    QTemporaryDir m_folder;
    QString m_file = m_folder.filePath(QStringLiteral("page.pdf"));
    QImage m_picture = Picture({600, 300});
    QRect m_area{0, 0, 600, 300};
    ColorRef m_background = 0xFFFFFF;
    Prompts m_prompts;
    GraphPrinter m_printer{
        {[this] { return m_picture; }, [this] { return m_area; }, [this] { return m_background; }},
        m_prompts};
    BoxAnswer m_answer = BoxAnswer::kYes;
    bool m_accept = true;
    QPageLayout::Orientation m_orientation{};
    std::vector<Box> m_boxes;
    std::vector<std::string> m_dialogs;
};

TEST_F(Printing, AWhiteBackgroundIsPrintedWithoutAQuestion) {
    m_printer.Print(nullptr);
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_THAT(m_dialogs, ElementsAre("print"));
    EXPECT_TRUE(QFile::exists(m_file));
}

TEST_F(Printing, AnyOtherBackgroundIsAskedAbout) {
    for (const ColorRef background : {0x000000U, 0xFFFFFEU, 0xFEFFFFU}) {
        m_background = background;
        m_boxes.clear();
        m_dialogs.clear();
        m_answer = BoxAnswer::kNo;
        m_printer.Print(nullptr);
        m_printer.Preview(nullptr);
        const Box question{
            "     Back ground color is not white !\r\n               Continue printing ?",
            "Inconvenient back ground color", BoxIcon::kQuestion, BoxButtons::kYesNo};
        EXPECT_THAT(m_boxes, ElementsAre(question, question));
        EXPECT_THAT(m_dialogs, IsEmpty());
        m_answer = BoxAnswer::kYes;
        m_printer.Print(nullptr);
        EXPECT_THAT(m_dialogs, ElementsAre("print"));
    }
}

TEST_F(Printing, NothingIsPrintedWhenTheDialogIsCancelled) {
    m_accept = false;
    m_printer.Print(nullptr);
    EXPECT_FALSE(QFile::exists(m_file));
}

TEST_F(Printing, AWidePictureGetsALyingPage) {
    m_printer.Print(nullptr);
    EXPECT_EQ(m_orientation, QPageLayout::Landscape);
}

TEST_F(Printing, APictureThatALyingPageWouldCutOffGetsAStandingOne) {
    m_area = QRect(0, 0, 400, 300);
    m_picture = Picture({400, 300});
    m_printer.Print(nullptr);
    EXPECT_EQ(m_orientation, QPageLayout::Portrait);
}

TEST_F(Printing, ThePageSetupHasItsDialogAndNoQuestion) {
    m_background = 0;
    m_printer.SetUpPage(nullptr);
    EXPECT_THAT(m_dialogs, ElementsAre("page setup"));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(Printing, ThePreviewPaintsThePage) {
    m_printer.Preview(nullptr);
    EXPECT_THAT(m_dialogs, ElementsAre("preview"));
    EXPECT_GT(QFile(m_file).size(), 0);
}

TEST_F(Printing, AFileThatCannotBeWrittenIsShown) {
    m_file = m_folder.filePath(QStringLiteral("no folder/page.pdf"));
    const testing::ExpectErrorLog expected({"GraphPrinter::Print(): cannot print"});
    m_printer.Print(nullptr);
    EXPECT_THAT(m_boxes,
                ElementsAre(Box{"Can not print", "ERROR", BoxIcon::kExclamation, BoxButtons::kOk}));
}

TEST(PrintedPage, HasThePictureAcrossItsWidthInItsProportions) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("page.pdf"));
    {
        QPdfWriter writer(file);
        writer.setPageSize(QPageSize(QSizeF(10.0, 8.0), QPageSize::Inch));
        writer.setPageMargins({1.0, 1.0, 1.0, 1.0}, QPageLayout::Inch);
        ASSERT_TRUE(PrintPicture(writer, Picture({600, 300}), {0, 0, 600, 300}));
    }
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    const QImage page = testing::PageOf(file, 50);
    ASSERT_EQ(page.size(), QSize(500, 400));
    // The picture: 8 inches wide, so 4 high, from the margins on.
    EXPECT_EQ(page.pixelColor(45, 100), QColor(Qt::white));
    EXPECT_EQ(page.pixelColor(53, 100), QColor(Qt::black));
    EXPECT_EQ(page.pixelColor(446, 100), QColor(Qt::black));
    EXPECT_EQ(page.pixelColor(454, 100), QColor(Qt::white));
    EXPECT_EQ(page.pixelColor(250, 53), QColor(Qt::black));
    EXPECT_EQ(page.pixelColor(250, 246), QColor(Qt::black));
    EXPECT_EQ(page.pixelColor(250, 254), QColor(Qt::white));
    EXPECT_EQ(page.pixelColor(150, 100), QColor(Qt::red));
    EXPECT_EQ(page.pixelColor(350, 100), QColor(Qt::white));
    EXPECT_EQ(page.pixelColor(150, 200), QColor(Qt::white));
}

TEST(PrintedPage, HasAsManyPixelsAsAScreenOfHighResolution) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("page.pdf"));
    QImage picture = Picture({1200, 600});
    picture.setDevicePixelRatio(2.0);
    {
        QPdfWriter writer(file);
        writer.setPageSize(QPageSize(QSizeF(10.0, 8.0), QPageSize::Inch));
        writer.setPageMargins({1.0, 1.0, 1.0, 1.0}, QPageLayout::Inch);
        ASSERT_TRUE(PrintPicture(writer, picture, {0, 0, 600, 300}));
    }
    QFile pdf(file);
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly));
    const QByteArray content = pdf.readAll();
    EXPECT_TRUE(content.contains("/Width 1200\n/Height 600")) << "the picture lost pixels";
    EXPECT_FALSE(content.contains("DCTDecode")) << "compressed with loss";
}

TEST(PrintedPage, BeginsBelowWhatStandsAboveTheGraphs) {
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("page.pdf"));
    QImage picture(600, 300, QImage::Format_RGB32);
    picture.fill(Qt::green);
    QPainter(&picture).fillRect(0, 0, 600, 100, Qt::blue);  // the graph editor stands there
    {
        QPdfWriter writer(file);
        writer.setPageSize(QPageSize(QSizeF(10.0, 8.0), QPageSize::Inch));
        writer.setPageMargins({1.0, 1.0, 1.0, 1.0}, QPageLayout::Inch);
        ASSERT_TRUE(PrintPicture(writer, picture, {0, 100, 600, 200}));
    }
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    const QImage page = testing::PageOf(file, 50);
    EXPECT_GT(page.pixelColor(250, 53).green(), 250);
    EXPECT_LT(page.pixelColor(250, 53).blue(), 5);
    EXPECT_LT(page.pixelColor(250, 135).red(), 5);
    EXPECT_GT(page.pixelColor(250, 142).red(), 250);
}

}  // namespace
}  // namespace wavo
