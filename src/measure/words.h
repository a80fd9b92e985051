// Texts with numbers in them.
#pragma once

#include <string>

namespace wavo::measure {

/// As printf writes it. Fractions are written by Decimals, whatever the locale of the process.
[[gnu::format(printf, 1, 2)]] std::string Words(const char* format, ...);

/// A number with so many decimals; "-0.00" becomes "0.00".
std::string Decimals(double value, int decimals);

}  // namespace wavo::measure
