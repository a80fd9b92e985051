// Edits of one line keep one line: what is pasted has its line ends replaced by blanks at once, so
// that what is shown is what is taken.
#pragma once

class QLineEdit;
class QWidget;

namespace wavo {

/// From now on a line end that comes into the edit becomes a blank, "\r\n" one blank. Whoever
/// listens to the edit never meets one.
void KeepOneLine(QLineEdit& edit);

/// The same for every edit that a window has now.
void KeepOneLineInEdits(const QWidget& window);

}  // namespace wavo
