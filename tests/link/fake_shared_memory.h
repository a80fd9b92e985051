// Shared memory inside the test process, in the place of the platform's: segments by name, a log
// of the calls, and failures on demand. Linked instead of the platform's own calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/shared_memory.h"

namespace wavo::testing {

/// Starts anew: no segments, no calls, no failures.
void ResetFakeSharedMemory();

/// Makes a segment of `size` zero bytes, aligned to 8 plus `misalignment`, and returns its memory.
std::byte* AddFakeSegment(const std::string& name, std::size_t size, std::size_t misalignment = 0);

/// Forgets the name; a mapping stays.
void RemoveFakeSegment(const std::string& name);

/// What is told of the segment of that name after `questions` more questions.
void SetFakeState(const std::string& name, platform::SegmentState state, int questions = 0);

enum class FakeFailure { kMap, kUnmap, kClose };
/// Makes the next call of that kind fail with the system error `error`.
void FailNext(FakeFailure call, int error);

/// The calls so far: "open NAME", "map", "unmap", "close".
const std::vector<std::string>& FakeCalls();

}  // namespace wavo::testing
