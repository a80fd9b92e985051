// The questions to the user as the application asks them: each shows its dialog.
#pragma once

#include "ui/prompts.h"

namespace wavo {

/// All questions, none of them empty.
Prompts DialogPrompts();

}  // namespace wavo
