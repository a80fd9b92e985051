// What a fuzzer demands of what it fuzzes: a condition that does not hold is a finding.
#pragma once

#include <cstdio>
#include <cstdlib>

#define CHECK(condition)                                                                 \
    do {                                                                                 \
        if (!(condition)) {                                                              \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                \
        }                                                                                \
    } while (false)
