// The first place of a window: its outer frame stands within the free area of the screen.
#pragma once

#include <QMargins>
#include <QRect>
#include <QSize>

class QWidget;

namespace wavo {

/// The inner rectangle of a window that should be `wanted` large and stand at `place`, moved and
/// cut as far as needed to keep it and the `frame` around it within the `room`. The same units for
/// all of them.
QRect FitFrame(const QPoint& place, const QSize& wanted, const QMargins& frame, const QRect& room);

/// Keeps a window that is not shown yet within its screen's free area: at once with a frame as the
/// style draws it, and when it is exposed with the frame that it then has. A window that is shown
/// maximised or without a frame around it is left to the window system.
void FitIntoScreen(QWidget& window);

}  // namespace wavo
