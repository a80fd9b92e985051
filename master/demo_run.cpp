#include "master/demo_run.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <thread>
#include <utility>

#include "master/demo_faults.h"
#include "master/master_report.h"
#include "master/source_limits.h"
#include "platform/folders.h"
#include "platform/process.h"

namespace wavo::master {

namespace {

using std::chrono::milliseconds;

/// Longest wait for messages, so that a request to end is noticed.
constexpr milliseconds kLongestWait{50};
constexpr std::uint64_t kLinesBetweenMessages = 256;

std::uint64_t EndOf(const DemoOptions& options, const LineSource& source) {
    std::uint64_t end = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t round = source.LinesPerRound();
    if (options.rounds > 0 && options.rounds <= end / round) {
        end = options.rounds * round;
    }
    return options.lines > 0 ? std::min(end, options.lines) : end;
}

DemoOptions WithCycleTime(DemoOptions options, const LineSource& source) {
    if (options.cycle_time == 0.0) {
        options.cycle_time = source.CycleTime().value_or(kUsualCycleTime);
    }
    return options;
}

}  // namespace

std::chrono::duration<double> TimeOfLines(std::uint64_t lines, const DemoOptions& options) {
    return std::chrono::duration<double>(static_cast<double>(lines) * options.cycle_time /
                                         options.speed);
}

DemoRun::DemoRun(DemoOptions options, std::unique_ptr<LineSource> source)
    : m_options(WithCycleTime(std::move(options), *source)),
      m_source(std::move(source)),
      m_needs_viewer(m_options.wait_viewer || m_options.full_speed),
      m_end(EndOf(m_options, *m_source)),
      m_line(m_source->AxisNames().size()) {}

int DemoRun::Run() {
    platform::WatchTerminationRequests();
    if (!StartPublishing()) {
        return 1;
    }
    Play();
    Finish();
    return 0;
}

std::vector<AxisLimits> DemoRun::Limits() const {
    if (!m_options.publish_limits) {
        return {};
    }
    std::vector<AxisLimits> limits = LimitsOf(*m_source, m_options.cycle_time);
    for (const AxisLimits& wanted : m_options.limits) {
        const auto found = std::ranges::find(limits, wanted.axis, &AxisLimits::axis);
        if (found != limits.end()) {
            *found = wanted;
        } else {
            limits.push_back(wanted);
        }
    }
    return limits;
}

bool DemoRun::StartPublishing() {
    PublisherOptions publishing;
    publishing.axis_names = m_source->AxisNames();
    publishing.cycle_time = m_options.cycle_time;
    publishing.fifo_lines = m_options.fifo_lines;
    publishing.limits = Limits();
    if (!m_options.full_speed) {
        publishing.announce_interval = std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::duration<double>(m_options.announce_interval));
    }
    const auto left = [this] { m_abandoned = m_abandoned || m_publisher->ConnectedCount() == 0; };
    PublisherEvents events = PrintedEvents();
    events.disconnected = [left](const ViewerState& viewer) {
        PrintEvent(viewer, "disconnected");
        left();
    };
    events.gone = [left](const ViewerState& viewer) {
        PrintCounters((ViewerName(viewer) + " gone").c_str(), viewer.counters);
        left();
    };
    std::string error;
    m_publisher = MasterPublisher::Start(std::move(publishing), std::move(events), &error);
    if (!m_publisher) {
        std::fprintf(stderr, "demo_master: %s\n", error.c_str());
        return false;
    }
    PrintStart("demo_master", *m_publisher);
    return true;
}

void DemoRun::Play() {
    while (!platform::TerminationRequested()) {
        ShowStatus();
        if (std::exchange(m_abandoned, false) && m_needs_viewer) {
            m_next = 0;
            m_standing_still = true;
        }
        const bool played_out = m_next >= m_end;
        if (played_out && !m_options.stay) {
            return;
        }
        if (played_out || (m_needs_viewer && m_publisher->ConnectedCount() == 0)) {
            StandStill();
        } else if (m_options.full_speed) {
            PlayAtFullSpeed();
        } else {
            PlayInTime();
        }
    }
}

void DemoRun::StandStill() {
    m_standing_still = true;
    m_publisher->Serve(kLongestWait);
}

DemoRun::Clock::time_point DemoRun::Deadline(std::uint64_t number) const {
    const auto time = TimeOfLines(number - m_timed_from, m_options);
    return m_time_origin + std::chrono::duration_cast<Clock::duration>(time);
}

