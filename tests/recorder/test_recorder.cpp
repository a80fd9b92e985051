// The recorder beside a master: what a viewer would see, on the disk.
#include "recorder/recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "link/master_messages.h"
#include "master/publisher.h"
#include "recording/json_text.h"
#include "recording/recording_reader.h"
#include "support/temporary_folder.h"

namespace wavo::recorder {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::TemporaryFolder;

/// A master and a recorder in one thread. Line n of the master is (n, -n).
class RecorderBesideMaster : public ::testing::Test {
 protected:
    void StartMaster(std::vector<std::string> axes = {"X", "Y"}, std::uint64_t fifo_lines = 64) {
        master::PublisherOptions options;
        options.axis_names = std::move(axes);
        options.cycle_time = 0.002;
        options.fifo_lines = fifo_lines;
        options.limits = {{"X", {100.0, -50.0, 400.0, 3000.0, 0.001}}};
        std::string error;
        m_master = master::MasterPublisher::Start(std::move(options), {}, &error);
        ASSERT_TRUE(m_master) << error;
    }
    void StartRecorder(RecordOptions options = {}) {
        options.out = m_folder.File("a");
        m_recorder =
            std::make_unique<Recorder>(std::move(options), "wavo_record test",
                                       [this](const std::string& line) { m_said.push_back(line); });
        ASSERT_TRUE(m_recorder->Start()) << m_recorder->Outcome().reason;
    }
    bool Serve() {
        if (m_master) {
            m_master->Serve(std::chrono::nanoseconds(0));
        }
        return m_recorder->Serve(std::chrono::milliseconds(0));
    }
    bool ServeUntil(const std::function<bool()>& done) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!done() && std::chrono::steady_clock::now() < end) {
            Serve();
        }
        return done();
    }
    void AwaitConnected() {
        ASSERT_TRUE(ServeUntil([this] { return m_master->ConnectedCount() == 1; }));
    }
    void Publish(int count) {
        for (int i = 0; i < count; ++i) {
            const std::array<double, 2> line{m_next, -m_next};
            m_next += 1.0;
            m_master->Publish(line);
            Serve();
        }
        for (int i = 0; i < 5; ++i) {
            Serve();
        }
    }
    /// The lines of a recording: what stands in them, by their numbers.
    std::vector<std::pair<std::uint64_t, double>> Lines(const std::string& path) {
        auto reader = recording::RecordingReader::Open(path);
        EXPECT_TRUE(reader) << (reader ? "" : reader.Why().text);
        std::vector<std::pair<std::uint64_t, double>> lines;
        if (!reader) {
            return lines;
        }
        std::vector<double> line((*reader)->Head().axis_names.size());
        for (std::uint64_t i = (*reader)->FirstLine(); i < (*reader)->EndLine(); ++i) {
            if ((*reader)->ReadLine(i, line)) {
                EXPECT_EQ(line[1], -line[0]);
                lines.emplace_back(i, line[0]);
            }
        }
        EXPECT_THAT((*reader)->Notices(), IsEmpty());
        m_events = (*reader)->Events();
        m_head = (*reader)->Head();
        return lines;
    }

    TemporaryFolder m_folder;
    std::unique_ptr<master::MasterPublisher> m_master;
    std::unique_ptr<Recorder> m_recorder;
    std::vector<std::string> m_said;
    std::vector<recording::Event> m_events;
    recording::RecordingHead m_head;
    double m_next = 0.0;
};

TEST_F(RecorderBesideMaster, EveryLineIsWrittenWithWhatTheMasterSaysOfIt) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(500);
    m_recorder->Finish("enough");
    const RecordOutcome outcome = m_recorder->Outcome();
    EXPECT_EQ(outcome.exit_code, ExitCode::kComplete);
    EXPECT_EQ(outcome.reason, "enough");
    EXPECT_EQ(outcome.lines, 500U);
    EXPECT_EQ(outcome.lost, 0U);
    EXPECT_THAT(outcome.files, ElementsAre(m_folder.File("a.mcap")));
    const auto lines = Lines(outcome.files[0]);
    ASSERT_EQ(lines.size(), 500U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].first, i);
        EXPECT_EQ(lines[i].second, static_cast<double>(i));
    }
    EXPECT_THAT(m_head.axis_names, ElementsAre("X", "Y"));
    EXPECT_EQ(m_head.cycle_time, 0.002);
    EXPECT_EQ(m_head.program, "wavo_record test");
    EXPECT_EQ(m_head.limits[0], (recording::AxisLimits{-50.0, 100.0, 400.0, 3000.0, 0.001}));
    EXPECT_EQ(m_head.limits[1], std::nullopt);
    EXPECT_THAT(m_events, IsEmpty());
    EXPECT_EQ(m_master->Total().overruns, 0U);
    EXPECT_EQ(m_master->Total().batches_announced, m_master->Total().batches_answered);
    EXPECT_EQ(m_master->ConnectedCount(), 0U) << "it said goodbye";
}

