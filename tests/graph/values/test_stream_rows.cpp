// Streams that have missed lines, side by side, against a model that keeps every line.
#include "graph/values/stream_rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "graph/values/missing_value.h"

namespace wavo {
namespace {

constexpr double kCycle = 0.25;

/// Hands lines to streams as the view does: sample = 1000 x stream + line.
class Lines {
 public:
    GraphValue& Add(double range, std::int32_t derivation = 0) {
        return m_streams.emplace_back("X", kCycle, range, derivation);
    }
    void Give(std::int64_t count) {
        for (GraphValue& value : m_streams) {
            value.ExpectLine(m_line);
        }
        for (std::int64_t i = 0; i < count; ++i, ++m_line) {
            for (std::size_t s = 0; s < m_streams.size(); ++s) {
                m_streams[s].SetValue(1000.0 * static_cast<double>(s) +
                                      static_cast<double>(m_line));
            }
        }
    }
    [[nodiscard]] StreamRows Rows() const {
        std::vector<const GraphValue*> streams;
        for (const GraphValue& value : m_streams) {
            streams.push_back(&value);
        }
        return StreamRows(streams);
    }
    [[nodiscard]] std::vector<double> All(std::size_t stream) const {
        const StreamRows rows = Rows();
        std::vector<double> values;
        rows.Copy(stream, 0, rows.Count(), values);
        return values;
    }

