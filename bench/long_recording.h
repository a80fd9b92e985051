// Recordings as the benchmarks write and read them: 64 axes at 4 kHz that move smoothly.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/data_file.h"
#include "recording/recording_head.h"

namespace wavo::bench {

inline constexpr std::size_t kRecordedAxes = 64;
inline constexpr double kRecordedCycle = 0.00025;  // seconds
/// Lines that are there ready made; longer recordings repeat them.
inline constexpr std::size_t kRecordedLines = 32'000;

/// A file in the folder for temporary files that is removed with this object.
class TemporaryFile {
 public:
    explicit TemporaryFile(const std::string& name);
    ~TemporaryFile() { Remove(); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }
    void Remove() const;

 private:
    const std::string m_path;
};

const std::vector<double>& RecordedLines();
recording::RecordingHead RecordedHead();

/// Files that end where they are told to, as if they had been cut off there; and files that nobody
/// waits for. From its construction on.
class CutFiles final : public platform::DataFileOperations {
 public:
    explicit CutFiles(std::uint64_t most) : m_most(most), m_override(*this) {}

    platform::FileHandle OpenForReading(const std::string& path) override;
    platform::FileHandle CreateNew(const std::string& path, bool& exists) override;
    bool Size(platform::FileHandle file, std::uint64_t& size) override;
    bool ReadAt(platform::FileHandle file, std::uint64_t offset, void* data, std::size_t size,
                std::size_t& count) override;
    bool Append(platform::FileHandle file, const void* data, std::size_t size) override;
    bool Sync(platform::FileHandle /*file*/) override { return true; }
    bool Close(platform::FileHandle file) override;
    bool IsNamed(platform::FileHandle file, const std::string& path) override;
    bool RemoveUnused(const std::string& path) override;
    bool FreeSpace(const std::string& folder, std::uint64_t& bytes) override;
    bool List(const std::string& folder, std::vector<platform::FolderFile>& files) override;

 private:
    platform::DataFileOperations& m_system = platform::SystemDataFiles();
    const std::uint64_t m_most;
    const platform::DataFileOperationsOverride m_override;
};

/// A recording of so many lines; not there where there is no room for it. It is removed with this
/// object, but where the environment names a folder (WAVO_BENCH_FOLDER): there it stays, and is
/// taken as it is the next time.
class LongRecording {
 public:
    /// What the axes hold.
    enum class Values {
        kSmooth,  ///< RecordedLines
        kBroken,  ///< the same; in each block of lines one or two of each axis are no number
    };
    explicit LongRecording(std::uint64_t lines, Values values = Values::kSmooth);

    [[nodiscard]] bool IsThere() const { return m_is_there; }
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::uint64_t Lines() const { return m_lines; }
    /// Where the data end and the index begins.
    [[nodiscard]] std::uint64_t DataEnd() const { return m_data_end; }

 private:
    bool IsKept();
    void Make();

    const std::uint64_t m_lines;
    const Values m_values;
    std::optional<TemporaryFile> m_file;
    std::string m_path;
    std::uint64_t m_data_end = 0;
    bool m_is_there = false;
};

/// 1e9 samples, 8.8 GB; made when it is first asked for.
const LongRecording& LargestRecording();

}  // namespace wavo::bench
