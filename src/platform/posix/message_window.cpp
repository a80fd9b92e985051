#include "platform/message_window.h"

#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/core_window.h"
#include "platform/posix/message_packet.h"
#include "platform/posix/window_core.h"
#include "platform/posix/window_folder.h"

namespace wavo::platform {

// Only programs of one user meet here, and all have the same rights.
std::unique_ptr<MessageWindow> MessageWindow::Create(Handler handler, std::string* error,
                                                     MessageNumbers /*from_anyone*/) {
    std::string reason;
    auto core = std::make_shared<WindowCore>(std::move(handler));
    if (!core->Open(&reason)) {
        if (error != nullptr) {
            *error = reason;
        }
        return nullptr;
    }
    return std::make_unique<CoreWindow<WindowCore>>(std::move(core));
}

std::vector<WindowHandle> MessageWindows() {
    std::string error;
    const std::string folder = WindowFolder(&error);
    return folder.empty() ? std::vector<WindowHandle>{} : WindowsIn(folder);
}

bool WindowExists(WindowHandle handle) {
    if (handle == 0 || handle > kLargestWindowHandle) {
        return false;
    }
    if (LivesInProcess(handle)) {
        return true;
    }
    std::string error;
    const std::string folder = WindowFolder(&error);
    if (folder.empty()) {
        return false;
    }
    // The owner sees a connection that says nothing and goes.
    if (ConnectToWindow(folder, handle)) {
        return true;
    }
    if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
        // Nothing left to ask with: the name is the best that is known.
        struct stat info {};
        return ::lstat((folder + "/" + std::to_string(handle)).c_str(), &info) == 0 &&
               S_ISSOCK(info.st_mode);
    }
    return errno == EAGAIN;
}

}  // namespace wavo::platform
