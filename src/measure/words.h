// Texts with numbers in them.
#pragma once

#include <string>

#include "support/diagnostics.h"

namespace wavo::measure {

/// As printf writes it. Fractions are written by Decimals, whatever the locale of the process.
std::string Words(const char* format, ...) WAVO_PRINTF(1, 2);

/// A number with so many decimals; "-0.00" becomes "0.00".
std::string Decimals(double value, int decimals);

}  // namespace wavo::measure
