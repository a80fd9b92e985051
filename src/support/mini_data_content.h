// The content of an INI store: its text, what of it is a line, an entry or a section, and how they
// are found by their names.
//
// Invariants:
// 1. Lines, entries and sections are places in the text. While nothing was moved or dropped the
//    text is the file, line by line.
// 2. A section that is indexed is found in the index whole; any other is searched line by line, or
//    indexed when it is asked for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "support/mini_data_parts.h"
#include "support/mini_data_text.h"
#include "support/text_buffer.h"

namespace wavo {

/// Plain parts that the store fills; what several of them have to do together are calls.
template <typename Compare>
class MIniDataContentT {
 public:
    using Section = MIniDataSectionT<Compare>;

    /// Empties it and gives its memory back.
    void Free();

    /// Null when there is none.
    [[nodiscard]] Section* FindSection(std::string_view name) const;
    [[nodiscard]] MIniDataEntry* FindEntry(const Section& section, std::string_view name) const;

    /// Calls `visit` with each line that was not dropped, in file order.
    template <typename Visitor>
    void ForEachLine(Visitor visit) const;
    /// Bytes of all lines with their ends.
    [[nodiscard]] std::size_t Size() const { return m_text.size() - m_dropped; }
    /// The text from a place to its end.
    [[nodiscard]] std::string_view TextFrom(std::size_t begin) const {
        return m_text.View(begin, m_text.size() - begin);
    }

    void RemoveEntry(const Section& section, MIniDataEntry& entry);
    void RemoveSection(Section& section);
    /// Puts the lines in file order into a new text without what was dropped. False, and nothing
    /// done, without memory.
    bool Compact();

    TextBuffer m_text;
    std::size_t m_dropped = 0;   ///< bytes of the text that belong to no line any more
    bool m_is_whole = true;      ///< the text is the file: nothing moved, nothing dropped
    MIniDataArena m_arena;       ///< holds lines and sections
    MIniDataLineList m_leading;  ///< the lines before the first section
    MIniDataSectionList<Section> m_sections;  ///< while parsing, the last one is the current one
    MIniDataIndex<Section, Compare> m_section_index;
    /// The entries of one section: the current one while parsing, later the one asked last.
    mutable MIniDataIndex<MIniDataEntry, Compare> m_entry_index;
    mutable const Section* m_indexed = nullptr;

 private:
    /// Takes a line out.
    void Drop(MIniDataLine& line);
};

template <typename Compare>
void MIniDataContentT<Compare>::Free() {
    m_text.Free();
    m_arena.Free();
    m_leading = {};
    m_sections = {};
    m_section_index.Free();
    m_entry_index.Free();
    m_indexed = nullptr;
    m_dropped = 0;
    m_is_whole = true;
}

template <typename Compare>
auto MIniDataContentT<Compare>::FindSection(std::string_view name) const -> Section* {
    return m_section_index.Find(name, m_text);
}

template <typename Compare>
MIniDataEntry* MIniDataContentT<Compare>::FindEntry(const Section& section,
                                                    std::string_view name) const {
    constexpr std::size_t kFewLines = 16;
    if (m_indexed != &section) {
        if (section.m_lines.size() <= kFewLines) {
            return section.Search(name, m_text);
        }
        m_entry_index.Clear();
        m_indexed = nullptr;
        for (MIniDataLine* line = section.m_lines.first(); line != nullptr; line = line->m_next) {
            MIniDataEntry* const entry = line->AsEntry();
            if (entry != nullptr && !m_entry_index.Add(entry, m_text)) {
                return section.Search(name, m_text);
            }
        }
        m_indexed = &section;
    }
    return m_entry_index.Find(name, m_text);
}

template <typename Compare>
template <typename Visitor>
void MIniDataContentT<Compare>::ForEachLine(Visitor visit) const {
    const auto visit_list = [&](const MIniDataLineList& lines) {
        for (MIniDataLine* line = lines.first(); line != nullptr; line = line->m_next) {
            if (line->m_length != 0) {
                visit(*line);
            }
        }
    };
    visit_list(m_leading);
    for (Section* section = m_sections.first(); section != nullptr; section = section->m_next) {
        visit(section->m_header);
        visit_list(section->m_lines);
    }
}

template <typename Compare>
void MIniDataContentT<Compare>::Drop(MIniDataLine& line) {
    if (line.m_length != 0) {
        m_dropped += line.m_length + ini::kLineEnd.size();
        line.m_length = 0;
        m_is_whole = false;
    }
}

template <typename Compare>
void MIniDataContentT<Compare>::RemoveEntry(const Section& section, MIniDataEntry& entry) {
    if (m_indexed == &section) {
        m_entry_index.Remove(&entry, m_text);
    }
    Drop(entry);
}

template <typename Compare>
void MIniDataContentT<Compare>::RemoveSection(Section& section) {
    if (m_indexed == &section) {
        m_entry_index.Clear();
        m_indexed = nullptr;
    }
    m_section_index.Remove(&section, m_text);
    m_sections.Remove(&section);
    Drop(section.m_header);
    for (MIniDataLine* line = section.m_lines.first(); line != nullptr; line = line->m_next) {
        Drop(*line);
    }
}

template <typename Compare>
bool MIniDataContentT<Compare>::Compact() {
    TextBuffer compact;
    if (!compact.Reserve(Size())) {
        return false;
    }
    ForEachLine([&](MIniDataLine& line) {
        const std::size_t begin = compact.size();
        compact.Put(m_text.View(line.m_begin, line.m_length + ini::kLineEnd.size()));
        line.m_begin = static_cast<std::uint32_t>(begin);
    });
    m_text = std::move(compact);
    m_dropped = 0;
    m_is_whole = true;
    return true;
}

}  // namespace wavo
