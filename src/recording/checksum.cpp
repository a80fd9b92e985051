#include "recording/checksum.h"

#include <zlib.h>

#include <limits>

namespace wavo::recording {

std::uint32_t Crc32(Bytes bytes, std::uint32_t before) {
    return static_cast<std::uint32_t>(
        ::crc32_z(before, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

std::uint32_t CombineCrc32(std::uint32_t first, std::uint32_t second, std::uint64_t second_size) {
    // Some systems' type of an offset has 32 bits.
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    std::uint32_t crc = first;
    // Behind n zeros the CRC of nothing is 0: `first` is moved on without adding anything.
    for (; second_size > kMost; second_size -= kMost) {
        crc = static_cast<std::uint32_t>(::crc32_combine(crc, 0, static_cast<z_off_t>(kMost)));
    }
    return static_cast<std::uint32_t>(
        ::crc32_combine(crc, second, static_cast<z_off_t>(second_size)));
}

}  // namespace wavo::recording
