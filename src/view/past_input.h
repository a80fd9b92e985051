// The mouse wheel, the middle button and the keys that move through the past.
//
//   Wheel                      zoom at the pointer
//   Shift + wheel              move
//   Middle button, dragged     move what is under the pointer
//   Home, End                  go to the begin, to the end
//   Page Up, Page Down         go back, go on by what is seen
#pragma once

#include <Qt>

class QMouseEvent;
class QWheelEvent;

namespace wavo {

class PastView;

/// Each is false for what means nothing here or now.
bool TakeWheel(PastView& past, const QWheelEvent& event);
bool TakeMousePress(PastView& past, const QMouseEvent& event);
bool TakeMouseMove(PastView& past, const QMouseEvent& event);
bool TakeMouseRelease(PastView& past, const QMouseEvent& event);
bool TakeKey(PastView& past, int key, Qt::KeyboardModifiers modifiers);

}  // namespace wavo
