// Lines out of samplers that behave as the controller's do.
#include "master/linuxcnc/cycle_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// A sampler with room for some lines: a line that finds none takes no number.
class FakeSampler : public SampleChannel {
 public:
    explicit FakeSampler(std::size_t columns, std::size_t depth = 1000)
        : m_columns(columns), m_depth(depth) {}

    void Write(std::vector<double> values) {
        if (m_lines.size() == m_depth) {
            ++m_overruns;
        } else {
            m_lines.push_back({++m_number, std::move(values)});
        }
    }
    /// Numbers as after so many lines.
    void StartAt(std::uint32_t number) { m_number = number; }
    /// Another reader takes a line.
    void Steal() { m_lines.pop_front(); }

    [[nodiscard]] std::size_t Columns() const override { return m_columns; }
    bool Read(std::span<double> values, std::uint32_t* number) override {
        if (m_lines.empty()) {
            return false;
        }
        *number = m_lines.front().first;
        std::copy(m_lines.front().second.begin(), m_lines.front().second.end(), values.begin());
        m_lines.pop_front();
        if (while_reading) {
            std::exchange(while_reading, nullptr)();
        }
        return true;
    }
    [[nodiscard]] std::uint32_t Overruns() const override { return m_overruns; }

    std::function<void()> while_reading;  ///< called once, behind the next line

 private:
    const std::size_t m_columns;
    const std::size_t m_depth;
    std::deque<std::pair<std::uint32_t, std::vector<double>>> m_lines;
    std::uint32_t m_number = 0;
    std::uint32_t m_overruns = 0;
};

class CycleReaderTest : public ::testing::Test {
 protected:
    /// One cycle of the controller: every sampler gets a line; the last column of each is the
    /// fingerprint where there are several.
    void Cycle() {
        ++m_cycle;
        const auto value = static_cast<double>(m_cycle);
        const double fingerprint = static_cast<double>(m_cycle * 7919 % 1009);
        for (std::size_t i = 0; i < m_samplers.size(); ++i) {
            if (m_late > 0 && i > 0) {
                continue;
            }
            if (m_samplers.size() == 1) {
                m_samplers[i]->Write({value, -value});
            } else {
                m_samplers[i]->Write({value + 1e6 * static_cast<double>(i), fingerprint});
            }
        }
        m_late -= m_late > 0 ? 1 : 0;
    }
    void Cycles(int count) {
        for (int i = 0; i < count; ++i) {
            Cycle();
        }
    }
    void Open(std::size_t samplers, std::size_t depth = 1000) {
        std::vector<SampleChannel*> channels;
        for (std::size_t i = 0; i < samplers; ++i) {
            m_samplers.push_back(std::make_unique<FakeSampler>(2, depth));
            channels.push_back(m_samplers.back().get());
        }
        m_reader = std::make_unique<CycleReader>(channels, samplers > 1);
    }
    CycleReader::Outcome Poll() {
        return m_reader->Poll([this](std::span<const double> line) {
            m_lines.emplace_back(line.begin(), line.end());
        });
    }
    /// The cycles of the lines; the parts of a line must be of one.
    std::vector<int> TakeCycles() {
        std::vector<int> cycles;
        for (const auto& line : m_lines) {
            cycles.push_back(static_cast<int>(line[0]));
            if (m_samplers.size() == 1) {
                EXPECT_EQ(line[1], -line[0]);
            } else {
                for (std::size_t i = 1; i < m_samplers.size(); ++i) {
                    EXPECT_EQ(line[i], line[0] + 1e6 * static_cast<double>(i));
                }
            }
        }
        m_lines.clear();
        return cycles;
    }
    static std::vector<int> Range(int first, int last) {
        std::vector<int> range;
        for (int i = first; i <= last; ++i) {
            range.push_back(i);
        }
        return range;
    }

    std::vector<std::unique_ptr<FakeSampler>> m_samplers;
    std::unique_ptr<CycleReader> m_reader;
    std::vector<std::vector<double>> m_lines;
    int m_cycle = 0;
    int m_late = 0;  ///< cycles that the samplers behind the first begin later
};

constexpr int kToAlign = CycleReader::kRun + 2 * CycleReader::kMostApart;

