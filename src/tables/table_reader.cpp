#include "tables/table_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace wavo::tables {

namespace {

constexpr std::size_t kNotChosen = std::numeric_limits<std::size_t>::max();
/// What is kept of a field that cannot be read.
constexpr std::size_t kKeptBytes = 64;

std::string NumberedName(std::size_t column) {
    return "column " + std::to_string(column + 1);
}

}  // namespace

std::string QuotedText(std::string_view text) {
    constexpr std::size_t kMost = 40;
    std::string quoted = "\"";
    for (const char c : text.substr(0, kMost)) {
        quoted += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
    }
    return quoted.append(text.size() > kMost ? "...\"" : "\"");
}

std::string FaultText(const RowFault& fault, const std::vector<std::string>& names) {
    const std::string line = "line " + std::to_string(fault.line);
    if (fault.kind == RowFault::Kind::kFields) {
        return line + ": " + std::to_string(fault.fields) +
               (fault.fields == 1 ? " field" : " fields") + " instead of " +
               std::to_string(names.size());
    }
    const std::string name =
        fault.column < names.size() ? " " + QuotedText(names[fault.column]) : "";
    const std::string where = line + ", column " + std::to_string(fault.column + 1) + name + ": ";
    switch (fault.kind) {
        case RowFault::Kind::kMissing:
            return where + "there is no number";
        case RowFault::Kind::kQuote:
            return where + QuotedText(fault.text) + " does not end with its quotation mark";
        case RowFault::Kind::kTooLong:
            return where + QuotedText(fault.text) + " is too long";
        case RowFault::Kind::kFields:
        case RowFault::Kind::kNoNumber:
            break;
    }
    return where + QuotedText(fault.text) + " is not a number";
}

TableReader::TableReader(std::unique_ptr<TableBytes> bytes)
    : m_bytes(std::move(bytes)), m_cutter(*m_bytes) {}

Expected<std::unique_ptr<TableReader>> TableReader::Open(std::unique_ptr<TableBytes> bytes,
                                                         const std::optional<TableLayout>& layout) {
    std::unique_ptr<TableReader> reader(new TableReader(std::move(bytes)));
    const std::string_view beginning = reader->m_cutter.Beginning();
    if (layout) {
        reader->m_layout = *layout;
    } else {
        Expected<TableLayout> found = FindLayout(beginning);
        if (!found) {
            return found.Why();
        }
        reader->m_layout = *found;
    }
    return reader;
}

bool TableReader::SkipLinesBefore() {
    m_cutter.SetSeparator(kNoSeparator);
    Field field;
    for (std::size_t i = 0; i < m_layout.lines_before; ++i) {
        if (m_cutter.Next(field) == FieldCutter::Cut::kEnd) {
            return false;
        }
    }
    m_cutter.SetSeparator(m_layout.separator);
    return true;
}

Expected<std::vector<std::string>> TableReader::ReadNames(std::size_t most) {
    std::vector<std::string> names;
    if (SkipLinesBefore()) {
        if (MaybeFault fault = TakeNames(most, names)) {
            return *fault;
        }
    }
    // A separator may stand behind the last name.
    if (m_rules.takes_open_end && names.size() > 1 && names.back().empty()) {
        names.pop_back();
    }
    m_columns = names.size();
    std::vector<std::size_t> all(m_columns);
    std::iota(all.begin(), all.end(), std::size_t{0});
    Choose(all);
    return names;
}

MaybeFault TableReader::TakeNames(std::size_t most, std::vector<std::string>& names) {
    Field field;
    std::vector<std::string> fields;
    const std::size_t per_column = m_layout.has_labels ? 2 : 1;
    do {
        if (m_cutter.Next(field) == FieldCutter::Cut::kEnd) {
            break;
        }
        if (field.fault != FieldFault::kNone) {
            SetFault(field.fault == FieldFault::kQuote ? RowFault::Kind::kQuote
                                                       : RowFault::Kind::kTooLong,
                     fields.size(), field.text);
            return wavo::Fault{FaultText(m_fault, {})};
        }
        if (fields.size() == most * per_column) {
            return wavo::Fault{"the table has more than " + std::to_string(most) + " columns"};
        }
        if (m_layout.has_names && field.text.find('\0') != std::string_view::npos) {
            return wavo::Fault{"line " + std::to_string(m_cutter.LineNumber()) +
                               ": there is a zero byte: this is no text"};
        }
        fields.emplace_back(field.text);
    } while (!field.is_last);
    if (m_layout.has_names) {
        names = std::move(fields);
        return std::nullopt;
    }
    for (std::size_t i = 0; i < fields.size() / per_column; ++i) {
        names.push_back(m_layout.has_labels ? fields[2 * i] : NumberedName(i));
    }
    m_held = std::move(fields);
    return std::nullopt;
}

