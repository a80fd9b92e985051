#include "graph/values/derivative_run.h"

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

#include "source/derivation.h"

namespace wavo {

namespace {

#ifdef WAVO_AVX2

constexpr std::size_t kDerived = 4;

/// The accumulator that starts at 0 and is negated after the first subtraction.
WAVO_AVX2_PART __m256d Difference(const double* samples) {
    const __m256d difference =
        _mm256_sub_pd(_mm256_loadu_pd(samples), _mm256_loadu_pd(samples - 1));
    return _mm256_xor_pd(_mm256_sub_pd(_mm256_setzero_pd(), difference), _mm256_set1_pd(-0.0));
}

/// All whole fours; returns how many samples that were.
WAVO_AVX2 std::size_t DeriveOnceWide(const double* samples, std::size_t count, double divisor,
                                     double* out) {
    const __m256d divisors = _mm256_set1_pd(divisor);
    std::size_t i = 0;
    for (; i + kDerived <= count; i += kDerived) {
        _mm256_storeu_pd(out + i, _mm256_div_pd(Difference(samples + i), divisors));
    }
    return i;
}

WAVO_AVX2 std::size_t DeriveTwiceWide(const double* samples, std::size_t count, double divisor,
                                      double* out) {
    const __m256d divisors = _mm256_set1_pd(divisor);
    std::size_t i = 0;
    for (; i + kDerived <= count; i += kDerived) {
        const __m256d before =
            _mm256_sub_pd(_mm256_loadu_pd(samples + i - 1), _mm256_loadu_pd(samples + i - 2));
        const __m256d sum = _mm256_sub_pd(Difference(samples + i), before);
        _mm256_storeu_pd(out + i, _mm256_div_pd(sum, divisors));
    }
    return i;
}

#endif

}  // namespace

void DeriveOnce(const double* samples, std::size_t count, double divisor, double* out,
                Instructions use) {
    std::size_t done = 0;
#ifdef WAVO_AVX2
    if (use == Instructions::kWide) {
        done = DeriveOnceWide(samples, count, divisor, out);
    }
#endif
    (void)use;
    for (std::size_t i = done; i < count; ++i) {
        out[i] = Derive({samples + i - 1, 2}, divisor);
    }
}

void DeriveTwice(const double* samples, std::size_t count, double divisor, double* out,
                 Instructions use) {
    std::size_t done = 0;
#ifdef WAVO_AVX2
    if (use == Instructions::kWide) {
        done = DeriveTwiceWide(samples, count, divisor, out);
    }
#endif
    (void)use;
    for (std::size_t i = done; i < count; ++i) {
        out[i] = Derive({samples + i - 2, 3}, divisor);
    }
}

}  // namespace wavo
