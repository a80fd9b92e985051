// Mappings that outlive the truncation of what they map.
//
// Whoever may write a segment may also cut it short, and the next access to a page that is gone
// raises SIGBUS. For a guarded mapping the signal is no end: the whole mapping is replaced by
// zeros of this process' own, the access is repeated and the mapping counts as lost.
//
// Invariants:
// 1. Each guarded mapping begins at its own address; no two overlap.
// 2. A SIGBUS anywhere else goes to whoever had the signal before, as if nothing stood between.
#pragma once

#include <cstddef>

namespace wavo::platform {

/// Guards the mapping of `size` bytes at `address`. False when there are too many of them.
bool GuardMapping(void* address, std::size_t size) noexcept;

/// Forgets a mapping; nothing for one that is not guarded. Called before it is unmapped.
void UnguardMapping(const void* address) noexcept;

/// Size of the guarded mapping that begins at `address`; 0 when there is none.
std::size_t GuardedSize(const void* address) noexcept;

/// Whether the mapping that begins at `address` was replaced by zeros.
bool IsMappingLost(const void* address) noexcept;

/// For signal handlers: when `fault` lies in a guarded mapping, replaces that mapping by zeros and
/// returns true; the access can then be repeated.
bool RescueMapping(const void* fault) noexcept;

}  // namespace wavo::platform
