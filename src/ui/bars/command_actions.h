// The actions of all commands, made from the command table.
#pragma once

#include <QAction>
#include <QIcon>
#include <QWidget>
#include <functional>
#include <map>
#include <vector>

#include "ui/bars/commands.h"

namespace wavo {

/// The images of the user, 16 by 16 pixels each, from a strip of them; the grey 192,192,192 is
/// transparent. None for a file that is missing or no picture.
std::vector<QIcon> LoadUserImages(const QString& file);

class CommandActions {
 public:
    using Handler = std::function<void(CommandId)>;

    /// Makes an action per command, owned by `frame`, whose shortcuts work wherever in the frame
    /// the keyboard is. Each calls `handler` with its command.
    CommandActions(QWidget& frame, const Handler& handler);

    /// The action of a command; null for a number without a row.
    [[nodiscard]] QAction* Find(CommandId id) const;

    /// Gives the commands of the map images of the user, all others their own icon.
    void SetUserImages(const std::map<int, int>& by_command, const std::vector<QIcon>& images);

    /// Whether an action is that of a command which IsHarmless.
    [[nodiscard]] bool IsHarmless(const QAction& action) const;

    /// The enabled action that a key press is the shortcut of; null when there is none.
    [[nodiscard]] QAction* FindShortcut(const QKeySequence& keys) const;

 private:
    std::map<CommandId, QAction*> m_actions;
};

}  // namespace wavo
