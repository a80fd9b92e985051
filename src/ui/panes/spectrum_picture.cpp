#include "ui/panes/spectrum_picture.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

using measure::Spectrum;
using measure::SpectrumPeak;

constexpr int kGap = 4;
constexpr double kDecibelsShown = 100.0;
constexpr double kHeadRoom = 1.08;
constexpr int kPeakMark = 4;
/// Parts of the ink in what is painted on the background.
constexpr double kGrid = 0.22;
constexpr double kFrame = 0.6;
constexpr double kHeld = 0.55;

QColor Tinted(const QColor& from, const QColor& to, double part) {
    const auto mix = [part](int a, int b) {
        return static_cast<int>(std::lround(a + (b - a) * part));
    };
    return {mix(from.red(), to.red()), mix(from.green(), to.green()), mix(from.blue(), to.blue())};
}

double Decibels(double amplitude) {
    return measure::ToDecibel(amplitude, 1.0, measure::SpectrumScale::kPeak);
}

QFontMetrics MetricsOf() {
    return QFontMetrics(QGuiApplication::font());
}

/// The lines of a spectrum that stand between two frequencies, and one on each side.
measure::Stretch LinesIn(const Spectrum& spectrum, const FrequencyBand& band) {
    const auto last = static_cast<double>(spectrum.values.size() - 1);
    const double first = std::clamp(std::floor(band.low / spectrum.spacing), 0.0, last);
    const double end = std::clamp(std::ceil(band.high / spectrum.spacing), 0.0, last);
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(end) + 1};
}

double HighestIn(const Spectrum& spectrum, const FrequencyBand& band) {
    const measure::Stretch lines = LinesIn(spectrum, band);
    double highest = 0.0;
    for (std::size_t k = lines.first; k < lines.end; ++k) {
        highest = std::max(highest, spectrum.values[k]);
    }
    return highest;
}

/// The curve: all lines where they have room, else from the lowest to the highest of each column.
QPolygonF CurveOf(const Spectrum& spectrum, const SpectrumPlaces& places,
                  const FrequencyBand& band) {
    const measure::Stretch lines = LinesIn(spectrum, band);
    QPolygonF curve;
    if (lines.Size() <= 2 * static_cast<std::size_t>(places.Plot().width())) {
        for (std::size_t k = lines.first; k < lines.end; ++k) {
            curve << QPointF(places.XOf(spectrum.FrequencyOf(k)), places.YOf(spectrum.values[k]));
        }
        return curve;
    }
    for (std::size_t k = lines.first; k < lines.end;) {
        const double x = std::floor(places.XOf(spectrum.FrequencyOf(k)));
        double lowest = spectrum.values[k];
        double highest = lowest;
        const double first = lowest;
        double last = first;
        for (; k < lines.end && std::floor(places.XOf(spectrum.FrequencyOf(k))) == x; ++k) {
            last = spectrum.values[k];
            lowest = std::min(lowest, last);
            highest = std::max(highest, last);
        }
        for (const double value : {first, lowest, highest, last}) {
            curve << QPointF(x + 0.5, places.YOf(value));
        }
    }
    return curve;
}

void PaintAxes(QPainter& painter, const SpectrumScene& scene, const SpectrumPlaces& places,
               const QRect& area) {
    const QColor ink = scene.ink;
    const QRect& plot = places.Plot();
    const QFontMetrics metrics = painter.fontMetrics();
    const QColor grid = Tinted(scene.background, ink, kGrid);
    const int most_across = std::max(2, plot.width() / (6 * metrics.averageCharWidth() + 30));
    if (scene.band.Width() > 0.0) {
        const AxisTicks ticks = TicksBetween(scene.band.low, scene.band.high, most_across);
        for (const double value : ticks.values) {
            const int x = static_cast<int>(std::lround(places.XOf(value)));
            painter.setPen(grid);
            painter.drawLine(x, plot.top(), x, plot.bottom());
            painter.setPen(ink);
            const QString text = QString::number(value, 'f', ticks.decimals);
            const int width = metrics.horizontalAdvance(text);
            const int left = std::clamp(x - width / 2, plot.left() - width / 2,
                                        std::max(plot.left(), area.right() - width));
            painter.drawText(left, plot.bottom() + kGap + metrics.ascent(), text);
        }
    }
    const int most_up = std::max(2, plot.height() / (2 * metrics.height()));
    const AxisTicks ticks = TicksBetween(places.Lowest(), places.Highest(), most_up);
    for (const double value : ticks.values) {
        const double amplitude = scene.is_decibel ? std::pow(10.0, value / 20.0) : value;
        const int y = static_cast<int>(std::lround(places.YOf(amplitude)));
        painter.setPen(grid);
        painter.drawLine(plot.left(), y, plot.right(), y);
        painter.setPen(ink);
        const QRect room(area.left(), y - metrics.height() / 2, plot.left() - area.left() - kGap,
                         metrics.height());
        painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter,
                         ticks.decimals <= 6 ? QString::number(value, 'f', ticks.decimals)
                                             : QString::number(value, 'g', 3));
    }
    painter.setPen(Tinted(scene.background, ink, kFrame));
    painter.drawRect(plot.adjusted(-1, -1, 0, 0));
    painter.setPen(ink);
    const QRect caption(area.left(), plot.bottom() + kGap + metrics.height(), area.width(),
                        metrics.height());
    const QString limit = QStringLiteral(
        "Hz, up to half the line rate: nothing beyond can be told, "
        "and what is faster appears folded");
    painter.drawText(caption, Qt::AlignRight | Qt::AlignTop,
                     metrics.elidedText(limit, Qt::ElideRight, caption.width()));
}

