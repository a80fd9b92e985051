#include "tables/levels_work.h"

namespace wavo::tables {

namespace {

/// Of a step, some milliseconds.
constexpr std::size_t kChunksPerStep = 2;

}  // namespace

StepState LevelsWork::Step() {
    m_due = m_reader.SettleLevels(kChunksPerStep);
    return m_due == 0 ? StepState::kDone : StepState::kWorking;
}

}  // namespace wavo::tables