TEST_F(RecorderBesideMaster, AnOverrunIsAnEventAndItConnectsAgain) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(50);
    for (int i = 0; i < 100; ++i) {  // more than the FIFO holds, while nobody reads
        const std::array<double, 2> line{m_next, -m_next};
        m_next += 1.0;
        m_master->Publish(line);
    }
    ASSERT_TRUE(ServeUntil([this] { return m_recorder->Outcome().gaps == 1; }));
    AwaitConnected();
    Publish(10);
    m_recorder->Finish("enough");
    EXPECT_EQ(m_recorder->Outcome().exit_code, ExitCode::kWithLosses);
    const auto lines = Lines(m_folder.File("a.mcap"));
    ASSERT_EQ(lines.size(), 123U) << "50, what the FIFO held, and 10";
    EXPECT_EQ(lines[112].second, 112.0);
    EXPECT_EQ(lines[112].first, 112U) << "up to the overrun nothing is missing";
    EXPECT_EQ(lines[113].second, 150.0);
    EXPECT_GT(lines[113].first, 113U) << "the time went on";
    ASSERT_THAT(m_events, SizeIs(1));
    EXPECT_EQ(m_events[0].kind, recording::kEventOverrun);
    EXPECT_EQ(m_events[0].line, lines[113].first);
    EXPECT_EQ(m_events[0].lost, lines[113].first - 113);
    EXPECT_EQ(m_recorder->Outcome().lost, m_events[0].lost);
    EXPECT_THAT(m_said, Contains("the value fifo ran over"));
}

TEST_F(RecorderBesideMaster, TheEndOfALinkIsWaitedOver) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(20);
    m_master->End();
    EXPECT_EQ(m_recorder->State().state, RecorderState::kRecords);
    ASSERT_TRUE(ServeUntil([this] { return m_recorder->Outcome().gaps == 1; }));
    EXPECT_EQ(m_recorder->State().state, RecorderState::kWaitsForMaster);
    EXPECT_THAT(m_recorder->StatusLine(), ::testing::EndsWith(", waiting for the master"));
    m_master.reset();
    StartMaster();
    AwaitConnected();
    Publish(20);
    EXPECT_EQ(m_recorder->State().state, RecorderState::kRecords);
    m_recorder->Finish("enough");
    EXPECT_EQ(m_recorder->Outcome().exit_code, ExitCode::kComplete) << "no line was lost";
    const auto lines = Lines(m_folder.File("a.mcap"));
    ASSERT_EQ(lines.size(), 40U);
    EXPECT_GT(lines[20].first, 20U);
    ASSERT_THAT(m_events, SizeIs(1));
    EXPECT_EQ(m_events[0].kind, recording::kEventLinkEnded);
    EXPECT_EQ(m_events[0].text, "the master has ended the link");
}

TEST_F(RecorderBesideMaster, OtherAxesBeginAnotherFile) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(20);
    m_master->End();
    ASSERT_TRUE(ServeUntil([this] { return m_recorder->Outcome().gaps == 1; }));
    m_master.reset();
    StartMaster({"X", "Z"});
    AwaitConnected();
    Publish(30);
    m_recorder->Finish("enough");
    EXPECT_THAT(m_recorder->Outcome().files,
                ElementsAre(m_folder.File("a.mcap"), m_folder.File("a-2.mcap")));
    EXPECT_EQ(Lines(m_folder.File("a.mcap")).size(), 20U);
    ASSERT_THAT(m_events, SizeIs(1));
    EXPECT_EQ(m_events[0].kind, recording::kEventLinkEnded) << "in the file that it ended";
    EXPECT_EQ(Lines(m_folder.File("a-2.mcap")).size(), 30U);
    EXPECT_THAT(m_head.axis_names, ElementsAre("X", "Z"));
    EXPECT_EQ(m_recorder->Outcome().lines, 50U);
}

TEST_F(RecorderBesideMaster, TheMastersQuitFinishesIt) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(20);
    m_master->Quit();
    ASSERT_TRUE(ServeUntil([this] { return !m_recorder->Serve(std::chrono::milliseconds(0)); }));
    EXPECT_EQ(m_recorder->Outcome().reason, "told to quit");
    EXPECT_EQ(m_recorder->Outcome().exit_code, ExitCode::kComplete);
    EXPECT_EQ(Lines(m_folder.File("a.mcap")).size(), 20U);
}

