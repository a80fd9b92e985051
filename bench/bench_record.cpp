// Recording 64 axes at 4 kHz, ns per line, and opening a recording of 1e9 samples that was cut off.
//
// record/64x4000: all three roles write the same lines to a file of their own, and what is written
// is synced to the device after every piece of the same number of lines. record_cpu/64x4000 is the
// same in time of a processor, without the waiting for the device; the part of a core is of that
// time.
//
// recording/reopen_cut and recording/open: an item is an opening. The file has 1e9 samples of 64
// axes in 8.8 GB and is made for these benchmarks in the folder for temporary files; without room
// for it they are left out. The limit reads the levels of all chunks, or the index, and nothing
// else.
#include <benchmark/benchmark.h>
#include <hdf5.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_common.h"
#include "bench/long_recording.h"
#include "platform/data_file.h"
#include "recording/mcap.h"
#include "recording/recording_reader.h"
#include "recording/recording_writer.h"

namespace {

namespace fs = std::filesystem;
using namespace wavo::recording;
using wavo::bench::CutFiles;
using wavo::bench::LargestRecording;
using wavo::bench::LongRecording;
using wavo::bench::TemporaryFile;

constexpr std::size_t kAxes = wavo::bench::kRecordedAxes;
constexpr std::size_t kLines = wavo::bench::kRecordedLines;
constexpr double kSeconds = kLines * wavo::bench::kRecordedCycle;
constexpr std::size_t kLinesPerPiece = kLargestChunk / mcap::LineSize(kAxes);
constexpr std::size_t kBatch = 40;  // lines that a master gives at a time

const std::vector<double>& Lines() {
    return wavo::bench::RecordedLines();
}

bool RecordOurs(const std::string& path) {
    auto writer = RecordingWriter::Create(path, wavo::bench::RecordedHead(), std::nullopt);
    if (!writer) {
        return false;
    }
    const std::span<const double> values = Lines();
    for (std::size_t line = 0; line < kLines; line += kBatch) {
        if ((*writer)->Append(line, values.subspan(line * kAxes, kBatch * kAxes), kBatch)) {
            return false;
        }
    }
    return !(*writer)->Finish();
}

/// A dataset that grows by a chunk at a time, in a file that is flushed and synced after each.
bool RecordHdf5(const std::string& path) {
    const hid_t file = H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT);
    const hsize_t none[] = {0, kAxes};
    const hsize_t any[] = {H5S_UNLIMITED, kAxes};
    const hsize_t chunk[] = {kLinesPerPiece, kAxes};
    const hid_t space = H5Screate_simple(2, none, any);
    const hid_t layout = H5Pcreate(H5P_DATASET_CREATE);
    H5Pset_chunk(layout, 2, chunk);
    const hid_t dataset =
        H5Dcreate2(file, "lines", H5T_NATIVE_DOUBLE, space, H5P_DEFAULT, layout, H5P_DEFAULT);
    void* handle = nullptr;
    bool is_written = file >= 0 && dataset >= 0 &&
                      H5Fget_vfd_handle(file, H5P_DEFAULT, &handle) >= 0 && handle != nullptr;
    wavo::platform::DataFileOperations& files = wavo::platform::SystemDataFiles();
    for (hsize_t line = 0; line < kLines && is_written; line += kLinesPerPiece) {
        const hsize_t lines = std::min<hsize_t>(kLinesPerPiece, kLines - line);
        const hsize_t size[] = {line + lines, kAxes};
        const hsize_t begin[] = {line, 0};
        const hsize_t count[] = {lines, kAxes};
        is_written = H5Dset_extent(dataset, size) >= 0;
        const hid_t target = H5Dget_space(dataset);
        H5Sselect_hyperslab(target, H5S_SELECT_SET, begin, nullptr, count, nullptr);
        const hid_t source = H5Screate_simple(2, count, nullptr);
        is_written = is_written &&
                     H5Dwrite(dataset, H5T_NATIVE_DOUBLE, source, target, H5P_DEFAULT,
                              Lines().data() + line * kAxes) >= 0 &&
                     H5Fflush(file, H5F_SCOPE_LOCAL) >= 0 &&
                     files.Sync(*static_cast<const int*>(handle));
        H5Sclose(source);
        H5Sclose(target);
    }
    H5Dclose(dataset);
    H5Pclose(layout);
    H5Sclose(space);
    return H5Fclose(file) >= 0 && is_written;
}

/// The bytes that ours writes, ready made.
std::vector<std::byte> BytesOfOurs(const std::string& path) {
    std::vector<std::byte> bytes;
    wavo::platform::DataFileOperations& files = wavo::platform::SystemDataFiles();
    RecordOurs(path);
    const RecordingFile file(files.OpenForReading(path));
    bytes.resize(fs::file_size(path));
    if (!file.ReadAt(0, bytes)) {
        bytes.clear();
    }
    fs::remove(path);
    return bytes;
}

bool WritePlain(const std::string& path, const std::vector<std::byte>& bytes) {
    bool exists = false;
    RecordingFile file(wavo::platform::SystemDataFiles().CreateNew(path, exists));
    const std::size_t pieces = (kLines + kLinesPerPiece - 1) / kLinesPerPiece;
    const std::size_t piece = bytes.size() / pieces + 1;
    bool is_written = file.IsOpen();
    for (std::size_t begin = 0; begin < bytes.size() && is_written; begin += piece) {
        is_written =
            file.Append(Bytes(bytes).subspan(begin, std::min(piece, bytes.size() - begin))) &&
            file.Sync();
    }
    return file.Close() && is_written;
}

