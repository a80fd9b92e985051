// Reports that repeat themselves become a count: a fault that is made with every value would else
// push everything else out of the log.
//
// The first report of a place and text is written as it is. What follows it within kQuiet is
// counted; the count is written as "TEXT ... 149,899 times more", with the time of the last one.
//
// Invariants:
// 1. Every report is written or counted, and every count is written: when the event loop has
//    nothing else to do (Flush), before another report is written, when its place is needed, or at
//    the end (FlushAll).
// 2. While a report goes on repeating itself, its counts are written ever less often, at least once
//    in kLongestWait.
// 3. After kQuiet without it, a report is written as it is again.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::diagnostics {

class RepeatFolder {
 public:
    using Clock = std::chrono::system_clock;

    static constexpr std::chrono::seconds kQuiet{10};
    static constexpr std::chrono::seconds kLongestWait{60};
    /// Reports that are remembered at a time.
    static constexpr std::size_t kMostRemembered = 16;

    /// A line of the log.
    struct Line {
        std::string source;
        int line = 0;
        std::string text;
        Clock::time_point time;
    };

    /// Takes a report that was made at `time`. Returns the lines that are now to be written, oldest
    /// first; none when it was counted.
    std::vector<Line> Add(std::string_view source, int line, std::string_view text,
                          Clock::time_point time);

    /// Whether a count waits to be written.
    [[nodiscard]] bool HasCounts() const { return m_counted != 0; }

    /// The counts that are due at `now`.
    std::vector<Line> Flush(Clock::time_point now);

    /// All counts.
    std::vector<Line> FlushAll();

    /// The next report of each kind is written as it is: the log that held the ones before is not
    /// there any more. Counts stay.
    void BeginAnew();

 private:
    struct Repeated {
        std::string source;
        int line = 0;
        std::string text;
        std::uint64_t count = 0;       ///< not yet written
        Clock::time_point last;        ///< report
        Clock::time_point told;        ///< when a line of it was written last
        std::chrono::seconds wait{0};  ///< until the next count is due
        bool is_over = false;          ///< the next one is no repeat
    };

    Repeated* Find(std::string_view source, int line, std::string_view text);
    /// Makes room for one more.
    void DropOldest();
    Line Tell(Repeated& repeated, Clock::time_point now);

    std::vector<Repeated> m_remembered;
    std::uint64_t m_counted = 0;  ///< reports that no line was written of yet
};

}  // namespace wavo::diagnostics
