// Searching for single bytes in short texts, eight at a time: lines of settings are too short for
// the library's search to pay for its call.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace wavo::bytes {

inline constexpr std::uint64_t kOnes = 0x0101010101010101U;
inline constexpr std::uint64_t kHighs = 0x8080808080808080U;

/// The eight bytes at `text`, the first one lowest.
inline std::uint64_t Load(const char* text) noexcept {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t word;  // NOLINT(*-init-variables): filled by the copy
    std::memcpy(&word, text, sizeof word);
    return word;
}

/// Not zero when a byte of `word` is `byte`; the lowest bit set is in the first such byte.
constexpr std::uint64_t Match(std::uint64_t word, char byte) noexcept {
    const std::uint64_t difference = word ^ (kOnes * static_cast<unsigned char>(byte));
    return (difference - kOnes) & ~difference & kHighs;
}

/// The first `a` or `b` in [text, end); `end` when there is none.
inline const char* FindEither(const char* text, const char* end, char a, char b) noexcept {
    for (; end - text >= 8; text += 8) {
        const std::uint64_t word = Load(text);
        const std::uint64_t match = Match(word, a) | Match(word, b);
        if (match != 0) {
            return text + std::countr_zero(match) / 8;
        }
    }
    while (text != end && *text != a && *text != b) {
        ++text;
    }
    return text;
}

}  // namespace wavo::bytes
