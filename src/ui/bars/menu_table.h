// The menus as a table.
#pragma once

#include <span>

#include "view/command_ids.h"

namespace wavo {

enum class MenuRowKind { kMenu, kItem, kSeparator };

/// A row stands in the last kMenu row above it whose depth is one less.
struct MenuRow {
    int depth;  ///< 0: in the menu bar
    MenuRowKind kind;
    const char* text = "";  ///< of a kMenu row that is no command; else the command's text is shown
    CommandId id{};         ///< of an item, or of a menu that is a command too
};

/// The rows of the menu bar, from top to bottom.
std::span<const MenuRow> MenuBarRows();

/// The menu of looks that pops up by itself: texts of its own for commands.
struct LookMenuRow {
    CommandId id;
    const char* text;
};
std::span<const LookMenuRow> LookMenuRows();

}  // namespace wavo
