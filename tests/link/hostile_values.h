// What a damaged or hostile header is made of: every single bit turned over, and the values that
// programs trip over, in every field. Each check has to come to its verdict in time.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "slowness.h"

namespace wavo::testing {

/// How long anything hostile may keep the viewer from its verdict.
inline constexpr std::chrono::milliseconds kVerdictTime{100};

/// Calls `check`, which can be repeated, and fails when it takes longer than kVerdictTime. Another
/// program may have had the processor: the best of three tries counts. Returns the number of tries.
inline int CheckInTime(const std::function<void()>& check) {
    using Clock = std::chrono::steady_clock;
    constexpr int kTries = 3;
    auto best = Clock::duration::max();
    for (int tries = 1;; ++tries) {
        const Clock::time_point begin = Clock::now();
        check();
        best = std::min(best, Clock::now() - begin);
        const bool in_time = best <= kSlowness * kVerdictTime;
        if (in_time || tries == kTries) {
            EXPECT_TRUE(in_time)
                << "the verdict took "
                << std::chrono::duration_cast<std::chrono::milliseconds>(best).count() << " ms";
            return tries;
        }
    }
}

/// Calls `check` for each bit of the `size` bytes at `bytes`, with that bit turned over and its
/// number. Returns the number of calls: one for each bit, and more for what came late.
inline int ForEachTurnedBit(void* bytes, std::size_t size,
                            const std::function<void(std::size_t bit)>& check) {
    auto* const memory = static_cast<unsigned char*>(bytes);
    int calls = 0;
    for (std::size_t bit = 0; bit < 8 * size; ++bit) {
        SCOPED_TRACE("bit " + std::to_string(bit));
        const auto mask = static_cast<unsigned char>(1U << bit % 8);
        memory[bit / 8] ^= mask;
        calls += CheckInTime([&] { check(bit); });
        memory[bit / 8] ^= mask;
    }
    return calls;
}

struct HostileValue {
    const char* name;
    std::uint64_t bits;  ///< of a field of 8 bytes; the low ones of a smaller field
};

/// 0, 1, the largest, -1 and NaN, as whole numbers and as doubles.
inline std::vector<HostileValue> HostileValues() {
    const auto bits = [](double value) {
        std::uint64_t number = 0;
        std::memcpy(&number, &value, sizeof number);
        return number;
    };
    using Limits = std::numeric_limits<double>;
    return {{"0", 0},
            {"1", 1},
            {"largest signed 32", 0x7FFFFFFF},
            {"largest unsigned 32", 0xFFFFFFFF},
            {"largest signed 64", 0x7FFFFFFFFFFFFFFF},
            {"-1", ~std::uint64_t{0}},
            {"1.0", bits(1.0)},
            {"-1.0", bits(-1.0)},
            {"largest double", bits(Limits::max())},
            {"smallest double", bits(Limits::denorm_min())},
            {"infinity", bits(Limits::infinity())},
            {"NaN", bits(Limits::quiet_NaN())},
            {"signalling NaN", bits(Limits::signaling_NaN())}};
}

struct Field {
    const char* name;
    std::size_t offset;
    std::size_t size;  ///< bytes
};

/// Calls `check` for each field and hostile value, with the value in its place and both names.
/// Returns the number of calls, as ForEachTurnedBit.
inline int ForEachHostileField(void* bytes, const std::vector<Field>& fields,
                               const std::function<void(const std::string& what)>& check) {
    int calls = 0;
    auto* const memory = static_cast<unsigned char*>(bytes);
    for (const Field& field : fields) {
        for (const HostileValue& value : HostileValues()) {
            std::uint64_t before = 0;
            std::memcpy(&before, memory + field.offset, field.size);
            std::memcpy(memory + field.offset, &value.bits, field.size);
            const std::string what = std::string(field.name) + " = " + value.name;
            SCOPED_TRACE(what);
            calls += CheckInTime([&] { check(what); });
            std::memcpy(memory + field.offset, &before, field.size);
        }
    }
    return calls;
}

}  // namespace wavo::testing
