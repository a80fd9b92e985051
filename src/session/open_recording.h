// A recording that is looked at in place of the live values: what it holds, by the names of axes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "computed/computed_source.h"
#include "computed/computed_streams.h"
#include "link/axis_capabilities.h"
#include "recording/recording_history.h"
#include "recording/recording_names.h"
#include "recording/recording_reader.h"
#include "source/history.h"
#include "source/value_source.h"
#include "support/fault.h"

namespace wavo {

/// A recording as a source of values that brings none: axes, limits and cycle time are known, the
/// values are asked for.
class RecordingSource final : public ValueSource, private AxisLimitsSource {
 public:
    /// `reader` is not owned and outlives the source.
    explicit RecordingSource(recording::RecordingReader& reader);

    /// Looks anew at what there is to tell of the recording. `next`: the file name of the one
    /// behind it; empty for none.
    void Renew(const std::string& next = {});

    // ValueSource
    void SetEvents(ValueSourceEvents* events) override { m_events = events; }
    MaybeFault Start() override { return std::nullopt; }
    void Hold() override {}
    bool GoOn() override;
    void Stop() override {}
    BatchOutcome Take(ValueBatch& batch) override;
    bool Answer() override { return false; }
    [[nodiscard]] const SourceDescription& Description() const override { return m_description; }
    [[nodiscard]] AxisLimitsSource& Limits() override { return *this; }
    [[nodiscard]] bool IsPresent() const override { return true; }
    [[nodiscard]] bool CanStart() const override { return false; }
    [[nodiscard]] const std::string& StateText() const override { return m_text; }
    [[nodiscard]] SourceCounters Counters() const override { return {}; }

 private:
    // AxisLimitsSource
    std::optional<AxisCapabilities> FindAxis(const std::string& name) override;

    recording::RecordingReader& m_reader;
    SourceDescription m_description;
    std::string m_text;
    ValueSourceEvents* m_events = nullptr;
};

/// Which recording is opened, and what it is to the user.
struct RecordingToOpen {
    std::string path;                              ///< UTF-8
    std::string source = {};                       ///< the file that it was made of; empty: none
    std::vector<std::string> notices = {};         ///< what the user should know of that file
    std::shared_ptr<const void> keeper = nullptr;  ///< goes when the recording is read no more
};

class OpenRecording {
 public:
    static Expected<std::unique_ptr<OpenRecording>> Open(RecordingToOpen opened);

    /// The file that the user has opened.
    [[nodiscard]] const std::string& Path() const {
        return m_opened.source.empty() ? m_opened.path : m_opened.source;
    }
    /// How it was opened: it can be again.
    [[nodiscard]] const RecordingToOpen& Opened() const { return m_opened; }
    /// What the user should know of that file, beside the notices of the reader.
    [[nodiscard]] const std::vector<std::string>& Notices() const { return m_opened.notices; }
    /// Tells it from every other one that was opened, also from one that has its address.
    [[nodiscard]] std::uint64_t Number() const { return m_number; }
    [[nodiscard]] recording::RecordingReader& Reader() { return *m_reader; }
    [[nodiscard]] RecordingSource& Source() { return m_source; }
    /// What drawings may read until it is renewed.
    [[nodiscard]] recording::ReadingBudget& Budget() { return m_budget; }

    /// The lines that it reaches over; gaps in between count.
    [[nodiscard]] LineRange Lines() const;
    /// Seconds per line.
    [[nodiscard]] double CycleTime() const { return m_reader->Head().cycle_time; }

    /// The past of an axis with an order of derivation, which stays as long as the recording; null
    /// for an axis that it has not. REQUIRES: order >= 0.
    [[nodiscard]] History* StreamOf(const std::string& axis_name, std::int32_t order);
    /// Whether the extremes of a stream are known from far, without its lines.
    [[nodiscard]] bool HasLevels(const std::string& axis_name, std::int32_t order) const;

    /// Lets StreamOf also have the axes that `definitions` computes, from now on and as they
    /// change. Not owned, outlives the recording. Streams of former definitions stay, too.
    void SetComputed(const computed::ComputedSource& definitions) { m_computed = &definitions; }

    /// The graph file that came with it; nothing when there is none that can be read.
    [[nodiscard]] const std::optional<recording::GraphFile>& GraphsInside() const {
        return m_graphs;
    }

    /// Takes in what was written since. True when there is more.
    bool Refresh();

    /// The recordings before and behind it in a series of files, as LookAround has found them.
    [[nodiscard]] const recording::Neighbours& Around() const { return m_around; }
    /// Looks for them anew. True when they are others.
    bool LookAround();
    /// Looks anew at what its source tells of it.
    void RenewText();

 private:
    /// The streams of the computed axes; null when there are none.
    computed::ComputedStreams* Computed();
    OpenRecording(RecordingToOpen opened, std::unique_ptr<recording::RecordingReader> reader);

    const std::uint64_t m_number;
    const RecordingToOpen m_opened;  // goes behind the reader
    std::unique_ptr<recording::RecordingReader> m_reader;
    RecordingSource m_source;
    recording::ReadingBudget m_budget;
    std::optional<recording::GraphFile> m_graphs;
    recording::Neighbours m_around;
    std::map<std::pair<std::size_t, std::int32_t>, recording::RecordingHistory> m_streams;
    const computed::ComputedSource* m_computed = nullptr;
    std::uint64_t m_generation = 0;  // of the definitions that the last of these is for
    std::vector<std::unique_ptr<computed::ComputedStreams>> m_computed_streams;
};

}  // namespace wavo
