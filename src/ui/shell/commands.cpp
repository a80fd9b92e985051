#include "ui/shell/commands.h"

#include <algorithm>
#include <iterator>

namespace wavo {

namespace {

constexpr Command kCommands[] = {
    {CommandId::kConnect, "connect", "&Connect Machine data",
     "connecting machine data\nconnecting"},
    {CommandId::kStop, "stop", "Stop\tCtrl+H", "stop wavo.\nstop"},
    {CommandId::kStart, "start", "St&art\tCtrl+A", "start wavo.\nstart"},
    {CommandId::kProperties, "properties", "Proper&ties", ""},
    {CommandId::kAdditionalText, "additional_text", "Add. &Text", ""},
    {CommandId::kExit, "exit", "E&xit", "end wavo.\nexit"},
};

}  // namespace

std::span<const Command> Commands() {
    return kCommands;
}

const Command& FindCommand(CommandId id) {
    return *std::find_if(std::begin(kCommands), std::end(kCommands),
                         [id](const Command& command) { return command.id == id; });
}

}  // namespace wavo
