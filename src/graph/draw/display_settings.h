// How graphs look as far as the user decides it: background, font, units.
#pragma once

#include <QColor>
#include <QFont>
#include <map>
#include <string>

#include "settings/font_description.h"
#include "support/color_ref.h"

namespace wavo {

struct GraphDisplaySettings {
    ColorRef background = 0;
    FontDescription font;
    std::map<std::string, std::string> units;  ///< of values, by the names of axes; of some
    bool line_styles = false;                  ///< curves are told apart by their dashes, too

    friend bool operator==(const GraphDisplaySettings&, const GraphDisplaySettings&) = default;
};

/// The font of a description. The face "System" is the platform's own interface font at its
/// natural size; every other face is used at the height given. Needs a QGuiApplication.
QFont MakeFont(const FontDescription& description);

/// The description that makes this font again, as far as the fields can say it: the first family,
/// the em height in whole pixels, weight and style.
FontDescription DescribeFont(const QFont& font);

/// The opaque colour of the lower three bytes.
QColor ToQColor(ColorRef color);

/// The three colour bytes of a colour; how opaque it is is lost.
ColorRef ToColorRef(const QColor& color);

}  // namespace wavo
