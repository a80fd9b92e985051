#include "master/linuxcnc/linuxcnc_run.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <utility>
#include <vector>

#include "master/master_report.h"
#include "platform/process.h"

namespace wavo::master {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// The controller tells nobody of a new line, so it is looked for.
constexpr milliseconds kLookForLinesEvery{5};
/// After so much silence somebody has to be there still who could write.
constexpr milliseconds kSilence{250};
constexpr milliseconds kLeastAnnounceInterval{10};
constexpr double kTimeInFifos = 10.0;  // seconds
constexpr double kLeastLinesInFifos = 1000.0;
constexpr int kFailed = 1;
constexpr int kControllerGone = 3;

void Say(const std::string& text) {
    std::fprintf(stderr, "wavo_linuxcnc: %s\n", text.c_str());
}

}  // namespace

LinuxcncRun::LinuxcncRun(LinuxcncOptions options) : m_options(std::move(options)) {}

int LinuxcncRun::Run() {
    platform::WatchTerminationRequests();
    if (!Open()) {
        Say(m_error);
        return kFailed;
    }
    const bool is_there = PublishLines();
    // The controller waits for its components to leave.
    m_samplers.reset();
    EndInOrder(m_publisher.get());
    if (!is_there) {
        Say("the controller has gone");
        return kControllerGone;
    }
    return 0;
}

bool LinuxcncRun::Open() {
    std::string ini = m_options.ini;
    if (ini.empty()) {
        const char* const told = std::getenv("INI_FILE_NAME");  // NOLINT(concurrency-mt-unsafe)
        ini = told != nullptr ? told : "";
    }
    if (ini.empty()) {
        m_error = "no INI file: name that of the machine with --ini";
        return false;
    }
    const std::optional<Machine> machine = Machine::Find(ini, m_options.pins, &m_error);
    if (!machine || !Attach(*machine) || !Publish(*machine)) {
        return false;
    }
    m_samplers->SetReady();
    return true;
}

bool LinuxcncRun::Attach(const Machine& machine) {
    const auto channels = machine.WiredChannels(&m_error);
    if (!channels) {
        return false;
    }
    std::vector<std::size_t> numbers;
    std::vector<std::size_t> columns;
    for (const SampledChannel& channel : *channels) {
        numbers.push_back(channel.channel);
        columns.push_back(ColumnPins(channel).size());
    }
    m_have_fingerprint = channels->front().has_fingerprint;
    m_samplers = HalSamplers::Attach(numbers, columns, &m_error);
    return m_samplers != nullptr;
}

bool LinuxcncRun::Publish(const Machine& machine) {
    PublisherOptions publishing;
    for (const ChosenPin& chosen : machine.pins) {
        publishing.axis_names.push_back(chosen.name);
    }
    publishing.cycle_time = machine.CycleTime();
    publishing.fifo_lines = static_cast<std::uint64_t>(
        std::max(std::ceil(kTimeInFifos / publishing.cycle_time), kLeastLinesInFifos));
    publishing.limits = machine.Limits();
    publishing.announce_interval = kLeastAnnounceInterval;
    m_publisher = MasterPublisher::Start(std::move(publishing), PrintedEvents(), &m_error);
    if (!m_publisher) {
        m_samplers.reset();
        return false;
    }
    PrintStart("wavo_linuxcnc", *m_publisher);
    return true;
}

bool LinuxcncRun::PublishLines() {
    CycleReader reader(m_samplers->Channels(), m_have_fingerprint);
    const auto publish = [this](std::span<const double> line) { m_publisher->Publish(line); };
    Clock::time_point last_line = Clock::now();
    while (!platform::TerminationRequested()) {
        const CycleReader::Outcome outcome = reader.Poll(publish);
        Tell(outcome);
        const Clock::time_point now = Clock::now();
        if (outcome.lines > 0) {
            last_line = now;
        } else if (now - last_line > kSilence && !m_samplers->HaveWriter()) {
            return false;
        }
        m_publisher->Serve(kLookForLinesEvery);
    }
    return true;
}

void LinuxcncRun::Tell(const CycleReader::Outcome& outcome) {
    if (outcome.lost > 0) {
        Say("overrun: " + std::to_string(outcome.lost) + " lines of the controller are lost");
        m_publisher->LinesLost();
    }
    if (outcome.is_apart && !std::exchange(m_told_apart, true)) {
        Say("the samplers have no cycle in common; start the controller anew");
    }
}

}  // namespace wavo::master
