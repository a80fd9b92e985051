// The questions of a program that nobody watches: none is asked.
#pragma once

#include <functional>
#include <string>

#include "ui/prompts.h"

namespace wavo {

/// What a box would say goes to `tell`. Every question is answered as if the user had cancelled it.
Prompts HeadlessPrompts(std::function<void(const std::string& text)> tell);

}  // namespace wavo
