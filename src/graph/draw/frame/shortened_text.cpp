#include "graph/draw/frame/shortened_text.h"

namespace wavo {

namespace {

/// Fewer characters of a name, what stands before it included, tell nobody which axis it is.
constexpr int kLeastName = 9;

bool Fits(const AxisText& text, const QFontMetrics& metrics, int width) {
    return TextWidth(metrics, QString::fromStdString(Joined(text))) <= width;
}

}  // namespace

int TextWidth(const QFontMetrics& metrics, const QString& text) {
    return text.isEmpty() ? 0 : metrics.horizontalAdvance(text) + 1;
}

QString ShortenedText(const QString& text, const QFontMetrics& metrics, int width) {
    return TextWidth(metrics, text) <= width ? text
                                             : metrics.elidedText(text, Qt::ElideRight, width - 1);
}

QString ShortenedText(const AxisText& text, const QFontMetrics& metrics, int width) {
    const QString joined = QString::fromStdString(Joined(text));
    if (text.range.empty() || TextWidth(metrics, joined) <= width) {
        return ShortenedText(joined, metrics, width);
    }
    if (!text.name.has_value()) {
        return {};
    }
    const QString name = QString::fromStdString(NamePart(text));
    const QString range = QString::fromStdString(RangePart(text));
    const int room = width - TextWidth(metrics, range);
    if (room >= kLeastName * metrics.averageCharWidth()) {
        return metrics.elidedText(name, Qt::ElideMiddle, room) + range;
    }
    return metrics.elidedText(name, Qt::ElideMiddle, width - 1);
}

AxisText WithoutWhatIsKnown(const AxisText& text, const QFontMetrics& metrics, int width) {
    if (!text.name.has_value() || Fits(text, metrics, width)) {
        return text;
    }
    AxisText without_coordinate{"", text.name, text.range, text.unit};
    if (Fits(without_coordinate, metrics, width)) {
        return without_coordinate;
    }
    const AxisText without_range{text.coordinate, text.name, "", ""};
    return Fits(without_range, metrics, width) ? text : AxisText{"", text.name, "", ""};
}

}  // namespace wavo
