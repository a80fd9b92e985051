// Going from place to place in a recording: where the triggers of a graph fire, and what happened.
//
// A search that takes long shows how far it has come, can be cancelled, and lets events be handled
// meanwhile. There is one at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "graph/values/condition_search.h"
#include "view/command_target.h"
#include "view/past_view.h"

class QWidget;

namespace wavo {

class ExportProgress;

class PastSearch final : public CommandTarget {
 public:
    using Clock = std::function<std::chrono::milliseconds()>;

    /// None of the references is owned; all outlive this object. `selected`: the number of the
    /// graph whose triggers count. The progress stands over `parent`. `clock` only ever goes
    /// forward.
    PastSearch(Session& session, PastView& past, std::function<std::uint32_t()> selected,
               QWidget& parent, Clock clock);
    ~PastSearch() override;
    PastSearch(const PastSearch&) = delete;
    PastSearch& operator=(const PastSearch&) = delete;

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;

    /// Ends a search that is under way.
    void Cancel() { m_is_cancelled = true; }

    /// Takes the time from `clock`, for tests.
    void SetClock(Clock clock) { m_clock = std::move(clock); }

 private:
    /// The conditions of the graph that the recording can answer.
    [[nodiscard]] std::vector<ConditionTerm> Terms() const;
    [[nodiscard]] const WavoGraph* Graph() const;
    /// Where searching begins: the place that was gone to, while it is seen, else a border.
    [[nodiscard]] std::int64_t Begin(bool forward) const;
    void GoToTrigger(bool forward);
    void GoToEvent(bool forward);
    bool GoOn(std::int64_t from, std::int64_t line, std::int64_t last);

    Session& m_session;
    PastView& m_past;
    const std::function<std::uint32_t()> m_selected;
    QWidget& m_parent;
    Clock m_clock;

    bool m_is_under_way = false;
    bool m_is_cancelled = false;
    std::uint64_t m_recording = 0;               // that is searched
    std::unique_ptr<ExportProgress> m_progress;  // while it shows
    std::chrono::milliseconds m_begin{};
    std::chrono::milliseconds m_events_handled{};
};

}  // namespace wavo