    std::deque<GraphValue> m_streams;
    std::int64_t m_line = 0;
};

/// Values as a test writes them: nothing for NoSample().
std::string Text(const std::vector<double>& values) {
    std::string text;
    for (const double value : values) {
        text += IsNoSample(value) ? "- " : std::to_string(std::lround(value)) + " ";
    }
    return text;
}

TEST(MissingValues, AreToldFromThoseOfAMaster) {
    EXPECT_TRUE(std::isnan(NoSample()));
    EXPECT_TRUE(IsNoSample(NoSample()));
    EXPECT_TRUE(std::isnan(kNoValue));
    EXPECT_FALSE(IsNoSample(kNoValue));
    EXPECT_FALSE(IsNoSample(std::nan("")));
    EXPECT_FALSE(IsNoSample(0.0));
}

TEST(StreamRowsOf, StreamsOfOneLengthAreEven) {
    Lines lines;
    lines.Add(2.0);
    lines.Add(2.0);
    EXPECT_TRUE(lines.Rows().AreEven());
    for (int batch = 0; batch < 5; ++batch) {
        for (GraphValue& value : lines.m_streams) {
            value.EmptyNewValues();
        }
        lines.Give(4);
    }
    EXPECT_EQ(lines.Rows().FirstNew(), 4U);
    EXPECT_EQ(lines.Rows().StartOfNew(), 16 * kCycle);
    EXPECT_TRUE(lines.Rows().AreEven());
    EXPECT_TRUE(lines.Rows().NewValuesAreEven());
    EXPECT_EQ(lines.Rows().Count(), 8U);
    EXPECT_EQ(Text(lines.All(0)), "12 13 14 15 16 17 18 19 ");
}

TEST(StreamRowsOf, AYoungerStreamHasNothingInFront) {
    Lines lines;
    lines.Add(2.0);
    lines.Give(3);
    lines.Add(2.0);
    lines.Give(3);
    EXPECT_FALSE(lines.Rows().AreEven());
    EXPECT_EQ(Text(lines.All(0)), "0 1 2 3 4 5 ");
    EXPECT_EQ(Text(lines.All(1)), "- - - 1003 1004 1005 ");
    EXPECT_EQ(lines.Rows().FirstOfAll(), 3U);
}

TEST(StreamRowsOf, RowsTellTheirLines) {
    Lines lines;
    lines.Add(5.0);
    lines.Add(5.0);
    lines.Give(4);
    lines.m_line += 3;  // that all streams miss
    lines.Give(2);
    const auto text = [&](std::uint64_t first, std::uint64_t count) {
        std::string runs;
        for (const LineLog::Run& run : lines.Rows().LinesOf(first, count)) {
            runs += std::to_string(run.sequence) + ":" + std::to_string(run.line) + "x" +
                    std::to_string(run.count) + " ";
        }
        return runs;
    };
    EXPECT_EQ(text(0, 6), "0:0x4 4:7x2 ");
    EXPECT_EQ(text(2, 3), "0:2x2 2:7x1 ");
    EXPECT_EQ(text(4, 100), "0:7x2 ");
    EXPECT_EQ(text(6, 1), "");
}

TEST(StreamRowsOf, AStreamThatWasDisabledMissesTheLinesThatAnotherTook) {
    Lines lines;
    lines.Add(3.0);
    lines.Add(3.0);
    lines.Give(2);
    lines.m_streams[1].SetEnabled(false);
    lines.Give(3);
    EXPECT_EQ(Text(lines.All(1)), "1000 1001 - - - ");
    lines.m_streams[1].SetEnabled(true);
    lines.Give(2);
    EXPECT_EQ(Text(lines.All(1)), "1000 1001 - - - 1005 1006 ");
    EXPECT_EQ(lines.Rows().Parts(1, 1, 5), (std::vector<RowPart>{{0, {1, 1}}, {4, {2, 1}}}));
}

TEST(StreamRowsOf, LinesThatAllMissedHaveNoRow) {
    Lines lines;
    lines.Add(3.0);
    lines.Give(2);
    lines.m_streams[0].SetEnabled(false);
    lines.Give(5);
    lines.m_streams[0].SetEnabled(true);
    lines.Give(2);
    EXPECT_EQ(Text(lines.All(0)), "0 1 7 8 ");
}

TEST(StreamRowsOf, AStreamWithSeveralSamplesPerLineEndsWithTheOthers) {
    Lines lines;
    lines.Add(10.0);
    lines.Add(10.0);
    for (int batch = 0; batch < 3; ++batch) {
        for (GraphValue& value : lines.m_streams) {
            value.ExpectLine(2 * batch);
        }
        for (int line = 0; line < 2; ++line) {
            lines.m_streams[0].SetValue(batch);
            lines.m_streams[1].SetValue(batch);
            lines.m_streams[1].SetValue(batch);
        }
    }
    // Until the next batch tells, nothing is known of the lines of the last one.
    lines.m_streams[0].ExpectLine(6);
    lines.m_streams[1].ExpectLine(6);
    EXPECT_EQ(Text(lines.All(0)), "- - - - - - 0 0 1 1 2 2 ");
    EXPECT_EQ(Text(lines.All(1)), "0 0 0 0 1 1 1 1 2 2 2 2 ");
}

TEST(StreamRowsOf, TheZerosOfADerivativeAreOnesOnlyAtTheBegin) {
    Lines lines;
    lines.Add(10.0, 2);
    lines.Add(10.0);
    lines.Give(4);
    EXPECT_TRUE(lines.Rows().Underived(0, 0, 4).empty());
    lines.Add(10.0, 1);  // younger than the others
    lines.Give(3);
    EXPECT_TRUE(lines.Rows().Underived(0, 0, 7).empty());
    EXPECT_EQ(lines.Rows().Underived(2, 0, 7), (std::vector<SampleStretch>{{4, 1}}));
    EXPECT_EQ(lines.Rows().Underived(2, 3, 4), (std::vector<SampleStretch>{{1, 1}}));
    lines.m_streams[0].GrowTimeRange(20.0);
    lines.Give(1);
    EXPECT_EQ(lines.Rows().Underived(0, 0, 8), (std::vector<SampleStretch>{{7, 1}}));
    lines.Give(4);
    EXPECT_EQ(lines.Rows().Underived(0, 0, 12), (std::vector<SampleStretch>{{7, 2}}));
    EXPECT_EQ(lines.Rows().Parts(0, 5, 6), (std::vector<RowPart>{{0, {5, 2}}, {4, {9, 2}}}));
    lines.m_streams[1].GrowTimeRange(20.0);
    EXPECT_TRUE(lines.Rows().Underived(1, 0, 12).empty()) << "nothing is derived";
}

TEST(StreamRowsOf, AStreamThatIsResetBeginsInTheMiddleOfOthers) {
    Lines lines;
    lines.Add(10.0);
    lines.Add(10.0, 1);
    lines.Give(3);
    lines.m_streams[1].Reset();
    lines.Give(3);
    EXPECT_EQ(lines.Rows().Underived(1, 0, 6), (std::vector<SampleStretch>{{3, 1}}));
    lines.m_streams[0].EmptyNewValues();
    EXPECT_EQ(lines.Rows().StartOfNew(), 3 * kCycle) << "the other goes on";
    lines.m_streams[0].Reset();
    lines.m_streams[1].Reset();
    lines.Give(2);
    EXPECT_TRUE(lines.Rows().Underived(1, 0, 2).empty());
    EXPECT_EQ(lines.Rows().StartOfNew(), 0.0);
}

// A model that remembers, per stream, which lines it holds with what value, and which of these are
// zeros for want of earlier samples.
class RowModel {
 public:
    explicit RowModel(unsigned seed) : m_random(seed) {
        for (int i = 0; i < 3; ++i) {
            Add();
        }
    }

