// What an INI store is made of: lines, entries and sections in file order, an index by name, and
// the memory that holds them.
//
// Invariants:
// 1. Lines, entries and sections are places in the store's text (offsets: the text moves when it
//    grows) and lie in the store's arena, which frees them all at once. None owns anything, so
//    none is destroyed one by one.
// 2. What is in an index is in a list, once.
// 3. Allocation gives null when there is no memory; nothing throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "support/byte_scan.h"
#include "support/mini_data_text.h"
#include "support/text_buffer.h"

namespace wavo {

/// Names are the same when their bytes are.
struct MIniDataCaseSensitiveCompare {
    /// How reports name this policy.
    static constexpr const char* kName = "struct MIniDataCaseSensitiveCompare";

    static bool IsEqual(std::string_view a, std::string_view b) noexcept { return a == b; }
    /// Equal names have equal hashes.
    static std::uint32_t Hash(std::string_view name) noexcept;
};

/// Memory in blocks, freed together.
class MIniDataArena {
 public:
    MIniDataArena() = default;
    ~MIniDataArena() { Free(); }
    MIniDataArena(const MIniDataArena&) = delete;
    MIniDataArena& operator=(const MIniDataArena&) = delete;

    /// `size` bytes, aligned for pointers; null when there is no memory.
    void* Allocate(std::size_t size) noexcept {
        size = (size + kAlignment - 1) & ~(kAlignment - 1);
        if (size > m_left) {
            return AllocateInNewBlock(size);
        }
        void* const memory = m_next;
        m_next += size;
        m_left -= size;
        return memory;
    }

    /// A new object; null when there is no memory. Its destructor is never called.
    template <typename T, typename... Arguments>
    T* New(Arguments&&... arguments) noexcept {
        static_assert(alignof(T) <= kAlignment);
        void* const memory = Allocate(sizeof(T));
        return memory != nullptr ? new (memory) T(std::forward<Arguments>(arguments)...) : nullptr;
    }

    void Free() noexcept;

 private:
    static constexpr std::size_t kAlignment = alignof(void*);
    struct Block {
        Block* previous;
    };
    void* AllocateInNewBlock(std::size_t size) noexcept;

    Block* m_blocks = nullptr;
    char* m_next = nullptr;
    std::size_t m_left = 0;
    std::size_t m_block_size = 0;  ///< of the newest block
};

class MIniDataEntry;

/// One line of the file: lines of blanks, comments and the headers of sections.
class MIniDataLine {
 public:
    MIniDataLine(std::size_t begin, std::size_t length) noexcept
        : m_begin(static_cast<std::uint32_t>(begin)),
          m_length(static_cast<std::uint32_t>(length)) {}
    virtual ~MIniDataLine() = default;
    MIniDataLine(const MIniDataLine&) = delete;
    MIniDataLine& operator=(const MIniDataLine&) = delete;

    /// The entry that this line is; null for other lines.
    [[nodiscard]] virtual MIniDataEntry* AsEntry() noexcept { return nullptr; }

    /// The line without its end.
    [[nodiscard]] std::string_view Text(const TextBuffer& text) const noexcept {
        return text.View(m_begin, m_length);
    }

    MIniDataLine* m_next = nullptr;
    std::uint32_t m_begin;   ///< offset in the store's text
    std::uint32_t m_length;  ///< 0: the line was removed; empty lines are not kept
};

/// A line with a name, "=" and a value. There are many: they hold no more than it takes to find
/// the rest in a few steps.
class MIniDataEntry : public MIniDataLine {
 public:
    MIniDataEntry(std::size_t begin, std::size_t length, const ini::EntryParts& parts) noexcept
        : MIniDataLine(begin, length) {
        SetParts(parts);
    }

    [[nodiscard]] MIniDataEntry* AsEntry() noexcept override {
        return m_length != 0 ? this : nullptr;
    }
    [[nodiscard]] std::string_view Name(const TextBuffer& text) const noexcept {
        const std::string_view line = Text(text);
        return line.substr(ini::FirstNonBlank(line), m_name_length);
    }
    [[nodiscard]] std::string_view Value(const TextBuffer& text) const noexcept {
        return ini::ValueOf(Text(text), m_value_begin);
    }
    void SetParts(const ini::EntryParts& parts) noexcept {
        m_name_length = static_cast<std::uint32_t>(parts.name_length);
        m_value_begin = static_cast<std::uint32_t>(parts.value_begin);
    }

