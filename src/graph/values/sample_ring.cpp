#include "graph/values/sample_ring.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

namespace wavo {

namespace {

constexpr std::size_t kFirstSlots = 1024;
constexpr std::size_t kMaxSlots =
    static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(double);

void CopyParts(const SampleRing::Parts& parts, double* to) {
    std::copy_n(parts.first.data(), parts.first.size(), to);
    std::copy_n(parts.second.data(), parts.second.size(), to + parts.first.size());
}

}  // namespace

SampleRing::SampleRing(const SampleRing& other)
    : m_slots(other.Size()),
      m_expected_size(other.m_expected_size),
      m_expected_kept(other.m_expected_kept),
      m_first_stored(other.FirstSequence()),
      m_size(other.Size()),
      m_appended(other.Appended()) {
    if (m_slots != 0) {
        m_data = std::make_unique_for_overwrite<double[]>(m_slots);
        CopyParts(other.Range(0, m_size), m_data.get());
    }
}

SampleRing& SampleRing::operator=(const SampleRing& other) {
    if (this != &other) {
        *this = SampleRing(other);
    }
    return *this;
}

SampleRing::SampleRing(SampleRing&& other) noexcept {
    *this = std::move(other);
}

SampleRing& SampleRing::operator=(SampleRing&& other) noexcept {
    if (this == &other) {
        return *this;
    }
    EndHolds();
    other.EndHolds();
    m_data = std::move(other.m_data);
    m_slots = std::exchange(other.m_slots, 0);
    m_expected_size = other.m_expected_size;
    m_expected_kept = other.m_expected_kept;
    m_first_stored = std::exchange(other.m_first_stored, 0);
    m_size = std::exchange(other.m_size, 0);
    m_appended = std::exchange(other.m_appended, 0);
    m_write = std::exchange(other.m_write, 0);
    m_run_begin = std::exchange(other.m_run_begin, 0);
    m_run_end = std::exchange(other.m_run_end, 0);
    m_run_grows = std::exchange(other.m_run_grows, false);
    ++m_moves;
    ++other.m_moves;
    return *this;
}

SampleRing::Parts SampleRing::Range(std::size_t position, std::size_t count) const {
    const std::size_t size = Size();
    if (position >= size) {
        return {};
    }
    return RangeOf(FirstSequence() + position, std::min(count, size - position));
}

SampleRing::Parts SampleRing::RangeOf(std::uint64_t sequence, std::size_t count) const {
    if (count == 0) {
        return {};
    }
    const std::size_t slot = SlotOfSequence(sequence);
    const std::size_t in_first = std::min(count, m_slots - slot);
    return {{m_data.get() + slot, in_first}, {m_data.get(), count - in_first}};
}

void SampleRing::Hold(SampleHolder& holder, std::uint64_t from) const {
    const auto held = std::find_if(m_holds.begin(), m_holds.end(),
                                   [&](const Held& each) { return each.holder == &holder; });
    if (held == m_holds.end()) {
        m_holds.push_back({&holder, from});
    } else {
        held->from = from;
    }
    m_run_end = std::min(m_run_end, m_write + std::min(RoomBefore(from), m_slots - m_write));
}

void SampleRing::Release(const SampleHolder& holder) const {
    std::erase_if(m_holds, [&](const Held& each) { return each.holder == &holder; });
}

void SampleRing::EndHolds() {
    for (const Held& held : std::exchange(m_holds, {})) {
        held.holder->BeforeEnd();
    }
}

std::size_t SampleRing::RoomBefore(std::uint64_t held_from) const {
    const std::uint64_t appended = Appended();
    return held_from >= appended ? m_slots
                                 : m_slots - static_cast<std::size_t>(appended - held_from);
}

std::size_t SampleRing::MakeWay() {
    std::size_t room = m_slots;
    for (const Held& held : std::vector<Held>(m_holds)) {
        if (RoomBefore(held.from) == 0) {
            held.holder->BeforeOverwrite();
        }
    }
    for (const Held& held : m_holds) {
        room = std::min(room, RoomBefore(held.from));
    }
    return room;
}

void CopyOut(const SampleRing& ring, std::vector<double>& out, std::size_t position,
             std::size_t count) {
    const SampleRing::Parts parts = ring.Range(position, count);
    out.clear();
    out.reserve(parts.first.size() + parts.second.size());
    // Inserting ranges copies without filling the room with zeros first.
    out.insert(out.end(), parts.first.begin(), parts.first.end());
    out.insert(out.end(), parts.second.begin(), parts.second.end());
}

bool SampleRing::MakeRoom() {
    Settle();
    return m_size != m_slots || GrowAllocation();
}

bool SampleRing::PushBack(double sample) {
    if (!MakeRoom()) {
        return false;
    }
    StoreAtWrite(sample);
    ++m_size;
    return true;
}

void SampleRing::DropFront() {
    Settle();
    --m_size;
}

void SampleRing::Replace(double sample) {
    Settle();
    StoreAtWrite(sample);
}

bool SampleRing::Push(std::span<const double> samples, std::uint64_t limit) {
    while (!samples.empty()) {
        if (Size() < limit) {
            if (!MakeRoom()) {
                return false;
            }
            OpenRun(RunKind::kGrow, limit - m_size);
        } else {
            OpenRun(RunKind::kReplace, samples.size());
        }
        const std::span<double> room = RunRoom();
        const std::size_t count = std::min(room.size(), samples.size());
        std::copy_n(samples.data(), count, room.data());
        Advance(count);
        CloseRun();
        samples = samples.subspan(count);
    }
    return true;
}

void SampleRing::Clear() {
    EndHolds();
    Settle();
    ++m_moves;
    m_first_stored = 0;
    m_size = 0;
    m_appended = 0;
    m_write = m_run_begin = m_run_end = 0;
}

void SampleRing::OpenRun(RunKind kind, std::uint64_t max_count) {
    Settle();
    std::size_t room = m_slots - m_write;
    if (kind == RunKind::kGrow) {
        // Free slots end at the oldest sample when they do not reach the last slot.
        room = std::min(room, m_slots - m_size);
    } else if (m_size == 0) {
        room = 0;
    }
    if (!m_holds.empty() && room != 0) {
        room = std::min(room, MakeWay());
    }
    m_run_grows = kind == RunKind::kGrow;
    m_run_end = m_write + static_cast<std::size_t>(std::min<std::uint64_t>(room, max_count));
}

void SampleRing::Settle() {
    const std::size_t length = RunLength();
    m_appended += length;
    if (m_run_grows) {
        m_size += length;
    }
    m_run_grows = false;
    if (m_write == m_slots) {
        m_write = 0;
    }
    m_run_begin = m_run_end = m_write;
}

void SampleRing::StoreAtWrite(double sample) {
    if (!m_holds.empty()) {
        MakeWay();
    }
    m_data[m_write] = sample;
    m_write = m_write + 1 == m_slots ? 0 : m_write + 1;
    m_run_begin = m_run_end = m_write;
    ++m_appended;
}

bool SampleRing::GrowAllocation() {
    if (m_slots == kMaxSlots) {
        return false;
    }
    const std::size_t slots =
        m_slots > kMaxSlots / 2 ? kMaxSlots : std::max(kFirstSlots, 2 * m_slots);
    if (m_expected_size > m_slots && slots >= m_expected_size) {
        return Reserve(static_cast<std::size_t>(
            std::min<std::uint64_t>(m_expected_size + m_expected_kept, kMaxSlots)));
    }
    return Reserve(slots);
}

bool SampleRing::Reserve(std::size_t slots) {
    Settle();
    std::unique_ptr<double[]> data(new (std::nothrow) double[slots]);
    if (data == nullptr) {
        return false;
    }
    CopyParts(Range(0, m_size), data.get());
    if (m_size != 0 && OldestSlot() != 0) {
        ++m_moves;
    }
    m_first_stored = FirstSequence();
    m_data = std::move(data);
    m_slots = slots;
    m_write = m_run_begin = m_run_end = m_size;
    return true;
}

}  // namespace wavo