TEST_F(RecorderBesideMaster, AMessageToItsWindowFinishesItToo) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(5);
    std::string error;
    const auto window = platform::MessageWindow::Create(
        [](const platform::Message&) { return std::int64_t{0}; }, &error);
    ASSERT_TRUE(window);
    window->Post(m_recorder->window(), {static_cast<std::uint32_t>(FromMaster::kQuit), 0, 0});
    ASSERT_TRUE(ServeUntil([this] { return !m_recorder->Serve(std::chrono::milliseconds(0)); }));
    EXPECT_EQ(m_recorder->Outcome().lines, 5U);
}

TEST_F(RecorderBesideMaster, EndsAfterItsLines) {
    StartMaster();
    RecordOptions options;
    options.lines = 33;
    StartRecorder(options);
    AwaitConnected();
    Publish(60);
    EXPECT_FALSE(Serve());
    EXPECT_EQ(m_recorder->Outcome().lines, 33U);
    EXPECT_EQ(m_recorder->Outcome().reason, "all that was asked for is recorded");
}

TEST_F(RecorderBesideMaster, WithoutAMasterItGivesUp) {
    RecordOptions options;
    options.wait = 0.05;
    StartRecorder(options);
    ASSERT_TRUE(ServeUntil([this] { return !m_recorder->Serve(std::chrono::milliseconds(10)); }));
    EXPECT_EQ(m_recorder->Outcome().exit_code, ExitCode::kCouldNot);
    EXPECT_EQ(m_recorder->Outcome().reason, "Master process (Dorvane) not present");
    EXPECT_THAT(m_recorder->Outcome().files, IsEmpty());
}

TEST_F(RecorderBesideMaster, TheTriggersOfAGraphFileArmIt) {
    const std::string graphs = m_folder.File("graphs.ini");
    std::ofstream(graphs) << "[GENERAL]\nGraphs=1\nAddText=\n[1]\nMode=2\nModeAx=1\nXCoorType=1\n"
                             "AutoCircle=1\nZeroLines=1\nYCoorAxName=X\nYCoorAxColor=255\n"
                             "YCoorAxDerivation=0\nTriggerType=2\nTriggerValue=99.5\n"
                             "XScaleType=1\nXScaleTime=0.1\nYScaleType=2\nYScaleAxType=1\n"
                             "YScaleTime=0.0\nYScaleAxMax=0.0\nYScaleAxMin=0.0\n";
    StartMaster();
    RecordOptions options;
    options.graphs = graphs;
    options.before = 0.02;
    StartRecorder(options);
    AwaitConnected();
    Publish(90);
    EXPECT_THAT(m_recorder->Outcome().files, IsEmpty());
    EXPECT_THAT(m_recorder->StatusLine(), HasSubstr("waiting for the trigger"));
    Publish(90);
    EXPECT_FALSE(Serve());
    const auto lines = Lines(m_folder.File("a.mcap"));
    ASSERT_EQ(lines.size(), 60U);
    EXPECT_EQ(lines.front(), (std::pair<std::uint64_t, double>(90, 90.0)));
    EXPECT_EQ(lines.back(), (std::pair<std::uint64_t, double>(149, 149.0)));
    ASSERT_THAT(m_events, SizeIs(1));
    EXPECT_EQ(m_events[0].text, "X > 99.5 (graph 1)");
    auto reader = recording::RecordingReader::Open(m_folder.File("a.mcap"));
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->ReadGraphFile()->name, "graphs.ini");
    EXPECT_THAT((*reader)->ReadGraphFile()->text, HasSubstr("TriggerValue=99.5"));
}

TEST_F(RecorderBesideMaster, GraphsThatCannotArmItAreRefused) {
    const auto reason_of = [this](const std::string& graphs) {
        RecordOptions options;
        options.graphs = graphs;
        options.out = m_folder.File("a");
        Recorder recorder(options, "test", [](const std::string&) {});
        EXPECT_FALSE(recorder.Start());
        EXPECT_EQ(recorder.Outcome().exit_code, ExitCode::kCouldNot);
        return recorder.Outcome().reason;
    };
    const std::string none = m_folder.File("none.ini");
    EXPECT_EQ(reason_of(none), "file " + none + " not exist !");
    const std::string empty = m_folder.File("empty.ini");
    std::ofstream(empty) << "[GENERAL]\nGraphs=\n";
    EXPECT_EQ(reason_of(empty), empty + ": no graph has a trigger");
}

