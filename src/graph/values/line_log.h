// Which line of the master each sample of a stream came with.
//
// A stream takes one sample of every line, but for those that it misses: before it was made, and
// while it is disabled. Samples are numbered by their sequence (since the last reset), lines by the
// count of all lines that were handed out. Only the places where the samples begin anew are kept.
//
// Invariants:
// 1. Sequences and lines of the begins rise; there is always one begin, at first {0, line 0}.
// 2. From one begin to the next, sample follows sample by one line.
#pragma once

#include <cstdint>
#include <vector>

namespace wavo {

class LineLog {
 public:
    /// Samples that came with successive lines.
    struct Run {
        std::uint64_t sequence = 0;
        std::int64_t line = 0;
        std::uint64_t count = 0;
    };

    /// A reset: nothing is known any more.
    void Clear() { *this = LineLog(); }

    /// The next sample, `sequence`, comes with `line`. A line that is earlier than the samples
    /// before it allow moves these back: a stream that takes several samples of each line.
    void Expect(std::uint64_t sequence, std::int64_t line);

    /// From sample `sequence` on there are no earlier ones to derive from.
    void BeginDerivation(std::uint64_t sequence);

    /// Samples before `sequence` will not be asked for any more.
    void ForgetBefore(std::uint64_t sequence);

    [[nodiscard]] std::int64_t LineOf(std::uint64_t sequence) const;
    /// Lines were told since the reset.
    [[nodiscard]] bool IsTold() const { return m_told; }
    /// The line of sequence 0, be it held or not.
    [[nodiscard]] std::int64_t FirstLine() const { return m_first_line; }

    /// The samples from `sequence` to before `end`, in order.
    [[nodiscard]] std::vector<Run> Runs(std::uint64_t sequence, std::uint64_t end) const;
    /// Of these, those that are among the first `order` from a begin of derivation on; that of
    /// sequence 0 counts only `with_first`.
    [[nodiscard]] std::vector<Run> UnderivedRuns(std::uint64_t sequence, std::uint64_t end,
                                                 std::uint64_t order, bool with_first) const;

 private:
    struct Begin {
        std::uint64_t sequence = 0;
        std::int64_t line = 0;
        bool derivation = false;  ///< no earlier samples to derive from
    };

    [[nodiscard]] static std::int64_t LineFrom(const Begin& begin, std::uint64_t sequence) {
        return begin.line + static_cast<std::int64_t>(sequence - begin.sequence);
    }

    std::vector<Begin> m_begins{Begin{0, 0, true}};
    std::int64_t m_first_line = 0;
    bool m_told = false;
};

}  // namespace wavo
