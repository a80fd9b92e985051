// What a damaged or hostile header is made of: every single bit turned over, and the values that
// programs trip over, in every field. Each check has to come to its verdict with little work.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "processor_time.h"
#include "slowness.h"

namespace wavo::testing {

/// How much anything hostile may make the viewer work before its verdict: a thousand times what a
/// sound segment costs.
inline constexpr std::chrono::milliseconds kVerdictTime{100};

/// Calls `check`, and fails when it takes more than kVerdictTime of this thread's processor time.
inline void CheckInTime(const std::function<void()>& check) {
    const auto begin = ThreadProcessorTime();
    check();
    const auto spent =
        std::chrono::duration_cast<std::chrono::milliseconds>(ThreadProcessorTime() - begin);
    EXPECT_LE(spent.count(), (kSlowness * kVerdictTime).count()) << "ms for a verdict";
}

/// Calls `check` for each bit of the `size` bytes at `bytes`, with that bit turned over and its
/// number. Returns the number of calls.
inline int ForEachTurnedBit(void* bytes, std::size_t size,
                            const std::function<void(std::size_t bit)>& check) {
    auto* const memory = static_cast<unsigned char*>(bytes);
    int calls = 0;
    for (std::size_t bit = 0; bit < 8 * size; ++bit) {
        SCOPED_TRACE("bit " + std::to_string(bit));
        const auto mask = static_cast<unsigned char>(1U << bit % 8);
        memory[bit / 8] ^= mask;
        CheckInTime([&] { check(bit); });
        ++calls;
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
/// Returns the number of calls.
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
            CheckInTime([&] { check(what); });
            ++calls;
            std::memcpy(memory + field.offset, &before, field.size);
        }
    }
    return calls;
}

}  // namespace wavo::testing
