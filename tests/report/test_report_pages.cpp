#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <cmath>

#include "printed_page.h"
#include "report/axis_report.h"
#include "report/chart.h"
#include "report/circle_report.h"
#include "report/ink.h"
#include "report/json_writer.h"
#include "report/page.h"
#include "report/pdf_file.h"
#include "synthetic_machine.h"
#include "test_tables.h"

namespace wavo::report {
namespace {

using measure::Sense;
using ::testing::HasSubstr;
using ::testing::Not;

/// A report of a circle test with everything in it.
struct CircleCase {
    measure::RunData data;
    CircleReport report;

    explicit CircleCase(const std::vector<double>& turns = {2.0, -2.0},
                        const measure::MachineErrors& errors = Errors(),
                        const measure::CircleSetup& setup = {}) {
        measure::CircleProgram program;
        program.turns = turns;
        data = measure::RunCircles(program, errors);
        report.path = data.Path();
        report.setup = setup;
        report.result = measure::TestCircle(report.path, setup);
        report.header.machine = QStringLiteral("Mill 4");
        report.header.program = QStringLiteral("circle_r20.ngc");
        report.header.date = QStringLiteral("2026-01-31");
        report.header.file = QStringLiteral("run.csv");
        report.header.made_by = QStringLiteral("wavo_report 1.0");
    }

    static measure::MachineErrors Errors() {
        measure::MachineErrors errors;
        errors.lag_x = 0.004;
        errors.lag_y = 0.0043;
        errors.play_x = 0.005;
        errors.spike_y = 0.006;
        return errors;
    }
};

std::string TextOfPdf(const QString& path) {
    QProcess process;
    process.start(QStringLiteral("pdftotext"),
                  {QStringLiteral("-layout"), path, QStringLiteral("-")});
    EXPECT_TRUE(process.waitForFinished(60000));
    return process.readAllStandardOutput().toStdString();
}

QJsonObject Parsed(const std::string& json) {
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(json), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << json;
    return document.object();
}

QJsonObject FigureOf(const QJsonArray& figures, const char* key) {
    for (const auto& figure : figures) {
        if (figure.toObject()[QStringLiteral("key")].toString() == QString::fromLatin1(key)) {
            return figure.toObject();
        }
    }
    ADD_FAILURE() << "no figure " << key;
    return {};
}

TEST(CircleReport, ThePageHoldsTheFigures) {
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    CircleCase test;
    test.report.limits = *measure::ParseLimits("[Limits]\nG_ccw = 50\nBx = 4\n");
    test.report.setup.shape.zone = 6.0;
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("circle.pdf"));
    ASSERT_TRUE(WriteCirclePdf(path, test.report));
    const std::string text = TextOfPdf(path);
    const auto& turn = test.report.result.turns[0];
    for (const std::string& part :
         {std::string("Circle test XY"), std::string("Mill 4"), std::string("circle_r20.ngc"),
          std::string("2026-01-31"), std::string("run.csv"),
          std::string("errors behind the encoders"), std::string("ISO 230-4:2022"),
          std::string("FAIL"), std::string("pass"), std::string("backlash X"),
          std::string("servo mismatch Y - X"), std::string("Signature"),
          std::string("counter-clockwise"), std::string("Settings: reversal zones of 6.0°"),
          std::string("µm/div"),
          QStringLiteral("%1 µm").arg(*turn.circular_error, 0, 'f', 2).toStdString(),
          QStringLiteral("lines %1 to").arg(turn.stretch.first).toStdString()}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
    EXPECT_THAT(text, Not(HasSubstr("…")));  // no name had to be shortened
    // One page, and ink on all of its parts.
    const QImage page = testing::PageOf(path, 60);
    EXPECT_NEAR(page.width(), 210 / 25.4 * 60, 2);
    EXPECT_NEAR(page.height(), 297 / 25.4 * 60, 2);
    EXPECT_EQ(text.find('\f'), text.rfind('\f'));
}

TEST(CircleReport, TheVerdictIsTheExitCode) {
    CircleCase test;
    EXPECT_EQ(JudgeCircle(test.report).exit_code, 0);
    test.report.limits = *measure::ParseLimits("[Limits]\nG_ccw = 50\n");
    EXPECT_EQ(JudgeCircle(test.report).exit_code, 0);
    test.report.limits = *measure::ParseLimits("[Limits]\nG_ccw = 1\n");
    EXPECT_EQ(JudgeCircle(test.report).exit_code, 1);
    test.report.limits = *measure::ParseLimits("[Limits]\nG_ccw = 1\nnothing = 5\n");
    EXPECT_EQ(JudgeCircle(test.report).exit_code, 3);
    CircleCase one_sense({2.0});
    one_sense.report.limits = *measure::ParseLimits("[Limits]\nG_b = 50\n");
    EXPECT_EQ(JudgeCircle(one_sense.report).exit_code, 3);
    CircleCase no_turn({0.4});
    EXPECT_EQ(JudgeCircle(no_turn.report).exit_code, 3);
}

TEST(CircleReport, WithoutATurnThePageSaysWhy) {
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    const CircleCase test({0.4});
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("none.pdf"));
    ASSERT_TRUE(WriteCirclePdf(path, test.report));
    const std::string text = TextOfPdf(path);
    EXPECT_THAT(text, HasSubstr("NOT TOLD"));
    EXPECT_THAT(text, HasSubstr("less than one turn"));
}

TEST(CircleReport, OneSenseNamesWhatCannotBeTold) {
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    const CircleCase test({2.0});
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("one.pdf"));
    ASSERT_TRUE(WriteCirclePdf(path, test.report));
    const std::string text = TextOfPdf(path);
    EXPECT_THAT(text, HasSubstr("oval at 45°"));
    EXPECT_THAT(text, HasSubstr("not separable with one sense"));
    EXPECT_THAT(text, HasSubstr("one sense only"));
}

