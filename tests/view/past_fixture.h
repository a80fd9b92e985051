// Recordings on a disk, and the whole viewer on a source of lines from memory.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "link/axis_capabilities.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "view/wavo_view.h"

namespace wavo::testing {

/// Writes a recording of these lines from number `first` on; with a gap of `lost` lines behind the
/// first half of them.
inline void WriteRecording(const std::string& path, const recording::RecordingHead& head,
                           const std::vector<std::vector<double>>& lines, std::uint64_t first = 0,
                           std::uint64_t lost = 0,
                           const std::optional<recording::GraphFile>& graphs = std::nullopt) {
    auto writer = recording::RecordingWriter::Create(path, head, graphs);
    ASSERT_TRUE(writer.HasValue());
    const std::size_t half = lost == 0 ? lines.size() : lines.size() / 2;
    Append(**writer, first, {lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(half)});
    if (lost != 0) {
        (*writer)->AddEvent(
            {recording::kEventOverrun, first + half + lost, lost, "the FIFO ran over"});
        Append(**writer, first + half + lost,
               {lines.begin() + static_cast<std::ptrdiff_t>(half), lines.end()});
    }
    RequireNoFault((*writer)->Finish());
}

struct NoAxisLimits : AxisLimitsSource {
    std::optional<AxisCapabilities> FindAxis(const std::string&) override { return std::nullopt; }
};

/// Lines of two axes, X and Y, from memory.
class LinesFromMemory : public ValueSource {
 public:
    void SetEvents(ValueSourceEvents* told) override { events = told; }
    MaybeFault Start() override {
        ++starts;
        if (!is_present) {
            return Fault{"nobody there"};
        }
        description = found.value_or(description);
        events->Described(false);
        events->ValuesBegin(false);
        return std::nullopt;
    }
    void SetComesBack(bool comes) override { comes_back = comes; }
    void Hold() override { ++holds; }
    bool GoOn() override { return true; }
    void Stop() override {}
    BatchOutcome Take(ValueBatch& batch) override {
        batch = {values.data(), values.size() / 2, 2};
        return BatchOutcome::kTaken;
    }
    bool Answer() override { return ++answers, true; }
    const SourceDescription& Description() const override { return description; }
    AxisLimitsSource& Limits() override { return limits; }
    bool IsPresent() const override { return is_present; }
    bool CanStart() const override { return !is_present; }
    const std::string& StateText() const override { return text; }
    SourceCounters Counters() const override { return {}; }

    ValueSourceEvents* events = nullptr;
    SourceDescription description{{"X", "Y"}, 0.004};
    std::optional<SourceDescription> found;  // by the next start
    NoAxisLimits limits;
    std::string text = "From memory";
    std::vector<double> values;
    bool is_present = true;
    bool comes_back = false;
    int starts = 0;
    int holds = 0;
    int answers = 0;
};

class PastFixture : public ::testing::Test {
 protected:
    PastFixture() {
        qputenv(kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_view = std::make_unique<CWavoView>(m_prompts, nullptr, std::move(source));
        QObject::connect(&m_view->News(), &ViewNews::FrameTitleChanged, m_view.get(),
                         [this](const QString& title) { m_title = title.toStdString(); });
        QObject::connect(&m_view->News(), &ViewNews::PaneTextChanged, m_view.get(),
                         [this](StatusPane pane, const QString& text) {
                             m_panes[static_cast<int>(pane)] = text.toStdString();
                         });
        m_view->resize(900, 700);
        m_view->show();
        m_view->OnInitialUpdate();
        QCoreApplication::processEvents();
    }
    ~PastFixture() override {
        m_view.reset();
        qunsetenv(kDataHome);
    }

    [[nodiscard]] std::string PathOf(const char* name) const {
        return m_folder.filePath(QString::fromLatin1(name)).toStdString();
    }
    /// A recording of axes X, Y and Z, 5000 lines from number 100 on, opened.
    void OpenSample() {
        m_lines = MakeLines(3, 5000, 7);
        const std::string path = PathOf("night.mcap");
        WriteRecording(path, MakeHead(3), m_lines, 100);
        ASSERT_TRUE(m_view->Past().Files().Open(path));
    }
    /// Gives the live graphs a batch: X rises from `first` on.
    void Give(double first, int count) {
        m_source->values.clear();
        for (int i = 0; i < count; ++i) {
            m_source->values.insert(m_source->values.end(), {first + i, -first - i});
        }
        EXPECT_TRUE(m_source->events->BatchReady());
    }
    [[nodiscard]] const GraphDraw& Graph(std::size_t index = 0) const {
        return *m_view->Board().Drawers().at(index);
    }
    [[nodiscard]] LineRange Seen() const { return m_view->Past().Window().Window().Seen(); }
    [[nodiscard]] bool IsEnabled(CommandId id) const { return m_view->Commands().IsEnabled(id); }

    void Wheel(const QPoint& at, int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWheelEvent event(at, m_view->mapToGlobal(at), QPoint(), QPoint(0, angle), Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_view.get(), &event);
    }

    Prompts m_prompts = RealPrompts();
    QTemporaryDir m_folder;
    std::vector<std::string> m_boxes;
    std::string m_title;
    std::string m_panes[3];
    LinesFromMemory* m_source = nullptr;
    std::unique_ptr<CWavoView> m_view;
    std::vector<std::vector<double>> m_lines;
};

}  // namespace wavo::testing