void PaintPeaks(QPainter& painter, const SpectrumScene& scene, const SpectrumPlaces& places) {
    const QColor ink = scene.ink;
    painter.setPen(ink);
    painter.setBrush(ink);
    int number = 0;
    for (const SpectrumPeak& peak : scene.peaks) {
        ++number;
        if (peak.frequency < scene.band.low || peak.frequency > scene.band.high) {
            continue;
        }
        const double x = places.XOf(peak.frequency);
        const double y = std::max(places.YOf(peak.amplitude) - 2.0,
                                  static_cast<double>(places.Plot().top() + kPeakMark));
        painter.drawPolygon(QPolygonF{
            {x, y}, {x - kPeakMark, y - kPeakMark - 1}, {x + kPeakMark, y - kPeakMark - 1}});
        painter.drawText(QPointF(x + kPeakMark + 2, y), QString::number(number));
    }
}

void PaintSpectrumCursors(QPainter& painter, const SpectrumScene& scene,
                          const SpectrumPlaces& places) {
    const QColor ink = scene.ink;
    for (const CursorName name : kCursorNames) {
        const auto& frequency = scene.cursors[static_cast<std::size_t>(name)];
        if (!frequency || *frequency < scene.band.low || *frequency > scene.band.high) {
            continue;
        }
        const bool is_active = scene.active == name;
        const int x = static_cast<int>(std::lround(places.XOf(*frequency)));
        painter.setPen(QPen(ink, 1, is_active ? Qt::SolidLine : Qt::DashLine));
        painter.drawLine(x, places.Plot().top(), x, places.Plot().bottom());
        const QRect label = SpectrumCursorLabel(places, scene, name);
        painter.setPen(ink);
        painter.setBrush(is_active ? ink : scene.background);
        painter.drawRect(label.adjusted(0, 0, -1, -1));
        painter.setPen(is_active ? scene.background : ink);
        painter.drawText(label, Qt::AlignCenter,
                         name == CursorName::kA ? QStringLiteral("A") : QStringLiteral("B"));
    }
}

}  // namespace

AxisTicks TicksBetween(double low, double high, int most) {
    double step = std::pow(10.0, std::floor(std::log10((high - low) / most)));
    for (const double factor : {2.0, 2.5, 2.0}) {  // 1, 2, 5, 10
        if ((high - low) / step <= most) {
            break;
        }
        step *= factor;
    }
    AxisTicks ticks;
    ticks.decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    const double first = std::ceil(low / step - 1e-9);
    for (double i = first; i * step <= high + 1e-9 * step; i += 1.0) {
        ticks.values.push_back(i * step);
    }
    return ticks;
}

SpectrumPlaces::SpectrumPlaces(const SpectrumScene& scene, const QRect& area) : m_scene(scene) {
    const QFontMetrics metrics = MetricsOf();
    const int left = metrics.horizontalAdvance(QStringLiteral("-0.000000"));
    m_plot = area.adjusted(left + kGap, metrics.height() / 2 + kGap, -3 * kGap,
                           -(2 * metrics.height() + 2 * kGap));
    m_plot.setSize(m_plot.size().expandedTo(QSize(1, 1)));
    FitAmplitudes();
}

