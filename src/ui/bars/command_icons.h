// The icons of the commands: drawn from paths, so that they are sharp at every size, and in the
// colours of the palette, so that they show on light and on dark bars.
#pragma once

#include <QIcon>
#include <QPainter>

#include "view/command_ids.h"

namespace wavo {

/// Sizes in device-independent pixels that tool bars offer.
inline constexpr int kIconSizes[] = {16, 24, 32, 48};

/// The icon of a command; null for one without.
QIcon CommandIcon(CommandId id);

/// Paints the sign of the program into a square of `size` pixels at the origin: light curves on a
/// dark screen. It is the icon of the windows and of the desktop.
void PaintProgramIcon(QPainter& painter, int size);

/// The icon of the program in all usual sizes.
QIcon ProgramIcon();

}  // namespace wavo
