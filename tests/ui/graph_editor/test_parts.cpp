// The parts of the graph editor: the table of its controls, its layout, the colours of new curves.
#include <QAbstractButton>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <cmath>
#include <set>

#include "editor_fixture.h"
#include "graph/draw/display_settings.h"
#include "graph/draw/frame/colors.h"
#include "system_facts.h"
#include "ui/controls/flow_layout.h"
#include "ui/graph_editor/curve_palette.h"

namespace wavo {
namespace {

using enum EditorControl;
using testing::AxisGraph;
using testing::kSmallScreenWidth;
using testing::TimeGraph;

using EditorParts = testing::EditorFixture;

TEST_F(EditorParts, EveryControlIsThereOnceWithAToolTip) {
    std::set<int> numbers;
    for (const EditorRow& row : EditorControls()) {
        const int number = static_cast<int>(row.id);
        EXPECT_TRUE(numbers.insert(number).second) << number;
        EXPECT_EQ(m_editor->findChildren<QWidget*>(ControlName(number)).size(), 1) << number;
        EXPECT_FALSE(Get(row.id).toolTip().isEmpty()) << number;
        EXPECT_FALSE(Get(row.id).accessibleName().isEmpty()) << number;
        EXPECT_EQ(&FindEditorRow(row.id), &row);
    }
    const std::set<int> all = {2,    1003, 1005, 1006, 1007, 1009, 1010, 1011, 1012, 1013,
                               1015, 1016, 1018, 1019, 1021, 1022, 1023, 1025, 1028, 1030,
                               1036, 1037, 1041, 1043, 1044, 1045, 1046, 1047, 1048, 1050,
                               1053, 1059, 1062, 1064, 1072, 1074, 1077};
    EXPECT_EQ(numbers, all);
    for (const QWidget* const widget : m_editor->findChildren<QWidget*>()) {
        const QString name = widget->objectName();
        if (name.startsWith(QStringLiteral("control_"))) {
            EXPECT_EQ(numbers.count(name.mid(8).toInt()), 1U) << name.toStdString();
        }
    }
}

TEST_F(EditorParts, TheTabKeyGoesInReadingOrder) {
    Begin({AxisGraph()});
    std::vector<QWidget*> expected;
    for (const EditorRow& row : EditorControls()) {
        expected.push_back(&Get(row.id));
    }
    std::vector<QWidget*> order;
    for (QWidget* widget = expected.front();; widget = widget->nextInFocusChain()) {
        if (!order.empty() && widget == expected.front()) {
            break;
        }
        if (widget->objectName().startsWith(QStringLiteral("control_"))) {
            order.push_back(widget);
        }
    }
    EXPECT_EQ(order, expected);
}

/// Texts that a widget has no room for.
std::vector<std::string> CutOffTexts(const QWidget& strip) {
    std::vector<std::string> cut_off;
    for (const QWidget* const widget : strip.findChildren<QWidget*>()) {
        const auto* const button = qobject_cast<const QPushButton*>(widget);
        const bool shows_text =
            button == nullptr && (qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                                  qobject_cast<const QLabel*>(widget) != nullptr);
        const bool narrow =
            button != nullptr &&
            button->fontMetrics().horizontalAdvance(button->text()) + 8 > button->width();
        const QRect place(widget->mapTo(&strip, QPoint(0, 0)), widget->size());
        if (!widget->isVisible()) {
            continue;
        }
        if ((shows_text && (widget->width() < widget->minimumSizeHint().width() ||
                            widget->height() < widget->minimumSizeHint().height())) ||
            narrow || !strip.rect().contains(place)) {
            cut_off.push_back(widget->objectName().toStdString() + " " +
                              std::to_string(widget->width()));
        }
        const auto* const edit = qobject_cast<const QLineEdit*>(widget);
        if (edit != nullptr && !edit->isReadOnly() &&
            edit->fontMetrics().horizontalAdvance(edit->text()) > edit->width() - 8) {
            cut_off.push_back("text of " + widget->objectName().toStdString());
        }
    }
    return cut_off;
}

TEST_F(EditorParts, NothingIsCutOffAtAnyUsualWidth) {
    WavoGraph graph = AxisGraph();
    graph.XScale.Minimum = -1e8;
    graph.YScales[0].Minimum = -1e8;
    graph.XScale.Maximum = 1e8;
    Begin({graph});
    int before = 0;
    for (const int width : {1920, 1366, 1280, 1024, 800, 640}) {
        m_editor->resize(width, m_editor->heightForWidth(width));
        EXPECT_THAT(CutOffTexts(*m_editor), ::testing::IsEmpty()) << width;
        EXPECT_GE(m_editor->height(), before) << width;
        before = m_editor->height();
    }
}

TEST_F(EditorParts, TheLongestTimeIsNotCutOff) {
    WavoGraph graph = TimeGraph();
    graph.XScale.TimeRange = 1000000.0;
    Begin({graph});
    m_editor->resize(kSmallScreenWidth, m_editor->heightForWidth(kSmallScreenWidth));
    EXPECT_EQ(Text(kTimeRange), "1000000.000");
    EXPECT_THAT(CutOffTexts(*m_editor), ::testing::IsEmpty());
}

TEST_F(EditorParts, HasTheTextsOfItsTable) {
    Begin({TimeGraph()});
    std::vector<std::string> labels;
    for (const QLabel* const label : m_editor->findChildren<QLabel*>()) {
        labels.push_back(label->text().toStdString());
    }
    using ::testing::Contains;
    EXPECT_THAT(labels, Contains(". derivation (d?/dT), s->v->a"));
    EXPECT_THAT(labels, Contains("fade out time"));
    EXPECT_THAT(labels, Contains("graph no."));
}

TEST_F(EditorParts, WhatAWindowIsWiderIsForTheListOfTheAxesUpToALength) {
    Begin({TimeGraph()});
    const int at_ease = m_editor->sizeHint().width();
    m_editor->resize(at_ease, m_editor->heightForWidth(at_ease));
    const int combo = Get(kYAxis).width();
    const int axes = Get(kYAxes).width();
    m_editor->resize(1920, m_editor->heightForWidth(1920));
    EXPECT_EQ(Get(kYAxis).width(), combo);
    EXPECT_GT(Get(kYAxes).width(), axes + 100);
    const int longest = Get(kYAxes).width();
    m_editor->resize(3840, m_editor->heightForWidth(3840));
    EXPECT_EQ(Get(kYAxis).width(), combo);
    EXPECT_EQ(Get(kYAxes).width(), longest);
}

TEST_F(EditorParts, AGroupIsReachedByTheLetterOfItsTitle) {
    const std::pair<Qt::Key, EditorControl> letters[] = {
        {Qt::Key_G, kGraphNumber}, {Qt::Key_X, kXIsAxis}, {Qt::Key_Y, kYAxis},
        {Qt::Key_S, kXManual},     {Qt::Key_C, kYManual}, {Qt::Key_A, kAutoCircle},
        {Qt::Key_D, kZeroLines},
    };
    Begin({AxisGraph()});
    EXPECT_EQ(m_editor->findChildren<QGroupBox*>().size(), std::ssize(letters));
    for (const auto& [letter, control] : letters) {
        // A group is entered where it was left.
        Get(letter == Qt::Key_G ? kXIsAxis : kGraphNumber).setFocus();
        QTest::keyClick(m_editor->windowHandle(), letter, Qt::AltModifier);
        EXPECT_TRUE(Get(control).hasFocus()) << static_cast<int>(control);
    }
    EXPECT_THAT(m_view.Take(), ::testing::IsEmpty());
}

TEST_F(EditorParts, AllGroupsStandInOneRowOnASmallScreen) {
    EXPECT_EQ(m_editor->heightForWidth(kSmallScreenWidth), m_editor->heightForWidth(4000));
}

/// Height of the middle of a control in the strip.
int MiddleOf(const QWidget& strip, const QWidget& control) {
    return control.mapTo(&strip, control.rect().center()).y();
}

/// Expects the controls of each of `lines` beside each other.
void ExpectLines(const CAxSelect& strip, const std::vector<std::vector<EditorControl>>& lines) {
    for (const std::vector<EditorControl>& line : lines) {
        int middle = -1;
        for (const EditorControl id : line) {
            const auto* const control = FindControl<QWidget>(strip, static_cast<int>(id));
            middle = middle < 0 ? MiddleOf(strip, *control) : middle;
            EXPECT_NEAR(MiddleOf(strip, *control), middle, 1) << static_cast<int>(id);
        }
    }
}

TEST_F(EditorParts, ControlsOfAllGroupsStandOnTheSameLines) {
    Begin({TimeGraph()});
    const int at_ease = m_editor->sizeHint().width();
    m_editor->resize(at_ease, m_editor->heightForWidth(at_ease));
    const std::vector<std::vector<EditorControl>> lines = {
        {kGraphNumber, kXIsTime, kXIsAxis, kYAxis, kColor, kAddYAxis, kXTime, kTimeRange,
         kYAutomatic, kAutoCircle, kZeroLines},
        {kDeleteGraph, kXAxis, kDerivation, kDeleteYAxis, kXAutomatic, kAllGraphs, kYManual,
         kInnerCircle, kZoomEnable},
        {kSaveValues, kClassic, kContinuity, kYAxes, kXManual, kXMinimum, kYMinimum, kOuterCircle,
         kZoomOut},
        {kClose, kLines, kPoints, kTrigger, kTriggerState, kXMaximum, kYMaximum, kFadeOutTime},
    };
    ExpectLines(*m_editor, lines);
    // Closed up, and at ease again.
    int narrowest = at_ease;
    while (m_editor->heightForWidth(narrowest - 1) == m_editor->heightForWidth(at_ease)) {
        --narrowest;
    }
    m_editor->resize(narrowest, m_editor->heightForWidth(narrowest));
    EXPECT_THAT(CutOffTexts(*m_editor), ::testing::IsEmpty());
    ExpectLines(*m_editor, {{kDerivation, kXAxis}, {kDeleteYAxis, kYAxes, kClassic}});
    EXPECT_EQ(Get(kAddYAxis).geometry().right(), Get(kDeleteYAxis).geometry().right());
    m_editor->resize(at_ease, m_editor->heightForWidth(at_ease));
    ExpectLines(*m_editor, lines);
}

TEST_F(EditorParts, GroupsOfSeveralRowsAreSharedOutEvenly) {
    const auto groups = m_editor->findChildren<QGroupBox*>();
    for (const int width : {1200, 960}) {
        m_editor->resize(width, m_editor->heightForWidth(width));
        std::vector<QString> below;
        for (const QGroupBox* const group : groups) {
            if (group->y() > groups.front()->y()) {
                below.push_back(group->title());
            }
        }
        EXPECT_THAT(below, ::testing::ElementsAre(
                               QStringLiteral("&scale x"), QStringLiteral("s&cale y"),
                               QStringLiteral("&axis over axis"), QStringLiteral("&display")));
    }
}

TEST(FlowLayoutTest, BreaksRowsAndSharesWhatIsLeft) {
    QWidget window;
    auto* const flow = new FlowLayout(&window);
    flow->setContentsMargins(1, 2, 3, 4);
    flow->setSpacing(5);
    QWidget* widgets[3];
    for (QWidget*& widget : widgets) {
        widget = new QWidget(&window);
        widget->setFixedSize(100, 20);
        flow->addWidget(widget);
    }
    widgets[1]->setFixedSize(QWIDGETSIZE_MAX, 30);
    widgets[1]->setMinimumWidth(100);
    widgets[1]->setMaximumWidth(QWIDGETSIZE_MAX);
    widgets[1]->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    EXPECT_EQ(flow->count(), 3);
    EXPECT_EQ(flow->heightForWidth(314), 2 + 30 + 4);
    EXPECT_EQ(flow->heightForWidth(313), 2 + 30 + 5 + 20 + 4);
    EXPECT_EQ(flow->sizeHint(), QSize(314, 36));
    flow->setGeometry({0, 0, 400, 36});
    EXPECT_EQ(widgets[0]->x(), 1);
    EXPECT_EQ(widgets[1]->geometry().left(), 106);
    EXPECT_EQ(widgets[1]->width(), 186);
    EXPECT_EQ(widgets[2]->x(), 297);
    widgets[1]->setMaximumWidth(150);
    flow->setGeometry({0, 0, 400, 36});
    EXPECT_EQ(widgets[1]->width(), 150);
    EXPECT_EQ(widgets[2]->x(), 261);
}

/// A widget that would be `hint` wide, and can be `least`.
class Shrinkable : public QWidget {
 public:
    Shrinkable(int hint, int least, QWidget* parent)
        : QWidget(parent), m_hint(hint), m_least(least) {}
    [[nodiscard]] QSize sizeHint() const override { return {m_hint, 20}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {m_least, 20}; }