TEST(CircleReport, AFileThatCannotBeWritten) {
    const CircleCase test;
    EXPECT_FALSE(WriteCirclePdf(QStringLiteral("/no/such/folder/circle.pdf"), test.report));
}

TEST(CircleReport, JsonHoldsValuesReasonsAndLimits) {
    CircleCase test;
    test.report.limits = *measure::ParseLimits("[Limits]\nG_ccw = 50\nBx = 4\n");
    const QJsonObject json = Parsed(CircleJson(test.report));
    EXPECT_EQ(json[QStringLiteral("schema")].toString(), QStringLiteral("wavo-circle/1"));
    EXPECT_EQ(json[QStringLiteral("verdict")].toString(), QStringLiteral("FAIL"));
    EXPECT_EQ(json[QStringLiteral("runs")].toArray().size(), 2);
    const QJsonObject evaluation = json[QStringLiteral("evaluations")].toArray()[0].toObject();
    EXPECT_TRUE(evaluation[QStringLiteral("reported")].toBool());
    const QJsonArray figures = evaluation[QStringLiteral("figures")].toArray();
    EXPECT_DOUBLE_EQ(FigureOf(figures, "G_ccw")[QStringLiteral("value")].toDouble(),
                     *test.report.result.turns[0].circular_error);
    EXPECT_EQ(FigureOf(figures, "Bx")[QStringLiteral("verdict")].toString(),
              QStringLiteral("FAIL"));
    EXPECT_EQ(FigureOf(figures, "Bx")[QStringLiteral("limit")].toObject()[QStringLiteral("most")],
              4.0);
    const QJsonObject single = Parsed(CircleJson(CircleCase({2.0}).report));
    const QJsonArray of_one = single[QStringLiteral("evaluations")]
                                  .toArray()[0]
                                  .toObject()[QStringLiteral("figures")]
                                  .toArray();
    EXPECT_TRUE(FigureOf(of_one, "G_b")[QStringLiteral("value")].isNull());
    EXPECT_EQ(FigureOf(of_one, "G_b")[QStringLiteral("reason")].toString(),
              QStringLiteral("one sense only"));
    EXPECT_EQ(single[QStringLiteral("verdict")].toString(), QStringLiteral("no limits"));
    EXPECT_EQ(Parsed(CircleJson(CircleCase({0.3}).report))[QStringLiteral("verdict")].toString(),
              QStringLiteral("not told"));
}

TEST(CircleReport, TheFeedChoosesTheTurns) {
    const measure::ColumnTable table = measure::LoadTable("recordings/circle_xy_r50");
    const measure::PlanePath path{0.001, table.Find("X"), table.Find("Y"), table.Find("X_cmd"),
                                  table.Find("Y_cmd")};
    const auto result = measure::TestCircle(path);
    EXPECT_EQ(measure::ChosenEvaluation(result, std::nullopt), 0U);
    EXPECT_EQ(measure::ChosenEvaluation(result, 50.0), 0U);
    EXPECT_EQ(measure::ChosenEvaluation(result, 100.0), 1U);
    EXPECT_EQ(measure::ChosenEvaluation(result, 20.0), std::nullopt);
}

/// Radius in pixels at which a colour stands on the ray to the right.
double RadiusOfInk(const QImage& image, const QColor& ink, double degrees) {
    const double centre = image.width() / 2.0;
    double sum = 0.0;
    double count = 0.0;
    for (double radius = 0.0; radius < centre; radius += 0.25) {
        const QPointF at(centre + radius * std::cos(degrees / 57.29578),
                         centre - radius * std::sin(degrees / 57.29578));
        if (!image.rect().contains(at.toPoint())) {
            continue;
        }
        const QColor here = image.pixelColor(at.toPoint());
        if (std::abs(here.red() - ink.red()) + std::abs(here.green() - ink.green()) +
                std::abs(here.blue() - ink.blue()) <
            90) {
            sum += radius;
            ++count;
        }
    }
    return count > 0.0 ? sum / count : -1.0;
}

