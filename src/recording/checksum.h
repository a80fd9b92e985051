// CRC-32 as in zlib: of "123456789" it is cbf43926.
#pragma once

#include <cstdint>

#include "recording/bytes.h"

namespace wavo::recording {

/// The CRC of `bytes`, or, chained, of what had the CRC `before` with `bytes` behind it.
std::uint32_t Crc32(Bytes bytes, std::uint32_t before = 0);

/// The CRC of two stretches one behind the other, from the CRC of each.
std::uint32_t CombineCrc32(std::uint32_t first, std::uint32_t second, std::uint64_t second_size);

}  // namespace wavo::recording
