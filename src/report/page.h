// The parts of a printed page of figures, in millimetres from its upper left corner.
#pragma once

#include <QPainter>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "measure/verdict.h"

namespace wavo::report {

/// A page of A4 with a margin of 12 mm, whatever the resolution of what is painted on.
class Page {
 public:
    static constexpr double kWidth = 210.0;
    static constexpr double kHeight = 297.0;
    static constexpr double kLeft = 14.0;
    static constexpr double kRight = 198.0;
    static constexpr double kTop = 12.0;
    static constexpr double kBottom = 285.0;

    explicit Page(QPainter& painter);

    [[nodiscard]] QPainter& Painter() const { return m_painter; }
    /// One millimetre in the painter's units.
    [[nodiscard]] double Millimetre() const { return m_millimetre; }
    [[nodiscard]] QRectF Area(double left, double top, double width, double height) const;
    void SetFont(double points, bool bold = false) const;
    /// Width in mm of a text in the font that is set.
    [[nodiscard]] double WidthOf(const QString& text) const;

    /// A line of text in an area, shortened with dots where it does not fit.
    void Text(double left, double top, double width, double height, const QString& text,
              Qt::Alignment alignment = Qt::AlignLeft) const;
    void Line(double left, double top, double right, double bottom, const QColor& color,
              double width = 0.15) const;

    /// Title, line below it, and what became of the limits in a box at the right.
    void Heading(const QString& title, const QString& subtitle,
                 const std::optional<measure::Verdict>& verdict) const;
    /// Pairs of name and text in two columns; returns where they end.
    double Facts(double top, std::span<const std::pair<QString, QString>> facts) const;
    /// Figures with units, limits and verdicts; returns where the table ends.
    double Figures(double left, double top, double width, double row_height,
                   std::span<const measure::NamedFigure> figures,
                   const measure::Judgement& judgement) const;
    /// Sentences below each other, wrapped, as many as fit above `bottom`.
    double Sentences(double top, double bottom, const QStringList& sentences) const;
    /// Lines to sign on, and the page's number.
    void Foot(const QString& made_by, int number, int count) const;

 private:
    QPainter& m_painter;
    double m_millimetre;
};

/// Units as drawings write them: um, deg with their signs.
QString DisplayUnit(const std::string& unit);

/// Value, standard error and unit, or "not told".
QString DisplayValue(const measure::NamedFigure& figure);

/// Why figures are not told, each reason once: "D, G(b): one sense only".
QStringList ReasonsOf(std::span<const measure::NamedFigure> figures);

}  // namespace wavo::report
