// The picture of a spectrum: curve, axes, peaks, cursors.
//
// Places are logical pixels.
#pragma once

#include <QColor>
#include <QRect>
#include <QString>
#include <array>
#include <optional>
#include <vector>

#include "measure/spectrum.h"
#include "view/graph_cursors.h"

class QPainter;

namespace wavo {

/// Frequencies from `low` to `high`, Hz.
struct FrequencyBand {
    double low = 0.0;
    double high = 0.0;

    [[nodiscard]] double Width() const { return high - low; }
    friend bool operator==(const FrequencyBand&, const FrequencyBand&) = default;
};

/// All that is shown of a spectrum.
struct SpectrumScene {
    std::optional<measure::Spectrum> spectrum;
    std::optional<measure::Spectrum> maximum;  ///< that is held; of the same form
    std::vector<measure::SpectrumPeak> peaks;  ///< that are marked, highest first
    QString reason;                            ///< why there is no spectrum
    QColor color;                              ///< of the curve
    QColor background;
    QColor ink;  ///< of all else, to be told from the background
    bool is_decibel = false;
    FrequencyBand band;                            ///< that is seen
    std::array<std::optional<double>, 2> cursors;  ///< Hz, by CursorName
    std::optional<CursorName> active;
};

/// The line of a spectrum that is nearest to a frequency.
std::size_t LineNear(const measure::Spectrum& spectrum, double frequency);

/// Values of an axis that have a scale line: multiples of a step of 1, 2 or 5 times a power of ten.
struct AxisTicks {
    std::vector<double> values;
    int decimals = 0;  ///< that tell them apart
};
/// At most so many of them, between two numbers. REQUIRES: low < high, most >= 2.
AxisTicks TicksBetween(double low, double high, int most);

/// Where frequencies and amplitudes stand in a picture.
class SpectrumPlaces {
 public:
    /// Of a scene in an area; with its spectrum, or the empty axes.
    SpectrumPlaces(const SpectrumScene& scene, const QRect& area);

    /// Inside of the axes.
    [[nodiscard]] const QRect& Plot() const { return m_plot; }
    /// What the amplitude axis shows, in dB where the scene is.
    [[nodiscard]] double Lowest() const { return m_lowest; }
    [[nodiscard]] double Highest() const { return m_highest; }

    [[nodiscard]] double XOf(double frequency) const;
    [[nodiscard]] double FrequencyAt(double x) const;
    /// Of an amplitude of the spectrum; what is not in the picture stands at its border.
    [[nodiscard]] double YOf(double amplitude) const;

 private:
    void FitAmplitudes();

    const SpectrumScene& m_scene;
    QRect m_plot;
    double m_lowest = 0.0;
    double m_highest = 1.0;
};

/// Paints the scene into an area, the background too.
void PaintSpectrum(QPainter& painter, const QRect& area, const SpectrumScene& scene);

/// The place of a cursor's label.
QRect SpectrumCursorLabel(const SpectrumPlaces& places, const SpectrumScene& scene,
                          CursorName name);

/// A frequency with the digits that the spacing of the lines bears, Hz.
QString FrequencyOf(const measure::Spectrum& spectrum, double frequency);
/// An amplitude with six digits, or in dB.
QString AmplitudeText(double amplitude, bool is_decibel);

}  // namespace wavo