TEST(PolarPicture, ErrorsStandWhereTheScaleSays) {
    PolarPicture picture;
    for (const auto& [sense, error] :
         {std::pair{Sense::kCounterClockwise, 6.0}, {Sense::kClockwise, -3.0}}) {
        PolarTrace trace{sense, {}};
        for (int i = 0; i < 1440; ++i) {
            trace.errors.push_back({i * 0.25, error});
        }
        picture.traces.push_back(trace);
    }
    EXPECT_EQ(ScaleOf(picture).step, 2.0);
    QImage image(800, 800, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    PaintPolar(painter, image.rect(), picture, 8.0);
    painter.end();
    EXPECT_NEAR(RadiusOfInk(image, kCounterClockwiseInk, 20.0), 400.0 * (0.65 + 0.3 * 3.0 / 4.0),
                1.5);
    double nearest = 1e9;  // dashes: some rays meet one
    for (int degrees = 20; degrees < 70; ++degrees) {
        const double radius = RadiusOfInk(image, kClockwiseInk, degrees);
        nearest = std::min(
            nearest, radius > 0.0 ? std::abs(radius - 400.0 * (0.65 - 0.3 * 1.5 / 4.0)) : 1e9);
    }
    EXPECT_LT(nearest, 1.5);
    picture.step = 10.0;
    image.fill(Qt::white);
    QPainter again(&image);
    PaintPolar(again, image.rect(), picture, 8.0);
    again.end();
    EXPECT_NEAR(RadiusOfInk(image, kCounterClockwiseInk, 20.0), 400.0 * (0.65 + 0.3 * 0.6 / 4.0),
                1.5);
}

TEST(PolarPicture, OfNothingAndOfMoreThanItsScaleIsPainted) {
    QImage image(100, 60, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    PaintPolar(painter, image.rect(), {}, 1.0);
    PolarPicture picture;
    picture.step = 0.001;
    picture.band = PolarBand{-5.0, 5.0};
    picture.traces.push_back({Sense::kClockwise, {{0.0, 1e6}, {90.0, -1e6}, {180.0, 0.0}}});
    PaintPolar(painter, image.rect(), picture, 1.0);
    painter.end();
    EXPECT_NE(image.pixelColor(50, 30), QColor());
}

TEST(RadialErrors, KeepTheExtremesOfManyLines) {
    measure::CircleProgram program;
    program.cycle_time = 0.0001;
    measure::MachineErrors errors;
    errors.spike_x = 0.02;
    errors.spike_time = 0.002;
    const auto data = measure::RunCircles(program, errors);
    const auto result = measure::TestCircle(data.Path());
    const auto& turn = result.turns.at(0);
    const auto all = measure::RadialErrorsOf(data.Path(), turn.stretch, turn.circle, 1000000);
    const auto few = measure::RadialErrorsOf(data.Path(), turn.stretch, turn.circle, 500);
    EXPECT_EQ(all.size(), turn.stretch.Size());
    EXPECT_LE(few.size(), 500U);
    const auto largest = [](const std::vector<measure::RadialError>& errors_of) {
        return std::ranges::max(errors_of, {}, &measure::RadialError::error).error;
    };
    EXPECT_EQ(largest(all), largest(few));
}

TEST(Chart, LabelsHaveRoundSteps) {
    const struct {
        double first, last;
        int most;
        double at, step;
        int decimals;
    } rows[] = {{0.0, 10.0, 10, 0.0, 1.0, 0},
                {-7.3, 6.6, 5, -5.0, 5.0, 0},
                {0.0, 0.03, 5, 0.0, 0.01, 2},
                {0.12, 0.88, 4, 0.2, 0.2, 1},
                {-1e4, 1e4, 4, -1e4, 5e3, 0}};
    for (const auto& row : rows) {
        const LabelSteps steps = LabelStepsFor(row.first, row.last, row.most);
        EXPECT_NEAR(steps.first, row.at, 1e-9);
        EXPECT_NEAR(steps.step, row.step, 1e-9);
        EXPECT_EQ(steps.decimals, row.decimals);
    }
}

TEST(Chart, OfNothingIsPainted) {
    QImage image(300, 200, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    Chart chart;
    PaintChart(painter, image.rect(), chart, 4.0);
    chart.curves.push_back({{{0.0, std::nan("")}, {1.0, 5.0}}, Qt::red, true, QStringLiteral("a")});
    PaintChart(painter, image.rect(), chart, 4.0);
    SUCCEED();
}

TEST(Json, IsEscapedAndReadsBackTheSame) {
    JsonWriter json;
    json.Text("te\"xt", "a\\b\n\x01µ");
    json.Number("n", 0.1);
    json.Number("gone", std::nan(""));
    json.BeginArray("list");
    json.Number("", 1e-300);
    json.Flag("", true);
    json.BeginObject();
    json.EndObject();
    json.EndArray();
    json.BeginArray("empty");
    json.EndArray();
    const QJsonObject read = Parsed(json.Finish());
    EXPECT_EQ(read[QStringLiteral("te\"xt")].toString(), QStringLiteral("a\\b\n\u0001µ"));
    EXPECT_EQ(read[QStringLiteral("n")].toDouble(), 0.1);
    EXPECT_TRUE(read[QStringLiteral("gone")].isNull());
    EXPECT_EQ(read[QStringLiteral("list")].toArray()[0].toDouble(), 1e-300);
    EXPECT_TRUE(read[QStringLiteral("empty")].toArray().isEmpty());
}

TEST(Page, ValuesAreWrittenAsOnDrawings) {
    const auto text = [](measure::Figure value, double error, const char* unit, int decimals) {
        return DisplayValue({"k", "s", "n", unit, decimals, std::move(value), error}).toStdString();
    };
    EXPECT_EQ(text(12.345, 0.0, "um", 2), "12.35 µm");
    EXPECT_EQ(text(12.345, 0.02, "um", 2), "12.35 ± 0.02 µm");
    EXPECT_EQ(text(12.345, 0.002, "um", 2), "12.35 µm");
    EXPECT_EQ(text(80.0, 0.0, "um/m", 1), "80.0 µm/m");
    EXPECT_EQ(text(2.25, 0.0, "deg", 1), "2.2 °");
    EXPECT_EQ(text(measure::Figure::Not("no"), 0.0, "um", 2), "not told");
}

struct AxisCase {
    measure::ColumnTable table;
    AxisReport report;

    AxisCase(const char* file, bool response) {
        table = measure::LoadTable(file);
        report.setup.response = response;
        const bool pairs = table.Has("X_cmd");
        for (const std::string axis : {"X", "Y"}) {
            AxisPart part;
            part.names = pairs ? measure::AxisPair{axis, axis + "_cmd", axis}
                               : measure::AxisPair{"axis", "cmd", "act"};
            part.commanded = table.Find(part.names.commanded);
            part.actual = table.Find(part.names.actual);
            part.result = measure::TestAxis(part.commanded, part.actual, 0.001, report.setup);
            report.parts.push_back(std::move(part));
            if (!pairs) {
                break;
            }
        }
    }
};

TEST(AxisReport, HasAPagePerAxisAndOnePerResponse) {
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    const AxisCase test("recordings/drill_g81_g83_g82", true);
    EXPECT_EQ(PagesOf(test.report), 4);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("axis.pdf"));
    ASSERT_TRUE(WriteAxisPdf(path, test.report));
    const std::string text = TextOfPdf(path);
    EXPECT_EQ(std::ranges::count(text, '\f'), 4);
    for (const char* part :
         {"Axis test X", "Axis test Y", "coherence", "velocity gain", "page 4 of 4",
          "settling at the end of positioning", "rise 10 to 90 %"}) {
        EXPECT_THAT(text, HasSubstr(part));
    }
}

TEST(AxisReport, StepsAreShown) {
    const AxisCase test("axis_step", false);
    EXPECT_EQ(PagesOf(test.report), 1);
    const QJsonObject json = Parsed(AxisJson(test.report));
    EXPECT_NEAR(FigureOf(json[QStringLiteral("figures")].toArray(),
                         "axis.step1_overshoot")[QStringLiteral("value")]
                    .toDouble(),
                25.367, 0.001);
    EXPECT_EQ(JudgeAxes(test.report).exit_code, 0);
    QImage image(800, 1130, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    PaintAxisPage(painter, test.report, 1);
    painter.end();
    SUCCEED();
}

TEST(AxisReport, LimitsNameTheAxis) {
    AxisCase test("axis_move", false);
    test.report.limits = *measure::ParseLimits("[Limits]\naxis.lag = 21\naxis.Kv = 49..51\n");
    EXPECT_EQ(JudgeAxes(test.report).exit_code, 0);
    test.report.limits = *measure::ParseLimits("[Limits]\naxis.lag = 19\n");
    EXPECT_EQ(JudgeAxes(test.report).exit_code, 1);
    test.report.limits = *measure::ParseLimits("[Limits]\nlag = 19\n");
    EXPECT_EQ(JudgeAxes(test.report).exit_code, 3);
    AxisReport nothing;
    EXPECT_EQ(JudgeAxes(nothing).exit_code, 3);
}

}  // namespace
}  // namespace wavo::report