 private:
    const int m_hint;
    const int m_least;
};

TEST(FlowLayoutTest, ItemsGetTheirLeastWidthsWhereThatSavesTheSecondRow) {
    QWidget window;
    auto* const flow = new FlowLayout(&window);
    flow->setContentsMargins(0, 0, 0, 0);
    flow->setSpacing(5);
    Shrinkable* widgets[4];
    for (Shrinkable*& widget : widgets) {
        widget = new Shrinkable(100, 80, &window);
        flow->addWidget(widget);
    }
    EXPECT_EQ(flow->heightForWidth(415), 20);
    EXPECT_EQ(flow->heightForWidth(335), 20);
    EXPECT_EQ(flow->heightForWidth(334), 45);
    flow->setGeometry({0, 0, 414, 20});
    EXPECT_EQ(widgets[3]->geometry(), QRect(255, 0, 80, 20));
    flow->setGeometry({0, 0, 415, 20});
    EXPECT_EQ(widgets[3]->geometry(), QRect(315, 0, 100, 20));
    // Two and two, not three and one.
    flow->setGeometry({0, 0, 334, 45});
    EXPECT_EQ(widgets[1]->geometry(), QRect(105, 0, 100, 20));
    EXPECT_EQ(widgets[2]->geometry(), QRect(0, 25, 100, 20));
    // An item that is wider than its row.
    EXPECT_EQ(flow->heightForWidth(50), 4 * 20 + 3 * 5);
}

/// A colour as eyes see it that lack one kind of cones (0 none lacks, 1 to 3: long, middle, short).
std::array<double, 3> Seen(ColorRef color, int lacking) {
    static const double kMatrices[4][3][3] = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                                              {{0.152286, 1.052583, -0.204868},
                                               {0.114503, 0.786281, 0.099216},
                                               {-0.003882, -0.048116, 1.051998}},
                                              {{0.367322, 0.860646, -0.227968},
                                               {0.280085, 0.672501, 0.047413},
                                               {-0.011820, 0.042940, 0.968881}},
                                              {{1.255528, -0.076749, -0.178779},
                                               {-0.078411, 0.930809, 0.147602},
                                               {0.004733, 0.691367, 0.303900}}};
    double linear[3];
    for (int i = 0; i < 3; ++i) {
        const double part = (color >> (8 * i) & 0xFF) / 255.0;
        linear[i] = part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    }
    double seen[3];
    for (int i = 0; i < 3; ++i) {
        const double* const m = kMatrices[lacking][i];
        seen[i] = std::clamp(m[0] * linear[0] + m[1] * linear[1] + m[2] * linear[2], 0.0, 1.0);
    }
    const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0; };
    const double x = f((0.4124 * seen[0] + 0.3576 * seen[1] + 0.1805 * seen[2]) / 0.9505);
    const double y = f(0.2126 * seen[0] + 0.7152 * seen[1] + 0.0722 * seen[2]);
    const double z = f((0.0193 * seen[0] + 0.1192 * seen[1] + 0.9505 * seen[2]) / 1.089);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

TEST(CurvePaletteTest, AllColorsDifferForEverybody) {
    const auto colors = CurveColors();
    for (int lacking = 0; lacking < 4; ++lacking) {
        for (std::size_t i = 0; i < colors.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const auto a = Seen(colors[i], lacking);
                const auto b = Seen(colors[j], lacking);
                const double distance = std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
                EXPECT_GE(distance, 20.0) << i << " and " << j << ", lacking " << lacking;
            }
        }
    }
}

TEST(CurvePaletteTest, EveryColorThatIsTakenStandsOutFromTheBackground) {
    for (const ColorRef background : {0x000000U, 0xFFFFFFU, 0xFF0000U, 0x404040U}) {
        ColorRef color = FirstCurveColor(background);
        EXPECT_GE(Contrast(ToQColor(color), ToQColor(background)), 4.5) << background;
        std::vector<ColorRef> used = {color};
        for (int i = 0; i < 20; ++i) {
            color = NextCurveColor(color, background, used);
            EXPECT_GE(Contrast(ToQColor(color), ToQColor(background)), 2.5) << background;
            used.push_back(color);
        }
    }
}

TEST(CurvePaletteTest, AllTwelveAreTakenOnBlackBeforeOneComesAgain) {
    std::vector<ColorRef> used = {FirstCurveColor(0)};
    while (used.size() < 12) {
        used.push_back(NextCurveColor(used.back(), 0, used));
    }
    EXPECT_EQ(std::set<ColorRef>(used.begin(), used.end()).size(), 12U);
    EXPECT_EQ(NextCurveColor(used.back(), 0, used), used.front());
}

}  // namespace
}  // namespace wavo