    void Live() {
        switch (Below(9)) {
            case 0:
                if (m_lines.m_streams.size() < 5) {
                    Add();
                }
                break;
            case 1:
                Reset(Below(m_held.size()));
                break;
            case 2:
                m_lines.m_streams[Below(m_held.size())].SetEnabled(false);
                break;
            case 3: {
                // As the view does it: who missed samples forgets what it derives from.
                const std::size_t s = Below(m_held.size());
                if (!m_lines.m_streams[s].Enabled()) {
                    m_lines.m_streams[s].ForgetHistory();
                    m_lines.m_streams[s].SetEnabled(true);
                    Forget(m_held[s]);
                }
                break;
            }
            case 4: {
                const std::size_t s = Below(m_held.size());
                m_lines.m_streams[s].GrowTimeRange(m_lines.m_streams[s].TimeRange() + kCycle);
                Forget(m_held[s]);
                break;
            }
            default:
                Give(static_cast<std::int64_t>(Below(12)));
        }
        if (Below(3) == 0) {
            for (GraphValue& value : m_lines.m_streams) {
                value.EmptyNewValues();
            }
        }
    }

    void Compare() {
        const StreamRows rows = m_lines.Rows();
        std::map<std::int64_t, std::uint64_t> row_of;
        std::int64_t origin = m_lines.m_line + 1;
        for (const Held& held : m_held) {
            for (const auto& [line, sample] : held.samples) {
                row_of[line] = 0;
            }
            origin = held.any ? std::min(origin, held.first_line) : origin;
        }
        std::uint64_t count = 0;
        for (auto& [line, row] : row_of) {
            row = count++;
        }
        ASSERT_EQ(rows.Count(), count);
        for (std::size_t s = 0; s < m_held.size(); ++s) {
            CompareStream(rows, s, row_of, origin);
        }
        const std::uint64_t span = rows.CountOfSpan(4.0);
        EXPECT_LE(span, std::min<std::uint64_t>(count, 16));
        EXPECT_GE(span + 1, std::min<std::uint64_t>(count, 16));
    }

 private:
    struct Sample {
        double value = 0.0;
        bool underived = false;
        bool at_begin = false;  // of the stream: nothing was forgotten since
    };
    struct Held {
        std::map<std::int64_t, Sample> samples;
        int history = 0;         // raw samples known, up to the order
        bool forgotten = false;  // once there were samples
        bool any = false;
        std::int64_t first_line = 0;
    };