/// Publishes the lines whose time has come, then waits for the time of the next one. The times
/// are counted from one origin, so being late never adds up.
void DemoRun::PlayInTime() {
    const Clock::time_point now = Clock::now();
    // After a long sleep of the machine the lines missed would only flood the viewers.
    const std::uint64_t most_at_once = m_options.fifo_lines / 2 + 1;
    if (m_standing_still || Deadline(m_next + most_at_once) < now) {
        m_standing_still = false;
        m_timed_from = m_next;
        m_time_origin = now;
    }
    while (m_next < m_end && Deadline(m_next) <= now) {
        if (!PublishNext()) {
            return;
        }
    }
    if (m_next >= m_end) {
        return;
    }
    const auto wait = std::min<Clock::duration>(Deadline(m_next) - Clock::now(), kLongestWait);
    m_publisher->Serve(std::max<Clock::duration>(wait, Clock::duration::zero()));
}

void DemoRun::PlayAtFullSpeed() {
    const std::uint64_t room = m_publisher->Room();
    if (room == 0 || room == MasterPublisher::kNoViewer) {
        m_publisher->Serve(kLongestWait);
        return;
    }
    std::uint64_t lines = std::min({room, kLinesBetweenMessages, m_end - m_next});
    while (lines > 0 && PublishNext()) {
        --lines;
    }
    m_publisher->Serve(std::chrono::nanoseconds::zero());
}

/// Returns false when the lines are not to go on as they were: a fault was made, or a viewer went.
bool DemoRun::PublishNext() {
    m_source->Line(m_next, m_line);
    ++m_next;
    const bool seen = m_publisher->ConnectedCount() > 0;
    m_publisher->Publish(m_line);
    if (seen && m_options.fault != Fault::kNone && !m_fault_made &&
        ++m_seen_lines > m_options.fault_after) {
        m_fault_made = true;
        MakeFault();
        return false;
    }
    return !m_abandoned;
}

void DemoRun::MakeFault() {
    switch (m_options.fault) {
        case Fault::kNone:
            return;
        case Fault::kOverrun:
            Overrun();
            return;
        case Fault::kNeverReady:
            m_publisher->IgnoreAnswers();
            return;
        case Fault::kHang:
            std::this_thread::sleep_for(std::chrono::seconds(3));
            return;
        case Fault::kDie:
            // No destructor and no exit handler runs, as in a crash.
            std::_Exit(137);
        case Fault::kGarbageHeaders: {
            WriteGarbageHeaders(m_publisher->Viewers());
            // A next line would put a good write index back.
            const Clock::time_point end = Clock::now() + milliseconds(500);
            while (Clock::now() < end && !platform::TerminationRequested()) {
                m_publisher->Serve(kLongestWait);
            }
            return;
        }
        case Fault::kQuit:
            m_publisher->Quit();
            return;
        case Fault::kCapabilities: {
            std::vector<AxisLimits> limits = Limits();
            for (AxisLimits& axis : limits) {
                axis.values.lower_limit *= 2.0;
                axis.values.upper_limit *= 2.0;
                axis.values.velocity_limit *= 2.0;
                axis.values.acceleration_limit *= 2.0;
            }
            m_publisher->CapabilitiesChanged(std::move(limits));
            return;
        }
    }
}

/// A viewer empties its FIFO at most once while no message is handled, so twice the lines that it
/// holds run over in any case.
void DemoRun::Overrun() {
    for (std::uint64_t i = 0; i < 2 * m_options.fifo_lines && m_next < m_end; ++i) {
        PublishNext();
    }
}

void DemoRun::Finish() {
    if (m_status_due) {
        std::fprintf(stderr, "\n");
    }
    EndInOrder(m_publisher.get());
}

void DemoRun::ShowStatus() {
    static const bool is_seen = platform::StandardErrorIsTerminal();
    const Clock::time_point now = Clock::now();
    if (!is_seen || (m_status_due && now < *m_status_due)) {
        return;
    }
    m_status_due = now + std::chrono::seconds(1);
    const Counters total = m_publisher->Total();
    std::fprintf(stderr,
                 "\r\x1b[Kline %" PRIu64 ", viewers %zu, lines sent %" PRIu64
                 ", batches answered %" PRIu64 ", overruns %" PRIu64 " ",
                 m_next, m_publisher->ConnectedCount(), total.lines_sent, total.batches_answered,
                 total.overruns);
    std::fflush(stderr);
}

}  // namespace wavo::master
