#include "view/graph_picture.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <array>
#include <cmath>
#include <memory>

#include "settings/view_settings.h"
#include "view/graph_board.h"

namespace wavo {
namespace {

constexpr QSize kSize(400, 201);
constexpr double kCycleTime = 0.01;

/// Two graphs and their picture, fed in batches as the view does it.
class Screen {
 public:
    explicit Screen(double ratio, GraphMode mode = GraphMode::kContinuity) {
        for (const char* const axis : {"X", "Y"}) {
            WavoGraph graph;
            graph.InitGraph(static_cast<std::uint32_t>(m_graphs.Graphs().size() + 1), axis, 0,
                            nullptr);
            graph.XScale.TimeRange = 2.0;
            graph.Mode = mode;
            m_graphs.Add(graph);
        }
        m_picture.Resize(kSize, ratio);
        Rebuild();
    }

    void Rebuild() {
        m_board.CreateAllGraphRects(QRect(QPoint(), kSize), kCycleTime, {"X", "Y"}, settings);
        m_picture.Invalidate();
    }
    void Resize(double ratio) { m_picture.Resize(kSize, ratio); }

    /// One batch of `lines` lines, drawn with `text` over it.
    void Step(int lines, const std::string& text, bool restart = false,
              PixelWriting pixels = PixelWriting::kNow) {
        for (int i = 0; i < lines; ++i) {
            const double t = kCycleTime * static_cast<double>(m_line++);
            const std::array<double, 2> line{8.0 * std::sin(7.0 * t), 9.0 * std::sin(11.0 * t)};
            m_streams.Distribute({line.data(), 1, 2});
        }
        m_picture.Draw(m_board, settings.background, restart, Text(text), pixels);
    }
    [[nodiscard]] BandText Text(const std::string& text) const {
        return {text, settings.font, ComplementColor(settings.background)};
    }
    void CatchUp() { m_picture.CatchUp(m_board); }
    [[nodiscard]] const QImage& Image() const { return m_picture.Image(); }

    ViewSettings settings;

 private:
    GraphList m_graphs;
    ValueStreams m_streams;
    GraphBoard m_board{m_graphs, m_streams, [] {}};
    GraphPicture m_picture;
    int m_line = 0;
};

class Picture : public ::testing::TestWithParam<double> {};
INSTANTIATE_TEST_SUITE_P(Ratios, Picture, ::testing::Values(1.0, 1.5, 2.0));

TEST_P(Picture, IsThatOfTheGraphsWithTheTextOverIt) {
    for (const GraphMode mode : {GraphMode::kContinuity, GraphMode::kClassic}) {
        Screen with_text(GetParam(), mode);
        Screen without(GetParam(), mode);
        for (int step = 0; step < 60; ++step) {
            const bool restart = step == 40;
            with_text.Step(step % 9, "additional text", restart);
            without.Step(step % 9, "", restart);
            QImage expected = without.Image().copy();
            TextBand().PutOn(expected, without.Text("additional text"));
            ASSERT_NE(expected, without.Image());
            ASSERT_EQ(with_text.Image(), expected) << "step " << step;
        }
    }
}

TEST_P(Picture, ShowsWhatIsUnderTheTextWhenItGoes) {
    Screen with_text(GetParam());
    Screen without(GetParam());
    for (int step = 0; step < 30; ++step) {
        with_text.Step(5, step % 3 == 2 ? "" : "text " + std::to_string(step));
        without.Step(5, "");
        if (step % 3 == 2) {
            ASSERT_EQ(with_text.Image(), without.Image()) << "step " << step;
        } else {
            ASSERT_NE(with_text.Image(), without.Image()) << "step " << step;
        }
    }
}

TEST_P(Picture, CarriesNoTextIntoANewSizeOrNewGraphs) {
    Screen with_text(GetParam());
    Screen without(GetParam());
    for (Screen* const screen : {&with_text, &without}) {
        screen->Step(50, screen == &with_text ? "text" : "");
        screen->Rebuild();
        screen->Step(5, "");
    }
    EXPECT_EQ(with_text.Image(), without.Image());
    for (Screen* const screen : {&with_text, &without}) {
        screen->Step(50, screen == &with_text ? "text" : "");
        screen->Resize(4.0 - GetParam());
        screen->Step(5, "");
    }
    EXPECT_EQ(with_text.Image(), without.Image());
}

TEST_P(Picture, ThatNobodySeesStaysAsItIsUntilItIsAskedFor) {
    for (const GraphMode mode : {GraphMode::kContinuity, GraphMode::kClassic}) {
        Screen seen(GetParam(), mode);
        Screen unseen(GetParam(), mode);
        for (int step = 0; step < 120; ++step) {
            const bool restart = step == 50;
            const std::string text = step / 7 % 2 == 0 ? "" : "text " + std::to_string(step / 20);
            if (step == 30 || step == 70) {
                seen.Rebuild();
                unseen.Rebuild();
            } else if (step == 90) {
                seen.Resize(4.0 - GetParam());
                unseen.Resize(4.0 - GetParam());
            }
            const QImage before = unseen.Image().copy();
            seen.Step(step % 9, text, restart);
            const bool is_seen = step % 17 == 3;
            unseen.Step(step % 9, text, restart,
                        is_seen ? PixelWriting::kNow : PixelWriting::kLater);
            if (!is_seen) {
                ASSERT_TRUE(step == 90 || unseen.Image() == before) << "step " << step;
            }
            if (step % 5 == 0) {
                unseen.CatchUp();
            }
            if (is_seen || step % 5 == 0) {
                ASSERT_EQ(unseen.Image(), seen.Image()) << "step " << step;
            }
        }
    }
}

TEST(PictureWithoutGraphs, ShowsTheTextOnTheBackground) {
    const GraphList graphs;
    ValueStreams streams;
    GraphBoard board(graphs, streams, [] {});
    GraphPicture picture;
    picture.Resize(kSize, 1.0);
    const BandText text{"text", {}, 0xFFFFFF};
    for (int step = 0; step < 3; ++step) {
        picture.Draw(board, 0x102030, false, text);
        QImage expected(kSize, QImage::Format_RGB32);
        expected.fill(QColor(0x30, 0x20, 0x10));
        TextBand().PutOn(expected, text);
        EXPECT_EQ(picture.Image(), expected);
    }
}

}  // namespace
}  // namespace wavo
