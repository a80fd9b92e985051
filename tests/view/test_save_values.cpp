// The file that values are saved to.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "faulty_files.h"
#include "session/save_values.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

using testing::Call;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FaultyFiles;
using ::testing::IsEmpty;

enum class Result { kWritten, kCancelled, kFailed };

/// A number with six decimals, cut after 127 characters.
std::string CutNumber(double number) {
    char text[400];
    std::snprintf(text, sizeof text, "%.6f", number);
    return std::string(text).substr(0, 127);
}

/// Bytes of a piece of the file, and of a row "n.000000\n" with six digits before the point.
constexpr std::size_t kPiece = 1U << 16U;
constexpr std::size_t kRow = 14;
constexpr std::size_t kRowsOfPiece = (kPiece + kRow - 1) / kRow;

class DataFile : public ::testing::Test {
 protected:
    DataFile() {
        m_settings.end_of_line = "\n";
        m_settings.data_file = m_folder.File("values.txt");
    }

    void Add(const std::string& name, std::vector<double> values) {
        m_values.FindOrAddColumn(name) = std::move(values);
    }
    /// A column whose rows all have the length kRow.
    void AddLongColumn(std::size_t rows) {
        std::vector<double>& values = m_values.FindOrAddColumn("X");
        for (std::size_t i = 0; i < rows; ++i) {
            values.push_back(100'000.0 + static_cast<double>(i));
        }
    }
    Result Write(const SaveValues::Progress& progress = {}) {
        m_values.SetSettings(m_settings);
        const Expected<SaveValues::Ending> ending = m_values.CreateDataFile(progress);
        if (!ending) {
            EXPECT_EQ(ending.Why().text, "cannot write " + m_settings.data_file);
            return Result::kFailed;
        }
        return *ending == SaveValues::Ending::kWritten ? Result::kWritten : Result::kCancelled;
    }
    [[nodiscard]] std::string Text() const { return m_folder.Read("values.txt"); }
    /// The text of the file; empty when it could not be written.
    std::string Written() { return Write() == Result::kWritten ? Text() : std::string(); }
    /// What the file holds of a long column: this many rows.
    static std::string RowsOfLongColumn(std::size_t rows) {
        std::string text = "X\n";
        for (std::size_t i = 0; i < rows; ++i) {
            text += std::to_string(100'000 + i) + ".000000\n";
        }
        return text;
    }

    const testing::TemporaryFolder m_folder;
    ExportSettings m_settings;
    SaveValues m_values;
};

TEST_F(DataFile, HasAHeaderAndOneLinePerRow) {
    m_settings.end_of_line = "\r\n";
    Add("X", {1.0, -2.5});
    Add("Y", {0.0000004, 1234567.1234567});
    EXPECT_EQ(Written(), "X,Y\r\n1.000000,0.000000\r\n-2.500000,1234567.123457\r\n");
}

TEST_F(DataFile, ColumnsStandInTheOrderInWhichTheyWereAdded) {
    Add("Z", {1.0});
    Add("A", {2.0});
    Add("z", {3.0});
    EXPECT_EQ(Written(), "Z,A,z\n1.000000,2.000000,3.000000\n");
}

TEST_F(DataFile, AColumnOfTheSameNameIsEmptiedAndStaysInItsPlace) {
    Add("X", {1.0, 2.0});
    Add("Y", {3.0});
    EXPECT_THAT(m_values.FindOrAddColumn("X"), IsEmpty());
    Add("X", {4.0});
    EXPECT_EQ(Written(), "X,Y\n4.000000,3.000000\n");
}

TEST_F(DataFile, ClearedColumnsAreGone) {
    Add("X", {1.0});
    m_values.Clear();
    Add("Y", {2.0});
    EXPECT_EQ(Written(), "Y\n2.000000\n");
}

TEST_F(DataFile, TheListOfAColumnStaysWhereItIsWhenOthersAreAdded) {
    std::vector<double>& first = m_values.FindOrAddColumn("0");
    for (int i = 1; i < 1000; ++i) {
        Add(std::to_string(i), {1.0});
    }
    first.push_back(7.0);
    EXPECT_EQ(&m_values.FindOrAddColumn("0"), &first);
}

TEST_F(DataFile, HasAsManyRowsAsTheShortestColumn) {
    Add("X", {1.0, 2.0, 3.0});
    Add("Y", {4.0, 5.0});
    EXPECT_EQ(Written(), "X,Y\n1.000000,4.000000\n2.000000,5.000000\n");
    Add("Z", {});
    EXPECT_EQ(Written(), "X,Y,Z\n");
}

TEST_F(DataFile, WithoutColumnsHoldsAnEmptyHeader) {
    EXPECT_EQ(Written(), "\n");
}

TEST_F(DataFile, SeparatorPointAndLineEndAreThoseOfTheSettings) {
    m_settings.separator = '\t';
    m_settings.decimal_point = '#';
    m_settings.end_of_line = "<end>\n";
    Add("X.1", {1.5, std::numeric_limits<double>::quiet_NaN()});
    Add("Y", {-0.25, std::numeric_limits<double>::infinity()});
    EXPECT_EQ(Written(), "X.1\tY<end>\n1#500000\t-0#250000<end>\nnan\tinf<end>\n");
}

TEST_F(DataFile, APointThatIsTheSeparatorIsWrittenAllTheSame) {
    m_settings.decimal_point = ',';
    Add("X,1", {1.5});
    Add("Y", {2.5});
    EXPECT_EQ(Written(), "X,1,Y\n1,500000,2,500000\n");
}

TEST_F(DataFile, AnEmptyLineEndJoinsTheRows) {
    m_settings.end_of_line.clear();
    Add("X", {1.0, 2.0});
    EXPECT_EQ(Written(), "X1.0000002.000000");
}

TEST_F(DataFile, NumbersAreCutAfter127Characters) {
    const std::vector<double> numbers{1e119, 1e120,  1e121,
                                      1e127, -1e119, -1e126,
                                      1e300, -1e300, std::numeric_limits<double>::max()};
    m_settings.decimal_point = ';';
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        Add(std::to_string(i), {numbers[i]});
    }
    std::string expected = "0,1,2,3,4,5,6,7,8\n";
    for (const double& number : numbers) {
        std::string cut = CutNumber(number);
        if (const std::size_t point = cut.find('.'); point != std::string::npos) {
            cut[point] = ';';
        }
        expected += cut + (&number == &numbers.back() ? "\n" : ",");
    }
    EXPECT_EQ(Written(), expected);
}

TEST_F(DataFile, TakesTheLongestRowsWithinItsMemory) {
    std::string header;
    std::string row;
    for (int i = 0; i < 2000; ++i) {
        Add(std::to_string(i), std::vector<double>(3, -std::numeric_limits<double>::max()));
        header += std::to_string(i) + (i < 1999 ? "," : "\n");
        row += CutNumber(-std::numeric_limits<double>::max()) + (i < 1999 ? "," : "\n");
    }
    EXPECT_EQ(Written(), header + row + row + row);
}

TEST_F(DataFile, TakesThePlaceOfAnOlderOne) {
    Add("X", {1.0, 2.0, 3.0});
    EXPECT_EQ(Write(), Result::kWritten);
    Add("X", {4.0});
    EXPECT_EQ(Written(), "X\n4.000000\n");
}

TEST_F(DataFile, IsWrittenInPiecesOfWholeRows) {
    const std::size_t rows = 3 * kRowsOfPiece + 5;
    AddLongColumn(rows);
    std::vector<std::uint64_t> told;
    EXPECT_EQ(Write([&](std::uint64_t written, std::uint64_t total) {
                  EXPECT_EQ(total, rows);
                  EXPECT_EQ(Text(), RowsOfLongColumn(written));
                  told.push_back(written);
                  return true;
              }),
              Result::kWritten);
    EXPECT_THAT(told, ElementsAre(kRowsOfPiece, 2 * kRowsOfPiece, 3 * kRowsOfPiece));
    EXPECT_EQ(Text(), RowsOfLongColumn(rows));
}

TEST_F(DataFile, IsNotAskedAboutWhenAllRowsAreWritten) {
    AddLongColumn(kRowsOfPiece);
    EXPECT_EQ(Write([](std::uint64_t, std::uint64_t) { return false; }), Result::kWritten);
    EXPECT_EQ(Text(), RowsOfLongColumn(kRowsOfPiece));
}

TEST_F(DataFile, ThatIsCancelledHoldsTheRowsWrittenBefore) {
    AddLongColumn(3 * kRowsOfPiece);
    FaultyFiles files;
    EXPECT_EQ(
        Write([](std::uint64_t written, std::uint64_t) { return written < 2 * kRowsOfPiece; }),
        Result::kCancelled);
    EXPECT_EQ(Text(), RowsOfLongColumn(2 * kRowsOfPiece));
    EXPECT_EQ(files.calls().back(), "close");
}

// Failures. What is written stays, the file is closed.

TEST_F(DataFile, ThatCannotBeCreatedIsAFailure) {
    Add("X", {1.0});
    FaultyFiles files;
    files.Fail(Call::kOpenForWriting, EACCES);
    const CollectReports faults(diagnostics::Service::kErrorTrace);
    EXPECT_EQ(Write(), Result::kFailed);
    EXPECT_THAT(faults.Texts(), ElementsAre("openwritefile(): CreateFile(" + m_settings.data_file +
                                            ", ...) failed: " + std::to_string(EACCES)));
    EXPECT_THAT(files.calls(), ElementsAre("open"));
}

TEST_F(DataFile, InNoFolderIsAFailure) {
    m_settings.data_file = m_folder.File("no folder/values.txt");
    EXPECT_EQ(Write(), Result::kFailed);
    m_settings.data_file = m_folder.path();
    EXPECT_EQ(Write(), Result::kFailed);
    m_settings.data_file.clear();
    EXPECT_EQ(Write(), Result::kFailed);
}

TEST_F(DataFile, WithoutRoomForTheHeaderIsAFailure) {
    Add("X", {1.0});
    FaultyFiles files;
    files.LimitSpace(1, ENOSPC);
    EXPECT_EQ(Write(), Result::kFailed);
    EXPECT_EQ(Text(), "X");
    EXPECT_EQ(files.calls().back(), "close");
}

TEST_F(DataFile, OnAFullDiskHoldsWhatHadRoom) {
    AddLongColumn(2 * kRowsOfPiece);
    FaultyFiles files;
    const std::size_t room = kPiece + 1000;
    files.LimitSpace(room, ENOSPC);
    const CollectReports faults(diagnostics::Service::kErrorTrace);
    EXPECT_EQ(Write(), Result::kFailed);
    EXPECT_EQ(Text(), RowsOfLongColumn(2 * kRowsOfPiece).substr(0, room));
    EXPECT_EQ(files.calls().back(), "close");
    EXPECT_THAT(faults.Texts(),
                ElementsAre("write64(): WriteFile() failed: " + std::to_string(ENOSPC)));
}

TEST_F(DataFile, ThatHasGoneWhileItWasWrittenIsAFailure) {
    Add("X", {1.0});
    FaultyFiles files;
    files.BeforeCall(3, [this] { std::filesystem::remove(m_settings.data_file); });
    const CollectReports faults(diagnostics::Service::kErrorTrace);
    EXPECT_EQ(Write(), Result::kFailed);
    EXPECT_THAT(faults.Texts(), ElementsAre("SaveValues::CreateDataFile(): '" +
                                            m_settings.data_file + "' has gone"));
}

TEST_F(DataFile, ThatIsCancelledAndHasGoneIsAFailure) {
    AddLongColumn(2 * kRowsOfPiece);
    FaultyFiles files;
    files.BeforeCall(4, [this] { std::filesystem::remove(m_settings.data_file); });
    EXPECT_EQ(Write([](std::uint64_t, std::uint64_t) { return false; }), Result::kFailed);
}

TEST_F(DataFile, ThatCannotBeClosedIsAFailure) {
    Add("X", {1.0});
    FaultyFiles files;
    files.Fail(Call::kClose, EIO);
    const CollectReports faults(diagnostics::Service::kErrorTrace);
    EXPECT_EQ(Write(), Result::kFailed);
    EXPECT_THAT(faults.Texts(), ElementsAre("SaveValues::CreateDataFile(): CloseHandle() failed: " +
                                            std::to_string(EIO)));
}

}  // namespace
}  // namespace wavo
