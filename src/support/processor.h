// Instructions that some processors have beyond those of their kind, and whether this one has them.
// The only place where that is asked.
//
// What uses them has a twin in portable code with the same results to the bit, and takes the
// choice as a parameter: tests run both.
#pragma once

// Before a function with instructions of AVX2; defined only where the compiler can build them. The
// second is for the parts of such functions.
#if defined(__x86_64__) && defined(__GNUC__)
#define WAVO_AVX2 __attribute__((target("avx2")))
#define WAVO_AVX2_PART __attribute__((target("avx2"), always_inline)) inline
#endif

namespace wavo {

enum class Instructions {
    kPortable,
    kWide,  ///< AVX2
};

/// The best that this processor and its operating system have.
inline Instructions BestInstructions() {
#ifdef WAVO_AVX2
    static const Instructions best =
        __builtin_cpu_supports("avx2") != 0 ? Instructions::kWide : Instructions::kPortable;
    return best;
#else
    return Instructions::kPortable;
#endif
}

}  // namespace wavo
