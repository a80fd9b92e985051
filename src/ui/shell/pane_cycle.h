// The way from pane to pane with the keyboard, and on a bar from button to button.
#pragma once

#include <functional>

class QAction;
class QMainWindow;
class QWidget;

namespace wavo {

/// Gives the keyboard to the next visible pane of the frame, or to the previous one: the view, its
/// visible parts, docked windows and tool bars, round and round. Of a tool bar the first button
/// that can be used and `is_harmless` gets it, or that opens a menu; the first one that can be used
/// when there is no such button. From now on the frame shows where the keyboard is.
void GoToPane(QMainWindow& frame, bool forward,
              const std::function<bool(const QAction&)>& is_harmless);

/// Handles a key that is pressed on a button of a tool bar of the frame: the arrow keys, Home and
/// End go to another button that can be used, Escape goes back to the view. False for other keys
/// and other widgets.
bool GoInBar(QMainWindow& frame, QWidget& button, int key);

}  // namespace wavo
