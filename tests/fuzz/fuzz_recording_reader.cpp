// Any bytes as a recording: opening, reading, looking at stretches and verifying end in bounded
// time, and what is said of one line does not depend on how it was asked for.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "memory_data_files.h"
#include "recording/recording_reader.h"
#include "recording/recording_verify.h"

namespace wavo::recording {
namespace {

constexpr char kPath[] = "a.mcap";
/// Lines and axes that are looked at.
constexpr std::size_t kLines = 200;
constexpr std::size_t kAxes = 3;
constexpr double kAbsent = 12345.0;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void LookAtAxis(RecordingReader& reader, std::size_t axis) {
    const std::uint64_t first = reader.FirstLine();
    for (std::int32_t order = 0; order <= 3; ++order) {
        std::vector<double> values(kLines);
        reader.ReadValues(axis, order, first, kAbsent, values);
        const ColumnExtent exact =
            reader.Extent(axis, order, first, first + kLines, Detail::kLines);
        reader.ReadValues(axis, order, first, kAbsent, values);  // what is damaged is gone by now
        for (const double value : values) {
            Require(std::isnan(value) || value == kAbsent ||
                    (exact.certain.extremes.minimum <= value &&
                     value <= exact.certain.extremes.maximum));
        }
        reader.Extent(axis, order, first, reader.EndLine(), Detail::kChunks);
    }
}

void TestOne(std::string_view content) {
    testing::MemoryDataFiles files;
    files.Put(kPath, content);
    auto reader = RecordingReader::Open(kPath);
    const auto report = VerifyRecording(kPath, nullptr);
    if (!reader) {
        Require(!reader.Why().text.empty());
        return;
    }
    Require((*reader)->LineCount() <= (*reader)->EndLine() - (*reader)->FirstLine());
    const std::size_t axes = (*reader)->Head().axis_names.size();
    std::vector<double> line(axes);
    for (std::uint64_t i = 0; i < kLines; ++i) {
        (*reader)->ReadLine((*reader)->FirstLine() + i, line);
    }
    for (std::size_t axis = 0; axis < std::min(axes, kAxes); ++axis) {
        LookAtAxis(**reader, axis);
    }
    (*reader)->Events();
    (*reader)->ReadGraphFile();
    (*reader)->Gaps();
    (*reader)->Refresh();
    Require((*reader)->IsComplete() == (*reader)->CutOffText().empty());
}

}  // namespace
}  // namespace wavo::recording

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::recording::TestOne({reinterpret_cast<const char*>(data), size});
    return 0;
}
