// The table of the commands: from it menus, tool bar and status bar prompts are made.
#pragma once

#include <span>

#include "view/command_ids.h"

namespace wavo {

struct Command {
    CommandId id;
    const char* object_name;  ///< of its QAction; unique
    const char* text;         ///< "&" marks the mnemonic; "\t" begins the shortcut
    const char* status_text;  ///< prompt, "\n", tool tip; empty for none
};

/// All commands, each once.
std::span<const Command> Commands();

/// The row of a command.
const Command& FindCommand(CommandId id);

}  // namespace wavo
