#include "failing_malloc.h"

#include <cerrno>

#include "platform/last_error.h"

namespace {

std::size_t g_smallest = 0;
std::size_t g_largest = 0;  // 0: nothing fails
int g_passed = 0;
int g_failed = 0;

bool Fails(std::size_t size) {
    if (size < g_smallest || size >= g_largest || g_passed-- > 0) {
        return false;
    }
    ++g_failed;
    wavo::platform::SetLastError(ENOMEM);
    return true;
}

}  // namespace

// What the linker puts in the place of the calls.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return Fails(size) ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return Fails(count * size) ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* memory, std::size_t size) {
    return Fails(size) ? nullptr : __real_realloc(memory, size);
}
}

namespace wavo::testing {

FailingMalloc::FailingMalloc(std::size_t smallest, std::size_t largest, int passed) {
    g_smallest = smallest;
    g_passed = passed;
    g_failed = 0;
    g_largest = largest;
}

FailingMalloc::~FailingMalloc() {
    g_largest = 0;
}

int FailingMalloc::failed() const {  // NOLINT(readability-convert-member-functions-to-static)
    return g_failed;
}

}  // namespace wavo::testing
