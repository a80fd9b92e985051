// The samples of one value stream: a queue that takes at the back and drops at the front, held in
// one contiguous allocation that is used as a ring.
//
// Invariants:
// 1. Positions count from the oldest sample held: position 0 is the oldest, Size() - 1 the newest.
//    Sequence numbers count the samples since Clear and never change while a sample is held:
//    sequence = FirstSequence() + position.
// 2. Position p stands in slot SlotOf(p); consecutive positions stand in consecutive slots, but
//    for the one place where the last slot is followed by slot 0. Replacing moves no sample; only
//    a new allocation does.
// 3. The allocation grows geometrically with what arrives, never with what may arrive once, and
//    not beyond the expected size while that suffices.
// 4. Between OpenRun and the next other change, samples arrive through Put: one store and one
//    increment, everything else is derived from the write slot. All observers are right while a
//    run is open.
//
// One thread; no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace wavo {

class SampleRing {
 public:
    /// What becomes of the oldest sample when Put stores one.
    enum class RunKind { kGrow, kReplace };

    /// A range of positions as it lies in memory, oldest first; `second` follows `first`.
    struct Parts {
        std::span<const double> first;
        std::span<const double> second;
    };

    SampleRing() = default;
    ~SampleRing() = default;
    /// The copy is held in no more than it needs and has no run open. Runs out of memory as the
    /// standard containers do.
    SampleRing(const SampleRing& other);
    SampleRing& operator=(const SampleRing& other);
    /// `other` is left empty.
    SampleRing(SampleRing&& other) noexcept;
    SampleRing& operator=(SampleRing&& other) noexcept;

    /// Samples held.
    [[nodiscard]] std::size_t Size() const { return m_size + (m_run_grows ? RunLength() : 0); }
    /// Samples stored since Clear, those dropped again included.
    [[nodiscard]] std::uint64_t Appended() const { return m_appended + RunLength(); }
    /// Sequence number of the oldest sample held: the number of samples dropped since Clear.
    [[nodiscard]] std::uint64_t FirstSequence() const { return Appended() - Size(); }
    /// Changes whenever a sample that is held has got another slot or the counts began anew.
    [[nodiscard]] std::uint64_t Moves() const { return m_moves; }

    /// Slot of a position. REQUIRES: position < Size().
    [[nodiscard]] std::size_t SlotOf(std::size_t position) const {
        const std::size_t slots_to_end = m_slots - OldestSlot();
        return position < slots_to_end ? OldestSlot() + position : position - slots_to_end;
    }
    /// The sample at a position. REQUIRES: position < Size().
    [[nodiscard]] double operator[](std::size_t position) const { return m_data[SlotOf(position)]; }

    /// All places that are allocated, the samples by slot. Valid until the next change.
    [[nodiscard]] std::span<const double> Slots() const { return {m_data.get(), m_slots}; }

    /// At most `count` samples from `position` on, never past the newest. Valid until the next
    /// change.
    [[nodiscard]] Parts Range(std::size_t position, std::size_t count) const;

    /// The most samples that the owner will hold; 0 when there is no bound. Bounds the growth of
    /// the allocation, allocates nothing.
    void SetExpectedSize(std::uint64_t size) { m_expected_size = size; }

    /// Makes sure that one PushBack finds its place. False when there is no memory for it.
    [[nodiscard]] bool MakeRoom();
    /// Adds a sample at the back. False, and nothing changed, when there is no memory for it.
    [[nodiscard]] bool PushBack(double sample);
    /// Drops the oldest sample. REQUIRES: Size() > 0.
    void DropFront();
    /// Drops the oldest sample and adds one at the back; needs no memory. REQUIRES: Size() > 0.
    void Replace(double sample);
    /// Adds samples at the back; where more than `limit` would be held, each takes the place of
    /// the oldest. False when there is no memory for one: those before it are in.
    /// REQUIRES: limit >= 1 and Size() <= limit.
    [[nodiscard]] bool Push(std::span<const double> samples, std::uint64_t limit);
    /// Drops all samples and counts from 0 again. Keeps the allocation.
    void Clear();

    /// Opens a run of at most `max_count` samples, as many as fit without moving or wrapping
    /// (perhaps none). Ends the run before it.
    void OpenRun(RunKind kind, std::uint64_t max_count);
    void CloseRun() { Settle(); }
    [[nodiscard]] bool RunOpen() const { return m_write != m_run_end; }
    /// Stores the next sample of the run. REQUIRES: RunOpen().
    void Put(double sample) { m_data[m_write++] = sample; }
    /// The free places of the run, in order; fill some from the front, then call Advance.
    [[nodiscard]] std::span<double> RunRoom() {
        return {m_data.get() + m_write, m_run_end - m_write};
    }
    /// Takes in the first `count` places of RunRoom(). REQUIRES: count <= RunRoom().size().
    void Advance(std::size_t count) { m_write += count; }

 private:
    [[nodiscard]] std::size_t RunLength() const { return m_write - m_run_begin; }
    [[nodiscard]] std::size_t OldestSlot() const {
        const std::size_t size = Size();
        return m_write >= size ? m_write - size : m_write + m_slots - size;
    }
    /// Takes the samples of the run into the counts and ends it.
    void Settle();
    /// Stores at the write slot and moves on. REQUIRES: settled.
    void StoreAtWrite(double sample);
    [[nodiscard]] bool GrowAllocation();

    std::unique_ptr<double[]> m_data;
    std::size_t m_slots = 0;
    std::uint64_t m_expected_size = 0;
    std::uint64_t m_moves = 0;

    std::size_t m_size = 0;        // without the samples of the run
    std::uint64_t m_appended = 0;  // without the samples of the run
    std::size_t m_write = 0;       // slot of the next sample; m_slots at the end of a full run
    std::size_t m_run_begin = 0;
    std::size_t m_run_end = 0;
    bool m_run_grows = false;
};

/// Replaces `out` by the samples of ring.Range(position, count).
void CopyOut(const SampleRing& ring, std::vector<double>& out, std::size_t position,
             std::size_t count);

}  // namespace wavo
