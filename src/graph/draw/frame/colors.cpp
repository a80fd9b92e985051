#include "graph/draw/frame/colors.h"

#include <algorithm>
#include <cmath>

namespace wavo {

namespace {

/// Linear light of a colour component given as 0 to 1 (sRGB).
double Linear(double component) {
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& color) {
    return 0.2126 * Linear(color.redF()) + 0.7152 * Linear(color.greenF()) +
           0.0722 * Linear(color.blueF());
}

/// Part of the greatest contrast there can be at which hues are still told apart.
constexpr double kHuePart = 0.7;

/// A guiding circle is read less than a text, and behind the curve: part of a text's contrast.
constexpr double kCirclePart = 0.75;

double HueContrast(const QColor& background) {
    return std::min(kTextContrast, kHuePart * Contrast(ForegroundOn(background), background));
}

int BlendByte(int under, int over, double part) {
    return static_cast<int>(std::lround(under + (over - under) * part));
}

double ContrastOfLuminances(double a, double b) {
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

/// `color` with as much of its hue as there can be; greys have none and stay as they are.
QColor Pure(const QColor& color) {
    constexpr double kPlainHue = 128.0;  // least spread of the components of a plain colour
    const int most = std::max({color.red(), color.green(), color.blue()});
    const int least = std::min({color.red(), color.green(), color.blue()});
    if (most == least) {
        return color;
    }
    const auto stretch = [most, least](int component) {
        return (component - least) * most / (most - least);
    };
    const QColor pure(stretch(color.red()), stretch(color.green()), stretch(color.blue()));
    return Blend(color, pure, std::min(1.0, (most - least) / kPlainHue));
}

}  // namespace

double Contrast(const QColor& a, const QColor& b) {
    return ContrastOfLuminances(Luminance(a), Luminance(b));
}

QColor ForegroundOn(const QColor& background) {
    const QColor white(255, 255, 255);
    const QColor black(0, 0, 0);
    return Contrast(white, background) >= Contrast(black, background) ? white : black;
}

QColor Blend(const QColor& under, const QColor& over, double part) {
    return {BlendByte(under.red(), over.red(), part), BlendByte(under.green(), over.green(), part),
            BlendByte(under.blue(), over.blue(), part)};
}

QColor Readable(const QColor& color, const QColor& background, double contrast) {
    constexpr int kSteps = 20;
    const double background_luminance = Luminance(background);
    const auto reads_well = [background_luminance, contrast](const QColor& tried) {
        return ContrastOfLuminances(Luminance(tried), background_luminance) >= contrast;
    };
    if (reads_well(color)) {
        return color;
    }
    const QColor foreground = ForegroundOn(background);
    // What gets dark keeps its hue to the eye only when it gets purer.
    const QColor pure = foreground == QColor(0, 0, 0) ? Pure(color) : color;
    for (int step = 1; step < kSteps; ++step) {
        const double part = static_cast<double>(step) / kSteps;
        const QColor tried = Blend(Blend(color, pure, part), foreground, part);
        if (reads_well(tried)) {
            return tried;
        }
    }
    return foreground;
}

QColor ShownColor(const QColor& color, const QColor& background, double contrast) {
    if (Contrast(color, background) >= contrast) {
        return color;
    }
    // Lightness in steps of half a component's step: both ways, until one of them reaches it.
    constexpr int kSteps = 510;
    const double hue = std::max(color.hslHueF(), 0.0F);  // a grey has none
    const double saturation = color.hslSaturationF();
    const double lightness = color.lightnessF();
    for (int step = 1; step <= kSteps; ++step) {
        const double change = static_cast<double>(step) / kSteps;
        for (const double tried : {lightness + change, lightness - change}) {
            const QColor shown(QColor::fromHslF(static_cast<float>(hue),
                                                static_cast<float>(saturation),
                                                static_cast<float>(std::clamp(tried, 0.0, 1.0)))
                                   .rgb());
            if (Contrast(shown, background) >= contrast) {
                return shown;
            }
        }
    }
    return ForegroundOn(background);
}

FrameColors::FrameColors(const QColor& background_color)
    : background(background_color),
      frame(Blend(background, ForegroundOn(background), 0.42)),
      scale_line(Blend(background, ForegroundOn(background), 0.17)),
      text(Readable(Blend(background, ForegroundOn(background), 0.78), background)),
      shared_zero_line(Blend(background, ForegroundOn(background), 0.32)),
      hue_contrast(HueContrast(background)) {
    waiting = Readable(QColor(240, 176, 48), background);
    running = Readable(QColor(80, 200, 96), background);
    stopped = Readable(QColor(240, 96, 80), background);
    const double circle_contrast = kCirclePart * hue_contrast;
    circle = Readable(QColor(80, 130, 210), background, circle_contrast);
    other_circle = Readable(QColor(200, 120, 50), background, circle_contrast);
}

}  // namespace wavo
