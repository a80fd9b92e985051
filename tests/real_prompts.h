// The questions of the application, for tests that replace some of them or none.
#pragma once

#include "ui/dialogs/dialog_prompts.h"

namespace wavo::testing {

/// Those that show their dialogs.
inline const Prompts& RealPrompts() {
    static const Prompts prompts = DialogPrompts();
    return prompts;
}

}  // namespace wavo::testing