    std::size_t Below(std::size_t end) { return m_random() % end; }
    void Add() {
        m_lines.Add(kCycle * static_cast<double>(1 + Below(30)),
                    static_cast<std::int32_t>(Below(3)));
        m_held.emplace_back();
    }
    static void Forget(Held& held) {
        held.history = 0;
        held.forgotten = held.any;
    }
    void Reset(std::size_t s) {
        m_lines.m_streams[s].Reset();
        m_held[s] = Held();
    }
    void Give(std::int64_t count) {
        const std::int64_t first = m_lines.m_line;
        m_lines.Give(count);
        for (std::size_t s = 0; s < m_held.size(); ++s) {
            const GraphValue& value = m_lines.m_streams[s];
            Held& held = m_held[s];
            for (std::int64_t line = first; value.Enabled() && line < m_lines.m_line; ++line) {
                if (!held.any) {
                    held.any = true;
                    held.first_line = line;
                }
                const bool underived = held.history < value.DerivationOrder();
                held.history += underived ? 1 : 0;
                held.samples[line] = {0.0, underived, !held.forgotten};
                while (held.samples.size() > value.Capacity()) {
                    held.samples.erase(held.samples.begin());
                }
            }
        }
    }
    void CompareStream(const StreamRows& rows, std::size_t s,
                       const std::map<std::int64_t, std::uint64_t>& row_of, std::int64_t origin) {
        const GraphValue& value = m_lines.m_streams[s];
        const Held& held = m_held[s];
        const std::uint64_t first = rows.Count() == 0 ? 0 : Below(rows.Count());
        const std::uint64_t count = Below(rows.Count() - first + 1);
        std::vector<double> values;
        rows.Copy(s, first, count, values);
        ASSERT_EQ(values.size(), count);
        std::vector<bool> parts(count, false);
        for (const RowPart& part : rows.Parts(s, first, count)) {
            for (std::uint64_t i = 0; i < part.samples.count; ++i) {
                ASSERT_LT(part.row + i, count);
                parts[part.row + i] = true;
                EXPECT_EQ(value.Values()[part.samples.position + i], values[part.row + i]);
            }
        }
        std::vector<bool> underived(count, false);
        for (const SampleStretch& stretch : rows.Underived(s, first, count)) {
            for (std::uint64_t i = 0; i < stretch.count; ++i) {
                underived.at(stretch.position + i) = true;
            }
        }
        std::uint64_t position = 0;
        std::map<std::uint64_t, std::uint64_t> position_of;
        for (const auto& [line, sample] : held.samples) {
            position_of[row_of.at(line)] = position++;
        }
        ASSERT_EQ(position, value.Values().Size());
        for (const auto& [line, row] : row_of) {
            if (row < first || row >= first + count) {
                continue;
            }
            const auto sample = held.samples.find(line);
            const bool is_held = sample != held.samples.end();
            EXPECT_EQ(IsNoSample(values[row - first]), !is_held);
            // Zeros at the very begin of all streams are what is seen.
            const bool none = is_held && sample->second.underived &&
                              (held.first_line > origin || !sample->second.at_begin);
            EXPECT_EQ(underived[row - first], none) << "line " << line;
            EXPECT_EQ(parts[row - first], is_held && !none);
            if (is_held) {
                EXPECT_EQ(values[row - first], value.Values()[position_of[row]]);
            }
        }
    }
    std::mt19937 m_random;
    Lines m_lines;
    std::vector<Held> m_held;
};

TEST(StreamRowsOf, AnyStreamsAreAsTheirLinesSay) {
    const testing::ExpectAnyErrorLog overruns;
    for (unsigned seed = 0; seed < 60; ++seed) {
        RowModel model(seed);
        for (int step = 0; step < 120; ++step) {
            model.Live();
            model.Compare();
            ASSERT_FALSE(::testing::Test::HasFailure()) << "seed " << seed << ", step " << step;
        }
    }
}

}  // namespace
}  // namespace wavo
