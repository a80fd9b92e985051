// Tables and parts of recordings, from the menu, the dialogs and the progress to the files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTimer>
#include <bit>
#include <charconv>
#include <chrono>
#include <functional>

#include "dialog_driver.h"
#include "fake_shared_memory.h"
#include "others_file.h"
#include "past_fixture.h"
#include "platform/folders.h"
#include "tables/column_table.h"
#include "ui/graph_editor/editor_controls.h"
#include "ui/shell/main_frame.h"
#include "ui/shell/table_control.h"

namespace wavo {
namespace {

using recording::LineSpan;
using testing::Control;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kHelix[] = WAVO_RECORDINGS "/helix_4axis.csv.gz";

/// The columns of a table, read the plain way.
std::vector<std::vector<double>> ColumnsOf(const std::string& path) {
    auto bytes = tables::TableBytes::Open(path);
    EXPECT_TRUE(bytes.HasValue());
    std::string text;
    std::vector<char> room(1 << 16);
    while (const std::size_t count = (*bytes)->Read(room)) {
        text.append(room.data(), count);
    }
    std::vector<std::vector<double>> columns;
    for (std::size_t begin = text.find('\n') + 1; begin < text.size();) {
        const std::size_t end = text.find('\n', begin);
        std::size_t column = 0;
        for (std::size_t at = begin; at < end; ++at, ++column) {
            double value = 0.0;
            at = static_cast<std::size_t>(std::from_chars(&text[at], &text[end], value).ptr -
                                          text.data());
            columns.resize(std::max(columns.size(), column + 1));
            columns[column].push_back(value);
            at += text[at] == '\r' ? 1 : 0;
        }
        begin = end + 1;
    }
    return columns;
}

std::vector<std::uint64_t> Bits(const std::vector<double>& values) {
    std::vector<std::uint64_t> bits;
    for (const double value : values) {
        bits.push_back(std::bit_cast<std::uint64_t>(value));
    }
    return bits;
}

/// The bits of a stretch of a recording are those of rows of a table, whatever the axes.
void ExpectRows(recording::RecordingReader& reader, const LineSpan& lines,
                const std::vector<std::vector<double>>& columns, std::size_t row) {
    ASSERT_EQ(reader.Head().axis_names.size(), columns.size());
    std::vector<double> values(lines.end - lines.first);
    for (std::size_t axis = 0; axis < columns.size(); ++axis) {
        reader.ReadValues(axis, 0, lines.first, testing::kNaN, values);
        const auto begin = columns[axis].begin() + static_cast<std::ptrdiff_t>(row);
        ASSERT_LE(row + values.size(), columns[axis].size());
        EXPECT_EQ(Bits(values), Bits({begin, begin + static_cast<std::ptrdiff_t>(values.size())}))
            << axis;
    }
}

/// Presses a button of a dialog.
void Press(QDialog& dialog, int id) {
    Control<QPushButton>(dialog, id).click();
}

/// Does something to the next dialog of this kind.
template <typename Dialog>
void WhenShown(QObject* context, std::function<void(Dialog&)> action) {
    QTimer::singleShot(0, context, [context, action] {
        if (auto* const dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget())) {
            action(*dialog);
        } else {
            WhenShown(context, action);
        }
    });
}

class TableCommands : public testing::PastFixture {
 protected:
    TableCommands() {
        qputenv(testing::kCacheHome, m_folder.path().toLocal8Bit());
        Give(1.0, 5);
    }
    ~TableCommands() override {
        m_view.reset();
        qunsetenv(testing::kCacheHome);
    }

