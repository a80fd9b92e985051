// wavo_report as its users start it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <cmath>
#include <fstream>
#include <sstream>

#include "programs/report_options.h"
#include "programs/table_file.h"
#include "recording/recording_writer.h"
#include "synthetic_machine.h"
#include "system/started_program.h"

namespace wavo::programs {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string kData = WAVO_MEASURE_DATA;

struct Ended {
    int code = 0;
    std::string output;
    std::string errors;
};

Ended Started(const std::vector<std::string>& arguments) {
    testing::StartedProgram program(WAVO_REPORT, arguments);
    Ended ended;
    ended.code = program.Wait();
    ended.output = program.Output();
    ended.errors = program.Errors();
    return ended;
}

class WavoReport : public ::testing::Test {
 protected:
    [[nodiscard]] std::string Path(const char* name) const {
        return m_folder.filePath(QString::fromLatin1(name)).toStdString();
    }
    [[nodiscard]] std::string Written(const char* name, const std::string& text) const {
        EXPECT_TRUE(WriteWholeFile(Path(name), text));
        return Path(name);
    }
    /// A circle in both senses as text.
    [[nodiscard]] std::string Circle(const measure::MachineErrors& errors) const {
        const auto data = measure::RunCircles({}, errors);
        std::ostringstream text;
        text.precision(12);
        text << "X_cmd,Y_cmd,X,Y\n";
        for (std::size_t i = 0; i < data.x.size(); ++i) {
            text << data.x_cmd[i] << ',' << data.y_cmd[i] << ',' << data.x[i] << ',' << data.y[i]
                 << '\n';
        }
        return text.str();
    }

 private:
    QTemporaryDir m_folder;
};

TEST_F(WavoReport, TestsACircleAndWritesItsFiles) {
    const auto limits = Written("limits.ini", "[Limits]\nG_ccw = 25\n");
    const auto ended = Started({"circle", kData + "/circle_errors.csv.gz", "--axes", "X,Y",
                                "--radius", "20", "--feed", "6000", "--limits", limits, "--out",
                                Path("c.pdf"), "--json", Path("c.json")});
    EXPECT_EQ(ended.code, 0);
    EXPECT_THAT(ended.errors, IsEmpty());
    EXPECT_THAT(ended.output, HasSubstr("G_ccw               19.49 um"));
    EXPECT_THAT(ended.output, HasSubstr("limit +-25.00: pass"));
    EXPECT_TRUE(ReadWholeFile(Path("c.pdf"))->starts_with("%PDF"));
    const auto json =
        QJsonDocument::fromJson(QByteArray::fromStdString(*ReadWholeFile(Path("c.json"))));
    EXPECT_EQ(json.object()[QStringLiteral("verdict")].toString(), QStringLiteral("pass"));
}

TEST_F(WavoReport, FailsAndSaysWhatCouldNotBeTold) {
    const std::string circle = kData + "/circle_errors.csv.gz";
    EXPECT_EQ(Started({"circle", circle, "--limits", Written("a.ini", "[Limits]\nBx = 5\n")}).code,
              1);
    EXPECT_EQ(Started({"circle", circle, "--limits", Written("b.ini", "[Limits]\nBz = 5\n")}).code,
              3);
    EXPECT_EQ(Started({"circle", circle, "--feed", "100"}).code, 3);
    const auto none = Started({"circle", kData + "/axis_move.csv.gz", "--axes", "cmd,act"});
    EXPECT_EQ(none.code, 3);
    EXPECT_THAT(none.output, HasSubstr("note: "));
}

TEST_F(WavoReport, WrongUseIsTold) {
    const std::string circle = kData + "/circle_errors.csv.gz";
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } rows[] = {
        {{}, "nothing to do"},
        {{"square", circle}, "not one of circle, axis, compare"},
        {{"circle"}, "no file"},
        {{"circle", circle, "other.csv"}, "one file only"},
        {{"circle", circle, "--nothing"}, "no such option"},
        {{"circle", circle, "--radius"}, "needs a value"},
        {{"circle", circle, "--radius", "-3"}, "not a number of that kind"},
        {{"circle", circle, "--axes", "X"}, "a circle has two"},
        {{"circle", circle, "--axes", "X,Q"}, "no column Q; there are X_cmd Y_cmd X Y"},
        {{"circle", "/no/such/file.csv"}, "no such file"},
        {{"circle", circle, "--limits", "/no/such.ini"}, "no such file"},
        {{"circle", circle, "--out", "/no/such/folder/r.pdf"}, "cannot be written"},
        {{"circle", circle, "--json", "/no/such/folder/r.json"}, "cannot be written"},
        {{"circle", kData + "/README.md"}, "not a number"},
        {{"axis", kData + "/circle_noise.csv.gz"}, "no commanded and actual columns"},
        {{"compare", circle}, "compare needs --reference"},
        {{"compare", circle, "--reference", circle}, "compare needs --tolerance"},
        {{"compare", circle, "--reference", circle, "--spread", "3"}, "two references"},
    };
    for (const auto& row : rows) {
        const auto ended = Started(row.arguments);
        EXPECT_EQ(ended.code, 2) << row.error;
        EXPECT_THAT(ended.errors, HasSubstr(row.error));
    }
    EXPECT_EQ(Started({"circle", circle, "--limits", Written("e.ini", "[Limits]\nG = x\n")}).code,
              2);
    EXPECT_EQ(Started({"circle", circle, "--limits", Written("n.ini", "[Other]\nG = 1\n")}).code,
              2);
}

