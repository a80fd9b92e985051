// A source of values that stands for one of two: the live one, or another one that takes its place
// for a while.
//
// Invariants:
// 1. The live source is left while the other one is shown; what it tells of itself meanwhile is not
//    passed on. That the program is to end is.
// 2. The live source that is taken up again goes on as one that has come back by itself: nobody has
//    asked for a new begin.
// 3. Counters are always those of the live source: the other one counts nothing.
#pragma once

#include <optional>
#include <string>

#include "link/axis_capabilities.h"
#include "source/value_source.h"

namespace wavo {

class SourceSwitch final : public ValueSource, private ValueSourceEvents {
 public:
    /// `live` is not owned and outlives the switch.
    explicit SourceSwitch(ValueSource& live) : m_live(live), m_shown(&live), m_limits(*this) {}

    /// Leaves the live source, if it is shown, and shows another one, not owned, in its place.
    void Show(ValueSource& other);
    /// Shows the live source again. Nobody is told, and no values come before TakeUp or Start.
    void ShowLive();
    /// Looks for the values of the live source; what is shown goes on with them as far as it can.
    void TakeUp();
    [[nodiscard]] bool IsLive() const { return m_shown == &m_live; }
    [[nodiscard]] ValueSource& Live() { return m_live; }

    // ValueSource
    void SetEvents(ValueSourceEvents* events) override;
    MaybeFault Start() override;
    void SetComesBack(bool comes_back) override;
    void Hold() override;
    bool GoOn() override { return m_shown->GoOn(); }
    void Stop() override;
    BatchOutcome Take(ValueBatch& batch) override;
    bool Answer() override { return m_shown->Answer(); }
    [[nodiscard]] const SourceDescription& Description() const override {
        return m_shown->Description();
    }
    [[nodiscard]] AxisLimitsSource& Limits() override { return m_limits; }
    [[nodiscard]] bool IsPresent() const override { return m_shown->IsPresent(); }
    [[nodiscard]] bool CanStart() const override { return m_shown->CanStart(); }
    [[nodiscard]] const std::string& StateText() const override { return m_shown->StateText(); }
    [[nodiscard]] SourceCounters Counters() const override { return m_live.Counters(); }

 private:
    /// The limits of the source that is shown when they are asked for.
    class ShownLimits final : public AxisLimitsSource {
     public:
        explicit ShownLimits(SourceSwitch& owner) : m_owner(owner) {}
        std::optional<AxisCapabilities> FindAxis(const std::string& name) override {
            return m_owner.m_shown->Limits().FindAxis(name);
        }

     private:
        SourceSwitch& m_owner;
    };

    // ValueSourceEvents, of the live source
    bool BatchReady() override { return IsLive() && m_events->BatchReady(); }
    void Described(bool by_itself) override;
    void StateChanged() override;
    void ValuesBegin(bool by_itself) override;
    void Closed() override { m_events->Closed(); }
    void Ended() override { m_events->Ended(); }
    void Quit() override { m_events->Quit(); }
    void ShowFault(const std::string& text) override;
    void ShowBatchFault(const std::string& text) override;

    ValueSource& m_live;
    ValueSource* m_shown;
    ShownLimits m_limits;
    ValueSourceEvents* m_events = nullptr;
    bool m_comes_back = false;
    bool m_is_taken_up = false;  // and its values have not begun yet
};

}  // namespace wavo
