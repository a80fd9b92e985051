// The road of the values: from the source's announcement of a batch to the value buffers of the
// graphs, and the answer to the source.
//
// Invariants:
// 1. Each successful batch is answered exactly once: after it was drawn when running, at once when
//    stopped. A refused or failed batch gets no answer.
// 2. Every line that was read is counted in TotalLines, running or not; Counters accounts for every
//    line and every batch.
// 3. Curves begin anew behind lines that were lost; behind a link that came back by itself they go
//    on after missing values. Nothing is joined across a gap.
// 4. Everything happens on the user interface thread. A message box runs an event loop, so that any
//    handler can be entered while another one waits for its box.
// 5. A batch that is announced while another one waits for its box is taken and answered when that
//    closes; announced several times, it is one batch.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "graph/model/graph_list.h"
#include "session/link_counters.h"
#include "session/session_observer.h"
#include "session/value_streams.h"
#include "source/value_source.h"
#include "support/color_ref.h"
#include "support/ordered_mutex.h"

namespace wavo {

/// Where the time of a batch went.
struct BatchTimes {
    std::chrono::nanoseconds drawing{0};   ///< drawn, and shown where the view is visible
    std::chrono::nanoseconds to_ready{0};  ///< from the announcement until the answer was taken
};

class Acquisition final : private ValueSourceEvents {
 public:
    using Clock = std::chrono::steady_clock;

    /// None of the references is owned; all outlive this object. `background` is that of the
    /// graphs: a new curve contrasts with it.
    Acquisition(ValueSource& source, GraphList& graphs, ValueStreams& streams,
                SessionObserver& observer, OrderedMutex& value_lock, const ColorRef& background);

    /// The command: starts the source, with a box on failure.
    void ConnectByUser();

    /// Gives the graphs and the axes to the graph editor anew.
    void InitialiseEditor();

    /// Makes all graphs anew and shows them.
    void RebuildGraphs();

    /// The source of before is shown again, and document and buffers are those of then: tells of
    /// it, and shows the graphs. Its values may go on as if they had come back by themselves.
    void TakeUp();

    /// How a default graph is scaled whose axis has no limits.
    enum class DefaultScale { kFixed, kAutomatic };
    /// Makes a default graph where there is none, of the axes that are known.
    void AddGraphIfNone(DefaultScale scale = DefaultScale::kFixed);

    /// Answers the batch that was drawn, if any: the end of each drawing step.
    void AnswerDrawn();

    /// True = values go into the graphs.
    void SetRunning(bool running);
    [[nodiscard]] bool IsRunning() const { return m_running; }

    [[nodiscard]] std::uint64_t TotalLines() const { return m_total_lines; }
    [[nodiscard]] LinkCounters Counters() const;
    /// How long the batch took that was answered last.
    [[nodiscard]] const BatchTimes& LastBatchTimes() const { return m_batch_times; }
    [[nodiscard]] ValueSource& Source() const { return m_source; }
    /// Seconds per line; 0 before the first master.
    [[nodiscard]] double CycleTime() const { return m_source.Description().cycle_time; }
    [[nodiscard]] const std::vector<std::string>& AxisNames() const {
        return m_source.Description().axis_names;
    }

    /// Shows a hint in the status bar in place of what is said of the source; empty: no more.
    void ShowHint(const std::string& text);

    /// Takes the time from `now`, for tests.
    void SetClock(std::function<Clock::time_point()> now) { m_now = std::move(now); }

 private:
    // ValueSourceEvents
    bool BatchReady() override;
    void Described(bool by_itself) override;
    void StateChanged() override;
    void ValuesBegin(bool by_itself) override;
    void Closed() override;
    void Ended() override;
    void Quit() override;
    void ShowFault(const std::string& text) override { m_observer.ShowError(text); }
    void ShowBatchFault(const std::string& text) override;

    /// What is under way with the batch of now.
    enum class BatchState {
        kNone,
        kTaking,     ///< it is being taken, perhaps waiting for a message box
        kOwed,       ///< its values are in the graphs; the answer follows the drawing
        kAnswering,  ///< the answer is on its way. Handlers run meanwhile: a new batch may be drawn
    };

    void ShowCycleTime();
    /// All graphs are being drawn.
    bool RefuseBatch();
    bool TakeBatch(Clock::time_point announced);
    bool Receive(ValueBatch& batch);
    void TakeGraphs(DefaultScale scale);
    void AddDefaultGraph(DefaultScale scale);
    /// Puts missing values where a link that came back by itself had none.
    void FillGap(const ValueBatch& batch);
    void Answer();

    ValueSource& m_source;
    GraphList& m_graphs;
    ValueStreams& m_streams;
    SessionObserver& m_observer;
    OrderedMutex& m_value_lock;
    const ColorRef& m_background;

    std::uint64_t m_total_lines = 0;  // since the link was ended last
    LinkCounters m_counters;          // without those of the source
    SourceDescription m_edited;       // what the graph editor knows of the source
    BatchState m_batch = BatchState::kNone;
    std::optional<Clock::time_point> m_next_announced;  // while another one was being taken
    std::vector<std::string> m_boxes_closed;            // since the last batch from outside
    bool m_running = true;
    bool m_is_new = false;         // the lines to come are not of the same axes as those before
    bool m_gap_waits = false;      // before the lines to come some are missing
    bool m_refusal_shown = false;  // the box that a batch came while drawing waits
    BatchTimes m_batch_times;
    Clock::time_point m_batch_begin{};
    Clock::time_point m_draw_begin{};
    std::optional<Clock::time_point> m_last_values;  // when lines came last
    std::function<Clock::time_point()> m_now = Clock::now;
};

}  // namespace wavo
