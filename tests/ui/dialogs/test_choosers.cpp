#include <gtest/gtest.h>

#include <QApplication>
#include <QColorDialog>
#include <QDir>
#include <QFileDialog>
#include <QFontDialog>
#include <QHeaderView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "ui/dialogs/choosers.h"

namespace wavo {
namespace {

/// Does something to the dialog that is shown next.
template <typename Dialog, typename Action>
void WithNextDialog(const Action& action) {
    QTimer::singleShot(0, [action] {
        auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        action(*dialog);
    });
}

TEST(Choosers, FiltersInTheFormOfTheToolkit) {
    const struct {
        const char* given;
        const char* converted;
    } rows[] = {
        {"Data Files (*.txt)|*.txt|All Files (*.*)|*.*||", "Data Files (*.txt);;All Files (*)"},
        {"Ini Files (*.ini)|*.ini|All Files (*.*)|*.*||", "Ini Files (*.ini);;All Files (*)"},
        {"Two (*.a;*.b)|*.a;*.b||", "Two (*.a *.b)"},
        {"", ""},
        {"no patterns", ""},
        {"no patterns||", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FileDialogFilters(QString::fromLatin1(row.given)).toStdString(), row.converted);
    }
}

TEST(Choosers, TheColourDialogBeginsWithTheColourGiven) {
    WithNextDialog<QColorDialog>([](QColorDialog& dialog) {
        EXPECT_EQ(dialog.currentColor(), QColor(1, 2, 3));
        dialog.setCurrentColor(QColor(4, 5, 6));
        dialog.accept();
    });
    EXPECT_EQ(ChooseColor(nullptr, QColor(1, 2, 3)), QColor(4, 5, 6));
    WithNextDialog<QColorDialog>([](QColorDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(ChooseColor(nullptr, Qt::black), std::nullopt);
}

TEST(Choosers, TheFontDialogGivesTheFontThatWasChosen) {
    QFont chosen(QStringLiteral("DejaVu Sans"));
    chosen.setBold(true);
    WithNextDialog<QFontDialog>([&](QFontDialog& dialog) {
        dialog.setCurrentFont(chosen);
        dialog.accept();
    });
    const auto font = ChooseFont(nullptr, QFont());
    ASSERT_TRUE(font.has_value());
    EXPECT_TRUE(font->bold());
    WithNextDialog<QFontDialog>([](QFontDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(ChooseFont(nullptr, QFont()), std::nullopt);
}

TEST(Choosers, TheColumnsOfTheFileDialogShowTheirWholeTexts) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("there.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(123456, 'x'));
    file.close();
    const FileQuestion question{QStringLiteral("Save As"),
                                folder.filePath(QStringLiteral("there.txt")), QStringLiteral("txt"),
                                QStringLiteral("Data Files (*.txt)|*.txt||")};
    WithNextDialog<QFileDialog>([](QFileDialog& dialog) {
        const auto* const list = dialog.findChild<QTreeView*>();
        EXPECT_TRUE(
            QTest::qWaitFor([list] { return list->model()->rowCount(list->rootIndex()) > 0; }));
        QCoreApplication::processEvents();
        for (int column = 1; column < list->header()->count(); ++column) {
            EXPECT_GE(list->columnWidth(column),
                      static_cast<const QAbstractItemView*>(list)
                          ->sizeHintForIndex(list->model()->index(0, column, list->rootIndex()))
                          .width())
                << column;
        }
        dialog.reject();
    });
    EXPECT_EQ(ChooseSaveFile(nullptr, question), std::nullopt);
}

TEST(Choosers, TheFileDialogAddsTheSuffixAndDoesNotAskAboutAFileThatExists) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("there.txt")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const FileQuestion question{QStringLiteral("Save As"),
                                folder.filePath(QStringLiteral("first.txt")), QStringLiteral("txt"),
                                QStringLiteral("Data Files (*.txt)|*.txt||")};
    WithNextDialog<QFileDialog>([&](QFileDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Save As"));
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptSave);
        EXPECT_TRUE(dialog.testOption(QFileDialog::DontConfirmOverwrite));
        EXPECT_EQ(dialog.nameFilters(), QStringList{QStringLiteral("Data Files (*.txt)")});
        EXPECT_EQ(dialog.selectedFiles(),
                  QStringList{folder.filePath(QStringLiteral("first.txt"))});
        dialog.selectFile(QStringLiteral("there"));
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    EXPECT_EQ(ChooseSaveFile(nullptr, question),
              QDir::toNativeSeparators(folder.filePath(QStringLiteral("there.txt"))));
    WithNextDialog<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(ChooseSaveFile(nullptr, question), std::nullopt);
}

}  // namespace
}  // namespace wavo
