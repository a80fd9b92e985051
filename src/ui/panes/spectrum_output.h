// What leaves the pane "Spectrum": its words, its lines as text, the page that is saved and
// printed.
#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <cstddef>

#include "ui/panes/spectrum_picture.h"
#include "ui/panes/spectrum_run.h"

namespace wavo {

/// What a spectrum was made of, in words; empty where there is none. `cycle_time` in seconds.
/// `collected`: spectra that an average or a maximum is of, 0 for neither.
QString DescriptionOf(const MadeSpectrum& made, double cycle_time, std::size_t collected);

/// What the cursors read; empty where there is none.
QString CursorsTextOf(const SpectrumScene& scene);

/// The spectrum as comma separated values with all digits: a line of titles, then a line per
/// frequency. Amplitudes are linear.
QString CsvOfSpectrum(const SpectrumScene& scene);

/// The peaks as text, apart by tabs.
QString TextOfPeaks(const SpectrumScene& scene);

/// A page with a spectrum.
struct SpectrumPage {
    QString curve;
    QString description;
    QString cursors;
    const SpectrumScene& scene;  ///< not owned
};

/// `size` in logical pixels.
QImage PictureOf(const SpectrumPage& page, const QSize& size, double device_ratio);

}  // namespace wavo
