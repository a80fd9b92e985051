// One INI file in memory: read, changed and written back with its comments, its lines of blanks,
// the entries nobody asked for and its order.
//
//   MIniData settings(MIniData::kSaveFlush | MIniData::kSaveSafe);
//   if (!settings.Open(path)) { ... settings.LastErrorText() ... }
//   settings.SetLongEntry("SCALE_LINES", "x", 5);
//   settings.Save();
//
// The form of a file:
// - "[name]" at the very start of a line begins a section. Blanks and tabs around the name are
//   not part of it; what follows the "]" is kept, and means nothing.
// - "#", "*", "/" or ";" as the first thing on a line makes it a comment.
// - "name=value" is an entry. Blanks and tabs around the name are not part of it. The value is
//   everything behind the "=" as it stands. Only where the "=" itself is set off by a blank or
//   tab, as people write "name = value", blanks and tabs around the value are not part of it. So
//   every value that is set reads back to the byte, and hand-made files read as they are meant.
// - Empty lines are dropped; all else is kept, in its place.
//
// Invariants:
// 1. The lines of the file stand in one text, in the form in which they are saved; lines and
//    entries are places in it. An unchanged store is saved by handing that text over.
// 2. What the store holds reads back to the same store: names and values that would not are
//    refused by the setters.
// 3. A failed Open leaves the store empty. Its memory is bounded whatever the file is: lines and
//    files have a largest size.
// 4. Faults are reported through the error trace; nothing throws.
// 5. Names are UTF-8 and compared as the policy says.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/mini_data_content.h"

namespace wavo {

class MFastFileReader;

template <typename Compare>
class MIniDataT {
 public:
    using Section = MIniDataSectionT<Compare>;

    /// Option flags.
    /// 1: in a section, a line without "=" or without a name before it is no error. Without "=" it
    ///    is an entry of that name with an empty value; without a name it is kept as a line.
    static constexpr unsigned kLenientEntries = 1;
    static constexpr unsigned kReplaceSections = 2;  ///< as 1; a section seen twice replaces
    static constexpr unsigned kSaveFlush = 8;        ///< save with write-through and flush
    static constexpr unsigned kSaveSafe = 16;        ///< save through a temporary file
    static constexpr unsigned kReplaceEntries = 32;  ///< an entry seen twice replaces

    /// Largest line and largest file in bytes that a store takes. Settings are kilobytes.
    static constexpr std::size_t kLongestLine = std::size_t{1} << 20;
    static constexpr std::size_t kLargestFile = std::size_t{16} << 20;

    explicit MIniDataT(unsigned options = 0);
    ~MIniDataT();
    MIniDataT(const MIniDataT&) = delete;
    MIniDataT& operator=(const MIniDataT&) = delete;

    /// Reads a file. One that does not exist makes an empty, valid, new store. False when the file
    /// cannot be read or is no INI file: the store is then empty and not valid, and LastErrorText
    /// tells why. Either way Save writes to this path.
    bool Open(const std::string& path);

    /// Writes the store to the path it was opened with, all lines ended by CR LF.
    bool Save();

    /// Empties the store: valid and new, with the path and the options it had.
    void Clear();

    /// Replaces the whole content by the lines of `text`. False when it cannot be read as an INI
    /// file: the store is then empty and not valid.
    bool SetContent(std::string_view text);

    /// The content as one text: every line ended by CR LF.
    [[nodiscard]] std::string Content() const;

    /// The last Open (or SetContent) succeeded, or the store was emptied by Clear.
    [[nodiscard]] bool IsValid() const { return m_valid; }
    /// Nothing was read from a file, or the store was changed since it was read or saved.
    [[nodiscard]] bool IsNew() const { return m_new_or_changed; }
    /// The content was read from a file, or saved to one.
    [[nodiscard]] bool IsLoaded() const { return m_loaded_or_saved; }
    /// The store is in order, but its file does not exist: valid and new.
    [[nodiscard]] bool HasNoFileContent() const {
        return m_valid && m_new_or_changed && !m_loaded_or_saved;
    }

    [[nodiscard]] const std::string& Path() const { return m_path; }
    /// The text of the last error; empty when there was none since the last Open.
    [[nodiscard]] const std::string& LastErrorText() const { return m_last_error; }

    [[nodiscard]] bool HasSection(std::string_view section) const;
    /// Names of all sections, in file order.
    [[nodiscard]] std::vector<std::string> SectionNames() const;
    /// Names of all entries of a section, in file order; none when there is no such section.
    [[nodiscard]] std::vector<std::string> EntryNames(std::string_view section) const;

    /// The value of an entry. False when the section or the entry is missing; `value` is then
    /// empty. No report: a missing entry is no fault.
    bool GetStringEntry(std::string_view section, std::string_view name, std::string& value) const;

    /// Sets the value of an entry; makes the entry (at the end of its section) and the section (at
    /// the end of the file) when missing. False for a name that would read back as a comment or
    /// not at all, for a value with a line end in it, and when memory runs out: the entry then is
    /// as it was.
    bool SetStringEntry(std::string_view section, std::string_view name, std::string_view value);
    /// The same for an integer, in decimal.
    bool SetLongEntry(std::string_view section, std::string_view name, long value);
    /// The same for a double as "%.17g" writes it, with a decimal point whatever the locale.
    bool SetDoubleEntry(std::string_view section, std::string_view name, double value);

    /// Deletes an entry. False, with an error trace, when the section or the entry is missing.
    bool DeleteEntry(std::string_view section, std::string_view name);
    /// Deletes a section with all its lines. False when there is none.
    bool DeleteSection(std::string_view section);

 private:
    // Reading. The line that is being read is what the text holds from m_line on.
    void Reset();
    bool ReadLines(MFastFileReader& reader);
    bool TakeLine(const char* caller, bool is_first);
    bool CheckMarks(const char* caller);
    bool parse_line();
    bool ParseHeader();
    bool ParseEntry(std::size_t first);
    bool KeepLine();
    bool ParseFailed(std::string error);
    bool OutOfMemory(const char* what);
    bool Abandon();

    // Setting.
    bool SetEntry(const char* setter, std::string_view shown_value, std::string_view section_name,
                  std::string_view name, std::string_view value);
    bool MayBeEntry(const char* setter, std::string_view shown_value, std::string_view name,
                    std::string_view value);
    bool ChangeEntry(MIniDataEntry& entry, std::string_view value);
    bool add_new_entry(Section& section, std::string_view name, std::string_view value);
    Section* add_new_section(std::string_view name);
    bool MakeRoom(std::size_t length);

    void SetChanged();

    const unsigned m_options;

    bool m_valid = false;
    bool m_new_or_changed = true;
    bool m_loaded_or_saved = false;
    std::string m_path;
    std::string m_last_error;

    MIniDataContentT<Compare> m_content;
    std::size_t m_line = 0;  ///< where the line that is being read begins in the text
};

/// The store of this program, and the only one that the library holds: names are compared byte for
/// byte.
using MIniData = MIniDataT<MIniDataCaseSensitiveCompare>;

}  // namespace wavo
