// Makes allocations that may fail (`new (std::nothrow)`) fail in tests.
#pragma once

namespace wavo::testing {

/// While it lives, every array allocation with std::nothrow gives null.
class FailingMemory {
 public:
    FailingMemory();
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
};

}  // namespace wavo::testing
