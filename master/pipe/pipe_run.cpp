#include "master/pipe/pipe_run.h"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "master/master_report.h"
#include "platform/process.h"

namespace wavo::master {

namespace {

using platform::InputEvent;
using platform::InputPart;
using std::chrono::milliseconds;

/// Longest wait, so that a request to end is noticed where no signal tells.
constexpr milliseconds kLongestPause{50};
/// Longest time that a viewer can hold up the lines.
constexpr std::chrono::duration<double> kLongestHold{10.0};
/// Least time between two announcements to a viewer: it need not draw more often.
constexpr milliseconds kAnnounceInterval{10};

void PrintReport(const std::string& text) {
    std::fprintf(stderr, "wavo_pipe: %s\n", text.c_str());
}

}  // namespace

PipeRun::PipeRun(PipeOptions options)
    : m_options(std::move(options)),
      m_bad_lines(PrintReport),
      m_gaps(PrintReport),
      m_refused(PrintReport),
      m_wait_viewer(m_options.wait_viewer) {}

int PipeRun::Run() {
    platform::WatchTerminationRequests();
    if (OpenInput()) {
        ReadInput();
    }
    return End();
}

bool PipeRun::OpenInput() {
    m_input = m_options.port ? platform::ByteInput::Listen(*m_options.port, &m_error)
                             : platform::ByteInput::StandardInput();
    if (!m_input) {
        return false;
    }
    if (m_options.port) {
        std::printf("wavo_pipe: listening on port %u\n", static_cast<unsigned>(m_input->port()));
        std::fflush(stdout);
    }
    // What is known already is published, so that viewers can connect before the first line.
    return OpenStream();
}

/// A stream for the standard input or for a client. The axes and the cycle time of the first one
/// are those of all.
bool PipeRun::OpenStream() {
    StreamOptions options;
    options.axes = m_options.axes;
    options.has_time = !m_options.cycle_time;
    options.time_unit = m_options.time_unit;
    options.cycle_time = m_options.cycle_time;
    if (m_publisher) {
        options.axes = m_publisher->options().axis_names;
        options.cycle_time = m_publisher->options().cycle_time;
    }
    if (options.cycle_time) {
        options.most_missing = FifoLinesOf(m_options, *options.cycle_time) / 2;
    }
    m_cutter.Clear();
    LineSink& sink = *this;
    m_stream = std::make_unique<NumberStream>(std::move(options), sink, m_bad_lines, m_gaps);
    return m_stream->Start();
}

void PipeRun::ReadInput() {
    for (bool more = true; more && !platform::TerminationRequested();) {
        const std::span<char> room = m_cutter.Room();
        const InputPart part = m_input->Read(room.data(), room.size());
        more = Take(part);
        if (part.event == InputEvent::kNothing) {
            Wait();
        } else if (m_publisher) {
            m_publisher->Serve(std::chrono::nanoseconds::zero());
        }
    }
}

/// Returns false when there is nothing more to read, or nothing more is wanted.
bool PipeRun::Take(const InputPart& part) {
    switch (part.event) {
        case InputEvent::kNothing:
            return true;
        case InputEvent::kData:
            m_cutter.Add(part.size);
            return TakeLines();
        case InputEvent::kCame:
            std::printf("client connected\n");
            std::fflush(stdout);
            return OpenStream();
        case InputEvent::kLeft:
            return EndClient();
        case InputEvent::kRefused:
            m_refused.Add("a further client was sent away: one is connected");
            return true;
        case InputEvent::kEnded:
            if (const auto rest = m_cutter.TakeRest(); rest && !m_stream->Take(*rest)) {
                return false;
            }
            m_stream->Finish();
            return false;
    }
    return false;
}

bool PipeRun::TakeLines() {
    for (std::string_view line;;) {
        switch (m_cutter.Next(&line)) {
            case LineCutter::Piece::kNone:
                return true;
            case LineCutter::Piece::kLine:
                if (!m_stream->Take(line)) {
                    return false;
                }
                break;
            case LineCutter::Piece::kTooLong:
                if (!m_stream->TakeTooLong()) {
                    return false;
                }
                break;
        }
    }
}

/// The link stays; what the next client sends follows behind a missing value.
bool PipeRun::EndClient() {
    // A line without an end may be half of one.
    m_cutter.Clear();
    const bool goes_on = m_stream->Finish();
    std::printf("client disconnected, lines: %" PRIu64 "\n", m_stream->lines());
    std::fflush(stdout);
    if (!m_stream->error().empty()) {
        PrintReport(m_stream->error());
    } else if (!goes_on) {
        return false;
    }
    if (!m_publisher) {
        return true;
    }
    const std::size_t axes = m_publisher->options().axis_names.size();
    return Line(std::vector<double>(axes, std::numeric_limits<double>::quiet_NaN()));
}

void PipeRun::Wait() {
    if (!m_publisher) {
        m_input->Wait(kLongestPause, -1);
        return;
    }
    // Lines that came too soon behind an announcement are announced when its interval is over.
    const bool is_seen = m_publisher->ConnectedCount() > 0;
    m_input->Wait(is_seen ? kAnnounceInterval : kLongestPause, m_publisher->PollDescriptor());
    m_publisher->Serve(std::chrono::nanoseconds::zero());
}

bool PipeRun::Begin(const std::vector<std::string>& axes, double cycle_time) {
    if (m_publisher) {
        return true;  // a further client
    }
    PublisherOptions publishing;
    publishing.axis_names = axes;
    publishing.cycle_time = cycle_time;
    publishing.fifo_lines = FifoLinesOf(m_options, cycle_time);
    publishing.limits = m_options.limits;
    publishing.announce_interval = kAnnounceInterval;
    for (const AxisLimits& limits : m_options.limits) {
        if (std::ranges::find(axes, limits.axis) == axes.end()) {
            m_error = "--limits: there is no axis " + limits.axis;
            return false;
        }
    }
    m_publisher = MasterPublisher::Start(std::move(publishing), PrintedEvents(), &m_error);
    if (!m_publisher) {
        return false;
    }
    PrintStart("wavo_pipe", *m_publisher);
    return true;
}

bool PipeRun::Line(std::span<const double> values) {
    while (m_wait_viewer && m_publisher->ConnectedCount() == 0) {
        if (platform::TerminationRequested()) {
            return false;
        }
        m_publisher->Serve(kLongestPause);
    }
    m_wait_viewer = false;
    if (m_publisher->Room() == 0 && !WaitForRoom()) {
        return false;
    }
    m_publisher->Publish(values);
    return true;
}

/// Waits for the slowest viewer as long as its FIFO lasts; then it runs over. False when the end of
/// the program was requested meanwhile.
bool PipeRun::WaitForRoom() {
    const PublisherOptions& publishing = m_publisher->options();
    const std::chrono::duration<double> lasts(publishing.cycle_time *
                                              static_cast<double>(publishing.fifo_lines));
    const auto end =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::min(lasts, kLongestHold));
    while (m_publisher->Room() == 0 && Clock::now() < end) {
        if (platform::TerminationRequested()) {
            return false;
        }
        m_publisher->Serve(kLongestPause);
    }
    return true;
}

int PipeRun::End() {
    if (m_publisher) {
        EndInOrder(m_publisher.get());
    }
    if (m_bad_lines.count() > 0) {
        PrintReport("lines that could not be read: " + std::to_string(m_bad_lines.count()));
    }
    if (m_gaps.count() > 0) {
        PrintReport("gaps in the time: " + std::to_string(m_gaps.count()));
    }
    if (m_error.empty() && m_stream && !m_publisher && !platform::TerminationRequested()) {
        m_error = m_stream->error();
    }
    if (m_error.empty()) {
        return 0;
    }
    PrintReport(m_error);
    return 1;
}

}  // namespace wavo::master