TEST_F(WavoReport, HelpNamesEveryOption) {
    const auto help = Started({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.output, HasSubstr("--minimum-zone"));
    EXPECT_THAT(help.output, HasSubstr("--junit FILE.xml"));
    EXPECT_THAT(Started({"--version"}).output, HasSubstr("wavo_report "));
}

TEST_F(WavoReport, TestsAxes) {
    const auto move = Started({"axis", kData + "/axis_move.csv.gz", "--window", "5", "--json",
                               Path("a.json"), "--out", Path("a.pdf")});
    EXPECT_EQ(move.code, 0);
    EXPECT_THAT(move.output, HasSubstr("axis.lag            20.0001 ms"));
    EXPECT_THAT(move.output, HasSubstr("axis.settling_mean  84.10 ms"));
    const auto both = Started({"axis", kData + "/circle_errors.csv.gz"});
    EXPECT_THAT(both.output, HasSubstr("X.lag"));
    EXPECT_THAT(both.output, HasSubstr("contour_max"));
}

TEST_F(WavoReport, ComparesWithGoodRuns) {
    measure::MachineErrors good;
    good.noise = 0.0005;
    measure::MachineErrors bad = good;
    bad.spike_y = 0.05;
    const auto reference = Written("good.csv", Circle(good));
    good.play_x = 0.0005;
    const auto second = Written("good2.csv", Circle(good));
    const auto run = Written("bad.csv", Circle(bad));
    const auto same = Started({"compare", second, "--reference", reference, "--tolerance", "0.01"});
    EXPECT_EQ(same.code, 0) << same.output << same.errors;
    const auto differs = Started({"compare", run, "--reference", reference, "--tolerance", "0.01",
                                  "--junit", Path("j.xml"), "--json", Path("j.json")});
    EXPECT_EQ(differs.code, 1);
    EXPECT_THAT(differs.output, HasSubstr("Y: FAIL; worst"));
    EXPECT_THAT(differs.output, HasSubstr("X: pass"));
    const std::string junit = *ReadWholeFile(Path("j.xml"));
    EXPECT_THAT(junit, HasSubstr("tests=\"4\" failures=\"1\" errors=\"0\""));
    EXPECT_THAT(junit, HasSubstr("<failure message=\"Y: FAIL; worst"));
    EXPECT_EQ(Started({"compare", run, "--reference", reference, "--reference", second, "--spread",
                       "5", "--tolerance", "0.02"})
                  .code,
              1);
    const auto still = Written(
        "still.csv", "X,Y\n" + [] {
            std::string lines;
            for (int i = 0; i < 3000; ++i) {
                lines += "1,2\n";
            }
            return lines;
        }());
    EXPECT_EQ(Started({"compare", still, "--reference", still, "--tolerance", "1"}).code, 3);

    // What could not be compared is written, too: a result of an earlier run would be taken for it.
    const auto untold = Started({"compare", still, "--reference", reference, "--tolerance", "1",
                                 "--junit", Path("j.xml"), "--json", Path("j.json")});
    EXPECT_EQ(untold.code, 3);
    EXPECT_THAT(untold.errors, HasSubstr("nothing moves: no best match"));
    const std::string errors = *ReadWholeFile(Path("j.xml"));
    EXPECT_THAT(errors, HasSubstr("tests=\"2\" failures=\"0\" errors=\"2\""));
    EXPECT_THAT(errors,
                HasSubstr("<error message=\"X: not compared: nothing moves: no best match"));
    const std::string json = *ReadWholeFile(Path("j.json"));
    EXPECT_THAT(json, HasSubstr("\"reason\": \"nothing moves: no best match\""));
    EXPECT_THAT(json, HasSubstr("\"verdict\": \"not told\""));
}

TEST_F(WavoReport, RunsWithoutACommonAxisAreNotCompared) {
    const auto run = Written("a.csv", "A,B\n1,2\n2,3\n3,5\n");
    const auto reference = Written("c.csv", "C,D\n1,2\n2,3\n3,5\n");
    const auto ended = Started({"compare", run, "--reference", reference, "--tolerance", "1",
                                "--junit", Path("j.xml"), "--json", Path("j.json")});
    EXPECT_EQ(ended.code, 3);
    EXPECT_THAT(ended.errors, HasSubstr("a.csv: no axis to align by"));
    const std::string junit = *ReadWholeFile(Path("j.xml"));
    EXPECT_THAT(junit, HasSubstr("tests=\"1\" failures=\"0\" errors=\"1\""));
    EXPECT_THAT(junit, HasSubstr("<error message=\"run: not compared: no axis to align by\"/>"));
    EXPECT_THAT(*ReadWholeFile(Path("j.json")), HasSubstr("\"verdict\": \"not told\""));
}

TEST_F(WavoReport, SaysHowMuchOfAGoodRunWasCompared) {
    const auto table = Circle({});
    const auto reference = Written("good.csv", table);
    std::size_t end = 0;
    for (int line = 0; line <= 2000; ++line) {
        end = table.find('\n', end) + 1;
    }
    const auto half = Written("half.csv", table.substr(0, end));
    const auto ended =
        Started({"compare", half, "--reference", reference, "--tolerance", "0.01", "--machine",
                 "Mill 4", "--json", Path("j.json"), "--junit", Path("j.xml")});
    EXPECT_EQ(ended.code, 0) << ended.errors;
    EXPECT_THAT(ended.output, HasSubstr("\n2000 of "));
    EXPECT_THAT(ended.output, HasSubstr(" lines of the reference compared\n"));
    const std::string json = *ReadWholeFile(Path("j.json"));
    EXPECT_THAT(json, HasSubstr("\"machine\": \"Mill 4\""));
    EXPECT_THAT(json, HasSubstr("\"made_by\": \"wavo_report "));
    EXPECT_THAT(json, HasSubstr("\"lines\": 2000"));
    EXPECT_THAT(json, HasSubstr("\"reference_lines\": "));
    EXPECT_THAT(*ReadWholeFile(Path("j.xml")),
                HasSubstr("<property name=\"compared\" value=\"2000 of "));
}

/// The lines of a table as a recording.
void WriteRecording(const std::string& path, const tables::ColumnTable& table, double cycle_time,
                    std::size_t left_out = 0) {
    recording::RecordingHead head;
    head.axis_names = table.names;
    head.cycle_time = cycle_time;
    auto writer = recording::RecordingWriter::Create(path, head, std::nullopt);
    ASSERT_TRUE(writer) << writer.Why().text;
    std::vector<double> line(table.names.size());
    for (std::size_t i = 0; i < table.Lines(); ++i) {
        for (std::size_t axis = 0; axis < line.size(); ++axis) {
            line[axis] = table.columns[axis][i];
        }
        ASSERT_FALSE((*writer)->Append(i < left_out ? i : i + left_out, line, 1));
    }
    ASSERT_FALSE((*writer)->Finish());
}

TEST_F(WavoReport, FiguresOfARecordingAreThoseOfItsTable) {
    const std::string circle = kData + "/circle_errors.csv.gz";
    const auto table = ReadTable(circle);
    ASSERT_TRUE(table) << table.reason;
    WriteRecording(Path("circle.mcap"), table->table, 0.001);
    WriteRecording(Path("slow.mcap"), table->table, 0.002);
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"circle", "--radius", "20", "--feed", "6000"}, {"axis"}}) {
        std::vector<std::string> of_table = options;
        of_table.insert(of_table.begin() + 1, circle);
        std::vector<std::string> of_recording = options;
        of_recording.insert(of_recording.begin() + 1, Path("circle.mcap"));
        const auto expected = Started(of_table);
        const auto ended = Started(of_recording);
        EXPECT_EQ(ended.code, expected.code) << ended.errors;
        EXPECT_FALSE(expected.output.empty());
        EXPECT_EQ(ended.output, expected.output);
        EXPECT_EQ(ended.errors, "");
        // The recording tells its cycle time; an option comes before it.
        of_recording[1] = Path("slow.mcap");
        EXPECT_NE(Started(of_recording).output, expected.output);
        of_recording.insert(of_recording.end(), {"--cycle", "0.001"});
        EXPECT_EQ(Started(of_recording).output, expected.output);
    }
    EXPECT_EQ(
        Started({"compare", Path("circle.mcap"), "--reference", circle, "--tolerance", "1"}).code,
        0);
    EXPECT_THAT(Started({"compare", Path("circle.mcap"), "--reference", Path("slow.mcap"),
                         "--tolerance", "1"})
                    .errors,
                HasSubstr("slow.mcap: its lines are 0.002 s apart"));
    // A table does not tell its own: it is that of the recordings, which have to agree.
    EXPECT_EQ(Started({"compare", circle, "--reference", Path("slow.mcap"), "--tolerance", "1",
                       "--json", Path("j.json")})
                  .code,
              0);
    EXPECT_THAT(*ReadWholeFile(Path("j.json")), HasSubstr("\"cycle_time_s\": 0.002"));
    const auto mixed = Started({"compare", circle, "--reference", Path("slow.mcap"), "--reference",
                                Path("circle.mcap"), "--tolerance", "1"});
    EXPECT_EQ(mixed.code, 2);
    EXPECT_THAT(mixed.errors, HasSubstr("circle.mcap: its lines are 0.001 s apart, those of "));
    // So does an option.
    const auto of_table = Started({"compare", circle, "--reference", Path("slow.mcap"), "--cycle",
                                   "0.004", "--tolerance", "1"});
    EXPECT_EQ(of_table.code, 2);
    EXPECT_THAT(of_table.errors,
                HasSubstr("slow.mcap: its lines are 0.002 s apart, those of --cycle 0.004 s"));
    const auto of_recording = Started({"compare", Path("slow.mcap"), "--reference", circle,
                                       "--cycle", "0.004", "--tolerance", "1"});
    EXPECT_EQ(of_recording.code, 2);
    EXPECT_THAT(of_recording.errors,
                HasSubstr("slow.mcap: its lines are 0.002 s apart, those of --cycle 0.004 s"));
}

