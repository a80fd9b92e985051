#include "golden/golden.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QList>

namespace wavo::testing {

namespace {

QString ReferencePath(const QString& name) {
    return QStringLiteral(WAVO_GOLDEN_REFERENCES "/%1.png").arg(name);
}

/// Where a picture of a failure was saved; says so when it was not.
std::string SaveFailure(const QString& name, const QImage& picture) {
    const QString folder = QStringLiteral(WAVO_GOLDEN_FAILURES);
    const QString path = QStringLiteral("%1/%2.png").arg(folder, name);
    const bool saved = QDir().mkpath(folder) && picture.save(path, "PNG");
    return path.toStdString() + (saved ? "" : " (cannot be written)");
}

/// Only the pixels count: as RGB32, one device pixel per logical pixel.
QImage Plain(const QImage& picture) {
    QImage plain = picture.convertToFormat(QImage::Format_RGB32);
    plain.setDevicePixelRatio(1.0);
    return plain;
}

/// The same picture with a table of its colours, which makes a far smaller file; as it is when it
/// has more than 256.
QImage Indexed(const QImage& plain) {
    QHash<QRgb, int> numbers;
    QImage indexed(plain.size(), QImage::Format_Indexed8);
    for (int y = 0; y < plain.height(); ++y) {
        for (int x = 0; x < plain.width(); ++x) {
            const auto number = numbers.constFind(plain.pixel(x, y));
            if (number == numbers.constEnd() && numbers.size() == 256) {
                return plain;
            }
            const int next = static_cast<int>(numbers.size());
            const int index = number == numbers.constEnd() ? next : *number;
            numbers.insert(plain.pixel(x, y), index);
            indexed.scanLine(y)[x] = static_cast<uchar>(index);
        }
    }
    QList<QRgb> colors(numbers.size());
    for (auto color = numbers.constBegin(); color != numbers.constEnd(); ++color) {
        colors[*color] = color.key();
    }
    indexed.setColorTable(colors);
    return indexed;
}

struct Difference {
    int pixels = 0;
    QRect bounds;
    QImage picture;
};

/// REQUIRES: both are plain and of one size.
Difference Compare(const QImage& actual, const QImage& reference) {
    Difference difference;
    difference.picture = QImage(actual.size(), QImage::Format_RGB32);
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            const QRgb wanted = reference.pixel(x, y);
            QRgb shown = qRgb(qGray(wanted) / 3, qGray(wanted) / 3, qGray(wanted) / 3);
            if (actual.pixel(x, y) != wanted) {
                ++difference.pixels;
                difference.bounds |= QRect(x, y, 1, 1);
                shown = qRgb(255, 0, 0);
            }
            difference.picture.setPixel(x, y, shown);
        }
    }
    return difference;
}

}  // namespace

::testing::AssertionResult MatchesReference(const QString& name, const QImage& picture) {
    const QImage actual = Plain(picture);
    const QImage loaded(ReferencePath(name));
    if (loaded.isNull()) {
        return ::testing::AssertionFailure()
               << "there is no reference image " << ReferencePath(name).toStdString()
               << "\n  the picture: " << SaveFailure(name + "-actual", actual);
    }
    const QImage reference = Plain(loaded);
    if (actual.size() != reference.size()) {
        return ::testing::AssertionFailure()
               << name.toStdString() << " is " << actual.width() << "x" << actual.height()
               << ", its reference " << reference.width() << "x" << reference.height()
               << "\n  the picture: " << SaveFailure(name + "-actual", actual);
    }
    const Difference difference = Compare(actual, reference);
    if (difference.pixels == 0) {
        return ::testing::AssertionSuccess();
    }
    const QRect& bounds = difference.bounds;
    return ::testing::AssertionFailure()
           << name.toStdString() << " differs from its reference in " << difference.pixels
           << " pixels, all within " << bounds.width() << "x" << bounds.height() << " at ("
           << bounds.left() << ", " << bounds.top() << ")"
           << "\n  the picture: " << SaveFailure(name + "-actual", actual)
           << "\n  the difference: " << SaveFailure(name + "-difference", difference.picture);
}

bool WriteReference(const QString& name, const QImage& picture) {
    const QImage wanted = Plain(picture);
    const QImage held(ReferencePath(name));
    if (!held.isNull() && Plain(held) == wanted) {
        return true;
    }
    constexpr int kSmallestFile = 0;
    return QDir().mkpath(QStringLiteral(WAVO_GOLDEN_REFERENCES)) &&
           Indexed(wanted).save(ReferencePath(name), "PNG", kSmallestFile);
}

QStringList ReferenceNames() {
    QStringList names;
    const QDir folder(QStringLiteral(WAVO_GOLDEN_REFERENCES));
    for (const QString& file : folder.entryList({QStringLiteral("*.png")}, QDir::Files)) {
        names.push_back(file.chopped(4));
    }
    names.sort();
    return names;
}

bool RemoveReference(const QString& name) {
    return QFile::remove(ReferencePath(name));
}

}  // namespace wavo::testing
