// wavo_report as its users start it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <fstream>
#include <sstream>

#include "programs/report_options.h"
#include "programs/table_file.h"
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
