// What the user made of tool bars and menus, as plain data: kept in the application's settings,
// edited by the dialog, shown by the frame.
//
// Invariants of what Load and Normalize give:
// 1. The first bar is "Standard"; names are not empty and not twice.
// 2. Every item is a command that may stand in a tool bar, or a separator; no command stands twice
//    in a bar.
// 3. The icon size is one of kIconSizes.
#pragma once

#include <QString>
#include <map>
#include <set>
#include <vector>

#include "view/command_ids.h"

class QSettings;

namespace wavo {

/// Stands between two buttons.
inline constexpr int kSeparatorItem = 0;

struct BarContent {
    QString name;
    std::vector<int> items;  ///< numbers of commands, kSeparatorItem

    friend bool operator==(const BarContent&, const BarContent&) = default;
};

struct BarSetup {
    std::vector<BarContent> bars;
    int icon_size = 24;              ///< device-independent pixels
    bool full_menus = true;          ///< false: basic and used commands, the others on demand
    std::set<int> used_commands;     ///< stand in short menus too
    std::map<int, int> user_images;  ///< by command: index of an image of the user

    friend bool operator==(const BarSetup&, const BarSetup&) = default;
};

/// The commands that a tool bar can hold, in the order of the command table.
std::vector<CommandId> ToolBarCommands();

/// As it comes: two bars, "Standard" and "Recording".
BarSetup DefaultBarSetup();

/// Makes the invariants hold.
void Normalize(BarSetup& setup);

/// What is stored; the default where nothing is, and for null.
BarSetup LoadBarSetup(QSettings* settings);

/// Stores; nothing for null.
void SaveBarSetup(QSettings* settings, const BarSetup& setup);

}  // namespace wavo