    std::uint32_t m_name_length = 0;
    std::uint32_t m_value_begin = 0;  ///< within the line
};

/// Lines in file order. None leaves it: those that are removed are marked.
class MIniDataLineList {
 public:
    [[nodiscard]] MIniDataLine* first() const noexcept { return m_first; }
    /// The number of lines, removed ones with them.
    [[nodiscard]] std::size_t size() const noexcept { return m_size; }

    void Append(MIniDataLine* line) noexcept {
        (m_last != nullptr ? m_last->m_next : m_first) = line;
        m_last = line;
        ++m_size;
    }

 private:
    MIniDataLine* m_first = nullptr;
    MIniDataLine* m_last = nullptr;
    std::size_t m_size = 0;
};

/// A section: its header, its name and its lines in file order.
template <typename Compare>
class MIniDataSectionT {
 public:
    MIniDataSectionT(std::size_t begin, std::size_t length, std::size_t name_begin,
                     std::size_t name_length) noexcept
        : m_header(begin, length),
          m_name_begin(static_cast<std::uint32_t>(name_begin)),
          m_name_length(static_cast<std::uint32_t>(name_length)) {}

    [[nodiscard]] std::string_view Name(const TextBuffer& text) const noexcept {
        return text.View(m_header.m_begin + m_name_begin, m_name_length);
    }
    /// Looks at one line after the other; null when no entry has this name.
    [[nodiscard]] MIniDataEntry* Search(std::string_view name,
                                        const TextBuffer& text) const noexcept {
        for (MIniDataLine* line = m_lines.first(); line != nullptr; line = line->m_next) {
            MIniDataEntry* const entry = line->AsEntry();
            if (entry != nullptr && Compare::IsEqual(entry->Name(text), name)) {
                return entry;
            }
        }
        return nullptr;
    }

    MIniDataSectionT* m_previous = nullptr;
    MIniDataSectionT* m_next = nullptr;
    MIniDataLine m_header;
    std::uint32_t m_name_begin;  ///< within the header
    std::uint32_t m_name_length;
    MIniDataLineList m_lines;
};

/// Sections in file order.
template <typename Section>
class MIniDataSectionList {
 public:
    [[nodiscard]] Section* first() const noexcept { return m_first; }
    [[nodiscard]] Section* last() const noexcept { return m_last; }

    void Append(Section* section) noexcept {
        section->m_previous = m_last;
        (m_last != nullptr ? m_last->m_next : m_first) = section;
        m_last = section;
    }
    void Remove(Section* section) noexcept {
        (section->m_previous != nullptr ? section->m_previous->m_next : m_first) = section->m_next;
        (section->m_next != nullptr ? section->m_next->m_previous : m_last) = section->m_previous;
    }

 private:
    Section* m_first = nullptr;
    Section* m_last = nullptr;
};

/// Finds items by their names: open addressing, at most three quarters full. Emptying it costs
/// nothing, so that one index serves section after section.
template <typename Item, typename Compare>
class MIniDataIndex {
 public:
    struct Slot {
        Item* item = nullptr;
        std::uint32_t hash = 0;
        std::uint32_t generation = 0;  ///< what other generations left is empty
    };

    MIniDataIndex() = default;
    ~MIniDataIndex() { std::free(m_slots); }
    MIniDataIndex(const MIniDataIndex&) = delete;
    MIniDataIndex& operator=(const MIniDataIndex&) = delete;

    void Clear() noexcept {
        m_count = 0;
        ++m_generation;
        if (m_generation == 0) {
            Free();
        }
    }
    void Free() noexcept {
        std::free(std::exchange(m_slots, nullptr));
        m_capacity = 0;
        m_count = 0;
        m_generation = 1;
    }

    /// The item of this name; null when there is none.
    [[nodiscard]] Item* Find(std::string_view name, const TextBuffer& text) const noexcept {
        if (m_count == 0) {
            return nullptr;
        }
        const Slot* const slot = FindSlot(name, Compare::Hash(name), text);
        return IsEmpty(*slot) ? nullptr : slot->item;
    }

    /// Makes room for one more item. False when there is no memory.
    [[nodiscard]] bool Reserve() noexcept { return (m_count + 1) * 4 <= m_capacity * 3 || Grow(); }

