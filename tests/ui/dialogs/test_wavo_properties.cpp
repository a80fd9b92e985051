#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDir>
#include <QFont>
#include <QTemporaryDir>

#include "dialog_driver.h"
#include "graph/draw/display_settings.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/controls/color_field.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/dialogs/wavo_properties_controls.h"

namespace wavo {
namespace {

using namespace testing;
namespace wp = wavo_properties;

ViewSettings OtherSettings() {
    ViewSettings settings;
    settings.background = 0x302010;
    settings.font.face = "DejaVu Sans";
    settings.font.height = -13;
    settings.scale_lines_x = 9;
    settings.scale_lines_y = 1;
    settings.trace_level = 4;
    settings.show_graph_editor = false;
    settings.export_settings = {"\n", '\t', ',', "/data/ü.txt"};
    return settings;
}

/// A data folder of one test; choosers that record what they were asked and give what they are
/// told to.
class Properties : public ::testing::Test {
 protected:
    Properties() {
        qputenv(testing::kDataHome, m_folder.path().toUtf8());
        m_prompts.color = [this](QWidget*, const QColor& initial) {
            asked_colors.push_back(initial);
            return color;
        };
        m_prompts.font = [this](QWidget*, const QFont& initial) {
            asked_fonts.push_back(initial);
            return font;
        };
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            asked_files.push_back(question);
            return file;
        };
    }
    ~Properties() override { qunsetenv(testing::kDataHome); }

    /// What OK leaves when `text` was typed into the control, over other settings.
    ViewSettings After(int id, const char* text) {
        ViewSettings settings = OtherSettings();
        CWavoProperties dialog(settings, m_prompts);
        dialog.show();
        Type(dialog, id, QString::fromUtf8(text));
        Click(dialog, wp::kOk);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        return settings;
    }

