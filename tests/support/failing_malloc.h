// Makes allocations fail. For programs that are linked with --wrap for malloc, calloc and realloc.
#pragma once

#include <cstddef>
#include <limits>

namespace wavo::testing {

/// For the time that the object lives, allocations of our libraries of at least `smallest` and
/// less than `largest` bytes fail, after `passed` that succeed.
class FailingMalloc {
 public:
    explicit FailingMalloc(std::size_t smallest,
                           std::size_t largest = std::numeric_limits<std::size_t>::max(),
                           int passed = 0);
    ~FailingMalloc();
    FailingMalloc(const FailingMalloc&) = delete;
    FailingMalloc& operator=(const FailingMalloc&) = delete;

    /// How many failed.
    [[nodiscard]] int failed() const;
};

}  // namespace wavo::testing