TEST_F(WavoReport, RecordingsThatAreCutOffOrEmptyAreTold) {
    const auto table = ReadTable(kData + "/circle_errors.csv.gz");
    ASSERT_TRUE(table) << table.reason;
    WriteRecording(Path("whole.mcap"), table->table, 0.001, 3);
    EXPECT_EQ(ReadTable(Path("whole.mcap"))->table.Lines(), table->table.Lines() + 3);
    EXPECT_TRUE(std::isnan(ReadTable(Path("whole.mcap"))->table.columns[0][3]));
    const std::string whole = *ReadWholeFile(Path("whole.mcap"));
    const auto cut = Started(
        {"axis", Written("cut.mcap", whole.substr(0, whole.size() * 3 / 4)), "--axes", "X"});
    EXPECT_THAT(cut.output, HasSubstr("note: recording was cut off at "));
    // Of a comparison every file is told of, also where nothing could be compared.
    const auto compared = Started({"compare", Path("whole.mcap"), "--reference", Path("cut.mcap"),
                                   "--tolerance", "1", "--json", Path("j.json")});
    EXPECT_EQ(compared.code, 0) << compared.errors;
    EXPECT_THAT(compared.output, HasSubstr("cut.mcap: recording was cut off at "));
    EXPECT_THAT(*ReadWholeFile(Path("j.json")), HasSubstr("cut.mcap: recording was cut off at "));
    const auto not_compared =
        Started({"compare", Path("cut.mcap"), "--reference",
                 Written("other.csv", "C,D\n1,2\n2,3\n"), "--tolerance", "1"});
    EXPECT_EQ(not_compared.code, 3);
    EXPECT_THAT(not_compared.output, HasSubstr("note: recording was cut off at "));
    EXPECT_EQ(Started({"axis", Written("short.mcap", whole.substr(0, 300))}).code, 2);
    tables::ColumnTable empty{{"X", "Y"}, {{}, {}}};
    WriteRecording(Path("empty.mcap"), empty, 0.001);
    EXPECT_THAT(Started({"axis", Path("empty.mcap")}).errors, HasSubstr("no lines of values"));
}

TEST(ReportJsonDocument, NamesEveryMember) {
    std::ifstream file(WAVO_REPORT_JSON_DOCUMENT);
    std::ostringstream text;
    text << file.rdbuf();
    for (const char* name : {"wavo-circle/1", "wavo-axis/1", "wavo-compare/1", "standard_error",
                             "evaluations", "reported", "margin_s", "settling_ms", "likeness",
                             "coherence", "worst_tolerance", "verdict", "from_commanded"}) {
        EXPECT_THAT(text.str(), HasSubstr(name));
    }
}

}  // namespace
}  // namespace wavo::programs
