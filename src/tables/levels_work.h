// Finds the minima and maxima of a recording that another program has written without them, in
// steps: all of its lines are read once.
#pragma once

#include <cstddef>

#include "recording/recording_reader.h"
#include "tables/stepped_work.h"

namespace wavo::tables {

class LevelsWork final : public SteppedWork {
 public:
    /// `reader` is not owned and outlives the work.
    explicit LevelsWork(recording::RecordingReader& reader)
        : m_reader(reader), m_all(reader.SettleLevels(0)), m_due(m_all) {}

    // SteppedWork
    StepState Step() override;
    [[nodiscard]] double Part() const override {
        return m_due == 0 ? 1.0 : 1.0 - static_cast<double>(m_due) / static_cast<double>(m_all);
    }
    /// Never asked: what cannot be read is a gap.
    [[nodiscard]] const Fault& Why() const override { return m_none; }

 private:
    recording::RecordingReader& m_reader;
    const std::size_t m_all;  // chunks
    std::size_t m_due;
    const Fault m_none;
};

}  // namespace wavo::tables
