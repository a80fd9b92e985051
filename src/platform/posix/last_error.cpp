#include "platform/last_error.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace wavo::platform {

namespace {

// strerror_r comes in two forms; the type of its result tells which.
[[maybe_unused]] const char* Words(const char* words, const char* /*buffer*/) {
    return words;
}
[[maybe_unused]] const char* Words(int status, const char* buffer) {
    return status == 0 ? buffer : nullptr;
}

}  // namespace

int LastError() noexcept {
    return errno;
}

void SetLastError(int error) noexcept {
    errno = error;
}

std::string ErrorText(int error) {
    const LastErrorKeeper keep;
    std::array<char, 256> buffer{};
    const char* words = Words(::strerror_r(error, buffer.data(), buffer.size()), buffer.data());
    if (words == nullptr || words[0] == '\0') {
        return "error " + std::to_string(error);
    }
    return words;
}

}  // namespace wavo::platform