    /// Where the item of this name is, or an empty slot to fill with it.
    /// REQUIRES: the index has slots: Reserve has succeeded.
    [[nodiscard]] Slot* FindSlot(std::string_view name, std::uint32_t hash,
                                 const TextBuffer& text) const noexcept {
        std::uint32_t i = hash & (m_capacity - 1);
        while (!IsEmpty(m_slots[i]) &&
               !(m_slots[i].hash == hash && Compare::IsEqual(m_slots[i].item->Name(text), name))) {
            i = (i + 1) & (m_capacity - 1);
        }
        return m_slots + i;
    }
    [[nodiscard]] bool IsEmpty(const Slot& slot) const noexcept {
        return slot.generation != m_generation;
    }
    /// REQUIRES: Reserve succeeded since the last Fill.
    void Fill(Slot* slot, Item* item, std::uint32_t hash) noexcept {
        *slot = {item, hash, m_generation};
        ++m_count;
    }
    /// Adds an item whose name is not in the index. False when there is no memory.
    [[nodiscard]] bool Add(Item* item, const TextBuffer& text) noexcept {
        if (!Reserve()) {
            return false;
        }
        const std::uint32_t hash = Compare::Hash(item->Name(text));
        Fill(FindSlot(item->Name(text), hash, text), item, hash);
        return true;
    }

    /// REQUIRES: the item is in the index.
    void Remove(const Item* item, const TextBuffer& text) noexcept {
        const std::uint32_t mask = m_capacity - 1;
        const std::string_view name = item->Name(text);
        auto hole = static_cast<std::uint32_t>(FindSlot(name, Compare::Hash(name), text) - m_slots);
        // What follows moves up where it may, so that no search ends at the hole too early.
        for (std::uint32_t i = (hole + 1) & mask; !IsEmpty(m_slots[i]); i = (i + 1) & mask) {
            const std::uint32_t home = m_slots[i].hash & mask;
            if (((i - home) & mask) >= ((i - hole) & mask)) {
                m_slots[hole] = m_slots[i];
                hole = i;
            }
        }
        m_slots[hole].generation = 0;
        --m_count;
    }

 private:
    bool Grow() noexcept {
        constexpr std::uint32_t kSmallest = 64;
        const std::uint32_t capacity = m_capacity != 0 ? m_capacity * 4 : kSmallest;
        auto* const slots = static_cast<Slot*>(std::calloc(capacity, sizeof(Slot)));
        if (slots == nullptr) {
            return false;
        }
        for (std::uint32_t i = 0; i < m_capacity; ++i) {
            if (!IsEmpty(m_slots[i])) {
                std::uint32_t to = m_slots[i].hash & (capacity - 1);
                while (!IsEmpty(slots[to])) {
                    to = (to + 1) & (capacity - 1);
                }
                slots[to] = m_slots[i];
            }
        }
        std::free(std::exchange(m_slots, slots));
        m_capacity = capacity;
        return true;
    }

    Slot* m_slots = nullptr;
    std::uint32_t m_capacity = 0;  ///< a power of two, or 0
    std::uint32_t m_count = 0;
    std::uint32_t m_generation = 1;  ///< never 0, which new slots have
};

inline std::uint32_t MIniDataCaseSensitiveCompare::Hash(std::string_view name) noexcept {
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;
    const auto mix = [](std::uint64_t value) {
        value *= kFactor;
        return value ^ (value >> 32);
    };
    const char* text = name.data();
    std::size_t left = name.size();
    std::uint64_t hash = left;
    for (; left > 8; left -= 8, text += 8) {
        hash = mix(hash ^ bytes::Load(text));
    }
    std::uint64_t rest = 0;
    if (left >= 4) {
        std::uint32_t low = 0;
        std::uint32_t high = 0;
        std::memcpy(&low, text, sizeof low);
        std::memcpy(&high, text + left - sizeof high, sizeof high);
        rest = (std::uint64_t{high} << 32) | low;
    } else if (left > 0) {
        rest = (std::uint64_t{static_cast<unsigned char>(text[0])} << 16) |
               (std::uint64_t{static_cast<unsigned char>(text[left / 2])} << 8) |
               static_cast<unsigned char>(text[left - 1]);
    }
    return static_cast<std::uint32_t>(mix(mix(hash ^ rest)));
}

}  // namespace wavo
