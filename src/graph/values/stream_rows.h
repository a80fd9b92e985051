// The samples of several streams side by side, as a graph shows them: one row per line of the
// master that at least one of them holds, oldest first.
//
// The streams need not reach back equally far, and a stream that was disabled has missed lines the
// others took. Lines that all of them missed have no row: while none takes a sample, their time
// stands still. Streams of which no lines were told end together.
//
// A view of the streams as they are: valid until one of them changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "graph/values/graph_value.h"

namespace wavo {

/// Samples of a stream, and the row of the first of them.
struct RowPart {
    std::uint64_t row = 0;
    SampleStretch samples;

    friend bool operator==(const RowPart&, const RowPart&) = default;
};

class StreamRows {
 public:
    /// The streams are not owned; null ones hold nothing and are left out of account.
    explicit StreamRows(const std::vector<const GraphValue*>& streams);

    [[nodiscard]] std::uint64_t Count() const { return m_count; }

    /// Each stream holds all rows.
    [[nodiscard]] bool AreEven() const;

    /// The number of newest rows that lie within a span, seconds.
    [[nodiscard]] std::uint64_t CountOfSpan(double span) const;

    /// The first row with a new value; Count() when there are none.
    [[nodiscard]] std::uint64_t FirstNew() const;
    /// All streams have new values of the same lines, as far as lines were told: GetNewValues of
    /// each gives the new rows.
    [[nodiscard]] bool NewValuesAreEven() const;
    /// Seconds from the first sample that any of the streams has had to the first new row; 0 when
    /// that is the same.
    [[nodiscard]] double StartOfNew() const;

    /// The first row from which on all streams have had samples.
    [[nodiscard]] std::uint64_t FirstOfAll() const;

    /// The lines of `count` rows from `first` on. Sequences are rows and count from `first`. Lines
    /// that were not told count back from the newest, which is -1.
    [[nodiscard]] std::vector<LineLog::Run> LinesOf(std::uint64_t first, std::uint64_t count) const;

    /// The samples of a stream, each of the `count` rows from `first` on: NoSample() where it has
    /// none.
    void Copy(std::size_t stream, std::uint64_t first, std::uint64_t count,
              std::vector<double>& out) const;

    /// Where the samples stand that Copy gives, when each row has one and is a derivative if it
    /// should be.
    [[nodiscard]] SampleOrigin OriginOf(std::size_t stream, std::uint64_t first,
                                        std::uint64_t count) const;

    /// The rows of a stream (position and count) from `first` on whose sample is no derivative:
    /// there was none before it, and yet the picture goes further back. Positions count from
    /// `first`.
    [[nodiscard]] std::vector<SampleStretch> Underived(std::size_t stream, std::uint64_t first,
                                                       std::uint64_t count) const;

    /// What there is to show of a stream: its samples of these rows but the underived ones. Rows
    /// count from `first`, positions of samples from the oldest that the stream holds.
    [[nodiscard]] std::vector<RowPart> Parts(std::size_t stream, std::uint64_t first,
                                             std::uint64_t count) const;

 private:
    struct Lines {
        std::int64_t line = 0;
        std::uint64_t count = 0;
        std::uint64_t row = 0;  ///< of the first line
    };
    struct Stream {
        const GraphValue* value = nullptr;
        std::int64_t later = 0;  ///< added to the lines of its log
        std::vector<RowPart> held;
        std::vector<RowPart> underived;
    };

    void FindLater();
    void FindRows();
    [[nodiscard]] static std::vector<LineLog::Run> RunsOf(const Stream& stream);
    [[nodiscard]] std::vector<RowPart> ToParts(const Stream& stream,
                                               const std::vector<LineLog::Run>& runs) const;
    [[nodiscard]] static std::int64_t FirstNewLine(const Stream& stream);
    [[nodiscard]] std::uint64_t RowOf(std::int64_t line) const;
    /// The line of the first sample that any of the streams has had since its reset.
    [[nodiscard]] std::int64_t Origin() const;
    /// A stream with values; null when there is none.
    [[nodiscard]] const GraphValue* Any() const;

    std::vector<Stream> m_streams;
    std::vector<Lines> m_lines;
    std::uint64_t m_count = 0;
    bool m_told = true;
};

}  // namespace wavo
