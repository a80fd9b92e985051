// The real view on a machine from memory, with room for a pane.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QMainWindow>
#include <QSettings>
#include <QTemporaryDir>
#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "lines_from_memory.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "view/wavo_view.h"

namespace wavo::testing {

/// A source of as many columns as its axes.
class Machine : public LinesFromMemory {
 public:
    BatchOutcome Take(ValueBatch& b) override {
        const std::size_t axes = description.axis_names.size();
        return b = {values.data(), values.size() / axes, axes}, BatchOutcome::kTaken;
    }
};

class MachineFixture : public ::testing::Test {
 protected:
    explicit MachineFixture(const std::vector<std::string>& axes) {
        qputenv(kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.save_file =
            m_prompts.open_file = [this](QWidget*, const FileQuestion&) { return m_chosen; };
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        auto source = std::make_unique<Machine>();
        m_source = source.get();
        m_source->description = {axes, 0.001};
        m_frame = std::make_unique<QMainWindow>();
        m_view = new CWavoView(m_prompts, m_frame.get(), std::move(source));
        m_frame->setCentralWidget(m_view);
        m_frame->resize(1100, 700);
    }
    ~MachineFixture() override {
        m_frame.reset();
        qunsetenv(kDataHome);
    }

    /// Once the pane is made.
    void ShowFrame() {
        m_frame->show();
        m_view->OnInitialUpdate();
        m_view->Screen().ShowEditor(false);
        QCoreApplication::processEvents();
    }
    void Show(const std::vector<WavoGraph>& graphs) {
        m_view->Work().Graphs().Replace(graphs);
        m_view->Work().RebuildGraphs();
        QCoreApplication::processEvents();
    }
    /// All lines in batches, as a master sends them; the event loop runs behind each. The columns
    /// are those of the axes.
    void Give(const std::vector<const std::vector<double>*>& columns) {
        constexpr std::size_t kBatch = 40;
        const std::size_t lines = columns.front()->size();
        for (std::size_t first = 0; first < lines; first += kBatch) {
            m_source->values.clear();
            for (std::size_t i = first; i < std::min(first + kBatch, lines); ++i) {
                for (const std::vector<double>* const column : columns) {
                    m_source->values.push_back((*column)[i]);
                }
            }
            EXPECT_TRUE(m_source->events->BatchReady());
            QCoreApplication::processEvents();
        }
    }
    /// A recording of these columns in the folder of the test; its path.
    std::string Recorded(const char* name, const std::vector<std::string>& axes, double cycle_time,
                         const std::vector<const std::vector<double>*>& columns) {
        recording::RecordingHead head;
        head.axis_names = axes;
        head.cycle_time = cycle_time;
        const std::string path = m_folder.filePath(QLatin1String(name)).toStdString();
        std::vector<std::vector<double>> lines;
        for (std::size_t i = 0; i < columns.front()->size(); ++i) {
            lines.emplace_back();
            for (const std::vector<double>* const column : columns) {
                lines.back().push_back((*column)[i]);
            }
        }
        auto writer = recording::RecordingWriter::Create(path, head, std::nullopt);
        EXPECT_TRUE(writer.HasValue());
        Append(**writer, 0, lines);
        EXPECT_FALSE((*writer)->Finish());
        return path;
    }
    void Stop() { m_view->Commands().Execute(CommandId::kStop); }

    static WavoGraph OverTime(std::uint32_t number, const char* axis) {
        WavoGraph graph;
        graph.InitGraph(number, axis, 0, nullptr);
        return graph;
    }

    Prompts m_prompts = RealPrompts();
    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
    std::optional<QString> m_chosen;
    std::vector<std::string> m_boxes;
    Machine* m_source = nullptr;
    std::unique_ptr<QMainWindow> m_frame;
    CWavoView* m_view = nullptr;  // a child of the frame
};

}  // namespace wavo::testing
