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
//    not beyond the expected size while that suffices. What it keeps is added then.
// 4. A sample that was dropped stays in its slot until that is needed: from FirstKept() on all can
//    be read by their sequence numbers. Who relies on that holds them (Hold), and is told before
//    the first of them goes.
// 5. Between OpenRun and the next other change, samples arrive through Put: one store and one
//    increment, everything else is derived from the write slot. All observers are right while a
//    run is open.
//
// One thread; no locks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <vector>

namespace wavo {

/// Reads samples of a ring where they stand, dropped ones too. Neither call may change the ring or
/// the holds of others.
class SampleHolder {
 public:
    /// The first sample that is held is about to be overwritten: copy what is still needed and hold
    /// later ones, or none.
    virtual void BeforeOverwrite() = 0;
    /// The ring is about to lose all samples and the hold with them.
    virtual void BeforeEnd() = 0;

 protected:
    ~SampleHolder() = default;
};

class SampleRing {
 public:
    /// What becomes of the oldest sample when Put stores one.
    enum class RunKind { kGrow, kReplace };

    /// A range of positions as it lies in memory, oldest first; `second` follows `first`.
    struct Parts {
        std::span<const double> first;
        std::span<const double> second;
    };

    /// To be held from here on asks only to be told of the end.
    static constexpr std::uint64_t kNoSequence = std::numeric_limits<std::uint64_t>::max();

    SampleRing() = default;
    ~SampleRing() { EndHolds(); }
    /// The copy is stored in no more than it needs, has no run open and no holder. Runs out of
    /// memory as the standard containers do.
    SampleRing(const SampleRing& other);
    SampleRing& operator=(const SampleRing& other);
    /// `other` is left empty; holds of both end.
    SampleRing(SampleRing&& other) noexcept;
    SampleRing& operator=(SampleRing&& other) noexcept;

    /// Samples held.
    [[nodiscard]] std::size_t Size() const { return m_size + (m_run_grows ? RunLength() : 0); }
    /// Samples stored since Clear, those dropped again included.
    [[nodiscard]] std::uint64_t Appended() const { return m_appended + RunLength(); }
    /// Sequence number of the oldest sample held: the number of samples dropped since Clear.
    [[nodiscard]] std::uint64_t FirstSequence() const { return Appended() - Size(); }
    /// Sequence number of the oldest sample that can be read.
    [[nodiscard]] std::uint64_t FirstKept() const {
        const std::uint64_t appended = Appended();
        return std::max<std::uint64_t>(m_first_stored, appended > m_slots ? appended - m_slots : 0);
    }
    /// Changes whenever a sample that is held has got another slot or the counts began anew.
    [[nodiscard]] std::uint64_t Moves() const { return m_moves; }

    /// Slot of a position. REQUIRES: position < Size().
    [[nodiscard]] std::size_t SlotOf(std::size_t position) const {
        const std::size_t slots_to_end = m_slots - OldestSlot();
        return position < slots_to_end ? OldestSlot() + position : position - slots_to_end;
    }
    /// The sample at a position. REQUIRES: position < Size().
    [[nodiscard]] double operator[](std::size_t position) const { return m_data[SlotOf(position)]; }

    /// Slot of a sample by its sequence number. REQUIRES: FirstKept() <= sequence < Appended().
    [[nodiscard]] std::size_t SlotOfSequence(std::uint64_t sequence) const {
        const auto back = static_cast<std::size_t>(Appended() - sequence);
        return m_write >= back ? m_write - back : m_write + m_slots - back;
    }
    /// The sample of a sequence number. REQUIRES: as SlotOfSequence.
    [[nodiscard]] double Sample(std::uint64_t sequence) const {
        return m_data[SlotOfSequence(sequence)];
    }

    /// All places that are allocated, the samples by slot. Valid until the next change.
    [[nodiscard]] std::span<const double> Slots() const { return {m_data.get(), m_slots}; }

    /// At most `count` samples from `position` on, never past the newest. Valid until the next
    /// change.
    [[nodiscard]] Parts Range(std::size_t position, std::size_t count) const;
    /// The same for `count` samples from a sequence number on. REQUIRES: they are kept.
    [[nodiscard]] Parts RangeOf(std::uint64_t sequence, std::size_t count) const;

    /// The most samples that the owner will hold; 0 when there is no bound. Bounds the growth of
    /// the allocation, allocates nothing. `kept`: so many dropped ones can be read besides.
    void SetExpectedSize(std::uint64_t size, std::uint64_t kept = 0) {
        m_expected_size = size;
        m_expected_kept = kept;
    }

    /// Holds the samples from a sequence number on, instead of those held before. The holder is not
    /// owned. Changes no sample; a run may become shorter. REQUIRES: FirstKept() <= from.
    void Hold(SampleHolder& holder, std::uint64_t from) const;
    /// Ends a hold; nothing when there is none.
    void Release(const SampleHolder& holder) const;

    /// Allocates for so many samples at once. False, and nothing changed, without memory for that.
    [[nodiscard]] bool Reserve(std::size_t slots);
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
    /// Drops all samples and counts from 0 again; holds end. Keeps the allocation.
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

 protected:
    /// Tells all holders that the samples go.
    void EndHolds();

 private:
    struct Held {
        SampleHolder* holder;
        std::uint64_t from;
    };

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
    /// Slots that can be written before one that is held.
    [[nodiscard]] std::size_t RoomBefore(std::uint64_t held_from) const;
    /// The same before any hold; at least 1: holders that stand in the way are told.
    std::size_t MakeWay();

    std::unique_ptr<double[]> m_data;
    std::size_t m_slots = 0;
    std::uint64_t m_expected_size = 0;
    std::uint64_t m_expected_kept = 0;
    std::uint64_t m_moves = 0;
    std::uint64_t m_first_stored = 0;  // earlier samples were not copied into the allocation
    mutable std::vector<Held> m_holds;

    std::size_t m_size = 0;        // without the samples of the run
    std::uint64_t m_appended = 0;  // without the samples of the run
    std::size_t m_write = 0;       // slot of the next sample; m_slots at the end of a full run
    std::size_t m_run_begin = 0;
    mutable std::size_t m_run_end = 0;
    bool m_run_grows = false;
};

/// Replaces `out` by the samples of ring.Range(position, count).
void CopyOut(const SampleRing& ring, std::vector<double>& out, std::size_t position,
             std::size_t count);

}  // namespace wavo