    QTemporaryDir m_folder;
    std::optional<QColor> color;
    std::optional<QFont> font;
    std::optional<QString> file;
    std::vector<QColor> asked_colors;
    std::vector<QFont> asked_fonts;
    std::vector<FileQuestion> asked_files;
    Prompts m_prompts;
};

QColor ShownColor(QDialog& dialog) {
    const QImage picture = Control<ColorField>(dialog, wp::kBackground).grab().toImage();
    return picture.pixelColor(picture.rect().center());
}

TEST_F(Properties, HasTheControlsOfItsTable) {
    ViewSettings settings;
    CWavoProperties dialog(settings, m_prompts);
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Properties"));
    ExpectControlsOfTable(dialog, wp::Controls());
}

TEST_F(Properties, ControlsHaveTheirNumbersAndTexts) {
    const std::vector<std::pair<int, std::string>> texts = {
        {1055, "back ground color:"},
        {1026, "Select"},
        {1034, "number of scale lines x-corr.:"},
        {1039, "number of scale lines y-corr.:"},
        {1063, "show graph editor"},
        {1066, "separator:"},
        {1067, "decimal point:"},
        {1068, "end of line:"},
        {1070, "data file:"},
        {1071, "..."},
        {1, "OK"},
        {2, "Cancel"},
        {1056, "Default Values"},
    };
    EXPECT_EQ(wp::Controls().size(), texts.size());
    for (const auto& [id, text] : texts) {
        EXPECT_EQ(FindRow(wp::Controls(), id).text, text);
    }
    ViewSettings settings;
    const CWavoProperties dialog(settings, m_prompts);
    std::vector<std::string> labels;
    for (const QLabel* const label : dialog.findChildren<QLabel*>()) {
        labels.push_back(label->text().toStdString());
    }
    EXPECT_THAT(labels, ::testing::Contains("graphs font:"));
}

TEST_F(Properties, ShowsTheSettings) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    EXPECT_EQ(TextOf(dialog, 1034), "9");
    EXPECT_EQ(TextOf(dialog, 1039), "1");
    EXPECT_FALSE(Control<QCheckBox>(dialog, 1063).isChecked());
    EXPECT_EQ(TextOf(dialog, 1066), "0x09");
    EXPECT_EQ(TextOf(dialog, 1067), ",");
    EXPECT_EQ(TextOf(dialog, 1068), "0x0a");
    EXPECT_EQ(TextOf(dialog, 1070), "/data/ü.txt");
    EXPECT_EQ(ShownColor(dialog), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(settings, OtherSettings());
}

TEST_F(Properties, OkWithoutAChangeChangesNothing) {
    for (const ViewSettings& before : {OtherSettings(), DefaultViewSettings()}) {
        ViewSettings settings = before;
        CWavoProperties dialog(settings, m_prompts);
        dialog.show();
        Click(dialog, wp::kOk);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(settings, before);
    }
}

TEST_F(Properties, OkTakesWhatWasTyped) {
    EXPECT_EQ(After(1034, "100").scale_lines_x, 100);
    EXPECT_EQ(After(1039, "7").scale_lines_y, 7);
    EXPECT_EQ(After(1066, ";").export_settings.separator, ';');
    EXPECT_EQ(After(1066, "§").export_settings.separator, '\xA7');
    EXPECT_EQ(After(1067, ".").export_settings.decimal_point, '.');
    EXPECT_EQ(After(1068, "0x0d,0x0a").export_settings.end_of_line, "\r\n");
    EXPECT_EQ(After(1068, "x").export_settings.end_of_line, "x");
    EXPECT_EQ(After(1070, "").export_settings.data_file, "");
    EXPECT_EQ(After(1070, "/no/folder/ß").export_settings.data_file, "/no/folder/ß");
}

TEST_F(Properties, BadTextsBecomeTheDefaultWithoutAMessage) {
    for (const char* const text : {"0", "-2", "abc", ""}) {
        EXPECT_EQ(After(1034, text).scale_lines_x, 5) << text;
        EXPECT_EQ(After(1039, text).scale_lines_y, 3) << text;
    }
    for (const char* const text : {"ab", "", "→", "ab→"}) {
        // The default separator is the decimal point that stands there: both become the default.
        EXPECT_EQ(After(1066, text).export_settings.separator, ',') << text;
        EXPECT_EQ(After(1066, text).export_settings.decimal_point, '.') << text;
    }
    EXPECT_EQ(After(1067, ";").export_settings.decimal_point, '.');
    EXPECT_EQ(After(1068, ";,0x0a").export_settings.end_of_line, "\r\n");
    EXPECT_EQ(After(1068, "→").export_settings.end_of_line, "\r\n");
}

TEST_F(Properties, EveryOtherFieldStaysWhenOneIsTyped) {
    ViewSettings expected = OtherSettings();
    expected.scale_lines_x = 2;
    EXPECT_EQ(After(1034, "2"), expected);
    expected = OtherSettings();
    expected.export_settings.data_file = "b";
    EXPECT_EQ(After(1070, "b"), expected);
}

TEST_F(Properties, TheCheckBoxDecidesAboutTheGraphEditor) {
    ViewSettings settings = OtherSettings();
    for (const bool shown : {true, false}) {
        CWavoProperties dialog(settings, m_prompts);
        dialog.show();
        QTest::keyClick(&Control<QCheckBox>(dialog, 1063), Qt::Key_Space);
        Click(dialog, wp::kOk);
        EXPECT_EQ(settings.show_graph_editor, shown);
    }
}

TEST_F(Properties, CancelAndEscapeLeaveTheSettings) {
    for (const bool escape : {false, true}) {
        ViewSettings settings = OtherSettings();
        CWavoProperties dialog(settings, m_prompts);
        dialog.show();
        Click(dialog, wp::kDefaultValues);
        if (escape) {
            QTest::keyClick(&dialog, Qt::Key_Escape);
        } else {
            Click(dialog, wp::kCancel);
        }
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
        EXPECT_EQ(settings, OtherSettings());
    }
}

TEST_F(Properties, ReturnInAnEditIsOk) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    Type(dialog, 1070, QStringLiteral("f"));
    QTest::keyClick(&Control<QLineEdit>(dialog, 1070), Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(settings.export_settings.data_file, "f");
    EXPECT_TRUE(asked_files.empty());
}

TEST_F(Properties, AClickOnTheColourFieldAsksFromBlackOn) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    color = QColor(1, 2, 3);
    Click(dialog, 1055);
    EXPECT_EQ(asked_colors, std::vector<QColor>{QColor(Qt::black)});
    EXPECT_EQ(ShownColor(dialog), QColor(1, 2, 3));
    EXPECT_EQ(settings, OtherSettings());
    Click(dialog, wp::kOk);
    ViewSettings expected = OtherSettings();
    expected.background = 0x030201;
    EXPECT_EQ(settings, expected);
}

TEST_F(Properties, NoOtherClickAsksForAColour) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    color = QColor(1, 2, 3);
    auto& field = Control<ColorField>(dialog, 1055);
    QTest::mouseClick(&field, Qt::RightButton);
    const QPoint beside = field.mapTo(&dialog, QPoint(field.width() / 2, field.height() + 1));
    QTest::mouseClick(&dialog, Qt::LeftButton, {}, beside);
    EXPECT_TRUE(asked_colors.empty());
    QTest::keyClick(&field, Qt::Key_Space);
    EXPECT_EQ(asked_colors.size(), 1U);
}

