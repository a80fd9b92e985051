// A source of values without a master: lines of X and Y that a test gives it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "link/axis_capabilities.h"
#include "source/value_source.h"

namespace wavo::testing {

struct NoLimits : AxisLimitsSource {
    std::optional<AxisCapabilities> FindAxis(const std::string&) override { return std::nullopt; }
};

class LinesFromMemory : public ValueSource {
 public:
    void SetEvents(ValueSourceEvents* e) override { events = e; }
    MaybeFault Start() override {
        return events->Described(false), events->ValuesBegin(false), std::nullopt;
    }
    void Hold() override {}
    bool GoOn() override { return true; }
    void Stop() override {}
    BatchOutcome Take(ValueBatch& b) override {
        return b = {values.data(), values.size() / 2, 2}, BatchOutcome::kTaken;
    }
    bool Answer() override { return ++answers, true; }
    const SourceDescription& Description() const override { return description; }
    AxisLimitsSource& Limits() override { return limits; }
    bool IsPresent() const override { return true; }
    bool CanStart() const override { return false; }
    const std::string& StateText() const override { return text; }
    SourceCounters Counters() const override { return {}; }

    ValueSourceEvents* events = nullptr;
    SourceDescription description{{"X", "Y"}, 0.004};
    NoLimits limits;
    std::string text = "From memory";
    std::vector<double> values;
    int answers = 0;
};

}  // namespace wavo::testing
