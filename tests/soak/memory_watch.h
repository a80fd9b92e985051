// The resident memory of this process over a long run, in samples of one a second.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wavo::testing {

/// Resident memory of this process now, bytes; 0 when the system does not tell.
std::uint64_t ResidentMemory();

class MemoryWatch {
 public:
    /// Takes a sample at `second` of the run, unless one was taken in that second.
    void Sample(std::int64_t second);

    /// Samples begin to count from here on: everything has been used once.
    static constexpr std::int64_t kWarmUp = 120;  // s

    /// How far the samples after the warm-up lie from the first of them at most, as a part of it:
    /// 0.02 is two percent. Infinite when the system did not tell; 0 when the run was not longer
    /// than the warm-up.
    [[nodiscard]] double LargestChange() const;
    [[nodiscard]] std::uint64_t First() const;     ///< after the warm-up, bytes
    [[nodiscard]] std::uint64_t Last() const;      ///< bytes
    [[nodiscard]] std::uint64_t Smallest() const;  ///< bytes; 0 when a sample was not to be had
    [[nodiscard]] std::size_t Samples() const { return m_samples.size(); }

    /// One sample of each minute, megabytes, separated by blanks.
    [[nodiscard]] std::string ByMinute() const;

 private:
    struct Entry {
        std::int64_t second;
        std::uint64_t bytes;
    };
    std::vector<Entry> m_samples;
};

}  // namespace wavo::testing
