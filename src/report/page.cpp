#include "report/page.h"

#include <QPaintDevice>
#include <algorithm>
#include <cmath>

#include "measure/words.h"
#include "report/ink.h"

namespace wavo::report {

namespace {

constexpr double kMillimetresPerInch = 25.4;

QString FromText(const std::string& text) {
    return QString::fromStdString(text);
}

/// Names in the words of drawings.
QString DisplayText(QString text) {
    text.replace(QStringLiteral(" deg"), QStringLiteral("°"));
    text.replace(QStringLiteral(" um"), QStringLiteral(" µm"));
    text.replace(QStringLiteral("+-"), QStringLiteral("±"));
    text.replace(QStringLiteral("<= "), QStringLiteral("≤ "));
    text.replace(QStringLiteral(">= "), QStringLiteral("≥ "));
    return text;
}

QColor InkOf(measure::Verdict verdict) {
    return verdict == measure::Verdict::kPass ? kPassInk : kFailInk;
}

}  // namespace

Page::Page(QPainter& painter)
    : m_painter(painter), m_millimetre(painter.device()->logicalDpiX() / kMillimetresPerInch) {}

QRectF Page::Area(double left, double top, double width, double height) const {
    return {left * m_millimetre, top * m_millimetre, width * m_millimetre, height * m_millimetre};
}

void Page::SetFont(double points, bool bold) const {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(points);
    font.setBold(bold);
    m_painter.setFont(font);
}

double Page::WidthOf(const QString& text) const {
    return QFontMetricsF(m_painter.font(), m_painter.device()).horizontalAdvance(text) /
           m_millimetre;
}

void Page::Text(double left, double top, double width, double height, const QString& text,
                Qt::Alignment alignment) const {
    const QFontMetricsF metrics(m_painter.font(), m_painter.device());
    m_painter.drawText(Area(left, top, width, height), Qt::AlignVCenter | alignment,
                       metrics.elidedText(text, Qt::ElideMiddle, width * m_millimetre + 1.0));
}

void Page::Line(double left, double top, double right, double bottom, const QColor& color,
                double width) const {
    m_painter.setPen(PenOf(color, width, m_millimetre));
    m_painter.drawLine(QPointF(left, top) * m_millimetre, QPointF(right, bottom) * m_millimetre);
}

void Page::Heading(const QString& title, const QString& subtitle,
                   const std::optional<measure::Verdict>& verdict) const {
    m_painter.setPen(kText);
    SetFont(17.0, true);
    Text(kLeft, kTop, 130.0, 8.0, title);
    SetFont(8.0);
    m_painter.setPen(kFaint);
    Text(kLeft, kTop + 8.0, 130.0, 4.5, subtitle);
    if (verdict) {
        const QColor ink = InkOf(*verdict);
        m_painter.setPen(PenOf(ink, 0.6, m_millimetre));
        m_painter.drawRect(Area(kRight - 42.0, kTop, 42.0, 11.0));
        SetFont(16.0, true);
        m_painter.setPen(ink);
        Text(kRight - 42.0, kTop, 42.0, 11.0, FromText(measure::TextOf(*verdict)).toUpper(),
             Qt::AlignHCenter);
    } else {
        Text(kRight - 42.0, kTop + 8.0, 42.0, 4.5, QStringLiteral("no limits were given"),
             Qt::AlignRight);
    }
    Line(kLeft, kTop + 13.5, kRight, kTop + 13.5, kText, 0.3);
}

double Page::Facts(double top, std::span<const std::pair<QString, QString>> facts) const {
    constexpr double kRowHeight = 4.3;
    constexpr double kNameWidth = 21.0;
    const double column = (kRight - kLeft) / 2.0;
    const std::size_t rows = std::max<std::size_t>((facts.size() + 1) / 2, 1);
    for (std::size_t i = 0; i < facts.size(); ++i) {
        const double left = kLeft + (i < rows ? 0.0 : column);
        const double row = top + static_cast<double>(i % rows) * kRowHeight;
        SetFont(7.5);
        m_painter.setPen(kFaint);
        Text(left, row, kNameWidth, kRowHeight, facts[i].first);
        m_painter.setPen(kText);
        Text(left + kNameWidth, row, column - kNameWidth - 3.0, kRowHeight, facts[i].second);
    }
    return top + static_cast<double>(rows) * kRowHeight;
}

double Page::Figures(double left, double top, double width, double row_height,
                     std::span<const measure::NamedFigure> figures,
                     const measure::Judgement& judgement) const {
    const double limit_width = judgement.judged.empty() ? 0.0 : 19.0;
    const double verdict_width = judgement.judged.empty() ? 0.0 : 11.0;
    const double value_width = judgement.judged.empty() ? 32.0 : 25.0;
    const double name_width = width - value_width - limit_width - verdict_width;
    const double value_left = left + name_width;
    const double limit_left = value_left + value_width;
    SetFont(7.0);
    m_painter.setPen(kFaint);
    Text(left, top, name_width, row_height, QStringLiteral("Figure"));
    Text(value_left, top, value_width, row_height, QStringLiteral("Value"), Qt::AlignRight);
    if (limit_width > 0.0) {
        Text(limit_left, top, limit_width - 1.0, row_height, QStringLiteral("Limit"),
             Qt::AlignRight);
    }
    Line(left, top + row_height, left + width, top + row_height, kText, 0.2);
    double row = top + row_height;
    for (std::size_t i = 0; i < figures.size(); ++i) {
        const measure::NamedFigure& figure = figures[i];
        SetFont(7.5);
        m_painter.setPen(kText);
        Text(left, row, name_width, row_height, DisplayText(FromText(figure.name)));
        m_painter.setPen(figure.figure ? kText : kFaint);
        Text(value_left, row, value_width, row_height, DisplayValue(figure), Qt::AlignRight);
        const auto judged = std::ranges::find(judgement.judged, i, &measure::Judged::figure);
        if (judged != judgement.judged.end()) {
            m_painter.setPen(kText);
            Text(limit_left, row, limit_width - 1.0, row_height,
                 DisplayText(FromText(measure::TextOf(judged->limit, figure.decimals))),
                 Qt::AlignRight);
            m_painter.setPen(InkOf(judged->verdict));
            SetFont(7.5, true);
            Text(limit_left + limit_width, row, verdict_width, row_height,
                 FromText(measure::TextOf(judged->verdict)), Qt::AlignRight);
        }
        row += row_height;
        Line(left, row, left + width, row, kGrid, 0.08);
    }
    return row;
}

double Page::Sentences(double top, double bottom, const QStringList& sentences) const {
    SetFont(7.0);
    m_painter.setPen(kText);
    const QFontMetricsF metrics(m_painter.font(), m_painter.device());
    int left_out = static_cast<int>(sentences.size());
    for (const QString& sentence : sentences) {
        const QString text = DisplayText(QStringLiteral("\u2022 ") + sentence);
        const double height = metrics
                                  .boundingRect(Area(kLeft, top, kRight - kLeft, bottom - top),
                                                Qt::TextWordWrap, text)
                                  .height() /
                              m_millimetre;
        // Room is kept for the line that says how many are left out.
        const double needed = left_out > 1 ? height + metrics.height() / m_millimetre : height;
        if (top + needed > bottom) {
            Text(kLeft, top, kRight - kLeft, metrics.height() / m_millimetre,
                 QStringLiteral("\u2022 %1 more: see the JSON file").arg(left_out));
            return bottom;
        }
        m_painter.drawText(Area(kLeft, top, kRight - kLeft, height), Qt::TextWordWrap, text);
        top += height;
        --left_out;
    }
    return top;
}

void Page::Foot(const QString& made_by, int number, int count) const {
    constexpr double kSignature = 55.0;
    double left = kLeft;
    SetFont(7.0);
    for (const char* name : {"Date", "Name", "Signature"}) {
        Line(left, kBottom - 5.0, left + kSignature, kBottom - 5.0, kText, 0.15);
        m_painter.setPen(kFaint);
        Text(left, kBottom - 4.8, kSignature, 3.5, QString::fromLatin1(name));
        left += kSignature + 9.5;
    }
    Text(kLeft, kBottom + 1.0, 120.0, 3.5, made_by);
    if (count > 1) {
        Text(kRight - 30.0, kBottom + 1.0, 30.0, 3.5,
             QStringLiteral("page %1 of %2").arg(number).arg(count), Qt::AlignRight);
    }
}

QString DisplayUnit(const std::string& unit) {
    QString text = FromText(unit);
    if (text == QStringLiteral("deg")) {
        return QStringLiteral("°");
    }
    if (text.startsWith(QStringLiteral("um"))) {
        text.replace(0, 2, QStringLiteral("µm"));
    }
    return text;
}

QString DisplayValue(const measure::NamedFigure& figure) {
    if (!figure.figure) {
        return QStringLiteral("not told");
    }
    QString text = FromText(measure::Decimals(*figure.figure, figure.decimals));
    // An error that the decimals do not show says nothing.
    if (figure.error * std::pow(10.0, figure.decimals) >= 0.5) {
        text += QStringLiteral(" ± ") + FromText(measure::Decimals(figure.error, figure.decimals));
    }
    const QString unit = DisplayUnit(figure.unit);
    return unit.isEmpty() ? text : text + QStringLiteral(" ") + unit;
}

QStringList ReasonsOf(std::span<const measure::NamedFigure> figures) {
    std::vector<std::pair<std::string, std::string>> reasons;  // reason, keys
    for (const measure::NamedFigure& figure : figures) {
        if (figure.figure) {
            continue;
        }
        auto found = std::ranges::find(reasons, figure.figure.reason,
                                       &std::pair<std::string, std::string>::first);
        if (found == reasons.end()) {
            reasons.emplace_back(figure.figure.reason, figure.name);
        } else {
            found->second += ", " + figure.name;
        }
    }
    QStringList sentences;
    for (const auto& [reason, names] : reasons) {
        sentences << QStringLiteral("Not told: %1 (%2).").arg(FromText(names), FromText(reason));
    }
    return sentences;
}

}  // namespace wavo::report
