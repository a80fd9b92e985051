#include "failing_memory.h"

#include <cstddef>
#include <new>

namespace {

bool g_failing = false;

}  // namespace

// Replaces the library's: the ordinary form serves, but for the failure.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (g_failing) {
        return nullptr;
    }
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace wavo::testing {

FailingMemory::FailingMemory() {
    g_failing = true;
}
FailingMemory::~FailingMemory() {
    g_failing = false;
}

}  // namespace wavo::testing
