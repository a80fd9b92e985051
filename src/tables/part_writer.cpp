#include "tables/part_writer.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/data_file.h"
#include "recording/bytes.h"
#include "recording/recording_fault.h"
#include "recording/recording_file.h"
#include "recording/recording_writer.h"
#include "support/number_text.h"

namespace wavo::tables {

namespace {

using recording::RecordingFault;
using recording::RecordingFile;

/// Text that is written at once, bytes.
constexpr std::size_t kTextPiece = std::size_t{1} << 16U;
/// Written text that the device is waited for.
constexpr std::size_t kSyncedPiece = std::size_t{1} << 20U;
constexpr std::string_view kTimeName = "time [s]";

class RecordingPart final : public PartWriter {
 public:
    explicit RecordingPart(std::unique_ptr<recording::RecordingWriter> writer)
        : m_writer(std::move(writer)) {}

    MaybeFault PutLine(std::uint64_t line, std::span<const double> values) override {
        return m_writer->Append(line, values, 1);
    }
    void PutEvent(const recording::Event& event) override { m_writer->AddEvent(event); }
    MaybeFault Finish() override { return m_writer->Finish(); }

 private:
    const std::unique_ptr<recording::RecordingWriter> m_writer;
};

/// A file of text, packed on the way where that is asked for.
class TextFile {
 public:
    TextFile(RecordingFile file, std::string path, bool is_packed)
        : m_file(std::move(file)), m_path(std::move(path)) {
        if (is_packed) {
            constexpr int kGzip = 16 + MAX_WBITS;
            constexpr int kMemory = 8;
            m_packed = std::make_unique<z_stream>();
            m_is_failed = deflateInit2(m_packed.get(), Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip,
                                       kMemory, Z_DEFAULT_STRATEGY) != Z_OK;
        }
    }
    ~TextFile() {
        if (m_packed != nullptr) {
            deflateEnd(m_packed.get());
        }
    }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    MaybeFault Write(std::string_view text) { return Pack(text, Z_NO_FLUSH); }

    MaybeFault Finish() {
        if (MaybeFault fault = Pack({}, Z_FINISH)) {
            return fault;
        }
        return m_file.Sync() && m_file.Close() ? MaybeFault() : Failed();
    }

 private:
    MaybeFault Pack(std::string_view text, int flush) {
        if (m_is_failed) {
            return Failed();
        }
        if (m_packed == nullptr) {
            return Append(text);
        }
        // zlib does not write to its input.
        m_packed->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
        m_packed->avail_in = static_cast<uInt>(text.size());
        do {
            m_packed->next_out = reinterpret_cast<Bytef*>(m_room.data());
            m_packed->avail_out = static_cast<uInt>(m_room.size());
            deflate(m_packed.get(), flush);
            const std::size_t count = m_room.size() - m_packed->avail_out;
            if (MaybeFault fault = Append({m_room.data(), count})) {
                return fault;
            }
        } while (m_packed->avail_out == 0);
        return std::nullopt;
    }

    MaybeFault Append(std::string_view text) {
        m_unsynced += text.size();
        if (!text.empty() && !m_file.Append(recording::BytesOf(text))) {
            return Failed();
        }
        if (m_unsynced >= kSyncedPiece) {
            m_unsynced = 0;
            return m_file.Sync() ? MaybeFault() : Failed();
        }
        return std::nullopt;
    }

    Fault Failed() {
        m_is_failed = true;
        return SystemFault(RecordingFault::kCannotWrite, "cannot write", m_path);
    }

