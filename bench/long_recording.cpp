#include "bench/long_recording.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <optional>
#include <span>
#include <system_error>

#include "recording/recording_reader.h"
#include "recording/recording_writer.h"

namespace wavo::bench {

namespace fs = std::filesystem;

namespace {

/// Of the file beside a recording that is kept: where its data end.
constexpr char kEndSuffix[] = ".end";

}  // namespace

TemporaryFile::TemporaryFile(const std::string& name)
    : m_path((fs::temp_directory_path() / ("wavo-bench-" + name)).string()) {
    Remove();
}

void TemporaryFile::Remove() const {
    std::error_code error;
    fs::remove(m_path, error);
}

const std::vector<double>& RecordedLines() {
    static const std::vector<double> lines = [] {
        std::vector<double> values;
        values.reserve(kRecordedLines * kRecordedAxes);
        std::uint32_t noise = 1;
        for (std::size_t i = 0; i < kRecordedLines; ++i) {
            for (std::size_t axis = 0; axis < kRecordedAxes; ++axis) {
                noise = noise * 1664525U + 1013904223U;
                const double wobble = static_cast<double>(noise >> 8U) * 1e-9;
                const double phase = static_cast<double>(i + 50 * axis) * 1e-3;
                values.push_back(50.0 * std::cos(phase) + wobble);
            }
        }
        return values;
    }();
    return lines;
}

recording::RecordingHead RecordedHead() {
    recording::RecordingHead head;
    for (std::size_t axis = 0; axis < kRecordedAxes; ++axis) {
        head.axis_names.push_back("A" + std::to_string(axis));
    }
    head.cycle_time = kRecordedCycle;
    head.start_time = 1754056800000000000U;
    head.program = "bench";
    return head;
}

platform::FileHandle CutFiles::OpenForReading(const std::string& path) {
    return m_system.OpenForReading(path);
}

platform::FileHandle CutFiles::CreateNew(const std::string& path, bool& exists) {
    return m_system.CreateNew(path, exists);
}

bool CutFiles::ReadAt(platform::FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                      std::size_t& count) {
    return m_system.ReadAt(file, offset, data, size, count);
}

bool CutFiles::Append(platform::FileHandle file, const void* data, std::size_t size) {
    return m_system.Append(file, data, size);
}

bool CutFiles::Close(platform::FileHandle file) {
    return m_system.Close(file);
}

bool CutFiles::IsNamed(platform::FileHandle file, const std::string& path) {
    return m_system.IsNamed(file, path);
}

bool CutFiles::RemoveUnused(const std::string& path) {
    return m_system.RemoveUnused(path);
}

bool CutFiles::FreeSpace(const std::string& folder, std::uint64_t& bytes) {
    return m_system.FreeSpace(folder, bytes);
}

bool CutFiles::List(const std::string& folder, std::vector<platform::FolderFile>& files) {
    return m_system.List(folder, files);
}

bool CutFiles::Size(platform::FileHandle file, std::uint64_t& size) {
    const bool is_told = m_system.Size(file, size);
    size = std::min(size, m_most);
    return is_told;
}

LongRecording::LongRecording(std::uint64_t lines, Values values)
    : m_lines(lines), m_values(values) {
    const std::string name =
        std::to_string(lines) + (values == Values::kBroken ? "-broken.mcap" : ".mcap");
    const char* const folder = std::getenv("WAVO_BENCH_FOLDER");
    if (folder == nullptr) {
        m_file.emplace(name);
        m_path = m_file->path();
    } else {
        m_path = (fs::path(folder) / ("wavo-bench-" + name)).string();
    }
    if (!IsKept()) {
        Make();
    }
}

bool LongRecording::IsKept() {
    std::ifstream(m_path + kEndSuffix) >> m_data_end;
    const auto reader = recording::RecordingReader::Open(m_path);
    m_is_there = m_data_end != 0 && reader.HasValue() && (*reader)->IsComplete() &&
                 (*reader)->LineCount() == m_lines;
    return m_is_there;
}

void LongRecording::Make() {
    constexpr std::uint64_t kBytesPerLine = 620;
    const std::uint64_t needed = m_lines * kBytesPerLine * 5 / 4;
    std::uint64_t free = 0;
    platform::SystemDataFiles().FreeSpace(fs::path(m_path).parent_path().string(), free);
    if (free < needed) {
        return;
    }
    std::error_code error;
    fs::remove(m_path, error);
    std::cerr << "making " << m_path << ", " << needed / 1'250'000 << " MB\n";
    const CutFiles quick(~std::uint64_t{0});
    auto writer = recording::RecordingWriter::Create(m_path, RecordedHead(), std::nullopt);
    bool is_written = writer.HasValue();
    std::vector<double> lines = RecordedLines();
    for (std::size_t i = 0; m_values == Values::kBroken && i < lines.size(); i += 37) {
        lines[i] = std::numeric_limits<double>::quiet_NaN();
    }
    for (std::uint64_t line = 0; line < m_lines && is_written; line += kRecordedLines) {
        const std::uint64_t count = std::min<std::uint64_t>(kRecordedLines, m_lines - line);
        is_written = !(*writer)->Append(
            line, std::span<const double>(lines).first(count * kRecordedAxes), count);
    }
    is_written = is_written && !(*writer)->Keep();
    m_data_end = is_written ? (*writer)->FileSize() : 0;
    m_is_there = is_written && !(*writer)->Finish();
    if (m_is_there && !m_file.has_value()) {
        std::ofstream(m_path + kEndSuffix) << m_data_end;
    }
}

const LongRecording& LargestRecording() {
    static const LongRecording recording(15'625'000);
    return recording;
}

}  // namespace wavo::bench
