// Whole lines from one or more samplers: the values of a line are of one and the same servo cycle.
//
// A sampler numbers the lines that it wrote. It writes none while it is full, and then counts its
// overrun up instead of its number: lost lines leave no gap in the numbers. Number and overruns
// together count the cycles, so they tell which lines of several samplers belong together, provided
// that all of them began in one cycle. Where they did not, a column that each of them has, the
// fingerprint, finds by how many cycles they are apart.
//
// Invariants:
// 1. A line is given only when nothing was lost between it and the line before, or the loss was
// told
//    in between.
// 2. Lines that were written before a loss, and are read after it, are dropped: what is behind them
//    does not join on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace wavo::master {

/// The lines that a sampler has written and nobody has read.
class SampleChannel {
 public:
    SampleChannel() = default;
    virtual ~SampleChannel() = default;
    SampleChannel(const SampleChannel&) = delete;
    SampleChannel& operator=(const SampleChannel&) = delete;

    /// Number of values in a line.
    [[nodiscard]] virtual std::size_t Columns() const = 0;
    /// Takes the oldest line. False when there is none.
    virtual bool Read(std::span<double> values, std::uint32_t* number) = 0;
    /// Lines that found no room since the sampler began.
    [[nodiscard]] virtual std::uint32_t Overruns() const = 0;
};

class CycleReader {
 public:
    using Take = std::function<void(std::span<const double>)>;

    /// So many successive fingerprints have to agree, ...
    static constexpr std::int32_t kRun = 20;
    /// ... and so many cycles at most can the samplers be apart.
    static constexpr std::int32_t kMostApart = 50;

    /// Drops what waits. With `have_fingerprint` the last column of each channel is one, which is
    /// no part of the lines; several channels need it. The channels stay the caller's.
    CycleReader(const std::vector<SampleChannel*>& channels, bool have_fingerprint);

    struct Outcome {
        std::uint64_t lines = 0;  ///< given to `take`
        std::uint64_t lost = 0;   ///< that are not given, where lines had been given before
        bool is_apart = false;    ///< the samplers have no cycle in common
    };

    /// Gives the lines that have come since the last call, oldest first, or tells that some were
    /// lost; never both.
    Outcome Poll(const Take& take);

    /// Values of a line.
    [[nodiscard]] std::size_t Columns() const { return m_line.size(); }

 private:
    struct Sample {
        std::uint32_t cycle = 0;  ///< number and overruns; passes over to 0 some day
        std::vector<double> values;
    };
    struct Channel {
        SampleChannel* source = nullptr;
        std::uint32_t overruns = 0;
        std::optional<std::uint32_t> last_number;
        std::int32_t shift = 0;  ///< cycles that its count is ahead of that of the first channel
        std::deque<Sample> waiting;
    };

    bool ReadAll();
    static bool ReadNew(Channel* channel);
    std::uint64_t Restart();
    void Give(const Take& take, Outcome* outcome);
    [[nodiscard]] bool IsWhole() const;
    bool Align();
    bool FindShift(Channel* channel) const;
    void DropBefore(std::uint32_t cycle);
    static const Sample* Find(const Channel& channel, std::uint32_t cycle);

    // Constant after construction.
    const bool m_have_fingerprint;

    // State.
    std::vector<Channel> m_channels;
    std::vector<double> m_line;
    bool m_is_aligned = false;  ///< the shifts are known
    bool m_has_given = false;   ///< a line since the last loss was told
};

}  // namespace wavo::master
