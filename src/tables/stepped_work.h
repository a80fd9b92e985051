// Work that may take long and is done in steps, so that whoever has it done can show how far it is
// and give it up in between: by destroying it.
#pragma once

#include "support/fault.h"

namespace wavo::tables {

enum class StepState { kWorking, kDone, kFailed };

class SteppedWork {
 public:
    SteppedWork() = default;
    virtual ~SteppedWork() = default;
    SteppedWork(const SteppedWork&) = delete;
    SteppedWork& operator=(const SteppedWork&) = delete;

    /// Works for some milliseconds. Once it is done or has failed, it says so again.
    virtual StepState Step() = 0;

    /// How much is done: 0 to 1.
    [[nodiscard]] virtual double Part() const = 0;

    /// Why it failed, in words that name the file. REQUIRES: Step gave kFailed.
    [[nodiscard]] virtual const Fault& Why() const = 0;
};

}  // namespace wavo::tables