TEST_F(Properties, ACancelledColourKeepsTheOldOne) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    Click(dialog, 1055);
    EXPECT_EQ(asked_colors.size(), 1U);
    Click(dialog, wp::kOk);
    EXPECT_EQ(settings, OtherSettings());
}

TEST_F(Properties, SelectAsksForAFontFromThePresentOneOn) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    QFont chosen(QStringLiteral("DejaVu Serif"));
    chosen.setPixelSize(21);
    chosen.setBold(true);
    chosen.setItalic(true);
    font = chosen;
    Click(dialog, 1026);
    EXPECT_EQ(asked_fonts, std::vector<QFont>{MakeFont(OtherSettings().font)});
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("font_name"))->text(),
              QStringLiteral("DejaVu Serif, 21 px"));
    Click(dialog, wp::kOk);
    ViewSettings expected = OtherSettings();
    expected.font = {};
    expected.font.face = "DejaVu Serif";
    expected.font.height = -21;
    expected.font.weight = 700;
    expected.font.italic = true;
    EXPECT_EQ(settings, expected);
}

TEST_F(Properties, AFontThatIsOnlyConfirmedOrCancelledStaysAsItWasDescribed) {
    for (const ViewSettings& before : {OtherSettings(), DefaultViewSettings()}) {
        for (const bool confirmed : {true, false}) {
            ViewSettings settings = before;
            CWavoProperties dialog(settings, m_prompts);
            dialog.show();
            font = confirmed ? std::optional(MakeFont(before.font)) : std::nullopt;
            Click(dialog, 1026);
            Click(dialog, wp::kOk);
            EXPECT_EQ(settings, before);
        }
    }
    EXPECT_EQ(asked_fonts.size(), 4U);
}

TEST_F(Properties, TheDotsAskForADataFile) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    Click(dialog, 1071);  // cancelled
    EXPECT_EQ(TextOf(dialog, 1070), "/data/ü.txt");
    Type(dialog, 1070, QStringLiteral("typed.txt"));
    file = QStringLiteral("/full/path/ö.txt");
    Click(dialog, 1071);
    EXPECT_EQ(TextOf(dialog, 1070), "/full/path/ö.txt");
    const QString filters = QStringLiteral("Data Files (*.txt)|*.txt|All Files (*.*)|*.*||");
    EXPECT_EQ(asked_files,
              (std::vector<FileQuestion>{{QStringLiteral("Save As"), QStringLiteral("/data/ü.txt"),
                                          QStringLiteral("txt"), filters},
                                         {QStringLiteral("Save As"), QStringLiteral("typed.txt"),
                                          QStringLiteral("txt"), filters}}));
    Click(dialog, wp::kOk);
    EXPECT_EQ(settings.export_settings.data_file, "/full/path/ö.txt");
}

TEST_F(Properties, DefaultValuesAreShownAndKeptWithOkAlone) {
    ViewSettings settings = OtherSettings();
    CWavoProperties dialog(settings, m_prompts);
    dialog.show();
    Click(dialog, 1056);
    const std::string data_file =
        QDir::toNativeSeparators(m_folder.filePath(QStringLiteral("Velk/wavo_values.txt")))
            .toStdString();
    EXPECT_EQ(ShownColor(dialog), QColor(Qt::black));
    EXPECT_EQ(TextOf(dialog, 1034), "5");
    EXPECT_EQ(TextOf(dialog, 1039), "3");
    EXPECT_TRUE(Control<QCheckBox>(dialog, 1063).isChecked());
    EXPECT_EQ(TextOf(dialog, 1066), ",");
    EXPECT_EQ(TextOf(dialog, 1067), ".");
    EXPECT_EQ(TextOf(dialog, 1068), "0x0d,0x0a");
    EXPECT_EQ(TextOf(dialog, 1070), data_file);
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("font_name"))->text(),
              QStringLiteral("System"));
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(settings, OtherSettings());
    Click(dialog, wp::kOk);
    ViewSettings expected = DefaultViewSettings();
    expected.trace_level = 4;
    EXPECT_EQ(settings, expected);
    EXPECT_EQ(settings.font.face, "System");
    EXPECT_EQ(settings.export_settings.data_file, data_file);
}

TEST_F(Properties, TheTraceLevelNeverChanges) {
    for (const std::int32_t level : {-3, 0, 5}) {
        ViewSettings settings = OtherSettings();
        settings.trace_level = level;
        CWavoProperties dialog(settings, m_prompts);
        dialog.show();
        Click(dialog, wp::kDefaultValues);
        Click(dialog, wp::kOk);
        EXPECT_EQ(settings.trace_level, level);
    }
}

}  // namespace
}  // namespace wavo
