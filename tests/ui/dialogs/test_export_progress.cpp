#include <gtest/gtest.h>

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include "ui/controls/controls.h"
#include "ui/dialogs/export_progress.h"

namespace wavo {
namespace {

template <typename Widget>
Widget& ProgressControl(ExportProgress& dialog, ExportProgressId id) {
    return *FindControl<Widget>(dialog, static_cast<int>(id));
}

TEST(ExportProgress, ShowsTheRowsThatAreWritten) {
    ExportProgress dialog("/data/values.txt", nullptr);
    dialog.SetRows(250'000, 1'000'000);
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Save Values"));
    EXPECT_EQ(ProgressControl<QLabel>(dialog, ExportProgressId::kRows).text(),
              QStringLiteral("250000 of 1000000 rows"));
    const auto& bar = ProgressControl<QProgressBar>(dialog, ExportProgressId::kBar);
    EXPECT_EQ(bar.value() * 4, bar.maximum());
    EXPECT_EQ(dialog.windowModality(), Qt::WindowModal);
}

TEST(ExportProgress, MoreRowsThanCountInABarAreShownToo) {
    ExportProgress dialog("/data/values.txt", nullptr);
    dialog.SetRows(3ULL << 40U, 6ULL << 40U);
    const auto& bar = ProgressControl<QProgressBar>(dialog, ExportProgressId::kBar);
    EXPECT_EQ(bar.value() * 2, bar.maximum());
}

TEST(ExportProgress, CancelIsTakenNoteOfAndTheWindowStays) {
    ExportProgress dialog("/data/values.txt", nullptr);
    dialog.show();
    EXPECT_FALSE(dialog.WasCancelled());
    auto& cancel = ProgressControl<QPushButton>(dialog, ExportProgressId::kCancel);
    EXPECT_EQ(cancel.text(), QStringLiteral("Cancel"));
    QTest::mouseClick(&cancel, Qt::LeftButton);
    EXPECT_TRUE(dialog.WasCancelled());
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(cancel.isEnabled());
}

TEST(ExportProgress, EscapeAndClosingTheWindowCancelToo) {
    ExportProgress escaped("/data/values.txt", nullptr);
    escaped.show();
    QTest::keyClick(&escaped, Qt::Key_Escape);
    EXPECT_TRUE(escaped.WasCancelled());
    EXPECT_TRUE(escaped.isVisible());
    ExportProgress closed("/data/values.txt", nullptr);
    closed.show();
    EXPECT_FALSE(closed.close());
    EXPECT_TRUE(closed.WasCancelled());
}

}  // namespace
}  // namespace wavo
