#include "graph/draw/frame/shortened_text.h"

namespace wavo {

namespace {

/// Fewer characters of a name, what stands before it included, tell nobody which axis it is.
constexpr int kLeastName = 9;

}  // namespace

int TextWidth(const QFontMetrics& metrics, const QString& text) {
    return text.isEmpty() ? 0 : metrics.horizontalAdvance(text) + 1;
}

QString ShortenedText(const QString& text, const QFontMetrics& metrics, int width) {
    if (TextWidth(metrics, text) <= width) {
        return text;
    }
    if (text.startsWith(QLatin1String("T: ("))) {
        return {};
    }
    const qsizetype range_start = text.lastIndexOf(QLatin1String("=("));
    if (range_start < 0) {
        return metrics.elidedText(text, Qt::ElideRight, width - 1);
    }
    const QString name = text.left(range_start);
    const QString range = text.mid(range_start);
    const int room = width - TextWidth(metrics, range);
    if (room >= kLeastName * metrics.averageCharWidth()) {
        return metrics.elidedText(name, Qt::ElideMiddle, room) + range;
    }
    return metrics.elidedText(name, Qt::ElideMiddle, width - 1);
}

}  // namespace wavo
