// Has the spectrum of the selected curve made, between the events of the view.
//
// While values flow a new one is begun with a batch, at most twenty times a second, and seldom
// enough to leave four fifths of the time to others. Work is done in turns that are shorter than
// 2 ms: no batch waits for more than one of them.
#pragma once

#include <QColor>
#include <QObject>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "measure/spectrum_work.h"
#include "view/measurements.h"

namespace wavo {

class CWavoView;

/// What the user wants to see.
struct SpectrumChoice {
    bool between_cursors = false;  ///< else what the curve's graph shows
    measure::Window window = measure::Window::kHann;
    measure::SpectrumScale scale = measure::SpectrumScale::kPeak;
    std::size_t segment = 0;  ///< values of averaged segments; 0: all in one

    friend bool operator==(const SpectrumChoice&, const SpectrumChoice&) = default;
};

struct MadeSpectrum {
    CurveId curve;
    std::string label;  ///< of the curve
    QColor color;       ///< the curve is drawn with
    SpectrumChoice choice;
    LineRange lines;     ///< that were asked for
    double begin = 0.0;  ///< times of the first and the last value that took part, as the cursors
    double end = 0.0;    ///< have them, s
    measure::Told<measure::Spectrum> spectrum = measure::Told<measure::Spectrum>::Not("no curve");
};

class SpectrumRun final : public QObject {
    Q_OBJECT

 public:
    using Clock = std::chrono::steady_clock;

    /// `view` is not owned and outlives the run.
    SpectrumRun(CWavoView& view, QObject* parent);

    [[nodiscard]] const SpectrumChoice& Choice() const { return m_choice; }
    void SetChoice(const SpectrumChoice& choice);

    /// Somebody looks at the spectrum, or nobody: then none is made.
    void SetWatched(bool watched);

    /// The one that was made last.
    [[nodiscard]] const MadeSpectrum& Last() const { return m_last; }
    [[nodiscard]] bool IsUnderWay() const { return m_work.IsUnderWay(); }
    [[nodiscard]] double Share() const { return m_work.Share(); }

    /// Takes the time from `now`, for tests.
    void SetClock(std::function<Clock::time_point()> now) { m_now = std::move(now); }

 Q_SIGNALS:
    /// Another spectrum was made, or there is none.
    void Made();
    /// One that takes long has come further.
    void Advanced();

 private:
    /// What a spectrum is made of.
    struct Wanted {
        CurveId curve;
        LineRange lines;
        SpectrumChoice choice;
        std::uint64_t readers = 0;  ///< Measurements::Readers
        std::uint64_t losses = 0;   ///< of its values
        friend bool operator==(const Wanted&, const Wanted&) = default;
    };

    void OnBatch();
    /// Begins the one that is wanted now, if that is another one.
    void Renew();
    [[nodiscard]] measure::Told<Wanted> FindWanted();
    void Begin(const Wanted& wanted);
    [[nodiscard]] LineValues* Values(const Wanted& wanted, const LineRange& lines);
    void GoOnLater();
    void GoOn();
    void Finish();
    void Show(MadeSpectrum made);

    CWavoView& m_view;
    SpectrumChoice m_choice;
    bool m_is_watched = false;
    measure::SpectrumWork m_work;
    std::optional<Wanted> m_wanted;  ///< that is being made, or was made last
    MadeSpectrum m_last;
    bool m_is_going_on = false;  ///< a turn is on its way
    std::function<Clock::time_point()> m_now = Clock::now;
    Clock::time_point m_begun{};  ///< the last one
    Clock::duration m_spent{};    ///< on it
    int m_turns = 0;              ///< the same
};

}  // namespace wavo