    RecordingFile m_file;
    const std::string m_path;
    std::unique_ptr<z_stream> m_packed;
    std::array<char, kTextPiece> m_room{};
    std::size_t m_unsynced = 0;
    bool m_is_failed = false;
};

/// Decimals after which the times of lines differ: six, as numbers have, or more.
int DecimalsOf(double cycle_time) {
    constexpr int kLeast = 6;
    constexpr int kMost = 15;
    int decimals = kLeast;
    for (double scaled = cycle_time * 1e6;
         decimals < kMost && std::abs(scaled - std::round(scaled)) > 1e-6 * scaled;
         scaled *= 10.0) {
        ++decimals;
    }
    return decimals;
}

class TablePart final : public PartWriter {
 public:
    TablePart(RecordingFile file, const std::string& path, const PartFile& how,
              const recording::RecordingHead& head)
        : m_settings(how.settings),
          m_cycle_time(head.cycle_time),
          m_time_decimals(DecimalsOf(head.cycle_time)),
          m_file(std::move(file), path, how.format == PartFormat::kPackedTable) {
        PutName(kTimeName);
        for (const std::string& name : head.axis_names) {
            m_text += m_settings.separator;
            PutName(name);
        }
        for (const PartColumn& column : how.columns) {
            m_text += m_settings.separator;
            PutName(column.name);
        }
        m_text += m_settings.end_of_line;
    }

    MaybeFault PutLine(std::uint64_t line, std::span<const double> values) override {
        PutTime(line);
        for (const double value : values) {
            m_text += m_settings.separator;
            if (!std::isnan(value)) {
                PutNumber(value);
            }
        }
        m_text += m_settings.end_of_line;
        return m_text.size() < kTextPiece ? MaybeFault() : WriteText();
    }
    void PutEvent(const recording::Event& /*event*/) override {}
    MaybeFault Finish() override {
        if (MaybeFault fault = WriteText()) {
            return fault;
        }
        return m_file.Finish();
    }

 private:
    MaybeFault WriteText() {
        MaybeFault fault = m_file.Write(m_text);
        m_text.clear();
        return fault;
    }

    /// Names that would be read as something else stand in quotation marks.
    void PutName(std::string_view name) {
        constexpr std::string_view kBlanks = " \t";
        const bool is_plain = name.find_first_of(std::string("\"\r\n") + m_settings.separator) ==
                                  std::string_view::npos &&
                              !name.empty() &&
                              kBlanks.find(name.front()) == std::string_view::npos &&
                              kBlanks.find(name.back()) == std::string_view::npos;
        if (is_plain) {
            m_text += name;
            return;
        }
        m_text += '"';
        for (const char c : name) {
            m_text += c == '\r' || c == '\n' ? ' ' : c;
            m_text.append(c == '"' ? 1 : 0, '"');
        }
        m_text += '"';
    }

    void PutTime(std::uint64_t line) {
        const double time = static_cast<double>(line) * m_cycle_time;
        if (m_time_decimals == 6) {
            PutNumber(time);
            return;
        }
        std::array<char, 64> text{};
        const auto end = std::to_chars(text.data(), text.data() + text.size(), time,
                                       std::chars_format::fixed, m_time_decimals);
        PutDecimals({text.data(), static_cast<std::size_t>(end.ptr - text.data())});
    }

    void PutNumber(double value) {
        const char* const end = WriteSixDecimals(value, m_number.data());
        PutDecimals({m_number.data(), static_cast<std::size_t>(end - m_number.data())});
    }

    void PutDecimals(std::string_view number) {
        const std::size_t begin = m_text.size();
        m_text += number;
        const std::size_t point = m_text.find('.', begin);
        if (point != std::string::npos) {
            m_text[point] = m_settings.decimal_point;
        }
    }

    const ExportSettings m_settings;
    const double m_cycle_time;
    const int m_time_decimals;
    TextFile m_file;
    std::string m_text;
    std::array<char, kSixDecimalsRoom> m_number{};
};

}  // namespace

Expected<std::unique_ptr<PartWriter>> MakePartWriter(recording::RecordingReader& reader,
                                                     const PartFile& file,
                                                     const std::string& path) {
    if (file.format == PartFormat::kRecording) {
        auto writer =
            recording::RecordingWriter::Create(path, reader.Head(), reader.ReadGraphFile());
        if (!writer) {
            return writer.Why();
        }
        return std::unique_ptr<PartWriter>(new RecordingPart(std::move(*writer)));
    }
    bool exists = false;
    RecordingFile made(platform::DataFiles().CreateNew(path, exists));
    if (!made.IsOpen()) {
        return SystemFault(exists ? RecordingFault::kExists : RecordingFault::kCannotWrite,
                           "cannot make", path);
    }
    return std::unique_ptr<PartWriter>(new TablePart(std::move(made), path, file, reader.Head()));
}

}  // namespace wavo::tables