void TableReader::Choose(std::span<const std::size_t> columns) {
    m_places.assign(m_columns, kNotChosen);
    for (std::size_t place = 0; place < columns.size(); ++place) {
        m_places[columns[place]] = place;
    }
}

void TableReader::SetFault(RowFault::Kind kind, std::size_t column, std::string_view text) {
    if (!m_has_fault) {
        m_has_fault = true;
        m_fault = {kind, m_cutter.LineNumber(), 0, column, std::string(text.substr(0, kKeptBytes))};
    }
}

void TableReader::TakeColumn(std::size_t column, const Field& field, std::span<double> values) {
    const std::size_t place = m_places[column];
    if (field.fault == FieldFault::kQuote) {
        SetFault(RowFault::Kind::kQuote, column, field.text);
    } else if (place != kNotChosen && field.fault == FieldFault::kTooLong) {
        SetFault(RowFault::Kind::kTooLong, column, field.text);
    } else if (place != kNotChosen) {
        const NumberKind kind = ReadNumber(field.text, m_decimal_point, values[place]);
        if (kind == NumberKind::kNoNumber ||
            (kind == NumberKind::kValue && !m_rules.takes_infinite && std::isinf(values[place]))) {
            SetFault(RowFault::Kind::kNoNumber, column, field.text);
        } else if (kind == NumberKind::kMissing && !m_rules.takes_missing) {
            SetFault(RowFault::Kind::kMissing, column, field.text);
        }
    }
}

void TableReader::TakeField(const Field& field, std::span<double> values) {
    const std::size_t index = m_field++;
    m_last_is_empty = field.text.empty() && field.fault == FieldFault::kNone;
    const std::size_t column = m_layout.has_labels ? index / 2 : index;
    if (column < m_columns && !(m_layout.has_labels && index % 2 == 0)) {
        TakeColumn(column, field, values);
    }
}

bool TableReader::EndIsCut() const {
    return m_cutter.LastLineIsOpen() && m_bytes->End() != BytesEnd::kWhole;
}

TableReader::Row TableReader::EndRow() {
    const std::size_t fields = std::exchange(m_field, 0);
    const std::size_t expected = m_columns * (m_layout.has_labels ? 2 : 1);
    const bool is_open = m_rules.takes_open_end && m_last_is_empty && fields == expected + 1;
    const bool has_fault = std::exchange(m_has_fault, false);
    if (fields != expected && !is_open) {
        m_fault = {RowFault::Kind::kFields, m_cutter.LineNumber(), fields, 0, {}};
        return Row::kFault;
    }
    return has_fault ? Row::kFault : Row::kValues;
}

TableReader::Row TableReader::Next(std::span<double> values) {
    if (!m_held.empty()) {
        for (const std::string& text : std::exchange(m_held, {})) {
            TakeField({text, false, FieldFault::kNone}, values);
        }
        return EndRow();
    }
    for (Field field;;) {
        switch (m_cutter.Next(field)) {
            case FieldCutter::Cut::kLater:
                return Row::kLater;
            case FieldCutter::Cut::kEnd:
                return Row::kEnd;
            case FieldCutter::Cut::kField:
                break;
        }
        TakeField(field, values);
        if (field.is_last) {
            return EndIsCut() ? Row::kEnd : EndRow();
        }
    }
}

TableReader::Row TableReader::NextTexts(std::vector<std::string>& texts, std::size_t most) {
    texts.clear();
    const std::vector<std::string> held = std::exchange(m_held, {});
    std::size_t index = 0;
    const auto take = [&](std::string_view text) {
        const bool is_label = m_layout.has_labels && index++ % 2 == 0;
        if (!is_label && texts.size() < most) {
            texts.emplace_back(text);
        }
    };
    if (!held.empty()) {
        std::ranges::for_each(held, take);
        return Row::kValues;
    }
    bool has_fault = false;
    for (Field field;;) {
        if (m_cutter.Next(field) == FieldCutter::Cut::kEnd) {
            return Row::kEnd;
        }
        has_fault = has_fault || field.fault != FieldFault::kNone;
        take(field.text);
        if (field.is_last) {
            return EndIsCut() ? Row::kEnd : has_fault ? Row::kFault : Row::kValues;
        }
    }
}

void TableReader::Drain() {
    m_held.clear();
    m_cutter.Drain();
}

}  // namespace wavo::tables