enum class Role { kOurs, kRival, kLimit };

void Record(benchmark::State& state, Role role, bool is_cpu) {
    const TemporaryFile file("record.mcap");
    const std::vector<std::byte> bytes =
        role == Role::kLimit ? BytesOfOurs(file.path()) : std::vector<std::byte>();
    Lines();
    double busy = 0.0;
    for (auto _ : state) {
        const std::clock_t begin = std::clock();
        const bool is_written = role == Role::kOurs    ? RecordOurs(file.path())
                                : role == Role::kRival ? RecordHdf5(file.path())
                                                       : WritePlain(file.path(), bytes);
        const double taken = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        busy += taken;
        if (is_cpu) {
            state.SetIterationTime(taken);
        }
        if (!is_written) {
            state.SkipWithError("the file could not be written");
            return;
        }
        state.PauseTiming();
        file.Remove();
        state.ResumeTiming();
    }
    wavo::bench::SetTimePerItem(state, kLines);
    if (role == Role::kOurs) {
        state.counters["percent_of_core"] =
            100.0 * busy / (kSeconds * static_cast<double>(state.iterations()));
    } else {
        state.SetLabel(role == Role::kRival ? "HDF5" : "plain write");
    }
}

/// Reads so many bytes from each of some places.
bool ReadPlaces(const std::string& path, std::uint64_t begin, std::uint64_t end, std::uint64_t step,
                std::size_t size) {
    const RecordingFile file(wavo::platform::SystemDataFiles().OpenForReading(path));
    std::vector<std::byte> bytes(size);
    for (std::uint64_t at = begin; at + size <= end; at += step) {
        if (!file.ReadAt(at, bytes)) {
            return false;
        }
        benchmark::DoNotOptimize(bytes.data());
        benchmark::ClobberMemory();
    }
    return true;
}

void OpenLarge(benchmark::State& state, Role role, bool is_cut) {
    const LongRecording& large = LargestRecording();
    if (!large.IsThere()) {
        state.SkipWithError("no room for 8.8 GB");
        return;
    }
    const std::uint64_t end = is_cut ? large.DataEnd() : fs::file_size(large.path());
    const CutFiles cut(end);
    const std::uint64_t chunks = large.Lines() / kLinesPerPiece + 1;
    for (auto _ : state) {
        bool is_read = false;
        if (role == Role::kOurs) {
            auto reader = RecordingReader::Open(large.path());
            is_read = reader && (*reader)->LineCount() == large.Lines() &&
                      (*reader)->IsComplete() == !is_cut;
        } else if (role == Role::kRival) {
            is_read =
                ReadPlaces(large.path(), 0, end, std::size_t{1} << 20U, std::size_t{1} << 20U);
        } else if (is_cut) {
            is_read = ReadPlaces(large.path(), 0, end, end / chunks,
                                 LevelsHeadSize(kAxes, BlocksOf(kLinesPerPiece)));
        } else {
            is_read = ReadPlaces(large.path(), large.DataEnd(), end, std::size_t{1} << 20U,
                                 std::size_t{1} << 20U);
        }
        if (!is_read) {
            state.SkipWithError("the recording could not be read");
            return;
        }
    }
    if (role != Role::kOurs) {
        state.SetLabel(role == Role::kRival ? "reading all of it"
                       : is_cut             ? "reading the levels of chunks"
                                            : "reading the index");
    }
}

BENCHMARK_CAPTURE(Record, ours, Role::kOurs, false)->Name("record/64x4000/ours")->UseRealTime();
BENCHMARK_CAPTURE(Record, rival, Role::kRival, false)->Name("record/64x4000/rival")->UseRealTime();
BENCHMARK_CAPTURE(Record, limit, Role::kLimit, false)->Name("record/64x4000/limit")->UseRealTime();
BENCHMARK_CAPTURE(Record, ours, Role::kOurs, true)
    ->Name("record_cpu/64x4000/ours")
    ->UseManualTime();
BENCHMARK_CAPTURE(Record, rival, Role::kRival, true)
    ->Name("record_cpu/64x4000/rival")
    ->UseManualTime();
BENCHMARK_CAPTURE(Record, limit, Role::kLimit, true)
    ->Name("record_cpu/64x4000/limit")
    ->UseManualTime();
BENCHMARK_CAPTURE(OpenLarge, ours, Role::kOurs, true)->Name("recording/reopen_cut/ours");
BENCHMARK_CAPTURE(OpenLarge, rival, Role::kRival, true)->Name("recording/reopen_cut/rival");
BENCHMARK_CAPTURE(OpenLarge, limit, Role::kLimit, true)->Name("recording/reopen_cut/limit");
BENCHMARK_CAPTURE(OpenLarge, ours, Role::kOurs, false)->Name("recording/open/ours");
BENCHMARK_CAPTURE(OpenLarge, rival, Role::kRival, false)->Name("recording/open/rival");
BENCHMARK_CAPTURE(OpenLarge, limit, Role::kLimit, false)->Name("recording/open/limit");

}  // namespace

BENCHMARK_MAIN();
