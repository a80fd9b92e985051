// Successive lines on their way from the master to the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace wavo::recorder {

struct LineBlock {
    std::uint64_t first = 0;  ///< number of the first line
    std::size_t lines = 0;
    std::vector<double> values;  ///< of each line one per axis

    [[nodiscard]] std::uint64_t End() const { return first + lines; }
    [[nodiscard]] std::size_t Bytes() const { return values.size() * sizeof(double); }
    [[nodiscard]] std::size_t Axes() const { return lines == 0 ? 0 : values.size() / lines; }

    /// The lines from number `from` to before `to`. REQUIRES: they are in this block.
    [[nodiscard]] LineBlock Part(std::uint64_t from, std::uint64_t to) const {
        const auto axes = static_cast<std::ptrdiff_t>(Axes());
        const auto begin = values.begin() + static_cast<std::ptrdiff_t>(from - first) * axes;
        const auto count = static_cast<std::ptrdiff_t>(to - from);
        return {from, static_cast<std::size_t>(count), {begin, begin + count * axes}};
    }
};

}  // namespace wavo::recorder
