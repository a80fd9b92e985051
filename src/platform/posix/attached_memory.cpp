#include "platform/posix/attached_memory.h"

#include <sys/shm.h>

#include <cerrno>

namespace wavo::platform {

int ProcessesAttached(int key) noexcept {
    const int id = ::shmget(key, 0, 0);
    shmid_ds state{};
    if (id >= 0 && ::shmctl(id, IPC_STAT, &state) == 0 && ::shmget(key, 0, 0600) >= 0) {
        return static_cast<int>(state.shm_nattch);
    }
    return errno == EACCES || errno == EPERM ? kMemoryOfAnotherUser : kNoSuchMemory;
}

}  // namespace wavo::platform
