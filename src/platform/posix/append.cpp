#include "platform/append.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/descriptor.h"

namespace wavo::platform {

bool AppendToFile(const std::string& path, std::string_view bytes) noexcept {
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
    if (!file) {
        return false;
    }
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.number(), bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace wavo::platform
