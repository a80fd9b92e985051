// Any bytes as the input of wavo_pipe: they become lines of the right size, whatever pieces they
// come in. The first byte of an input chooses the options, the second the size of the pieces.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "master/pipe/line_cutter.h"
#include "master/pipe/number_stream.h"

namespace wavo::master {
namespace {

constexpr std::uint64_t kMostMissing = 50;

/// Keeps what it is given, as bits.
class KeptLines : public LineSink {
 public:
    bool Begin(const std::vector<std::string>& axes, double cycle_time) override {
        CHECK(!m_began && !axes.empty() && cycle_time > 0.0 && std::isfinite(cycle_time));
        m_began = true;
        m_axes = axes.size();
        return true;
    }
    bool Line(std::span<const double> values) override {
        CHECK(m_began && values.size() == m_axes);
        for (const double value : values) {
            CHECK(std::isfinite(value) || std::isnan(value));
            std::uint64_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            m_bits.push_back(std::isnan(value) ? 0x7ff8000000000000U : bits);
        }
        return true;
    }

    bool m_began = false;
    std::size_t m_axes = 0;
    std::vector<std::uint64_t> m_bits;
};

StreamOptions OptionsOf(unsigned choice) {
    StreamOptions options;
    options.most_missing = kMostMissing;
    options.has_time = (choice & 1U) != 0;
    if ((choice & 2U) != 0) {
        options.axes = {"X", "Y"};
    }
    if ((choice & 4U) != 0 || !options.has_time) {
        options.cycle_time = 0.001;
    }
    options.time_unit = (choice & 8U) != 0 ? 1e-3 : 1.0;
    return options;
}

/// Gives the stream all lines of a text that comes in pieces; false when it wants no more.
bool Feed(std::string_view text, std::size_t piece, NumberStream& stream) {
    LineCutter cutter;
    while (!text.empty()) {
        const std::span<char> room = cutter.Room();
        const std::size_t count = std::min({piece, room.size(), text.size()});
        std::copy_n(text.data(), count, room.data());
        cutter.Add(count);
        text.remove_prefix(count);
        std::string_view line;
        for (LineCutter::Piece what; (what = cutter.Next(&line)) != LineCutter::Piece::kNone;) {
            CHECK(line.find('\n') == std::string_view::npos);
            CHECK(line.size() <= LineCutter::kLongestLine + LineCutter::kRoom);
            const bool goes_on =
                what == LineCutter::Piece::kLine ? stream.Take(line) : stream.TakeTooLong();
            if (!goes_on) {
                return false;
            }
        }
    }
    const auto rest = cutter.TakeRest();
    return (!rest || stream.Take(*rest)) && stream.Finish();
}

/// The bits of all values.
std::vector<std::uint64_t> Run(unsigned choice, std::string_view text, std::size_t piece) {
    KeptLines lines;
    std::uint64_t printed = 0;
    Reports bad_lines([&](const std::string&) { ++printed; });
    Reports gaps([&](const std::string&) { ++printed; });
    NumberStream stream(OptionsOf(choice), lines, bad_lines, gaps);
    if (stream.Start() && !Feed(text, piece, stream)) {
        CHECK(!stream.error().empty());
    }
    CHECK(printed <= 2 * (Reports::kMost + 1));
    CHECK(stream.missing_lines() <= gaps.count() * kMostMissing);
    if (lines.m_began) {
        CHECK(lines.m_bits.size() / lines.m_axes <= stream.lines() + stream.missing_lines());
    }
    return lines.m_bits;
}

}  // namespace
}  // namespace wavo::master

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);
    const auto at_once = wavo::master::Run(data[0], text, SIZE_MAX);
    const auto in_pieces = wavo::master::Run(data[0], text, data[1] + std::size_t{1});
    CHECK(at_once == in_pieces);
    return 0;
}
