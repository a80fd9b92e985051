// Pages of PDF files as pictures, painted by a program that is not ours.
#pragma once

#include <gtest/gtest.h>

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QString>

namespace wavo::testing {

inline constexpr char kPageReader[] = "pdftoppm";
/// Why a test stops where its page cannot be looked at.
inline constexpr char kNoPageReader[] = "no pdftoppm here (Debian: poppler-utils)";

/// Whether there is a program that paints the pages of PDF files. Under Wine there is none.
inline bool CanReadPages() {
    return !QStandardPaths::findExecutable(QString::fromLatin1(kPageReader)).isEmpty();
}

/// The first page of a PDF file; a null image when it cannot be painted.
inline QImage PageOf(const QString& file, int dots_per_inch) {
    const QString stem = file + QStringLiteral(".page");
    QProcess process;
    process.start(QString::fromLatin1(kPageReader),
                  {QStringLiteral("-r"), QString::number(dots_per_inch), QStringLiteral("-png"),
                   QStringLiteral("-singlefile"), file, stem});
    EXPECT_TRUE(process.waitForFinished(60000)) << kNoPageReader;
    return QImage(stem + QStringLiteral(".png")).convertToFormat(QImage::Format_RGB32);
}

}  // namespace wavo::testing
