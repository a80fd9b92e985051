// Getting and setting entries.
#include "support/diagnostics.h"
#include "support/mini_data.h"
#include "support/mini_data_text.h"
#include "support/report_texts.h"

namespace wavo {

using ini::kLineEnd;

template <typename Compare>
bool MIniDataT<Compare>::HasSection(std::string_view section) const {
    return m_content.FindSection(section) != nullptr;
}

template <typename Compare>
std::vector<std::string> MIniDataT<Compare>::SectionNames() const {
    std::vector<std::string> names;
    for (const Section* section = m_content.m_sections.first(); section != nullptr;
         section = section->m_next) {
        names.emplace_back(section->Name(m_content.m_text));
    }
    return names;
}

template <typename Compare>
std::vector<std::string> MIniDataT<Compare>::EntryNames(std::string_view section) const {
    std::vector<std::string> names;
    const Section* const found = m_content.FindSection(section);
    for (MIniDataLine* line = found != nullptr ? found->m_lines.first() : nullptr; line != nullptr;
         line = line->m_next) {
        if (const MIniDataEntry* const entry = line->AsEntry(); entry != nullptr) {
            names.emplace_back(entry->Name(m_content.m_text));
        }
    }
    return names;
}

template <typename Compare>
bool MIniDataT<Compare>::GetStringEntry(std::string_view section, std::string_view name,
                                        std::string& value) const {
    value.clear();
    const Section* const found = m_content.FindSection(section);
    const MIniDataEntry* const entry =
        found != nullptr ? m_content.FindEntry(*found, name) : nullptr;
    if (entry == nullptr) {
        return false;
    }
    value = entry->Value(m_content.m_text);
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::SetStringEntry(std::string_view section, std::string_view name,
                                        std::string_view value) {
    return SetEntry("SetStringEntry", value, section, name, value);
}

template <typename Compare>
bool MIniDataT<Compare>::SetLongEntry(std::string_view section, std::string_view name, long value) {
    const std::string text = ini::NumberText(value);
    return SetEntry("SetLongEntry", text, section, name, text);
}

template <typename Compare>
bool MIniDataT<Compare>::SetDoubleEntry(std::string_view section, std::string_view name,
                                        double value) {
    // Reports show it shorter than it is written.
    return SetEntry("SetDoubleEntry", ini::NumberText(value, 6), section, name,
                    ini::NumberText(value, 17));
}

template <typename Compare>
bool MIniDataT<Compare>::SetEntry(const char* setter, std::string_view shown_value,
                                  std::string_view section_name, std::string_view name,
                                  std::string_view value) {
    if (!MayBeEntry(setter, shown_value, name, value)) {
        return false;
    }
    Section* section = m_content.FindSection(section_name);
    MIniDataEntry* const entry = section != nullptr ? m_content.FindEntry(*section, name) : nullptr;
    if (entry != nullptr) {
        if (!ChangeEntry(*entry, value)) {
            MERRTRACE("MIniDataSectionT::%s(): cannot change entry \"%.40s\"", setter,
                      ini::Echo(name, 40).c_str());
            return false;
        }
        return true;
    }
    if (section == nullptr) {
        section = add_new_section(section_name);
        if (section == nullptr) {
            MERRTRACE(support_texts::kNoNewSection, setter);
            return false;
        }
    }
    if (!add_new_entry(*section, name, value)) {
        MERRTRACE(support_texts::kNoNewEntry, setter);
        return false;
    }
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::MayBeEntry(const char* setter, std::string_view shown_value,
                                    std::string_view name, std::string_view value) {
    const std::size_t first = ini::FirstNonBlank(name);
    const char* reason = nullptr;
    if (first < name.size() && ini::BeginsComment(name[first])) {
        reason = support_texts::kCommentAsEntry;
    } else if (!ini::IsEntryName(name) || !ini::IsValue(value) ||
               name.size() + value.size() >= kLongestLine) {
        reason = "cannot add an entry that would not read back";
    } else {
        return true;
    }
    m_last_error = std::string("MIniDataT<") + Compare::kName + ">::" + setter + "(): " + reason +
                   ": \"" + ini::Echo(name) + "=" + ini::Echo(shown_value) + "\"";
    MERRTRACE("%s", m_last_error.c_str());
    return false;
}

/// Makes room for a new line of this length.
template <typename Compare>
bool MIniDataT<Compare>::MakeRoom(std::size_t length) {
    constexpr std::size_t kWorthIt = std::size_t{64} << 10;
    if (m_content.Size() + length + kLineEnd.size() > kLargestFile) {
        m_last_error = "more than " + std::to_string(kLargestFile) + " bytes";
        return false;
    }
    if ((m_content.m_dropped > m_content.m_text.size() / 2 + kWorthIt && !m_content.Compact()) ||
        !m_content.m_text.Reserve(length + kLineEnd.size())) {
        m_last_error = "out of memory (" + ini::SystemText() + ")";
        return false;
    }
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::ChangeEntry(MIniDataEntry& entry, std::string_view value) {
    if (entry.Value(m_content.m_text) == value) {
        return true;
    }
    // What stands before the value stays as somebody wrote it, if the value reads back behind it.
    const std::string_view old = entry.Text(m_content.m_text);
    const bool has_equals = old[entry.m_value_begin - 1] == '=';
    const bool is_spaced = ini::IsSpaced(old, entry.m_value_begin);
    std::size_t kept = 0;
    if (has_equals && !is_spaced) {
        kept = entry.m_value_begin;
    } else if (has_equals && ini::Trim(value) == value) {
        kept = static_cast<std::size_t>(entry.Value(m_content.m_text).data() - old.data());
    }
    const std::size_t length = (kept != 0 ? kept : entry.m_name_length + 1) + value.size();
    if (length > kLongestLine) {
        m_last_error = "line longer than " + std::to_string(kLongestLine) + " bytes";
        return false;
    }
    if (!MakeRoom(length)) {
        return false;
    }
    const std::size_t begin = m_content.m_text.size();
    if (kept != 0) {
        m_content.m_text.Put(entry.Text(m_content.m_text).substr(0, kept));
    } else {
        m_content.m_text.Put(entry.Name(m_content.m_text));
        m_content.m_text.Put("=");
    }
    m_content.m_text.Put(value);
    m_content.m_dropped += entry.m_length + kLineEnd.size();
    entry.m_begin = static_cast<std::uint32_t>(begin);
    entry.m_length = static_cast<std::uint32_t>(m_content.m_text.size() - begin);
    const std::string_view line = entry.Text(m_content.m_text);
    entry.SetParts(ini::SplitEntry(line, ini::FirstNonBlank(line)));
    m_content.m_text.Put(kLineEnd);
    SetChanged();
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::add_new_entry(Section& section, std::string_view name,
                                       std::string_view value) {
    const std::size_t length = name.size() + 1 + value.size();
    if (!MakeRoom(length)) {
        return false;
    }
    ini::EntryParts parts;
    parts.has_equals = true;
    parts.name_length = name.size();
    parts.value_begin = name.size() + 1;
    auto* const entry =
        m_content.m_arena.template New<MIniDataEntry>(m_content.m_text.size(), length, parts);
    if (entry == nullptr) {
        m_last_error = "out of memory (" + ini::SystemText() + ")";
        return false;
    }
    m_content.m_text.Put(name);
    m_content.m_text.Put("=");
    m_content.m_text.Put(value);
    m_content.m_text.Put(kLineEnd);
    section.m_lines.Append(entry);
    if (m_content.m_indexed == &section && !m_content.m_entry_index.Add(entry, m_content.m_text)) {
        m_content.m_indexed = nullptr;  // searched until there is memory again
    }
    SetChanged();
    return true;
}

template <typename Compare>
auto MIniDataT<Compare>::add_new_section(std::string_view name) -> Section* {
    if (!ini::IsSectionName(name) || name.size() + 2 > kLongestLine) {
        m_last_error =
            "a section of this name would not read back: \"" + ini::Echo(name, 40) + "\"";
        return nullptr;
    }
    const std::size_t length = name.size() + 2;
    if (!MakeRoom(length)) {
        return nullptr;
    }
    auto* const section =
        m_content.m_arena.template New<Section>(m_content.m_text.size(), length, 1, name.size());
    if (section == nullptr || !m_content.m_section_index.Reserve()) {
        m_last_error = "out of memory (" + ini::SystemText() + ")";
        return nullptr;
    }
    m_content.m_text.Put("[");
    m_content.m_text.Put(name);
    m_content.m_text.Put("]");
    m_content.m_text.Put(kLineEnd);
    const std::uint32_t hash = Compare::Hash(name);
    m_content.m_section_index.Fill(m_content.m_section_index.FindSlot(name, hash, m_content.m_text),
                                   section, hash);
    m_content.m_sections.Append(section);
    SetChanged();
    return section;
}

template <typename Compare>
bool MIniDataT<Compare>::DeleteEntry(std::string_view section, std::string_view name) {
    Section* const found = m_content.FindSection(section);
    if (found == nullptr) {
        m_last_error = support_texts::NoSuchSection(ini::Echo(section, 40));
        MERRTRACE(support_texts::kSectionNotFound, m_last_error.c_str());
        return false;
    }
    MIniDataEntry* const entry = m_content.FindEntry(*found, name);
    if (entry == nullptr) {
        m_last_error = "entry \"" + ini::Echo(name, 40) + "\" not found";
        MERRTRACE(support_texts::kEntryNotDeleted, ini::Echo(section, 30).c_str(),
                  ini::Echo(name, 30).c_str());
        return false;
    }
    m_content.RemoveEntry(*found, *entry);
    SetChanged();
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::DeleteSection(std::string_view section) {
    Section* const found = m_content.FindSection(section);
    if (found == nullptr) {
        return false;
    }
    m_content.RemoveSection(*found);
    SetChanged();
    return true;
}

template bool MIniDataT<MIniDataCaseSensitiveCompare>::HasSection(std::string_view) const;
template std::vector<std::string> MIniDataT<MIniDataCaseSensitiveCompare>::SectionNames() const;
template std::vector<std::string> MIniDataT<MIniDataCaseSensitiveCompare>::EntryNames(
    std::string_view) const;
template bool MIniDataT<MIniDataCaseSensitiveCompare>::GetStringEntry(std::string_view,
                                                                      std::string_view,
                                                                      std::string&) const;
template bool MIniDataT<MIniDataCaseSensitiveCompare>::SetStringEntry(std::string_view,
                                                                      std::string_view,
                                                                      std::string_view);
template bool MIniDataT<MIniDataCaseSensitiveCompare>::SetLongEntry(std::string_view,
                                                                    std::string_view, long);
template bool MIniDataT<MIniDataCaseSensitiveCompare>::SetDoubleEntry(std::string_view,
                                                                      std::string_view, double);
template bool MIniDataT<MIniDataCaseSensitiveCompare>::DeleteEntry(std::string_view,
                                                                   std::string_view);
template bool MIniDataT<MIniDataCaseSensitiveCompare>::DeleteSection(std::string_view);

}  // namespace wavo
