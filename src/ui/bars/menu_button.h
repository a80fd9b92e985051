// A button of a bar that opens a menu.
#pragma once

class QMenu;
class QToolButton;

namespace wavo {

/// A flat button that opens `menu`, which is not owned, at once; an arrow alone unless it is given
/// a text. The Tab key passes it by. When the menu closes, the button
/// is lit only where the pointer is above it: what was chosen may open a window, and no pointer
/// leaves the button meanwhile.
QToolButton* MakeMenuButton(QMenu& menu);

}  // namespace wavo
