// Computed axes in the whole viewer: the dialog, curves, files, and what stays while they change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <cmath>
#include <memory>

#include "graph/values/missing_value.h"
#include "lines_from_memory.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/computed_axes_dialog.h"
#include "ui/graph_editor/editor_controls.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using computed::ComputedAxis;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsNan;
using testing::LinesFromMemory;
using ::testing::Not;

constexpr double kT = 0.004;

class ComputedView : public ::testing::Test {
 protected:
    ComputedView() {
        qputenv(testing::kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_view = std::make_unique<CWavoView>(m_prompts, nullptr, std::move(source));
        m_view->resize(800, 600);
        m_view->show();
        m_view->OnInitialUpdate();
        QCoreApplication::processEvents();
        QObject::connect(&m_view->News(), &ViewNews::PaneTextChanged, m_view.get(),
                         [this](StatusPane pane, const QString& text) {
                             if (pane == StatusPane::kMessage) {
                                 m_status = text.toStdString();
                             }
                         });
    }
    ~ComputedView() override {
        m_view.reset();
        qunsetenv(testing::kDataHome);
    }

    void Give(std::vector<double> lines) {
        m_source->values = std::move(lines);
        EXPECT_TRUE(m_source->events->BatchReady());
    }
    /// A graph of these axes, beside those that there are.
    void AddGraph(const std::vector<std::string>& axes, std::int32_t derivation = 0) {
        WavoGraph graph;
        graph.InitGraph(m_view->Work().Graphs().FreeNumber(), axes[0].c_str(), {}, nullptr);
        graph.YCoorAxName = axes;
        graph.YCoorAxColor.assign(axes.size(), 0xFF);
        graph.YCoorAxDerivation.assign(axes.size(), derivation);
        graph.YScales.assign(axes.size(), graph.YScales[0]);
        graph.Triggers.assign(axes.size(), {});
        for (std::size_t i = 0; i < axes.size(); ++i) {
            graph.Triggers[i] = {TriggerTypeCode::kNone, 0.0, axes[i]};
        }
        m_view->Work().Graphs().Add(graph);
        m_view->Work().Values().InitialiseEditor();
        QCoreApplication::processEvents();
    }
    void Define(std::vector<ComputedAxis> axes) {
        m_view->Work().Computed().Define(std::move(axes));
        QCoreApplication::processEvents();
    }
    std::vector<double> Held(const std::string& name, std::int32_t derivation = 0) {
        std::vector<double> held;
        for (GraphValue& value : m_view->Work().Streams().Registry().Values()) {
            if (value.Name() == name && value.DerivationOrder() == derivation) {
                double start = 0.0;
                value.GetTimeRangeValues(held, value.TimeRange(), start);
            }
        }
        return held;
    }
    /// Opens the dialog by its command and does something in it.
    void InDialog(const std::function<void(ComputedAxesDialog&)>& act) {
        QTimer::singleShot(0, m_view.get(), [&act] {
            auto* const dialog =
                dynamic_cast<ComputedAxesDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            act(*dialog);
        });
        ASSERT_TRUE(m_view->Commands().IsEnabled(CommandId::kComputedAxes));
        m_view->Commands().Execute(CommandId::kComputedAxes);
        QCoreApplication::processEvents();
    }
    static void Press(ComputedAxesDialog& dialog, ComputedAxesId id) {
        QTest::mouseClick(FindControl<QAbstractButton>(dialog, static_cast<int>(id)),
                          Qt::LeftButton);
    }
    static void Type(ComputedAxesDialog& dialog, ComputedAxesId id, const char* text) {
        auto* const edit = FindControl<QLineEdit>(dialog, static_cast<int>(id));
        edit->selectAll();
        QTest::keyClicks(edit, QString::fromLatin1(text));
    }
    std::string WriteFile(const char* name, const char* text) {
        const QString path = m_folder.filePath(QString::fromLatin1(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path.toStdString();
    }
    static std::string Read(const std::string& path) {
        QFile file(QString::fromStdString(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    std::vector<std::string> m_boxes;
    std::string m_status;
    LinesFromMemory* m_source = nullptr;
    std::unique_ptr<CWavoView> m_view;
};

TEST_F(ComputedView, AreMadeInTheDialogAndShownAsCurves) {
    InDialog([](ComputedAxesDialog& dialog) {
        Press(dialog, ComputedAxesId::kAdd);
        Type(dialog, ComputedAxesId::kName, "sum");
        Type(dialog, ComputedAxesId::kExpression, "X + Y");
        Type(dialog, ComputedAxesId::kUnit, "mm");
        Press(dialog, ComputedAxesId::kOk);
    });
    EXPECT_THAT(m_view->Work().Computed().Definitions(),
                ElementsAre(ComputedAxis{"sum", "X + Y", "mm"}));
    const QComboBox& axes = m_view->Editor().Fields().Combo(EditorControl::kYAxis);
    EXPECT_GE(axes.findText(QStringLiteral("sum")), 0) << "listed in the graph editor";
    AddGraph({"sum", "X"});
    Give({1, 10, 2, 20, 4, 40});
    EXPECT_THAT(Held("sum"), ElementsAre(11, 22, 44));
    EXPECT_THAT(Held("X"), ElementsAre(1, 2, 4));
    std::vector<double> shown;
    EXPECT_TRUE(m_view->Board().Drawers()[0]->GetAxValues("sum", shown));
    EXPECT_THAT(shown, ElementsAre(11, 22, 44));
}

TEST_F(ComputedView, ShowTheirUnits) {
    Define({{"sum", "X + Y", "mm"}});
    AddGraph({"sum"}, 1);
    const QImage with = m_view->Screen().Picture();
    Define({{"sum", "X + Y", ""}});
    EXPECT_NE(m_view->Screen().Picture(), with);
    Define({{"sum", "X + Y", "mm"}});
    EXPECT_EQ(m_view->Screen().Picture(), with);
}

TEST_F(ComputedView, CancelChangesNothing) {
    Define({{"sum", "X + Y", ""}});
    AddGraph({"sum"});
    Give({1, 10});
    InDialog([](ComputedAxesDialog& dialog) {
        Type(dialog, ComputedAxesId::kExpression, "X");
        Press(dialog, ComputedAxesId::kCancel);
    });
    Give({2, 20});
    EXPECT_THAT(Held("sum"), ElementsAre(11, 22));
}

TEST_F(ComputedView, HaveDerivationsLikeAnyAxis) {
    Define({{"sum", "X + Y", ""}, {"v", "d(X)", ""}});
    AddGraph({"sum", "v"}, 1);
    Give({1, 1, 2, 2, 4, 4});
    EXPECT_THAT(Held("sum", 1), ElementsAre(0.0, 2 / kT, 4 / kT));
    EXPECT_THAT(Held("v", 1), ElementsAre(0.0, 1 / kT / kT, 1 / kT / kT));
}

TEST_F(ComputedView, StartGraphsByTriggers) {
    Define({{"sum", "X + Y", ""}});
    AddGraph({"X"});
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.YCoorAxName = {"sum"};
    graph.Triggers[0] = {TriggerTypeCode::kStartAbove, 30.0, "sum"};
    m_view->Work().Graphs().Put(graph);
    QCoreApplication::processEvents();
    const GraphDraw& drawer = *m_view->Board().Drawers()[0];
    Give({1, 1, 2, 2});
    EXPECT_EQ(drawer.State(), RunState::kWaitingForStart);
    Give({20, 20, 1, 1});
    EXPECT_EQ(drawer.State(), RunState::kRunningAfterStart);
}

TEST_F(ComputedView, AreXAxes) {
    Define({{"twice", "X * 2", ""}});
    WavoGraph graph;
    graph.InitGraph(1, "Y", {}, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "twice";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    m_view->Work().Graphs().Add(graph);
    Give({1, 10, 2, 20});
    EXPECT_THAT(Held("twice"), ElementsAre(2, 4));
}

TEST_F(ComputedView, BeginAnewWhereTheyHaveChangedAndGoOnWhereNot) {
    Define({{"a", "X", ""}, {"b", "Y", ""}, {"c", "a + 1", ""}});
    AddGraph({"a", "b", "c", "X"});
    Give({1, 10, 2, 20});
    Define({{"new", "X", ""}, {"a", "X * 2", ""}, {"b", "Y", "mm"}, {"c", "a + 1", ""}});
    Give({3, 30});
    EXPECT_THAT(Held("a"), ElementsAre(6));
    EXPECT_THAT(Held("b"), ElementsAre(10, 20, 30)) << "its unit is no value";
    EXPECT_THAT(Held("c"), ElementsAre(7)) << "computed of one that has changed";
    EXPECT_THAT(Held("X"), ElementsAre(1, 2, 3));
    Define({});
    Give({4, 40});
    EXPECT_THAT(Held("b"), ElementsAre(10, 20, 30)) << "it gets no more";
    EXPECT_THAT(Held("X"), ElementsAre(1, 2, 3, 4));
}

TEST_F(ComputedView, KeepTheGraphThatIsEdited) {
    AddGraph({"X"});
    AddGraph({"Y"});
    ASSERT_TRUE(m_view->Editor().SetWindowData(2, 0));
    InDialog([](ComputedAxesDialog& dialog) {
        Press(dialog, ComputedAxesId::kAdd);
        Type(dialog, ComputedAxesId::kExpression, "X");
        Press(dialog, ComputedAxesId::kOk);
    });
    EXPECT_EQ(m_view->Editor().SelectedNumber(), 2U);
}

TEST_F(ComputedView, OfUnknownAxesAreMissingAndSaidOnce) {
    Define({{"a", "X + Q", ""}});
    EXPECT_EQ(m_status,
              "From memory; computed axis a: There is no axis \"Q\": the values are missing until "
              "there is");
    AddGraph({"a", "X"});
    Give({1, 10, 2, 20});
    EXPECT_THAT(Held("a"), ElementsAre(IsNan(), IsNan()));
    EXPECT_THAT(m_boxes, IsEmpty());
    m_source->description.axis_names = {"X", "Q"};
    m_source->events->Described(false);
    m_source->events->StateChanged();
    m_source->events->ValuesBegin(false);
    EXPECT_EQ(m_status, "From memory");
    Give({1, 10, 2, 20});
    EXPECT_THAT(Held("a"), ElementsAre(11, 22));
}

TEST_F(ComputedView, GiveWayToAnAxisOfTheMachine) {
    Define({{"v", "X * 100", ""}});
    AddGraph({"v"});
    Give({1, 10});
    EXPECT_THAT(Held("v"), ElementsAre(100));
    m_source->description.axis_names = {"X", "v"};
    m_source->events->Described(false);
    m_source->events->StateChanged();
    m_source->events->ValuesBegin(false);
    EXPECT_EQ(m_status,
              "From memory; computed axis v: The machine has an axis with the name \"v\"");
    Give({1, 10});
    EXPECT_THAT(Held("v"), ElementsAre(10));
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "v"));
}

// ---- graph files ----

TEST_F(ComputedView, StandInTheGraphFile) {
    const std::string path =
        WriteFile("a.ini",
                  "[GENERAL]\r\nGraphs=1\r\nAddText=\r\n"
                  "[1]\r\nYCoorAxName=v\r\nYCoorAxColor=255\r\nYCoorAxDerivation=0\r\n"
                  "Mode=1\r\nModeAx=1\r\nXCoorType=1\r\nXScaleType=1\r\nXScaleTime=2\r\n"
                  "YScaleType=2\r\nYScaleAxType=1\r\nYScaleAxMax=0.0\r\nYScaleAxMin=0.0\r\n"
                  "[COMPUTED]\r\nAxes=v\r\nExpression1=hypot(d(X), d(Y))\r\nUnit1=mm/s\r\n");
    ASSERT_TRUE(m_view->Work().Files().Open(path, "a.ini", false));
    QCoreApplication::processEvents();
    EXPECT_THAT(m_view->Work().Computed().Definitions(),
                ElementsAre(ComputedAxis{"v", "hypot(d(X), d(Y))", "mm/s"}));
    Give({0, 0, 3, 4});
    EXPECT_THAT(Held("v"), ElementsAre(0, 5 / kT));
    Define({{"v", "hypot(d(X), d(Y))", "mm/s"}, {"w", "X", ""}});
    ASSERT_TRUE(m_view->Work().Files().Save().HasValue());
    EXPECT_THAT(Read(path), HasSubstr("[COMPUTED]\r\nAxes=v,w\r\nExpression1=hypot(d(X), d(Y))\r\n"
                                      "Unit1=mm/s\r\nExpression2=X\r\nUnit2=\r\n"));
}

TEST_F(ComputedView, BeginAnewWhereAGraphFileHasThemOtherwise) {
    const std::string path =
        WriteFile("other.ini",
                  "[GENERAL]\r\nGraphs=1\r\nAddText=\r\n"
                  "[1]\r\nYCoorAxName=a\r\nYCoorAxColor=255\r\nYCoorAxDerivation=0\r\n"
                  "Mode=1\r\nModeAx=1\r\nXCoorType=1\r\nXScaleType=1\r\nXScaleTime=2\r\n"
                  "YScaleType=2\r\nYScaleAxType=1\r\nYScaleAxMax=0.0\r\nYScaleAxMin=0.0\r\n"
                  "[COMPUTED]\r\nAxes=a,b\r\nExpression1=X * 2\r\nExpression2=Y\r\n");
    Define({{"a", "X", ""}, {"b", "Y", ""}});
    AddGraph({"a", "b"});
    Give({1, 10, 2, 20});
    ASSERT_TRUE(m_view->Work().Files().Open(path, "other.ini", false));
    EXPECT_THAT(Held("a"), IsEmpty()) << "what it was is not what it says now";
    EXPECT_THAT(Held("b"), ElementsAre(10, 20));
}

TEST_F(ComputedView, AreAskedForByNoFileWithoutThem) {
    AddGraph({"X"});
    const std::string with = m_folder.filePath(QStringLiteral("with.ini")).toStdString();
    const std::string without = m_folder.filePath(QStringLiteral("without.ini")).toStdString();
    ASSERT_TRUE(m_view->Work().Files().WriteCopy(without));
    EXPECT_THAT(Read(without), Not(HasSubstr("COMPUTED")));
    Define({{"a", "X", ""}});
    ASSERT_TRUE(m_view->Work().Files().WriteCopy(with));
    EXPECT_EQ(Read(with), Read(without) + "[COMPUTED]\r\nAxes=a\r\nExpression1=X\r\nUnit1=\r\n");
    Define({});
    m_view->Work().Files().SetCurrentPath(with);
    ASSERT_TRUE(m_view->Work().Files().Save().HasValue());
    EXPECT_EQ(Read(with), Read(without)) << "byte for byte";
    Define({{"a", "X", ""}});
    ASSERT_TRUE(m_view->Work().Files().Open(without, "without.ini", false));
    EXPECT_THAT(m_view->Work().Computed().Definitions(), IsEmpty()) << "they belong to the file";
}

TEST_F(ComputedView, AreForgottenWithNew) {
    Define({{"a", "X", ""}});
    AddGraph({"a"});
    m_view->Commands().Execute(CommandId::kNew);
    QCoreApplication::processEvents();
    EXPECT_THAT(m_view->Work().Computed().Definitions(), IsEmpty());
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "Y"));
    Give({1, 2});
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(ComputedView, OfADamagedFileAreKeptForTheUserToMend) {
    const std::string path =
        WriteFile("bad.ini",
                  "[GENERAL]\r\nGraphs=\r\n[COMPUTED]\r\nAxes=a,2b,c,c\r\nExpression1=X +\r\n"
                  "Expression2=X\r\nExpression3=c\r\n");
    ASSERT_TRUE(m_view->Work().Files().Open(path, "bad.ini", false));
    QCoreApplication::processEvents();
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_THAT(m_view->Work().Values().AxisNames(), ElementsAre("X", "Y", "a", "c"));
    Give({1, 2});
    InDialog([](ComputedAxesDialog& dialog) {
        EXPECT_EQ(dialog.Axes().size(), 4U);
        EXPECT_FALSE(FindControl(dialog, static_cast<int>(ComputedAxesId::kOk))->isEnabled());
        Press(dialog, ComputedAxesId::kCancel);
    });
}

}  // namespace
}  // namespace wavo
