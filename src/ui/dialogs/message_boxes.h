// Message boxes as the toolkit shows them.
#pragma once

#include "ui/prompts.h"

namespace wavo {

/// As Prompts::box asks.
BoxAnswer ShowBox(QWidget* parent, const Box& box);

}  // namespace wavo
