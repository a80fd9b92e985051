// Walks the widgets of a window as what reads the screen aloud meets them.
#pragma once

#include <string>
#include <vector>

class QWidget;

namespace wavo::testing {

/// The widgets of `window`, itself with them, that have no accessible name or no description: every
/// control, pane, bar and group has both. Not asked are parts of the toolkit's own widgets, what
/// only holds others, menus (their items have texts of their own), and labels, which need a name
/// alone where they are no panes: they stand beside something that has both.
/// As "QPushButton no description: control_1027".
std::vector<std::string> WithoutAccessibleTexts(const QWidget& window);

/// How many widgets were asked for both.
int AskedForAccessibleTexts(const QWidget& window);

}  // namespace wavo::testing
