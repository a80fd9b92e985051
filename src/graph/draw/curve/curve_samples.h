// The samples that a curve over time holds, the newest ones of those that it was given.
//
// What the buffer of the stream still has is not stored twice: the curve looks at the samples
// there and holds them, so that it is told before one of them is overwritten. Only then, and where
// the curve differs from the stream (a gap, a derivative that is none), it has samples of its own,
// until all that differs has been dropped. A curve that takes all samples holds none: what is
// overwritten it would drop with the next ones.
//
// Invariants:
// 1. At most MaxPoints() samples are held.
// 2. Sequence numbers count the samples since Clear. That of the buffer is another one, but as far
//    from it for each sample.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "graph/values/sample_buffer.h"

namespace wavo {

class CurveSamples final : private SampleHolder {
 public:
    /// REQUIRES: max_points >= 1.
    explicit CurveSamples(std::uint64_t max_points);
    ~CurveSamples();
    CurveSamples(const CurveSamples&) = delete;
    CurveSamples& operator=(const CurveSamples&) = delete;
    CurveSamples(CurveSamples&&) = delete;
    CurveSamples& operator=(CurveSamples&&) = delete;

    /// Drops all samples and counts from 0 again.
    void Clear();
    /// Adds samples, and drops the oldest where there would be more than MaxPoints(). Reports when
    /// there is no memory, and goes on with as many points as there is memory for. The buffer of
    /// `origin` is not owned and may go at any time.
    void Push(std::span<const double> samples, const SampleOrigin& origin);
    /// Holds these samples instead, however many.
    void Replace(std::span<const double> samples);

    [[nodiscard]] std::uint64_t MaxPoints() const { return m_max_points; }
    [[nodiscard]] std::uint64_t Size() const { return m_shares ? End() - Begin() : m_own.Size(); }
    /// Samples pushed since Clear.
    [[nodiscard]] std::uint64_t Appended() const { return m_appended; }
    /// Sequence number of the oldest sample held.
    [[nodiscard]] std::uint64_t FirstSequence() const { return m_appended - Size(); }

    /// Number of the oldest sample held. Numbers rise by one and are never used twice.
    [[nodiscard]] std::uint64_t FirstNumber() const { return m_numbers_used + FirstSequence(); }

    /// Where the samples stand, and the sequence number of the oldest of them there.
    [[nodiscard]] const SampleBuffer& Buffer() const { return m_shares ? *m_stream : m_own; }
    [[nodiscard]] std::uint64_t Begin() const {
        return m_shares ? std::min(End(), std::max(End() - m_size, m_stream->FirstKept()))
                        : m_own.FirstSequence();
    }

 private:
    // SampleHolder
    void BeforeOverwrite() override;
    void BeforeEnd() override;

    [[nodiscard]] std::uint64_t InStream(std::uint64_t sequence) const {
        return sequence + m_stream_offset;
    }
    /// Sequence number of the next sample in the stream's buffer.
    [[nodiscard]] std::uint64_t End() const { return InStream(m_appended); }
    /// The next sample comes from there.
    void Follow(const SampleOrigin& origin);
    void LeaveStream();
    /// Copies what is looked at in the stream's buffer. REQUIRES: m_shares.
    void TakeOver();
    /// All samples will be the same in the stream's buffer, with `count` more.
    [[nodiscard]] bool CanShareWith(std::uint64_t count) const;
    [[nodiscard]] std::uint64_t SizeWith(std::uint64_t count) const;
    void PushOwn(std::span<const double> samples);

    std::uint64_t m_max_points;
    std::uint64_t m_appended = 0;
    std::uint64_t m_numbers_used = 0;  ///< before the last Clear
    SampleBuffer m_own;                ///< empty while they are looked at in the stream's buffer

    const SampleBuffer* m_stream = nullptr;  ///< that tells this holder of its end
    std::uint64_t m_stream_offset = 0;       ///< of sequences there; modulo 2^64
    std::uint64_t m_same_from = 0;           ///< from this sequence on samples are as there
    bool m_shares = false;
    std::uint64_t m_size = 0;  ///< while it shares, those that were overwritten since included
};

}  // namespace wavo
