// Which place of the manual tells of what: the one table of context help.
//
// Invariants:
// 1. Every command has a topic, and so has every dialog, pane and graph.
// 2. A topic is the name of a chapter in docs/manual, and behind "#" that of a heading, as the
// manual
//    makes an anchor of it: its words in small letters with "-" between them.
#pragma once

#include <QString>

#include "view/command_ids.h"

class QAction;
class QWidget;

namespace wavo {

/// The topic of a command; empty for a number that no command has.
QString HelpTopic(CommandId command);

/// That of the command whose action, or whose item in a menu, `action` is; empty for another
/// action.
QString HelpTopic(const QAction& action);

/// The topic of a widget, the innermost one that has any: that of the command under the mark of a
/// menu or of a button, else of a control, of its pane, of its window.
QString HelpTopic(const QWidget& widget);

}  // namespace wavo
