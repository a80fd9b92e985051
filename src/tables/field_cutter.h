// Cuts the text of a table into lines and fields, in steps.
//
//   FieldCutter cutter(*bytes);
//   cutter.SetSeparator(';');
//   for (;;) {
//       cutter.Allow(pieces);            // of work, before kLater comes
//       switch (cutter.Next(field)) ...
//   }
//
// - A line ends in LF, CR LF or CR. Lines without anything but blanks are skipped.
// - Blanks and tabs around a field do not count, but for a tab that separates. Where blanks
//   separate, any number of them and of tabs is one separator, and those at the ends of a line
//   separate nothing.
// - A field that begins with a quotation mark ends with one; two of them inside stand for one. It
//   may contain separators, not line ends.
//
// Invariants:
// 1. Memory does not grow with the text: one buffer.
// 2. Every byte is looked at once, but for those of a field that the end of the buffer cuts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tables/table_bytes.h"

namespace wavo::tables {

/// A separator that no line contains: lines are one field.
inline constexpr char kNoSeparator = '\n';

/// Why a field cannot be read.
enum class FieldFault {
    kNone,
    kTooLong,  ///< longer than the cutter's buffer
    kQuote,    ///< it begins with a quotation mark and does not end with one
};

struct Field {
    std::string_view text;  ///< until the next call
    bool is_last = false;   ///< of its line
    FieldFault fault = FieldFault::kNone;
};

class FieldCutter {
 public:
    /// Longest field, bytes, unless another buffer is wanted; also the size of a piece of work.
    static constexpr std::size_t kLongestField = std::size_t{1} << 16U;

    /// `bytes` is not owned and outlives this object. Fields may be as long as the buffer.
    explicit FieldCutter(TableBytes& bytes, std::size_t buffer_size = kLongestField);

    /// The text as far as it is in the buffer, which is filled: its beginning, if nothing was taken
    /// yet. A byte order mark is taken off.
    std::string_view Beginning();

    void SetSeparator(char separator) { m_separator = separator; }

    /// Lets Next read so many more pieces; without that it reads as many as it needs.
    void Allow(std::size_t pieces) {
        m_is_limited = true;
        m_allowed = pieces;
    }

    enum class Cut {
        kField,
        kLater,  ///< what was allowed is used up
        kEnd,    ///< of the text, behind the last line
    };
    Cut Next(Field& field);

    /// Reads what is left, and forgets it.
    void Drain();

    /// The line of the text that the last field stood in, from 1 on.
    [[nodiscard]] std::uint64_t LineNumber() const { return m_line_number; }

    /// Whether the last line had no line end.
    [[nodiscard]] bool LastLineIsOpen() const { return m_last_is_open; }

 private:
    enum class Found { kYes, kMore, kEnd };

    /// Reads on behind what was not given yet, until the buffer is full.
    void Fill();
    [[nodiscard]] bool IsFull() const { return m_begin == 0 && m_end == m_buffer.size(); }
    [[nodiscard]] bool IsBlank(char c) const {
        return c == ' ' || (c == '\t' && m_separator != '\t');
    }
    [[nodiscard]] bool EndsField(char c) const {
        return c == m_separator || c == '\n' || c == '\r' || (m_separator == ' ' && c == '\t');
    }
    [[nodiscard]] std::size_t BehindBlanks(std::size_t at) const;

    Found Find(Field& field);
    Found FindLine();
    Found CutPlain(Field& field);
    Found CutQuoted(Field& field);
    Found SkipRest(Field& field);
    /// Goes behind the separator or line end at `at`, where a field ends.
    Found EndField(std::size_t at, Field& field);

    TableBytes& m_bytes;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;  // of what was not given yet
    std::size_t m_end = 0;    // of what was read
    bool m_has_ended = false;
    bool m_is_limited = false;
    std::size_t m_allowed = 0;
    char m_separator = ',';
    std::uint64_t m_line_number = 1;
    bool m_is_in_line = false;       // m_begin is not at the begin of a line
    bool m_line_ended = false;       // the last field was the last of its line
    bool m_skips_line_feed = false;  // of a CR LF
    bool m_last_is_open = false;
    bool m_is_skipping = false;  // a field that is too long
    std::string m_unquoted;
};

}  // namespace wavo::tables
