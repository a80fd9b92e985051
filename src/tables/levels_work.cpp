#include "tables/levels_work.h"

#include <algorithm>

namespace wavo::tables {

StepState LevelsWork::Step() {
    if (!m_reader.MakeNextLevels()) {
        return StepState::kDone;
    }
    m_done = std::min(m_done + 1, m_all);
    return StepState::kWorking;
}

}  // namespace wavo::tables
