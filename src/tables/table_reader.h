// Reads a table of numbers row by row, in steps.
//
// Invariants:
// 1. Memory does not grow with the table, but for the names of its columns.
// 2. A row is given whole or not at all: the last line of a text that was cut off is not.
// 3. Of a row that cannot be read, line and column are told, and the next one can be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/fault.h"
#include "tables/field_cutter.h"
#include "tables/number_field.h"
#include "tables/table_bytes.h"
#include "tables/table_layout.h"

namespace wavo::tables {

/// Why a row cannot be read.
struct RowFault {
    enum class Kind {
        kFields,    ///< there are more or fewer fields than columns
        kNoNumber,  ///< a field is no number
        kMissing,   ///< a field is empty or "nan" where that is not taken
        kQuote,     ///< a field begins with a quotation mark and does not end with one
        kTooLong,   ///< a field is longer than any
    };
    Kind kind = Kind::kFields;
    std::uint64_t line = 0;  ///< of the text, from 1 on
    std::size_t fields = 0;  ///< that there are, of kFields
    std::size_t column = 0;  ///< from 0 on, of the others
    std::string text;        ///< of the field, of the others; long ones are cut
};

/// What the reader takes.
struct RowRules {
    bool takes_missing = true;   ///< empty fields and "nan" are NaN
    bool takes_infinite = true;  ///< "inf" is a number
    /// A separator may stand behind the last name or field, and nothing behind it.
    bool takes_open_end = true;
};

class TableReader {
 public:
    /// Looks at the beginning of `bytes`. With `layout` the table is taken to be laid out so.
    static Expected<std::unique_ptr<TableReader>> Open(
        std::unique_ptr<TableBytes> bytes, const std::optional<TableLayout>& layout = {});

    [[nodiscard]] const TableLayout& Layout() const { return m_layout; }

    /// To be called first, where other rules hold.
    void SetRules(const RowRules& rules) { m_rules = rules; }

    /// Reads the names of the columns; "column 1", "column 2" and so on where there are none. To be
    /// called once, before rows are read. With more than `most` columns the fault says so; other
    /// faults are those of a name that cannot be read. Empty when there is no line.
    Expected<std::vector<std::string>> ReadNames(std::size_t most);

    /// Which column stands at which place of the values, by the number of the column; every other
    /// one is not looked at. All in their order until this is called.
    void Choose(std::span<const std::size_t> columns);

    /// Lets Next do so many pieces of work of FieldCutter::kLongestField bytes before kLater.
    void Allow(std::size_t pieces) { m_cutter.Allow(pieces); }

    enum class Row {
        kValues,
        kFault,
        kLater,  ///< what was allowed is used up: the row goes on with the next call
        kEnd,
    };
    /// Reads the next row. REQUIRES: `values` has a place per chosen column and is the same until
    /// the row is whole.
    Row Next(std::span<double> values);

    /// Reads the next row as texts, at most `most` of them. kFault when a text cannot be read.
    Row NextTexts(std::vector<std::string>& texts, std::size_t most);

    /// The line of the text that the last row stands in, from 1 on.
    [[nodiscard]] std::uint64_t LineNumber() const { return m_cutter.LineNumber(); }

    /// Of the last row that could not be read.
    [[nodiscard]] const RowFault& Fault() const { return m_fault; }

    /// Reads what is left, without a look at it: then Bytes().End() tells how the bytes end.
    void Drain();
    [[nodiscard]] const TableBytes& Bytes() const { return *m_bytes; }

 private:
    explicit TableReader(std::unique_ptr<TableBytes> bytes);

    bool SkipLinesBefore();
    MaybeFault TakeNames(std::size_t most, std::vector<std::string>& names);
    /// Fields of a row are taken one by one; the last one ends it.
    void TakeField(const Field& field, std::span<double> values);
    void TakeColumn(std::size_t column, const Field& field, std::span<double> values);
    void SetFault(RowFault::Kind kind, std::size_t column, std::string_view text);
    Row EndRow();
    [[nodiscard]] bool EndIsCut() const;

    const std::unique_ptr<TableBytes> m_bytes;
    FieldCutter m_cutter;
    TableLayout m_layout;
    RowRules m_rules;
    char m_decimal_point = '\0';
    std::size_t m_columns = 0;
    std::vector<std::size_t> m_places;  // per column; kNotChosen
    std::vector<std::string> m_held;    // the first row, where it told the number of columns

    // The row that is being read.
    std::size_t m_field = 0;
    bool m_last_is_empty = false;
    bool m_has_fault = false;
    RowFault m_fault;
};

/// The fault of a row in words: "line 3, column 2 "Y": "abc" is not a number". `names` are those of
/// all columns.
std::string FaultText(const RowFault& fault, const std::vector<std::string>& names);

/// A text in quotation marks: long ones are cut, control characters are "?".
std::string QuotedText(std::string_view text);

}  // namespace wavo::tables
