#include "ui/panes/spectrum_run.h"

#include <QMetaObject>
#include <algorithm>
#include <cmath>
#include <utility>

#include "view/recorded_values.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

using measure::Told;

/// A turn ends behind it; a step of the work takes some tenths of a millisecond.
constexpr std::chrono::microseconds kTurn{1500};
constexpr std::chrono::milliseconds kLeastBetween{50};
constexpr int kShareOfTime = 5;
/// Turns after which it is told how far the work has come.
constexpr int kTurnsToAdvance = 50;

}  // namespace

SpectrumRun::SpectrumRun(CWavoView& view, QObject* parent) : QObject(parent), m_view(view) {
    connect(&view.News(), &ViewNews::BatchShown, this, &SpectrumRun::OnBatch);
    connect(&view.News(), &ViewNews::MeasureChanged, this, &SpectrumRun::Renew);
}

void SpectrumRun::SetChoice(const SpectrumChoice& choice) {
    m_choice = choice;
    Renew();
}

void SpectrumRun::SetWatched(bool watched) {
    if (std::exchange(m_is_watched, watched) == watched) {
        return;
    }
    if (watched) {
        Renew();
    } else if (m_work.IsUnderWay()) {
        m_work.Cancel();
        m_wanted.reset();
    }
}

void SpectrumRun::OnBatch() {
    const Clock::duration pause = std::max<Clock::duration>(kLeastBetween, kShareOfTime * m_spent);
    if (!m_work.IsUnderWay() && m_now() - m_begun >= pause) {
        Renew();
    }
}

Told<SpectrumRun::Wanted> SpectrumRun::FindWanted() {
    Measurements& measured = m_view.Measured();
    const auto curve = measured.SelectedCurve();
    const GraphDraw* const graph = curve ? m_view.Board().Find(curve->graph) : nullptr;
    CurveReader* const reader = curve ? measured.ReaderOf(*curve) : nullptr;
    if (graph == nullptr || reader == nullptr) {
        return Told<Wanted>::Not(curve ? "no values" : "no curve");
    }
    LineRange lines = ShownLines(*graph);
    if (m_choice.between_cursors) {
        GraphCursors& cursors = m_view.Cursors();
        cursors.Renew();
        const auto a = cursors.LineOf(CursorName::kA);
        const auto b = cursors.LineOf(CursorName::kB);
        if (!a || !b) {
            return Told<Wanted>::Not("a cursor is not on the data");
        }
        lines = {std::min(*a, *b), std::max(*a, *b) + 1};
    }
    const LineRange held = reader->Lines();
    lines = {std::max(lines.begin, held.begin), std::min(lines.end, held.end)};
    return Wanted{*curve, lines, m_choice, measured.Readers(), reader->Values().Losses()};
}

void SpectrumRun::Renew() {
    if (!m_is_watched) {
        return;
    }
    const Told<Wanted> wanted = FindWanted();
    if (!wanted) {
        m_work.Cancel();
        m_wanted.reset();
        MadeSpectrum none;
        none.spectrum = Told<measure::Spectrum>::Not(wanted.reason);
        Show(std::move(none));
    } else if (m_wanted != *wanted) {
        Begin(*wanted);
    }
}

LineValues* SpectrumRun::Values(const Wanted& wanted, const LineRange& lines) {
    CurveReader* const reader = m_view.Measured().Readers() == wanted.readers
                                    ? m_view.Measured().ReaderOf(wanted.curve)
                                    : nullptr;
    const bool are_there = reader != nullptr && lines.begin >= reader->Lines().begin &&
                           reader->Values().Losses() == wanted.losses;
    return are_there ? &reader->Values() : nullptr;
}

void SpectrumRun::Begin(const Wanted& wanted) {
    m_wanted = wanted;
    m_begun = m_now();
    m_spent = {};
    m_turns = 0;
    const measure::SpectrumSetup setup{.window = wanted.choice.window,
                                       .scale = wanted.choice.scale,
                                       .segment = wanted.choice.segment};
    m_work.Begin(wanted.lines.begin, wanted.lines.end, m_view.Work().Values().CycleTime(), setup,
                 {[this, wanted](measure::Cycle first, std::span<double> room) {
                      LineValues* const values =
                          Values(wanted, {first, first + static_cast<std::int64_t>(room.size())});
                      return values != nullptr && values->Read(first, room);
                  },
                  [this, wanted](measure::Cycle first, measure::Cycle end) {
                      LineValues* const values = Values(wanted, {first, end});
                      const auto bounds =
                          values == nullptr ? std::nullopt : values->Bounds(LineRange{first, end});
                      return bounds && std::isfinite(bounds->minimum) &&
                             std::isfinite(bounds->maximum);
                  }});
    GoOnLater();
}

void SpectrumRun::GoOnLater() {
    if (std::exchange(m_is_going_on, true)) {
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_is_going_on = false;
            GoOn();
        },
        Qt::QueuedConnection);
}

void SpectrumRun::GoOn() {
    if (!m_work.IsUnderWay()) {
        return;
    }
    const Clock::time_point begin = m_now();
    Clock::time_point now = begin;
    while (m_work.Step() && m_work.IsUnderWay() && now - begin < kTurn) {
        now = m_now();
    }
    m_spent += now - begin;
    if (!m_work.IsUnderWay()) {
        Finish();
        return;
    }
    if (++m_turns % kTurnsToAdvance == 0) {
        Q_EMIT Advanced();
    }
    GoOnLater();
}

void SpectrumRun::Finish() {
    const Wanted wanted = *m_wanted;
    const GraphDraw* const graph = m_view.Board().Find(wanted.curve.graph);
    MadeSpectrum made;
    made.curve = wanted.curve;
    made.choice = wanted.choice;
    made.lines = wanted.lines;
    made.spectrum = m_work.Take();
    if (graph != nullptr && wanted.curve.axis < graph->Lines().size()) {
        made.label = Measurements::LabelOf(graph->Graph(), wanted.curve.axis);
        made.color = graph->Lines()[wanted.curve.axis]->ShownColor();
    }
    if (made.spectrum) {
        const auto line_of = [&wanted](std::size_t place) {
            return wanted.lines.begin + static_cast<std::int64_t>(place);
        };
        made.begin = m_view.Measured().TimeOf(line_of(made.spectrum->used.first));
        made.end = m_view.Measured().TimeOf(line_of(made.spectrum->used.end - 1));
    }
    Show(std::move(made));
}

void SpectrumRun::Show(MadeSpectrum made) {
    m_last = std::move(made);
    Q_EMIT Made();
}

}  // namespace wavo
