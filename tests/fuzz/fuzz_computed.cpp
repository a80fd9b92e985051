// Any INI text as the computed axes of a graph file: whatever it says, they can be computed, are
// found fault with in words, and read back as they were written.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "computed/computed_ini_data.h"
#include "computed/computed_program.h"
#include "graph/values/missing_value.h"
#include "support/mini_data.h"

namespace wavo::computed {
namespace {

constexpr std::size_t kLines = 3;

void Compute(ComputedProgram& program) {
    const std::vector<double> machine{1.0, -2.0, 0.0, 0.5, kNoValue, 1e308};
    std::vector<Column> source{{machine.data(), 1, 0.0}, {machine.data() + kLines, 1, 3.0}};
    std::vector<std::vector<double>> values(program.Names().size(), std::vector<double>(kLines));
    std::vector<Column> computed;
    for (const auto& each : values) {
        computed.push_back({each.data(), 1, 0.0});
    }
    for (const std::size_t axis : program.Order()) {
        program.Compute(axis, source, computed, 0.001, kLines, values[axis].data(), 1);
        for (const double value : values[axis]) {
            CHECK(!IsNoSample(value));
        }
        CHECK(program.NeedsOf(axis).order.back() == axis);
    }
}

void TestOne(std::string_view text) {
    MIniData store;
    if (!store.SetContent(text)) {
        return;
    }
    const std::vector<ComputedAxis> axes = TakeComputedAxes(store);
    CHECK(axes.size() <= kMostComputedAxes);
    ComputedProgram program(axes, std::vector<std::string>{"X", "Y"});
    CHECK(program.Findings().size() == axes.size());
    std::vector<ComputedAxis> sound;
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const Finding& finding = program.Findings()[i];
        CHECK((finding.kind == Finding::Kind::kNone) == finding.text.empty());
        CHECK(finding.place <= axes[i].expression.size() + 1);
        CHECK(!finding.text.starts_with("The expression cannot be computed"));
        if (finding.kind != Finding::Kind::kName &&
            axes[i].expression.size() <= kLongestExpression) {
            sound.push_back(axes[i]);
        }
    }
    Compute(program);

    MIniData written;
    CHECK(PutComputedAxes(written, sound));
    MIniData reread;
    CHECK(reread.SetContent(written.Content()));
    CHECK(TakeComputedAxes(reread) == sound);
}

}  // namespace
}  // namespace wavo::computed

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::computed::TestOne({reinterpret_cast<const char*>(data), size});
    return 0;
}
