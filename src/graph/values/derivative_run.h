// Derivatives of many successive samples at once.
#pragma once

#include <cstddef>

#include "support/processor.h"

namespace wavo {

/// out[i] is the first derivative at samples[i], with the arithmetic of Derive to the last bit.
/// REQUIRES: samples[-1] is the sample before; `out` is apart from the samples.
void DeriveOnce(const double* samples, std::size_t count, double divisor, double* out,
                Instructions use = BestInstructions());

/// The same for the second derivative. REQUIRES: samples[-2] and samples[-1] are those before.
void DeriveTwice(const double* samples, std::size_t count, double divisor, double* out,
                 Instructions use = BestInstructions());

}  // namespace wavo
