#include "platform/system_dialogs.h"

namespace wavo::platform {

// The toolkit shows dialogs of its own.
bool HasSystemDialogs() noexcept {
    return false;
}

void CancelSystemDialogs() noexcept {}

}  // namespace wavo::platform