void SpectrumPlaces::FitAmplitudes() {
    double highest = 0.0;
    for (const auto* const spectrum : {&m_scene.spectrum, &m_scene.maximum}) {
        if (*spectrum) {
            highest = std::max(highest, HighestIn(**spectrum, m_scene.band));
        }
    }
    if (m_scene.is_decibel) {
        constexpr double kStep = 10.0;
        m_highest = highest > 0.0 ? kStep * std::ceil((Decibels(highest) + 3.0) / kStep) : 0.0;
        m_lowest = m_highest - kDecibelsShown;
    } else {
        m_lowest = 0.0;
        m_highest = highest > 0.0 && std::isfinite(highest) ? kHeadRoom * highest : 1.0;
    }
}

double SpectrumPlaces::XOf(double frequency) const {
    const double width = std::max(m_scene.band.Width(), 1e-300);
    return m_plot.left() + (frequency - m_scene.band.low) / width * (m_plot.width() - 1);
}

double SpectrumPlaces::FrequencyAt(double x) const {
    const double part = (x - m_plot.left()) / std::max(1, m_plot.width() - 1);
    return m_scene.band.low + std::clamp(part, 0.0, 1.0) * m_scene.band.Width();
}

double SpectrumPlaces::YOf(double amplitude) const {
    const double value =
        m_scene.is_decibel ? (amplitude > 0.0 ? Decibels(amplitude) : m_lowest) : amplitude;
    const double part = (value - m_lowest) / (m_highest - m_lowest);
    return m_plot.bottom() - std::clamp(part, 0.0, 1.0) * (m_plot.height() - 1);
}

std::size_t LineNear(const Spectrum& spectrum, double frequency) {
    const double line = std::round(frequency / spectrum.spacing);
    return static_cast<std::size_t>(
        std::clamp(line, 0.0, static_cast<double>(spectrum.values.size() - 1)));
}

QRect SpectrumCursorLabel(const SpectrumPlaces& places, const SpectrumScene& scene,
                          CursorName name) {
    const QFontMetrics metrics = MetricsOf();
    const QSize size(metrics.horizontalAdvance(QStringLiteral("A")) + 2 * kGap, metrics.height());
    const double frequency = scene.cursors[static_cast<std::size_t>(name)].value_or(0.0);
    const int x = static_cast<int>(std::lround(places.XOf(frequency)));
    const int left =
        std::clamp(x - size.width() / 2, places.Plot().left(),
                   std::max(places.Plot().left(), places.Plot().right() - size.width()));
    // That of B stands lower: both can be taken where they stand at one place.
    const int top = places.Plot().top() + (name == CursorName::kB ? size.height() + 1 : 0);
    return {QPoint(left, top), size};
}

void PaintSpectrum(QPainter& painter, const QRect& area, const SpectrumScene& scene) {
    painter.save();
    painter.setFont(QGuiApplication::font());
    painter.fillRect(area, scene.background);
    const SpectrumPlaces places(scene, area);
    PaintAxes(painter, scene, places, area);
    if (!scene.spectrum) {
        painter.setPen(scene.ink);
        painter.drawText(places.Plot(), Qt::AlignCenter | Qt::TextWordWrap, scene.reason);
        painter.restore();
        return;
    }
    painter.setClipRect(places.Plot());
    painter.setRenderHint(QPainter::Antialiasing);
    if (scene.maximum) {
        painter.setPen(QPen(Tinted(scene.background, scene.ink, kHeld), 1));
        painter.drawPolyline(CurveOf(*scene.maximum, places, scene.band));
    }
    painter.setPen(QPen(scene.color, 1.2));
    painter.drawPolyline(CurveOf(*scene.spectrum, places, scene.band));
    PaintPeaks(painter, scene, places);
    painter.setRenderHint(QPainter::Antialiasing, false);
    PaintSpectrumCursors(painter, scene, places);
    painter.restore();
}

QString FrequencyOf(const Spectrum& spectrum, double frequency) {
    // A hundredth of a line: more than that is not told by interpolation.
    const int decimals = static_cast<int>(std::ceil(-std::log10(spectrum.spacing) + 2.0 - 1e-9));
    return QString::number(frequency, 'f', std::clamp(decimals, 0, 9));
}

QString AmplitudeText(double amplitude, bool is_decibel) {
    if (is_decibel) {
        return amplitude > 0.0
                   ? QString::number(Decibels(amplitude), 'f', 2) + QStringLiteral(" dB")
                   : QStringLiteral("-inf dB");
    }
    return QString::number(amplitude, 'g', 6);
}

}  // namespace wavo
