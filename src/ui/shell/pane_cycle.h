// The way from pane to pane with the keyboard.
#pragma once

class QMainWindow;

namespace wavo {

/// Gives the keyboard to the next visible pane of the frame, or to the previous one: the view, its
/// visible parts, docked windows and tool bars, round and round.
void GoToPane(QMainWindow& frame, bool forward);

}  // namespace wavo
