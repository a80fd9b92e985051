// Instructions that some processors have beyond those of their kind, and whether this one has them.
// The only place where that is asked.
//
// What uses them has a twin in portable code with the same results to the bit, and takes the
// choice as a parameter: tests run both.
#pragma once

// Before a function with instructions of AVX2; defined only where the compiler can build them.
#if defined(__x86_64__) && defined(__GNUC__)
#define WAVO_AVX2 __attribute__((target("avx2")))
// The same with fused multiply-add; only for sources built with -ffp-contract=off.
#define WAVO_AVX2_FMA __attribute__((target("avx2,fma")))
#endif

namespace wavo {

enum class Instructions {
    kPortable,
    kWide,  ///< AVX2 and FMA
};

/// The best that this processor and its operating system have.
inline Instructions BestInstructions() {
#ifdef WAVO_AVX2
    static const Instructions best =
        __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0
            ? Instructions::kWide
            : Instructions::kPortable;
    return best;
#else
    return Instructions::kPortable;
#endif
}

}  // namespace wavo