    /// Recordings of tables that are there.
    [[nodiscard]] QStringList Temporary() const {
        return QDir(m_folder.filePath(QString::fromLatin1(testing::kCacheFolder)))
            .entryList({QStringLiteral("import-*")});
    }
    /// Accepts the question for the time of a table.
    void AcceptImport() {
        WhenShown<ImportTable>(m_view.get(), [this](ImportTable& dialog) {
            ++m_asked;
            Press(dialog, static_cast<int>(ImportTableId::kOk));
        });
    }
    bool OpenHelix() {
        AcceptImport();
        return m_view->Past().Files().Open(kHelix);
    }
    /// A table of one column with as many lines.
    [[nodiscard]] std::string MakeTable(const char* name, int lines) const {
        QFile file(m_folder.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        QByteArray text("Q\n");
        for (int i = 0; i < lines; ++i) {
            text += QByteArray::number(i) + ".5\n";
        }
        EXPECT_EQ(file.write(text), text.size());
        return platform::NativePath(PathOf(name));
    }
    /// Exports with a part as the dialog begins, to a path; `seen` looks at the dialog before.
    void Export(const std::string& path, const std::function<void(ExportPart&)>& seen = {}) {
        WhenShown<ExportPart>(m_view.get(), [path, seen](ExportPart& dialog) {
            if (seen) {
                seen(dialog);
            }
            Control<QLineEdit>(dialog, static_cast<int>(ExportPartId::kPath))
                .setText(QString::fromStdString(path));
            Press(dialog, static_cast<int>(ExportPartId::kOk));
        });
        m_tables.Execute(CommandId::kExportPart);
    }
    static void Choose(ExportPart& dialog, ExportPartId part, tables::PartFormat format) {
        auto& radio = Control<QRadioButton>(dialog, static_cast<int>(part));
        EXPECT_TRUE(radio.isEnabled());
        radio.click();
        Control<QComboBox>(dialog, static_cast<int>(ExportPartId::kFormat))
            .setCurrentIndex(static_cast<int>(format));
    }

    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
    std::chrono::milliseconds m_now{0};
    std::chrono::milliseconds m_pause{0};  // that each look at the clock takes
    TableControl m_tables{*m_view, *m_view, m_prompts, &m_settings,
                          [this] { return m_now += m_pause; }};
    int m_asked = 0;
};

TEST_F(TableCommands, ATableThatIsChosenIsShownWithTheValuesThatStandInIt) {
    std::string told;
    QObject::connect(&m_view->News(), &ViewNews::RecordingOpened, m_view.get(),
                     [&told](const QString& path) { told = path.toStdString(); });
    FileQuestion question;
    m_prompts.open_file = [&question](QWidget*, const FileQuestion& put) {
        question = put;
        return std::optional(QString::fromLatin1(kHelix));
    };
    AcceptImport();
    m_view->Past().Execute(CommandId::kOpenRecording);
    EXPECT_EQ(question.filters, "Recordings|*.mcap|Tables|*.csv;*.csv.gz;*.txt|All Files|*.*|");
    EXPECT_EQ(m_title, "helix_4axis.csv.gz - wavo.ini");
    EXPECT_EQ(QFileInfo(QString::fromStdString(told)), QFileInfo(QString::fromLatin1(kHelix)));
    const auto columns = ColumnsOf(kHelix);
    ASSERT_NE(m_view->Work().Recording(), nullptr);
    recording::RecordingReader& reader = m_view->Work().Recording()->Reader();
    ASSERT_EQ(columns.size(), 11U);
    EXPECT_EQ(reader.LineCount(), columns[0].size());
    ExpectRows(reader, {0, columns[0].size()}, columns, 0);
    EXPECT_EQ(Temporary().size(), 2) << "the recording, and who holds it";
    m_view->Past().Execute(CommandId::kCloseRecording);
    EXPECT_THAT(Temporary(), IsEmpty());
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(TableCommands, OnlyWhoChoosesATableIsAskedForItsTimeAgain) {
    const std::string path = MakeTable("mine.csv", 20);
    m_prompts.open_file = [&path](QWidget*, const FileQuestion&) {
        return std::optional(QString::fromStdString(path));
    };
    AcceptImport();
    EXPECT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(Temporary().size(), 2) << "the one before has gone";
    AcceptImport();
    m_view->Past().Execute(CommandId::kOpenRecording);
    EXPECT_EQ(m_asked, 2);
}

TEST_F(TableCommands, WhatIsToBeKnownOfATableStandsInTheStatusBar) {
    const std::string path = MakeTable("mine.txt", 4);
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("a\nb\n10\n");
    file.close();
    AcceptImport();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_EQ(m_panes[0],
              "Not in the recording: X; line 6, column 1 \"Q\": \"a\" is not a number; the line is "
              "left out; line 7, column 1 \"Q\": \"b\" is not a number; the line is left out");
}

TEST_F(TableCommands, AQuestionThatIsCancelledOpensNothing) {
    WhenShown<ImportTable>(m_view.get(), [](ImportTable& dialog) { dialog.reject(); });
    EXPECT_FALSE(m_view->Past().Files().Open(kHelix));
    EXPECT_EQ(m_view->Work().Recording(), nullptr);
    EXPECT_THAT(Temporary(), IsEmpty());
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(TableCommands, AnImportThatIsCancelledLeavesWhatWasOpen) {
    OpenSample();
    m_pause = std::chrono::seconds(1);
    bool was_shown = false;
    WhenShown<WorkProgress>(m_view.get(), [&was_shown](WorkProgress& progress) {
        was_shown = progress.windowTitle() == QStringLiteral("Import Table");
        Press(progress, static_cast<int>(WorkProgressId::kCancel));
    });
    EXPECT_FALSE(OpenHelix());
    EXPECT_TRUE(was_shown);
    EXPECT_EQ(m_title, "night.mcap - wavo.ini");
    EXPECT_THAT(Temporary(), IsEmpty());
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(TableCommands, TheEndOfTheWindowGivesUpAnImport) {
    m_pause = std::chrono::seconds(1);
    WhenShown<WorkProgress>(m_view.get(), [this](WorkProgress&) { m_tables.Cancel(); });
    EXPECT_FALSE(OpenHelix());
    EXPECT_THAT(Temporary(), IsEmpty());
}

TEST_F(TableCommands, OneFileIsWorkedOnAtATime) {
    const std::string path = MakeTable("mine.csv", 20);
    m_pause = std::chrono::seconds(1);
    WhenShown<WorkProgress>(m_view.get(), [&](WorkProgress&) {
        EXPECT_FALSE(m_view->Past().Files().Open(path));
        EXPECT_FALSE(m_tables.IsEnabled(CommandId::kExportPart));
    });
    EXPECT_TRUE(OpenHelix());
    EXPECT_THAT(m_boxes, ElementsAre(path + ": not opened, as another file is being worked on"));
    EXPECT_EQ(m_title, "helix_4axis.csv.gz - wavo.ini");
    EXPECT_TRUE(m_tables.IsEnabled(CommandId::kExportPart));
}

TEST_F(TableCommands, WithoutAFolderForItATableIsNotOpened) {
    const std::string path = MakeTable("mine.csv", 20);
    qputenv(testing::kCacheHome, path.c_str());  // no folder
    EXPECT_FALSE(m_view->Past().Files().Open(path));
    EXPECT_THAT(m_boxes, ElementsAre(path + ": there is no folder for temporary recordings"));
}

TEST_F(TableCommands, WhatAProgramLeftBehindIsRemoved) {
    ASSERT_TRUE(OpenHelix());
    const QStringList used = Temporary();
    for (const char* const name : {"import-77.mcap", "import-77.lock"}) {
        QFile file(m_folder.filePath(QString::fromLatin1(testing::kCacheFolder) +
                                     QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    EXPECT_EQ(Temporary().size(), 4);
    TableControl::RemoveLeftBehind();
    EXPECT_EQ(Temporary(), used);
}

TEST_F(TableCommands, HalvesThatAreExportedHoldTheSameBits) {
    ASSERT_TRUE(OpenHelix());
    const auto columns = ColumnsOf(kHelix);
    const std::size_t half = columns[0].size() / 2;
    m_view->Past().Window().Show({0, static_cast<std::int64_t>(half)});
    Export(PathOf("first.mcap"), [](ExportPart& dialog) {
        EXPECT_THAT(testing::TextOf(dialog, static_cast<int>(ExportPartId::kPath)),
                    ::testing::EndsWith("helix_4axis_part.mcap"));
        EXPECT_FALSE(
            Control<QRadioButton>(dialog, static_cast<int>(ExportPartId::kMarked)).isEnabled());
        EXPECT_TRUE(
            Control<QRadioButton>(dialog, static_cast<int>(ExportPartId::kVisible)).isChecked());
    });
    // The other half: from B to A, as a compressed table.
    m_view->Past().Window().Show(
        {static_cast<std::int64_t>(half), static_cast<std::int64_t>(columns[0].size())});
    m_view->Cursors().Show(true);
    m_view->Cursors().PutOn(CursorName::kB, static_cast<std::int64_t>(half));
    m_view->Cursors().PutOn(CursorName::kA, static_cast<std::int64_t>(columns[0].size()) - 1);
    Export(PathOf("second.csv.gz"), [](ExportPart& dialog) {
        EXPECT_TRUE(
            Control<QRadioButton>(dialog, static_cast<int>(ExportPartId::kMarked)).isChecked());
        Choose(dialog, ExportPartId::kMarked, tables::PartFormat::kPackedTable);
    });
    ASSERT_THAT(m_boxes, IsEmpty());

    ASSERT_TRUE(m_view->Past().Files().Open(PathOf("first.mcap")));
    EXPECT_EQ(m_view->Work().Recording()->Reader().LineCount(), half);
    ExpectRows(m_view->Work().Recording()->Reader(), {0, half}, columns, 0);
    AcceptImport();
    ASSERT_TRUE(m_view->Past().Files().Open(PathOf("second.csv.gz")));
    recording::RecordingReader& reader = m_view->Work().Recording()->Reader();
    EXPECT_EQ(reader.LineCount(), columns[0].size() - half);
    ExpectRows(reader, {reader.FirstLine(), reader.EndLine()}, columns, half);
}

TEST_F(TableCommands, ComputedAxesStandInTables) {
    ASSERT_TRUE(OpenHelix());
    m_view->Work().Computed().Define({{"double", "X * 2", ""}, {"none", "Q", ""}});
    Export(PathOf("part.csv"), [](ExportPart& dialog) {
        Choose(dialog, ExportPartId::kEverything, tables::PartFormat::kTable);
    });
    ASSERT_THAT(m_boxes, IsEmpty());
    QFile table(QString::fromStdString(PathOf("part.csv")));
    ASSERT_TRUE(table.open(QIODevice::ReadOnly));
    const QList<QByteArray> names = table.readLine().trimmed().split(',');
    const qsizetype x = names.indexOf("X");
    ASSERT_GE(x, 1);
    ASSERT_EQ(names.mid(names.size() - 2), (QList<QByteArray>{"double", "none"}));
    int lines = 0;
    for (; !table.atEnd(); ++lines) {
        const QList<QByteArray> fields = table.readLine().trimmed().split(',');
        ASSERT_EQ(fields.size(), names.size());
        ASSERT_NEAR(fields[names.size() - 2].toDouble(), 2.0 * fields[x].toDouble(), 2e-6);
        ASSERT_EQ(fields.back(), "");
    }
    EXPECT_GT(lines, 1000);
}

TEST_F(TableCommands, TheDialogBeginsWithFolderAndFormatOfTheLastExport) {
    OpenSample();
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(QStringLiteral("parts")));
    Export(PathOf("parts/a.csv"), [this](ExportPart& dialog) {
        EXPECT_EQ(testing::TextOf(dialog, static_cast<int>(ExportPartId::kPath)),
                  QDir::toNativeSeparators(m_folder.filePath(QStringLiteral("night_part.mcap")))
                      .toStdString());
        Choose(dialog, ExportPartId::kEverything, tables::PartFormat::kTable);
    });
    EXPECT_EQ(ColumnsOf(PathOf("parts/a.csv")).at(0).size(), 5000U);
    bool was_seen = false;
    WhenShown<ExportPart>(m_view.get(), [&](ExportPart& dialog) {
        EXPECT_EQ(
            testing::TextOf(dialog, static_cast<int>(ExportPartId::kPath)),
            QDir::toNativeSeparators(m_folder.filePath(QStringLiteral("parts/night_part.csv")))
                .toStdString());
        was_seen = true;
        dialog.reject();
    });
    m_tables.Execute(CommandId::kExportPart);
    EXPECT_TRUE(was_seen);
}

TEST_F(TableCommands, TheFileThatIsOpenIsNeverWrittenOnto) {
    const std::string refused = "a recording cannot be exported onto itself";
    OpenSample();
    Export(PathOf("night.mcap"));
    ASSERT_EQ(m_boxes.size(), 2U) << "whether it may be replaced, and that it cannot be";
    EXPECT_EQ(m_boxes[1], refused);
    EXPECT_EQ(m_view->Work().Recording()->Reader().LineCount(), 5000U);
    const std::string path = MakeTable("mine.csv", 20);
    AcceptImport();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    Export(path, [](ExportPart& dialog) {
        Choose(dialog, ExportPartId::kVisible, tables::PartFormat::kTable);
    });
    ASSERT_EQ(m_boxes.size(), 4U);
    EXPECT_EQ(m_boxes[3], refused);
    EXPECT_EQ(ColumnsOf(path).size(), 1U);
}

TEST_F(TableCommands, AnExportThatIsCancelledLeavesNothing) {
    ASSERT_TRUE(OpenHelix());
    m_pause = std::chrono::seconds(1);
    WhenShown<WorkProgress>(m_view.get(), [](WorkProgress& progress) {
        EXPECT_EQ(progress.windowTitle(), QStringLiteral("Export Part"));
        Press(progress, static_cast<int>(WorkProgressId::kCancel));
    });
    Export(PathOf("part.mcap"));
    EXPECT_THAT(QDir(m_folder.path()).entryList({QStringLiteral("*part*")}), IsEmpty());
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(TableCommands, ARecordingThatIsClosedMeanwhileIsExportedToItsEnd) {
    ASSERT_TRUE(OpenHelix());
    const auto columns = ColumnsOf(kHelix);
    m_pause = std::chrono::seconds(1);
    bool was_kept = false;
    WhenShown<WorkProgress>(m_view.get(), [&](WorkProgress&) {
        m_view->Past().Execute(CommandId::kCloseRecording);
        was_kept = !Temporary().isEmpty();
    });
    Export(PathOf("part.mcap"));
    EXPECT_TRUE(was_kept);
    EXPECT_EQ(m_view->Work().Recording(), nullptr);
    EXPECT_THAT(Temporary(), IsEmpty());
    auto reader = recording::RecordingReader::Open(PathOf("part.mcap"));
    ASSERT_TRUE(reader.HasValue());
    EXPECT_TRUE((*reader)->IsComplete());
    ExpectRows(**reader, {0, columns[0].size()}, columns, 0);
}

TEST_F(TableCommands, AnotherRecordingThatIsOpenedMeanwhileIsShownAndTheFirstExported) {
    ASSERT_TRUE(OpenHelix());
    const auto columns = ColumnsOf(kHelix);
    m_pause = std::chrono::seconds(1);
    WhenShown<WorkProgress>(m_view.get(), [&](WorkProgress&) { OpenSample(); });
    Export(PathOf("part.mcap"));
    EXPECT_EQ(m_title, "night.mcap - wavo.ini");
    EXPECT_THAT(Temporary(), IsEmpty()) << "the table has gone with its export";
    auto reader = recording::RecordingReader::Open(PathOf("part.mcap"));
    ASSERT_TRUE(reader.HasValue());
    ExpectRows(**reader, {0, columns[0].size()}, columns, 0);
}

TEST_F(TableCommands, ARecordingThatIsOpenedWhileATableIsAskedForGivesWayToIt) {
    WhenShown<ImportTable>(m_view.get(), [this](ImportTable& dialog) {
        OpenSample();
        EXPECT_EQ(m_title, "night.mcap - wavo.ini");
        Press(dialog, static_cast<int>(ImportTableId::kOk));
    });
    EXPECT_TRUE(m_view->Past().Files().Open(kHelix));
    EXPECT_EQ(m_title, "helix_4axis.csv.gz - wavo.ini");
}

TEST_F(TableCommands, AnImportCanBeCancelledUntilItsLastStep) {
    const std::string path = MakeTable("mine.csv", 200'000);
    AcceptImport();  // remembered
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    m_view->Past().Execute(CommandId::kCloseRecording);
    m_pause = std::chrono::seconds(1);
    int steps = 0;
    for (bool is_open = false; !is_open; ++steps) {
        ASSERT_LT(steps, 1000);
        int left = steps;
        const std::function<void()> count = [&] {
            if (left-- == 0) {
                m_tables.Cancel();
            } else {
                QMetaObject::invokeMethod(m_view.get(), count, Qt::QueuedConnection);
            }
        };
        QMetaObject::invokeMethod(m_view.get(), count, Qt::QueuedConnection);
        is_open = m_view->Past().Files().Open(path);
        if (!is_open) {
            EXPECT_THAT(Temporary(), IsEmpty()) << steps;
            EXPECT_EQ(m_view->Work().Recording(), nullptr);
        }
        QCoreApplication::removePostedEvents(m_view.get(), QEvent::MetaCall);
    }
    EXPECT_GT(steps, 2) << "it took steps";
    EXPECT_EQ(m_title, "mine.csv - wavo.ini");
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(TableCommands, ExtremesThatAreNotInTheFileAreFoundBeforeItIsShown) {
    testing::OthersRecording others;
    others.PutSchemas();
    for (std::uint64_t chunk = 0; chunk < 20; ++chunk) {
        for (std::uint64_t line = 0; line < 100; ++line) {
            others.PutLine(chunk * 100 + line, static_cast<double>(line));
        }
        others.EndChunk();
    }
    const std::string path = PathOf("others.mcap");
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(others.Out().data()),
               static_cast<qint64>(others.Out().size()));
    file.close();

    m_pause = std::chrono::seconds(1);
    int shown = 0;
    const auto when_shown = [&](bool cancels) {
        WhenShown<WorkProgress>(m_view.get(), [&shown, cancels](WorkProgress& progress) {
            EXPECT_EQ(progress.windowTitle(), QStringLiteral("Open Recording"));
            ++shown;
            if (cancels) {
                Press(progress, static_cast<int>(WorkProgressId::kCancel));
            }
        });
    };
    when_shown(true);
    EXPECT_FALSE(m_view->Past().Files().Open(path));
    EXPECT_EQ(m_view->Work().Recording(), nullptr);
    EXPECT_EQ(m_title, "wavo.ini - running");
    when_shown(false);
    EXPECT_TRUE(m_view->Past().Files().Open(path));
    EXPECT_EQ(shown, 2);
    EXPECT_EQ(m_view->Work().Recording()->Reader().SettleLevels(0), 0U);
    EXPECT_EQ(m_title, "others.mcap - wavo.ini");
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(TableCommands, SaveValuesRestsWhileARecordingIsOpen) {
    const auto can_save = [this] {
        return Control<QPushButton>(m_view->Editor(), static_cast<int>(EditorControl::kSaveValues))
            .isEnabled();
    };
    m_view->Commands().Execute(CommandId::kStop);
    EXPECT_TRUE(can_save());
    OpenSample();
    EXPECT_FALSE(can_save());
    m_view->Past().Execute(CommandId::kCloseRecording);
    EXPECT_TRUE(can_save());
    m_view->Commands().Execute(CommandId::kStart);
    ASSERT_TRUE(m_view->Past().Files().Open(PathOf("night.mcap")));
    EXPECT_FALSE(can_save());
    m_view->Past().Execute(CommandId::kCloseRecording);
    EXPECT_FALSE(can_save());
}

TEST_F(TableCommands, StandInTheMenuOfTheWindow) {
    testing::ResetFakeSharedMemory();
    CMainFrame frame(m_prompts, &m_settings);
    frame.show();
    frame.View().OnInitialUpdate();
    QAction& export_part = *frame.Action(CommandId::kExportPart);
    EXPECT_FALSE(export_part.isEnabled());

    const std::string path = MakeTable("mine.csv", 20);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path))});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(&frame, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&frame, &drop);
    WhenShown<ImportTable>(
        &frame, [](ImportTable& dialog) { Press(dialog, static_cast<int>(ImportTableId::kOk)); });
    QCoreApplication::processEvents();
    ASSERT_NE(frame.View().Work().Recording(), nullptr);
    EXPECT_EQ(frame.windowTitle(), "mine.csv - wavo.ini");
    EXPECT_EQ(RecentFiles(&m_settings, QStringLiteral("RecentRecordings")).Paths(),
              QStringList{QDir::toNativeSeparators(QString::fromStdString(path))});

    EXPECT_TRUE(export_part.isEnabled());
    const std::string part = PathOf("part.csv");
    bool was_shown = false;
    WhenShown<ExportPart>(&frame, [&](ExportPart& dialog) {
        was_shown = dialog.parentWidget() == &frame;
        Choose(dialog, ExportPartId::kEverything, tables::PartFormat::kTable);
        Control<QLineEdit>(dialog, static_cast<int>(ExportPartId::kPath))
            .setText(QString::fromStdString(part));
        Press(dialog, static_cast<int>(ExportPartId::kOk));
    });
    export_part.trigger();
    EXPECT_TRUE(was_shown);
    const auto exported = ColumnsOf(part);
    ASSERT_EQ(exported.size(), 2U) << "time and Q";
    EXPECT_EQ(Bits(exported[1]), Bits(ColumnsOf(path)[0]));
    frame.Action(CommandId::kCloseRecording)->trigger();
    EXPECT_FALSE(export_part.isEnabled());
}

}  // namespace
}  // namespace wavo
