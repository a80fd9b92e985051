// The table of the commands: from it menus, tool bars and status bar prompts are made.
//
// Invariants:
// 1. Every command has one row; number and object name are unique.
// 2. A command of the view is enabled, checked and carried out by the view alone.
#pragma once

#include <QString>
#include <span>

#include "view/command_ids.h"

namespace wavo {

/// Who carries out a command.
enum class CommandOwner {
    kView,
    kShell,
    kRecording,  ///< what records
    kRecorded,   ///< who looks at recordings
    kParts,      ///< what writes parts of recordings
    kMeasure,
    kCircle,
    kAxis,
    kReference,
};

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order of the table's columns
struct Command {
    CommandId id;
    const char* object_name;  ///< of its QAction; unique
    const char* text;         ///< "&" marks the mnemonic; "\t" begins the shortcut
    const char* status_text;  ///< prompt, "\n", tool tip
    CommandOwner owner = CommandOwner::kView;
};

/// All commands, each once.
std::span<const Command> Commands();

/// The row of a command; null for a number without a row.
const Command* FindCommand(CommandId id);

/// The parts of a row.
QString MenuText(const Command& command);      ///< with "&", without the shortcut
QString ShortcutText(const Command& command);  ///< empty for none
QString StatusPrompt(const Command& command);
QString ToolTip(const Command& command);  ///< as it stands in the row, without the shortcut

/// Whether a command changes nothing of the user's before he has answered what it asks or shows.
bool IsHarmless(CommandId id);

/// The commands that menus show even when they are short, beside those of the menus Recording and
/// Measure.
std::span<const CommandId> BasicCommands();

}  // namespace wavo
