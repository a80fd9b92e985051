// A publisher with two axes and what tests do with it; the viewers live in the same thread.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "master/publisher.h"
#include "test_viewer.h"

namespace wavo::master {

inline const AxisLimits kLimitsX{"X", {100.0, -50.0, 400.0, 3000.0, 0.001}};
inline const AxisLimits kLimitsY{"Y", {200.0, -10.0, 300.0, 2000.0, 0.01}};

inline PublisherOptions TwoAxes(std::uint64_t fifo_lines = 8) {
    PublisherOptions options;
    options.axis_names = {"X", "Y"};
    options.cycle_time = 0.002;
    options.fifo_lines = fifo_lines;
    options.limits = {kLimitsX, kLimitsY};
    return options;
}

class PublisherFixture : public ::testing::Test {
 protected:
    void Start(PublisherOptions options) {
        std::string error;
        m_master = MasterPublisher::Start(std::move(options), Events(), &error);
        ASSERT_TRUE(m_master) << error;
    }

    PublisherEvents Events() {
        PublisherEvents events;
        events.connected = [this](const ViewerState&) { m_events += "connected "; };
        events.disconnected = [this](const ViewerState&) { m_events += "disconnected "; };
        events.overrun = [this](const ViewerState&) { m_events += "overrun "; };
        events.gone = [this](const ViewerState&) { m_events += "gone "; };
        return events;
    }

    /// Publishes the next line: (n, -n).
    void PublishLine() {
        const std::array<double, 2> line{m_next, -m_next};
        m_next += 1.0;
        m_master->Publish(line);
    }
    void PublishLines(int count) {
        for (int i = 0; i < count; ++i) {
            PublishLine();
        }
    }

    void ServeMaster() { m_master->Serve(std::chrono::nanoseconds(0)); }

    void Connect(testing::TestViewer* viewer) {
        ASSERT_TRUE(viewer->Connect());
        ServeMaster();
    }

    /// Lets all that is under way arrive.
    void Settle(testing::TestViewer* viewer) {
        for (int i = 0; i < 10; ++i) {
            ServeMaster();
            viewer->Serve();
        }
    }

    /// Serves the master until `done`; false after 60 s.
    bool ServeMasterUntil(const std::function<bool()>& done) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!done() && std::chrono::steady_clock::now() < end) {
            m_master->Serve(std::chrono::milliseconds(10));
        }
        return done();
    }

    Counters CountersOf(const testing::TestViewer& viewer) {
        for (const ViewerState& state : m_master->Viewers()) {
            if (state.window == viewer.handle()) {
                return state.counters;
            }
        }
        ADD_FAILURE() << "viewer is not known";
        return {};
    }

    static std::vector<double> FirstValues(const testing::TestViewer& viewer) {
        std::vector<double> values;
        for (const auto& line : viewer.lines) {
            values.push_back(line[0]);
            EXPECT_EQ(line[1], -line[0]);
        }
        return values;
    }

    std::unique_ptr<MasterPublisher> m_master;
    std::string m_events;
    double m_next = 1.0;
};

}  // namespace wavo::master