TEST_F(CycleReaderTest, EveryLineOfOneSamplerInOrder) {
    Open(1);
    EXPECT_EQ(m_reader->Columns(), 2U);
    Cycles(3);
    EXPECT_EQ(Poll().lines, 3U);
    Cycles(2);
    EXPECT_EQ(Poll().lines, 2U);
    EXPECT_EQ(Poll().lines, 0U);
    EXPECT_THAT(TakeCycles(), ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(CycleReaderTest, WhatWaitsAtTheBeginningIsOfTheTimeBefore) {
    FakeSampler sampler(2);
    sampler.Write({1.0, -1.0});
    CycleReader reader({&sampler}, false);
    sampler.Write({2.0, -2.0});
    std::vector<double> values;
    const auto outcome =
        reader.Poll([&](std::span<const double> line) { values.push_back(line[0]); });
    EXPECT_THAT(values, ElementsAre(2.0));
    EXPECT_EQ(outcome.lost, 0U);
}

TEST_F(CycleReaderTest, ALossIsToldWithItsSizeAndNothingBeforeItIsGivenBehindIt) {
    Open(1, 10);
    Cycles(4);
    Poll();
    Cycles(13);  // 3 find no room
    const auto outcome = Poll();
    EXPECT_EQ(outcome.lines, 0U);
    EXPECT_EQ(outcome.lost, 13U);
    Cycles(2);
    EXPECT_EQ(Poll().lost, 0U);
    EXPECT_THAT(TakeCycles(), ElementsAre(1, 2, 3, 4, 18, 19));
}

TEST_F(CycleReaderTest, ALossWhileReadingIsNoticed) {
    Open(1, 10);
    Cycle();
    Poll();
    Cycles(9);
    m_samplers[0]->while_reading = [this] { Cycles(5); };  // 3 of them find no room
    EXPECT_GT(Poll().lost, 0U);
    Cycles(1);
    Poll();
    EXPECT_THAT(TakeCycles(), ElementsAre(1, 16));
}

TEST_F(CycleReaderTest, ALossThatNobodyCouldMissIsNotTold) {
    Open(1, 10);
    Cycles(20);
    EXPECT_EQ(Poll().lost, 0U) << "no line was given yet";
    Cycles(20);
    EXPECT_EQ(Poll().lost, 0U);
    Cycle();
    Poll();
    EXPECT_THAT(TakeCycles(), ElementsAre(41));
}

TEST_F(CycleReaderTest, ASecondReaderIsALoss) {
    Open(1);
    Cycles(2);
    Poll();
    Cycles(3);
    m_samplers[0]->Steal();
    EXPECT_GT(Poll().lost, 0U);
    Cycle();
    Poll();
    EXPECT_THAT(TakeCycles(), ElementsAre(1, 2, 6));
}

TEST_F(CycleReaderTest, NumbersMayPassOverToZero) {
    for (const std::size_t samplers : {1U, 2U}) {
        m_samplers.clear();
        m_cycle = 0;
        Open(samplers);
        for (const auto& sampler : m_samplers) {
            sampler->StartAt(0xFFFFFFF0U);
        }
        Cycles(200);
        Poll();
        EXPECT_EQ(TakeCycles(), Range(1, 200));
    }
}

TEST_F(CycleReaderTest, SeveralSamplersMakeWholeLines) {
    Open(3);
    EXPECT_EQ(m_reader->Columns(), 3U);
    Cycles(kToAlign - 1);
    EXPECT_EQ(Poll().lines, 0U);
    Cycles(1);
    EXPECT_EQ(Poll().lines, static_cast<std::uint64_t>(kToAlign));
    Cycles(10);
    Poll();
    EXPECT_EQ(TakeCycles(), Range(1, kToAlign + 10));
}

TEST_F(CycleReaderTest, ALineIsGivenWhenAllItsPartsAreThere) {
    Open(2);
    Cycles(kToAlign);
    Poll();
    TakeCycles();
    // Read between the two samplers of a cycle.
    m_samplers[0]->Write({1000.0, 5.0});
    EXPECT_EQ(Poll().lines, 0U);
    m_samplers[1]->Write({1001000.0, 5.0});
    EXPECT_EQ(Poll().lines, 1U);
    EXPECT_THAT(TakeCycles(), ElementsAre(1000));
}

TEST_F(CycleReaderTest, SamplersThatBeganApartAreJoinedByTheirFingerprints) {
    Open(2);
    m_late = 7;
    Cycles(kToAlign + 7);
    Poll();
    EXPECT_EQ(TakeCycles(), Range(8, kToAlign + 7));
    Cycles(3);
    Poll();
    EXPECT_EQ(TakeCycles(), Range(kToAlign + 8, kToAlign + 10));
}

TEST_F(CycleReaderTest, LinesAreWholeBehindALossToo) {
    Open(2, 300);
    Cycles(kToAlign);
    Poll();
    EXPECT_EQ(TakeCycles(), Range(1, kToAlign));
    Cycles(305);
    // The samplers do not run over alike: the second one was read from meanwhile.
    m_samplers[1]->Steal();
    Cycles(2);
    EXPECT_GT(Poll().lost, 0U);
    const int first = m_cycle + 1;
    Cycles(kToAlign + 5);
    EXPECT_EQ(Poll().lost, 0U);
    EXPECT_EQ(TakeCycles(), Range(first, m_cycle));
}

TEST_F(CycleReaderTest, SamplersWithoutACommonCycleAreTold) {
    Open(2);
    bool is_apart = false;
    for (int i = 0; i < 1000 && !is_apart; ++i) {
        m_samplers[0]->Write({1.0, static_cast<double>(i)});
        m_samplers[1]->Write({2.0, static_cast<double>(-i - 1)});
        is_apart = Poll().is_apart;
    }
    EXPECT_TRUE(is_apart);
    EXPECT_THAT(m_lines, IsEmpty());
}

TEST_F(CycleReaderTest, AFingerprintThatNeverChangesDecidesNothing) {
    Open(2);
    for (int i = 1; i <= kToAlign; ++i) {
        m_samplers[0]->Write({static_cast<double>(i), 0.0});
        m_samplers[1]->Write({1e6 + i, 0.0});
    }
    Poll();
    EXPECT_EQ(TakeCycles(), Range(1, kToAlign));
}

}  // namespace
}  // namespace wavo::master
