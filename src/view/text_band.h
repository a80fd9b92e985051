// A line of text over the bottom of a picture that is painted on step by step.
//
// What stands under the text is kept, so that a drawing step finds the picture as the last one
// left it: take the text off, draw, put it on again.
//
// Invariants:
// 1. Outside the band the picture is never touched.
// 2. TakeOff restores the band bit by bit; without a text on the picture it does nothing.
#pragma once

#include <QFont>
#include <QImage>
#include <QRect>
#include <string>

#include "settings/font_description.h"
#include "support/color_ref.h"

namespace wavo {

/// The text and its looks.
struct BandText {
    std::string text;  ///< one line, UTF-8; empty for none
    FontDescription font;
    ColorRef color = 0;

    friend bool operator==(const BandText&, const BandText&) = default;
};

class TextBand {
 public:
    /// Puts `text` on the picture: centred in a band one text line high at its bottom, cut with
    /// dots where it is too long. Nothing for an empty text or picture. REQUIRES: no text is on;
    /// the format is RGB32.
    void PutOn(QImage& picture, const BandText& text);

    /// Takes the text off. REQUIRES: `picture` is the one that it was put on.
    void TakeOff(QImage& picture);

    /// The picture was painted over, or is another one: no text is on.
    void Forget() { m_under = QImage(); }

    /// Where the text stands in a picture, its pixels; empty when there is no text.
    [[nodiscard]] QRect Band(const QImage& picture, const BandText& text);

 private:
    void SetFont(const FontDescription& description);

    FontDescription m_description;
    QFont m_font;
    bool m_font_made = false;
    QImage m_under;  ///< the band without the text; null while no text is on
    QRect m_band;    ///< pixels of the picture
};

}  // namespace wavo
