#include "support/mini_data.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/file.h"
#include "platform/last_error.h"
#include "support/diagnostics.h"
#include "support/fast_file.h"
#include "support/mini_data_text.h"
#include "support/report_texts.h"

namespace wavo {

using ini::kLineEnd;

namespace {

using namespace std::string_view_literals;
// The marks of 32 bits begin with those of 16, so they are looked at first.
constexpr std::string_view kWideMarks[] = {"\xFF\xFE\0\0"sv, "\0\0\xFE\xFF"sv, "\xFF\xFE"sv,
                                           "\xFE\xFF"sv};
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF"sv;

}  // namespace

template <typename Compare>
MIniDataT<Compare>::MIniDataT(unsigned options) : m_options(options) {}

template <typename Compare>
MIniDataT<Compare>::~MIniDataT() = default;

// Reading

template <typename Compare>
void MIniDataT<Compare>::Reset() {
    MErrTrace_BeginContext();
    m_content.Free();
    m_line = 0;
    m_valid = false;
    m_new_or_changed = true;
    m_loaded_or_saved = false;
    m_last_error.clear();
    MErrTrace_EndContext();
}

/// Empties the store after a failure, whose text stays. Always false.
template <typename Compare>
bool MIniDataT<Compare>::Abandon() {
    const std::string error = std::move(m_last_error);
    Reset();
    m_last_error = error;
    return false;
}

template <typename Compare>
bool MIniDataT<Compare>::Open(const std::string& path) {
    Reset();
    m_path = path;
    if (!platform::Files().Exists(path)) {
        m_valid = true;
        return true;
    }
    MFastFileReader reader;
    if (!reader.Open(path)) {
        m_last_error = "MFastFileReader::Open() failed: " + ini::SystemText();
        MERRTRACE(support_texts::kStoreNotOpened);
        return false;
    }
    if (!ReadLines(reader)) {
        return Abandon();
    }
    m_valid = true;
    m_new_or_changed = false;
    m_loaded_or_saved = true;
    reader.Close();
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::ReadLines(MFastFileReader& reader) {
    constexpr char kCaller[] = "MIniData::Open()";
    // Line ends of one byte become two, so a file of short lines needs more; then the text grows.
    const std::size_t expected =
        static_cast<std::size_t>(std::min<std::uint64_t>(reader.FileSize(), kLargestFile));
    if (!m_content.m_text.Reserve(expected + expected / 16 + kLineEnd.size())) {
        return OutOfMemory("TextBuffer");
    }
    const auto read_failed = [this] {
        m_last_error = "MFastFileReader::ReadLine() failed: " + ini::SystemText();
        MERRTRACE(support_texts::kStoreNotRead);
        return false;
    };
    std::size_t empty_lines = 0;
    for (bool is_first = true; !reader.IsEOF(); is_first = false) {
        m_line = m_content.m_text.size();
        switch (reader.AppendLine(m_content.m_text, kLongestLine)) {
            case MFastFileReader::Line::kWhole:
                break;
            case MFastFileReader::Line::kCut:
                // What is wrong with the line shows in its first part, if anything is.
                return TakeLine(kCaller, is_first) &&
                       ParseFailed("line longer than " + std::to_string(kLongestLine) +
                                   " bytes: \"" + ini::Echo(m_content.TextFrom(m_line), 50) + "\"");
            case MFastFileReader::Line::kFailed:
                return read_failed();
            case MFastFileReader::Line::kOutOfMemory:
                return OutOfMemory("TextBuffer");
        }
        if (!TakeLine(kCaller, is_first)) {
            return false;
        }
        empty_lines += m_content.m_text.size() == m_line ? 1 : 0;
        if (m_content.m_text.size() + empty_lines > kLargestFile) {
            return ParseFailed("more than " + std::to_string(kLargestFile) + " bytes");
        }
    }
    // A failed read ends the lines, but it is not the end of the file: a store without the rest
    // would be saved over it.
    return !reader.HasFailed() || read_failed();
}

/// Takes in the line that was read. It gets its line end when it is kept.
template <typename Compare>
bool MIniDataT<Compare>::TakeLine(const char* caller, bool is_first) {
    if (is_first && !CheckMarks(caller)) {
        return false;
    }
    if (m_content.m_text.size() == m_line) {
        return true;
    }
    if (!parse_line()) {
        MERRTRACE(support_texts::kLineNotParsed, caller,
                  ini::Echo(m_content.TextFrom(m_line), 60).c_str());
        return false;
    }
    if (!m_content.m_text.Reserve(kLineEnd.size())) {
        return OutOfMemory("TextBuffer");
    }
    m_content.m_text.Put(kLineEnd);
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::CheckMarks(const char* caller) {
    const std::string_view line = m_content.TextFrom(m_line);
    for (const std::string_view mark : kWideMarks) {
        if (line.starts_with(mark)) {
            m_last_error = support_texts::kWideTextError;
            // The caller's name without its closing bracket: the path follows.
            MERRTRACE(support_texts::kWideText, static_cast<int>(std::strlen(caller)) - 1, caller,
                      m_path.c_str());
            return false;
        }
    }
    if (line.starts_with(kUtf8Mark)) {
        const std::size_t rest = line.size() - kUtf8Mark.size();
        std::memmove(m_content.m_text.data() + m_line,
                     m_content.m_text.data() + m_line + kUtf8Mark.size(), rest);
        m_content.m_text.SetSize(m_line + rest);
    }
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::parse_line() {
    const std::string_view line = m_content.TextFrom(m_line);
    if (line.front() == '[') {
        return ParseHeader();
    }
    const std::size_t first = ini::FirstNonBlank(line);
    if (first == line.size() || ini::BeginsComment(line[first])) {
        return KeepLine();
    }
    if (m_content.m_sections.last() == nullptr) {
        return ParseFailed(support_texts::EntryBeforeSections(ini::Echo(line)));
    }
    return ParseEntry(first);
}

template <typename Compare>
bool MIniDataT<Compare>::KeepLine() {
    auto* const kept =
        m_content.m_arena.template New<MIniDataLine>(m_line, m_content.m_text.size() - m_line);
    if (kept == nullptr) {
        return OutOfMemory("MIniDataLine");
    }
    (m_content.m_sections.last() != nullptr ? m_content.m_sections.last()->m_lines
                                            : m_content.m_leading)
        .Append(kept);
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::ParseHeader() {
    const std::string_view line = m_content.TextFrom(m_line);
    const std::size_t end = line.find(']');
    if (end == std::string_view::npos) {
        return ParseFailed(support_texts::NoHeaderEnd(ini::Echo(line, 50)));
    }
    const std::string_view name = ini::Trim(line.substr(1, end - 1));
    if (Section* const earlier = m_content.FindSection(name); earlier != nullptr) {
        if ((m_options & kReplaceSections) == 0) {
            return ParseFailed(support_texts::SectionSeenTwice(ini::Echo(name)));
        }
        m_content.RemoveSection(*earlier);
    }
    auto* const section = m_content.m_arena.template New<Section>(
        m_line, line.size(), static_cast<std::size_t>(name.data() - line.data()), name.size());
    if (section == nullptr || !m_content.m_section_index.Add(section, m_content.m_text)) {
        return OutOfMemory("MIniDataSectionT");
    }
    m_content.m_sections.Append(section);
    m_content.m_entry_index.Clear();
    m_content.m_indexed = section;
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::ParseEntry(std::size_t first) {
    const std::string_view line = m_content.TextFrom(m_line);
    Section& section = *m_content.m_sections.last();
    const ini::EntryParts parts = ini::SplitEntry(line, first);
    if (!parts.has_equals || parts.name_length == 0) {
        if ((m_options & (kLenientEntries | kReplaceSections)) == 0) {
            const std::string section_name = ini::Echo(section.Name(m_content.m_text));
            return ParseFailed(parts.has_equals
                                   ? support_texts::NoEntryName(ini::Echo(line), section_name)
                                   : support_texts::NoEquals(ini::Echo(line, 50), section_name));
        }
        if (parts.name_length == 0) {
            return KeepLine();
        }
    }
    if (!m_content.m_entry_index.Reserve()) {
        return OutOfMemory("MIniDataEntry");
    }
    const std::string_view name = line.substr(first, parts.name_length);
    const std::uint32_t hash = Compare::Hash(name);
    auto* slot = m_content.m_entry_index.FindSlot(name, hash, m_content.m_text);
    if (!m_content.m_entry_index.IsEmpty(*slot)) {
        if ((m_options & kReplaceEntries) == 0) {
            return ParseFailed(support_texts::EntrySeenTwice(
                ini::Echo(name), ini::Echo(section.Name(m_content.m_text))));
        }
        m_content.RemoveEntry(section, *slot->item);
        slot = m_content.m_entry_index.FindSlot(name, hash, m_content.m_text);
    }
    auto* const entry = m_content.m_arena.template New<MIniDataEntry>(m_line, line.size(), parts);
    if (entry == nullptr) {
        return OutOfMemory("MIniDataEntry");
    }
    m_content.m_entry_index.Fill(slot, entry, hash);
    section.m_lines.Append(entry);
    return true;
}

template <typename Compare>
bool MIniDataT<Compare>::ParseFailed(std::string error) {
    m_last_error = std::move(error);
    MERRTRACE(support_texts::kParseFailed, m_last_error.c_str());
    return false;
}

template <typename Compare>
bool MIniDataT<Compare>::OutOfMemory(const char* what) {
    const int reason = errno != 0 ? errno : ENOMEM;
    MERRTRACE(support_texts::kParseNoMemory, what, platform::ErrorText(reason).c_str());
    return ParseFailed(support_texts::OutOfMemory(ini::Echo(m_content.TextFrom(m_line), 50)));
}

template <typename Compare>
bool MIniDataT<Compare>::SetContent(std::string_view text) {
    constexpr char kCaller[] = "MIniData::SetContent()";
    Reset();
    const char* from = text.data();
    const char* const end = from + text.size();
    for (bool is_first = true; from != end; is_first = false) {
        const char* const line_end = bytes::FindEither(from, end, '\r', '\n');
        const std::string_view line(from, static_cast<std::size_t>(line_end - from));
        m_line = m_content.m_text.size();
        const bool fits = line.size() <= kLongestLine && m_line + line.size() <= kLargestFile;
        if (!m_content.m_text.Append(line.substr(0, kLongestLine))) {
            OutOfMemory("TextBuffer");
            return Abandon();
        }
        if (!TakeLine(kCaller, is_first)) {
            return Abandon();
        }
        if (!fits) {
            ParseFailed("more than " + std::to_string(kLongestLine) + " bytes in a line, or " +
                        std::to_string(kLargestFile) + " in all");
            return Abandon();
        }
        from = line_end;
        if (from != end) {
            from += *from == '\r' && end - from > 1 && from[1] == '\n' ? 2 : 1;
        }
    }
    m_valid = true;
    return true;
}

template <typename Compare>
void MIniDataT<Compare>::Clear() {
    Reset();
    m_valid = true;
}

// Content

template <typename Compare>
void MIniDataT<Compare>::SetChanged() {
    m_content.m_is_whole = false;
    m_new_or_changed = true;
}

template <typename Compare>
std::string MIniDataT<Compare>::Content() const {
    std::string content;
    content.reserve(m_content.Size());
    m_content.ForEachLine([&](const MIniDataLine& line) {
        content += line.Text(m_content.m_text);
        content += kLineEnd;
    });
    return content;
}

template <typename Compare>
bool MIniDataT<Compare>::Save() {
    if (!m_content.m_is_whole && !m_content.Compact()) {
        m_last_error = "out of memory (" + ini::SystemText() + ")";
        MERRTRACE("MIniData::Save(): %s", m_last_error.c_str());
        return false;
    }
    if (MFastFile_WriteLinesAtOnce(m_path, m_content.m_text.View(),
                                   m_options & (kSaveFlush | kSaveSafe)) == kWriteFailed) {
        m_last_error = "MFastFile_WriteLinesAtOnce() failed: " + ini::SystemText();
        MERRTRACE(support_texts::kStoreNotSaved, m_path.c_str());
        return false;
    }
    m_new_or_changed = false;
    m_loaded_or_saved = true;
    return true;
}

template class MIniDataT<MIniDataCaseSensitiveCompare>;

}  // namespace wavo
