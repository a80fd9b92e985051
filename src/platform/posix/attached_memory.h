// Memory that processes share under a number (System V), looked at from outside.
#pragma once

namespace wavo::platform {

inline constexpr int kNoSuchMemory = -1;
inline constexpr int kMemoryOfAnotherUser = -2;

/// How many processes have the segment `key` mapped; kNoSuchMemory or kMemoryOfAnotherUser where
/// that cannot be told. The segment is not touched.
int ProcessesAttached(int key) noexcept;

}  // namespace wavo::platform
