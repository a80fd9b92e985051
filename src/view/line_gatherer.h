// Gathers the lines that a test evaluates: those that come while values flow, what stopped buffers
// hold, or what is seen of the recording that is open.
//
// It refers to nothing that may go: buffers and recordings are looked up each time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "session/session.h"
#include "session/tapped_lines.h"
#include "view/past_view.h"

namespace wavo {

/// Which lines there are to evaluate now.
struct GatheredLines {
    std::uint64_t recording = 0;  ///< its number; 0: live values
    bool is_tapped = false;       ///< they were taken as they came
    LineRange lines;
    double cycle_time = 0.0;        ///< seconds per line
    std::uint64_t definitions = 0;  ///< number of those of the computed axes

    friend bool operator==(const GatheredLines&, const GatheredLines&) = default;
};

class LineGatherer {
 public:
    /// Lines of one Copy.
    static constexpr std::int64_t kLinesPerCopy = 8192;

    /// None of the references is owned; all outlive this object.
    LineGatherer(Session& session, const PastView& past) : m_session(session), m_past(past) {}
    ~LineGatherer() { Forget(); }
    LineGatherer(const LineGatherer&) = delete;
    LineGatherer& operator=(const LineGatherer&) = delete;
    LineGatherer(LineGatherer&&) = delete;
    LineGatherer& operator=(LineGatherer&&) = delete;

    /// Takes these columns as they come, from now on. Nothing when it does already. Behind a
    /// recording it goes on with those of the live values, if they are the same.
    void Take(const std::vector<std::string>& columns);
    /// Other columns are wanted. Those of the live values are kept while a recording is open.
    void Leave();
    void Forget();
    [[nodiscard]] bool IsTaking() const { return m_tapped != nullptr; }

    /// Values flow, and no recording is open.
    [[nodiscard]] bool IsLive() const;
    [[nodiscard]] GatheredLines Now() const;
    /// Where they come from, for reports: "live", or the path of the recording.
    [[nodiscard]] std::string Name() const;

    /// The first of the columns that are taken, as many as there are spans, from line `first` on;
    /// NaN where there is no value. Nothing of those whose span is empty. False: what was to be
    /// copied has gone.
    bool Copy(const GatheredLines& what, std::int64_t first,
              std::span<const std::span<double>> columns) const;

    /// Of the lines that are taken as they come those before this one are not needed any more.
    void KeepFrom(std::int64_t line);

 private:
    void Drop(std::unique_ptr<TappedLines>& tapped);
    /// The buffer of an axis' values themselves; null when there is none.
    [[nodiscard]] const GraphValue* BufferOf(const std::string& axis) const;

    Session& m_session;
    const PastView& m_past;
    std::unique_ptr<TappedLines> m_tapped;
    std::unique_ptr<TappedLines> m_live;  ///< what was taken before the recording was opened
    bool m_takes_live = false;            ///< no recording was open when it began to take
};

}  // namespace wavo
