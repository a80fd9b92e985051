// The locks of the viewer, in the order in which they are taken.
//
// One thread takes them, so none ever waits. They mark what has to be seen whole, and who marks it
// in the wrong order is reported at once: with a second thread he would hang.
#pragma once

#include "support/ordered_mutex.h"

namespace wavo {

/// Held while the document goes to the editor, and while graphs and their buffers are made anew.
struct ValueMutex final : OrderedMutex {
    ValueMutex() : OrderedMutex(1, "value lock") {}
};

/// Held while graphs get their places on the screen.
struct GraphMutex final : OrderedMutex {
    GraphMutex() : OrderedMutex(2, "graph lock") {}
};

}  // namespace wavo
