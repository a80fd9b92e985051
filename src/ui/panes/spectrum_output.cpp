#include "ui/panes/spectrum_output.h"

#include <QGuiApplication>
#include <QPainter>
#include <QStringList>
#include <array>
#include <charconv>

#include "measure/cursors.h"
#include "ui/panes/measure_columns.h"

namespace wavo {

namespace {

constexpr int kPageMargin = 8;
constexpr int kPeaksPerRow = 4;

QString AllDigits(double value) {
    std::array<char, 40> text;  // NOLINT(cppcoreguidelines-pro-type-member-init): written to
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
    return QString::fromLatin1(text.data(), written.ptr - text.data());
}

QString WindowText(measure::Window window) {
    return window == measure::Window::kRectangular
               ? QStringLiteral("no window")
               : QString::fromStdString(measure::NameOf(window)) + QStringLiteral(" window");
}

QString ScaleText(measure::SpectrumScale scale) {
    return scale == measure::SpectrumScale::kRms ? QStringLiteral("RMS") : QStringLiteral("peak");
}

/// Frequency and amplitude of a peak, as the list shows them.
QStringList PeakTexts(const SpectrumScene& scene, const measure::SpectrumPeak& peak) {
    return {FrequencyOf(*scene.spectrum, peak.frequency),
            AmplitudeText(peak.amplitude, scene.is_decibel)};
}

}  // namespace

QString DescriptionOf(const MadeSpectrum& made, double cycle_time, std::size_t collected) {
    if (!made.spectrum) {
        return {};
    }
    const measure::Spectrum& spectrum = *made.spectrum;
    const int decimals = measure::DecimalsOf(std::array{cycle_time});
    QString text =
        QStringLiteral("%1 of %2 values, from %3 s to %4 s; %5; %6 Hz per line")
            .arg(spectrum.used.Size())
            .arg(made.lines.Count())
            .arg(NumberText(made.begin, decimals), NumberText(made.end, decimals),
                 WindowText(spectrum.window) + QStringLiteral(", ") + ScaleText(spectrum.scale),
                 QString::number(spectrum.spacing, 'g', 6));
    if (spectrum.averages > 1) {
        text += QStringLiteral("; %1 pieces of %2 averaged")
                    .arg(spectrum.averages)
                    .arg(spectrum.length);
    } else if (spectrum.stretches == 1 &&
               spectrum.length < static_cast<std::size_t>(made.lines.Count())) {
        text += QStringLiteral("; the largest length without prime factors above 5");
    }
    if (spectrum.stretches > 1) {
        text += QStringLiteral("; the longest of %1 pieces without a gap").arg(spectrum.stretches);
    }
    if (collected > 0) {
        text += QStringLiteral("; %1 spectra since Restart").arg(collected);
    }
    return text;
}

QString CursorsTextOf(const SpectrumScene& scene) {
    if (!scene.spectrum) {
        return {};
    }
    QStringList texts;
    const auto amplitude = [&scene](double frequency) {
        return scene.spectrum->values[LineNear(*scene.spectrum, frequency)];
    };
    for (const CursorName name : kCursorNames) {
        if (const auto frequency = scene.cursors[static_cast<std::size_t>(name)]) {
            texts << QStringLiteral("%1  %2 Hz  %3")
                         .arg(name == CursorName::kA ? QStringLiteral("A") : QStringLiteral("B"))
                         .arg(FrequencyOf(*scene.spectrum, *frequency),
                              AmplitudeText(amplitude(*frequency), scene.is_decibel));
        }
    }
    const auto a = scene.cursors[0];
    const auto b = scene.cursors[1];
    if (a && b) {
        const double before = amplitude(*a);
        const double behind = amplitude(*b);
        texts << QString::fromUtf8("Δf  %1 Hz").arg(FrequencyOf(*scene.spectrum, *b - *a));
        if (before > 0.0) {
            texts << (scene.is_decibel
                          ? QStringLiteral("B / A  ") + AmplitudeText(behind / before, true)
                          : QStringLiteral("B - A  ") + AmplitudeText(behind - before, false));
        }
    }
    return texts.join(QStringLiteral("     "));
}

QString TextOfPeaks(const SpectrumScene& scene) {
    QString text = QStringLiteral("Frequency (Hz)\tAmplitude\n");
    for (const measure::SpectrumPeak& peak : scene.peaks) {
        text += PeakTexts(scene, peak).join(u'\t') + u'\n';
    }
    return text;
}

QString CsvOfSpectrum(const SpectrumScene& scene) {
    QString text = QStringLiteral("Frequency (Hz),Amplitude (%1)")
                       .arg(scene.spectrum ? ScaleText(scene.spectrum->scale) : QString());
    text += scene.maximum ? QStringLiteral(",Maximum\n") : QStringLiteral("\n");
    const std::size_t lines = scene.spectrum ? scene.spectrum->values.size() : 0;
    for (std::size_t k = 0; k < lines; ++k) {
        text +=
            AllDigits(scene.spectrum->FrequencyOf(k)) + u',' + AllDigits(scene.spectrum->values[k]);
        if (scene.maximum) {
            text += u',' + AllDigits(scene.maximum->values[k]);
        }
        text += u'\n';
    }
    return text;
}

QImage PictureOf(const SpectrumPage& page, const QSize& size, double device_ratio) {
    const SpectrumScene& scene = page.scene;
    QImage picture(size * device_ratio, QImage::Format_RGB32);
    picture.setDevicePixelRatio(device_ratio);
    picture.fill(scene.background);
    QPainter painter(&picture);
    painter.setFont(QGuiApplication::font());
    painter.setPen(scene.ink);
    const int height = painter.fontMetrics().height();
    const QRect all = QRect(QPoint(), size)
                          .adjusted(kPageMargin, kPageMargin / 2, -kPageMargin, -kPageMargin / 2);
    int top = all.top();
    for (const QString& text :
         {QStringLiteral("Spectrum of ") + page.curve, page.description, page.cursors}) {
        if (!text.isEmpty()) {
            QRect used;
            painter.drawText(QRect(all.left(), top, all.width(), all.height()), Qt::TextWordWrap,
                             text, &used);
            top = used.bottom() + 1;
        }
    }
    const int count = static_cast<int>(scene.peaks.size());
    const int rows = (count + kPeaksPerRow - 1) / kPeaksPerRow;
    const int bottom = all.bottom() - rows * height - kPageMargin / 2;
    PaintSpectrum(painter, QRect(QPoint(all.left(), top), QPoint(all.right(), bottom)), scene);
    const int width = all.width() / kPeaksPerRow;
    for (int peak = 0; peak < count; ++peak) {
        const QStringList texts = PeakTexts(scene, scene.peaks[static_cast<std::size_t>(peak)]);
        const QRect cell(all.left() + peak % kPeaksPerRow * width,
                         bottom + kPageMargin / 2 + peak / kPeaksPerRow * height, width, height);
        painter.drawText(cell, Qt::AlignLeft,
                         QStringLiteral("%1:  %2 Hz  %3").arg(peak + 1).arg(texts[0], texts[1]));
    }
    return picture;
}

}  // namespace wavo
