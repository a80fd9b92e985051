// A source of values that adds computed axes to those of another one, whichever that is.
//
// Invariants:
// 1. The computed axes are listed behind the other source's own, while it has any; without computed
//    axes nothing differs from it.
// 2. A line is computed of itself and of the line before, whatever batches they came in. In the
//    first line of values that begin anew prev() is the value itself and d() therefore 0, as a
//    velocity begins; in the first line behind a gap both are missing.
// 3. What is wrong with the axes stands behind the other source's text about itself.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "computed/computed_axis.h"
#include "computed/computed_program.h"
#include "link/axis_capabilities.h"
#include "source/value_source.h"

namespace wavo::computed {

class ComputedSource final : public ValueSource, private ValueSourceEvents {
 public:
    /// `source` is not owned and outlives this object.
    explicit ComputedSource(ValueSource& source) : m_source(source), m_limits(*this) {}

    /// Computes these axes from the next batch on. Whoever knows the description has to be told by
    /// the caller. Returns the names of axes whose values do not go on: new and changed ones.
    std::vector<std::string> Define(std::vector<ComputedAxis> definitions);
    [[nodiscard]] const std::vector<ComputedAxis>& Definitions() const { return m_definitions; }
    /// Another number whenever there are other definitions.
    [[nodiscard]] std::uint64_t Generation() const { return m_generation; }
    /// What they are for the axes that are there.
    [[nodiscard]] const ComputedProgram& Program() const { return m_program; }
    /// Units of the computed axes that are there and have one, by their names.
    [[nodiscard]] std::map<std::string, std::string> Units() const;
    /// The axes that are there without the computed ones.
    [[nodiscard]] const std::vector<std::string>& SourceNames() const {
        return m_source.Description().axis_names;
    }

    // ValueSource
    void SetEvents(ValueSourceEvents* events) override;
    MaybeFault Start() override { return m_source.Start(); }
    void SetComesBack(bool comes_back) override { m_source.SetComesBack(comes_back); }
    void Hold() override { m_source.Hold(); }
    bool GoOn() override { return m_source.GoOn(); }
    void Stop() override { m_source.Stop(); }
    BatchOutcome Take(ValueBatch& batch) override;
    bool Answer() override { return m_source.Answer(); }
    [[nodiscard]] const SourceDescription& Description() const override;
    [[nodiscard]] AxisLimitsSource& Limits() override { return m_limits; }
    [[nodiscard]] bool IsPresent() const override { return m_source.IsPresent(); }
    [[nodiscard]] bool CanStart() const override { return m_source.CanStart(); }
    [[nodiscard]] const std::string& StateText() const override;
    [[nodiscard]] SourceCounters Counters() const override { return m_source.Counters(); }

 private:
    /// Limits are known of the other source's axes only.
    class SourceLimits final : public AxisLimitsSource {
     public:
        explicit SourceLimits(ComputedSource& owner) : m_owner(owner) {}
        std::optional<AxisCapabilities> FindAxis(const std::string& name) override;

     private:
        ComputedSource& m_owner;
    };
    /// What is known of the line before the next one.
    enum class Before { kNothing, kGap, kLine };

    // ValueSourceEvents, of the other source
    bool BatchReady() override { return m_events->BatchReady(); }
    void Described(bool by_itself) override;
    void StateChanged() override { m_events->StateChanged(); }
    void ValuesBegin(bool by_itself) override;
    void Closed() override { m_events->Closed(); }
    void Ended() override { m_events->Ended(); }
    void Quit() override { m_events->Quit(); }
    void ShowFault(const std::string& text) override { m_events->ShowFault(text); }
    void ShowBatchFault(const std::string& text) override { m_events->ShowBatchFault(text); }

    void MakeProgram();
    void Compute(ValueBatch& batch);
    /// Those of a batch with room for the computed axes, of which the first ones have NoSample()
    /// before them.
    [[nodiscard]] std::span<const Column> ColumnsOf(const ValueBatch& wide);
    /// What the user should know of the definitions; empty: nothing.
    [[nodiscard]] std::string Notes() const;

    ValueSource& m_source;
    SourceLimits m_limits;
    ValueSourceEvents* m_events = nullptr;
    std::vector<ComputedAxis> m_definitions;
    std::uint64_t m_generation = 0;
    ComputedProgram m_program;
    SourceDescription m_described;    ///< the other source's, that the program is for
    SourceDescription m_description;  ///< with the computed axes
    bool m_is_new = true;             ///< it has changed since values began
    Before m_before = Before::kNothing;
    std::vector<double> m_last;  ///< the line before; NoSample(): what comes is the first value
    std::vector<double> m_lines;
    std::vector<Column> m_columns;
    mutable std::string m_text;
};

}  // namespace wavo::computed
