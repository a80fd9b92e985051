// The tool bars of the frame, as the user arranged them.
#pragma once

#include "ui/bars/bar_setup.h"
#include "ui/bars/command_actions.h"

class QAction;
class QMainWindow;
class QToolBar;

namespace wavo {

/// A button that offers to customize the bars, as an item of a tool bar; owned by `frame`.
/// `customize` is the action of the command.
QAction* MakeCustomizeItem(QMainWindow& frame, QAction& customize);

/// Makes the tool bars of `frame` those of `setup`: keeps the ones that have their names, makes and
/// deletes others. `other` is a bar that stays as it is; `last` becomes the last item of the first.
void ShowToolBars(QMainWindow& frame, const QToolBar& other, const CommandActions& actions,
                  const BarSetup& setup, QAction& last);

}  // namespace wavo
