// Where lines go that are to be written.
#pragma once

#include "recorder/line_block.h"
#include "recording/recording_event.h"

namespace wavo::recorder {

class RecordSink {
 public:
    virtual ~RecordSink() = default;
    /// A recording begins; all that follows belongs to it, until it ends.
    virtual void BeginFile() = 0;
    /// Lines behind those before. `is_history`: they are from before, which may take more room than
    /// the queue has. False when they were dropped because the disk is too slow.
    virtual bool TakeLines(LineBlock block, bool is_history) = 0;
    virtual void TakeEvent(const recording::Event& event) = 0;
    virtual void EndFile() = 0;
};

}  // namespace wavo::recorder
