// What carries out commands. The shell builds menus and tool bar upon it and asks before it offers
// a command.
#pragma once

#include "view/command_ids.h"

namespace wavo {

class CommandTarget {
 public:
    virtual ~CommandTarget() = default;

    /// Whether the command makes sense now; false for one that the target does not know.
    [[nodiscard]] virtual bool IsEnabled(CommandId id) const = 0;

    /// Carries out the command. Nothing for one that is not enabled.
    virtual void Execute(CommandId id) = 0;
};

}  // namespace wavo