TEST_F(RecorderBesideMaster, TheOutcomeIsAnObject) {
    StartMaster();
    StartRecorder();
    AwaitConnected();
    Publish(10);
    EXPECT_THAT(m_recorder->StatusLine(), HasSubstr(" lines, 0 lost, "));
    m_recorder->Finish("enough");
    const auto json = recording::ReadJson(ToJson(m_recorder->Outcome()));
    ASSERT_TRUE(json);
    EXPECT_EQ(json->Member("exit_code")->Unsigned(), 0U);
    EXPECT_EQ(json->Member("lines")->Unsigned(), 10U);
    EXPECT_EQ(json->Member("lost")->Unsigned(), 0U);
    EXPECT_EQ(*json->Member("reason")->Text(), "enough");
    EXPECT_THAT(*json->Member("files")->Items(), SizeIs(1));
    EXPECT_TRUE(json->Member("seconds")->Double());
}

/// A window that watches recorders as a viewer does.
class Watcher {
 public:
    explicit Watcher(bool asks) : m_asks(asks) {
        std::string error;
        m_window = platform::MessageWindow::Create(
            [this](const platform::Message& message) { return Take(message); }, &error);
        EXPECT_NE(m_window, nullptr) << error;
    }
    void Serve() { m_window->Dispatch(); }
    [[nodiscard]] platform::WindowHandle window() const { return m_window->handle(); }

    std::vector<RecorderState> states;  // each that differs from the one before
    Notice last;

 private:
    std::int64_t Take(const platform::Message& message) {
        const auto recorder = static_cast<platform::WindowHandle>(message.l_param);
        if (message.number == kRecorderIsHere && m_asks) {
            m_window->Post(recorder,
                           {kWatchRecorder, 0, static_cast<std::int64_t>(m_window->handle())});
        }
        if (message.number == kRecorderNews) {
            const auto notice = NoticeReader(recorder).Read();
            EXPECT_TRUE(notice);
            last = notice.value_or(Notice());
            if (states.empty() || states.back() != last.state) {
                states.push_back(last.state);
            }
        }
        return 1;
    }

    const bool m_asks;
    std::unique_ptr<platform::MessageWindow> m_window;
};

TEST_F(RecorderBesideMaster, WhoWatchesIsToldFromTheBeginningToTheEnd) {
    Watcher watcher(true);
    Watcher silent(false);
    StartRecorder();
    const auto serve_until = [&](const std::function<bool()>& done) {
        return ServeUntil([&] {
            watcher.Serve();
            return done();
        });
    };
    ASSERT_TRUE(serve_until([&] { return !watcher.states.empty(); }));
    EXPECT_EQ(watcher.last.file, m_folder.File("a")) << "what was asked for";
    StartMaster();
    AwaitConnected();
    Publish(100);
    ASSERT_TRUE(serve_until([&] { return watcher.states.back() == RecorderState::kRecords; }));
    EXPECT_EQ(watcher.last.file, m_folder.File("a.mcap"));
    m_recorder->Finish("enough");  // sends the last news, and waits as long as one waits for a send
    watcher.Serve();
    ASSERT_TRUE(watcher.last.HasEnded());
    EXPECT_THAT(watcher.states, ElementsAre(RecorderState::kWaitsForMaster, RecorderState::kRecords,
                                            RecorderState::kEnded));
    EXPECT_EQ(watcher.last.lines, 100U);
    EXPECT_EQ(watcher.last.reason, "enough");
    EXPECT_THAT(silent.states, IsEmpty());
}

TEST_F(RecorderBesideMaster, TheWindowOfTheCommandLineIsToldOfFailuresToo) {
    Watcher watcher(false);
    RecordOptions options;
    options.tell = watcher.window();
    options.graphs = m_folder.File("missing.ini");
    options.out = m_folder.File("a");
    m_recorder = std::make_unique<Recorder>(std::move(options), "wavo_record test",
                                            [](const std::string&) {});
    EXPECT_FALSE(m_recorder->Start());
    watcher.Serve();
    EXPECT_EQ(watcher.last.state, RecorderState::kFailed);
    EXPECT_EQ(watcher.last.reason, "file " + m_folder.File("missing.ini") + " not exist !");
    EXPECT_EQ(m_recorder->Outcome().exit_code, ExitCode::kCouldNot);
}

TEST_F(RecorderBesideMaster, AGraphFileCanGoWithTheRecordingWithoutArmingIt) {
    const std::string graphs = m_folder.File("look.ini");
    const std::string text = "[GENERAL]\r\nCountOfGraphs=0\r\n";
    std::ofstream(graphs, std::ios::binary) << text;
    StartMaster();
    RecordOptions options;
    options.attach = graphs;
    StartRecorder(std::move(options));
    AwaitConnected();
    Publish(20);
    m_recorder->Finish("enough");
    auto reader = recording::RecordingReader::Open(m_folder.File("a.mcap"));
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->EndLine(), 20U);
    const auto attached = (*reader)->ReadGraphFile();
    ASSERT_TRUE(attached);
    EXPECT_EQ(attached->name, "look.ini");
    EXPECT_EQ(attached->text, text);
}

}  // namespace
}  // namespace wavo::recorder
