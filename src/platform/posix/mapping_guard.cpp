#include "platform/posix/mapping_guard.h"

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <mutex>

namespace wavo::platform {

namespace {

constexpr std::size_t kMostMappings = 4096;

// What the signal handler touches: lock-free, so that it may. A slot is in use while `begin` is
// not 0; it is written under g_lock, `begin` last when it is taken and first when it is freed.
struct Slot {
    std::atomic<std::uintptr_t> begin;
    std::atomic<std::size_t> size;
    std::atomic<bool> lost;
};
std::array<Slot, kMostMappings> g_slots;
std::atomic<std::size_t> g_used_slots{0};  ///< no slot from here on was ever used
static_assert(std::atomic<std::uintptr_t>::is_always_lock_free &&
              std::atomic<std::size_t>::is_always_lock_free &&
              std::atomic<bool>::is_always_lock_free);

std::mutex g_lock;
struct sigaction g_previous {};  ///< who had SIGBUS before

void OnBusError(int number, siginfo_t* info, void* /*context*/) {
    const bool is_fault = info->si_code > 0;
    if (is_fault && RescueMapping(info->si_addr)) {
        return;
    }
    // Not ours. A fault comes again when the instruction is repeated; a signal that was sent has
    // to be sent again, and waits until this handler returns.
    ::sigaction(number, &g_previous, nullptr);
    if (!is_fault) {
        ::raise(number);
    }
}

/// Takes SIGBUS, once. Who takes it later asks RescueMapping, or hands it on.
bool WatchBusErrors() noexcept {
    static bool is_watching = false;
    if (!is_watching) {
        struct sigaction action {};
        action.sa_sigaction = &OnBusError;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK;
        ::sigemptyset(&action.sa_mask);
        is_watching = ::sigaction(SIGBUS, &action, &g_previous) == 0;
    }
    return is_watching;
}

Slot* FindSlot(std::uintptr_t begin) noexcept {
    const std::size_t used = g_used_slots.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < used; ++i) {
        if (g_slots[i].begin.load(std::memory_order_acquire) == begin) {
            return &g_slots[i];
        }
    }
    return nullptr;
}

std::uintptr_t NumberOf(const void* address) noexcept {
    return reinterpret_cast<std::uintptr_t>(address);
}

}  // namespace

bool GuardMapping(void* address, std::size_t size) noexcept {
    const std::lock_guard guard(g_lock);
    if (!WatchBusErrors()) {
        return false;
    }
    Slot* slot = FindSlot(0);
    if (slot == nullptr) {
        const std::size_t used = g_used_slots.load();
        if (used == kMostMappings) {
            errno = ENOMEM;
            return false;
        }
        slot = &g_slots[used];
        g_used_slots.store(used + 1, std::memory_order_release);
    }
    slot->size.store(size, std::memory_order_relaxed);
    slot->lost.store(false, std::memory_order_relaxed);
    slot->begin.store(NumberOf(address), std::memory_order_release);
    return true;
}

void UnguardMapping(const void* address) noexcept {
    const std::lock_guard guard(g_lock);
    if (Slot* const slot = address == nullptr ? nullptr : FindSlot(NumberOf(address))) {
        slot->begin.store(0, std::memory_order_release);
    }
}

std::size_t GuardedSize(const void* address) noexcept {
    const Slot* const slot = address == nullptr ? nullptr : FindSlot(NumberOf(address));
    return slot == nullptr ? 0 : slot->size.load(std::memory_order_relaxed);
}

bool IsMappingLost(const void* address) noexcept {
    const Slot* const slot = address == nullptr ? nullptr : FindSlot(NumberOf(address));
    return slot != nullptr && slot->lost.load(std::memory_order_acquire);
}

bool RescueMapping(const void* fault) noexcept {
    const int error = errno;
    const std::size_t used = g_used_slots.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < used; ++i) {
        Slot& slot = g_slots[i];
        const std::uintptr_t begin = slot.begin.load(std::memory_order_acquire);
        const std::size_t size = slot.size.load(std::memory_order_relaxed);
        if (begin == 0 || NumberOf(fault) < begin || NumberOf(fault) - begin >= size) {
            continue;
        }
        slot.lost.store(true, std::memory_order_release);
        // Whole, so that a header never stands before a body of another time.
        void* const zeros = ::mmap(reinterpret_cast<void*>(begin), size, PROT_READ | PROT_WRITE,
                                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE, -1, 0);
        errno = error;
        return zeros != MAP_FAILED;
    }
    errno = error;
    return false;
}

}  // namespace wavo::platform
