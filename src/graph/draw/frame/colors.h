// Colours of the parts of a graph, so that they read well on any background.
#pragma once

#include <QColor>

namespace wavo {

/// Least contrast of a text with its background (1 none, 21 black on white).
inline constexpr double kTextContrast = 4.5;

/// Least contrast of a curve and its mark with their background.
inline constexpr double kCurveContrast = 2.0;

/// Contrast of two colours, 1 to 21, by their relative luminance.
double Contrast(const QColor& a, const QColor& b);

/// Black or white, whichever stands out more.
QColor ForegroundOn(const QColor& background);

/// `part` (0 to 1) of `over` laid on `under`.
QColor Blend(const QColor& under, const QColor& over, double part);

/// `color`, brightened or darkened just so far that it has the contrast wanted, or as much as
/// there can be. A colour that is darkened gets purer, so that its hue can still be told.
QColor Readable(const QColor& color, const QColor& background, double contrast = kTextContrast);

/// A colour that the user chose, as it is drawn on a background: `color` itself where it has the
/// contrast wanted, else with the least change of its lightness that reaches it. Hue and
/// saturation are kept. REQUIRES: contrast <= 4.5, which every background allows.
QColor ShownColor(const QColor& color, const QColor& background, double contrast);

/// The colours of frame and texts on a background.
struct FrameColors {
    explicit FrameColors(const QColor& background);

    QColor background;
    QColor frame;
    QColor scale_line;
    QColor text;
    QColor waiting;           ///< status text: waiting for a trigger
    QColor running;           ///< status text: recording
    QColor stopped;           ///< status text: recording ended
    QColor shared_zero_line;  ///< a zero line that several curves have in common
    QColor circle;            ///< a guiding circle
    QColor other_circle;      ///< a guiding circle behind a curve that is coloured like `circle`
    /// Contrast that the guiding circles go by: on a grey background less than that of texts, so
    /// that their colours can still be told apart.
    double hue_contrast;
};

}  // namespace wavo
