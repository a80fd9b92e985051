#include "master/master_report.h"

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <vector>

#include "platform/process.h"

namespace wavo::master {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// Longest wait for messages, so that a request to end is noticed.
constexpr milliseconds kLongestServe{50};
constexpr milliseconds kTimeToTakeRest{10000};
constexpr milliseconds kTimeToTakeRestOnRequest{500};

}  // namespace

std::string ViewerName(const ViewerState& viewer) {
    return "viewer " + std::to_string(viewer.window);
}

void PrintEvent(const ViewerState& viewer, const char* what) {
    std::printf("%s %s\n", ViewerName(viewer).c_str(), what);
    std::fflush(stdout);
}

void PrintCounters(const char* who, const Counters& counters) {
    std::printf("%s: lines sent %" PRIu64 ", batches answered %" PRIu64 ", overruns %" PRIu64 "\n",
                who, counters.lines_sent, counters.batches_answered, counters.overruns);
    std::fflush(stdout);
}

PublisherEvents PrintedEvents() {
    PublisherEvents events;
    events.connected = [](const ViewerState& viewer) { PrintEvent(viewer, "connected"); };
    events.disconnected = [](const ViewerState& viewer) { PrintEvent(viewer, "disconnected"); };
    events.overrun = [](const ViewerState& viewer) { PrintEvent(viewer, "overrun"); };
    events.gone = [](const ViewerState& viewer) {
        PrintCounters((ViewerName(viewer) + " gone").c_str(), viewer.counters);
    };
    return events;
}

void PrintStart(const char* program, const MasterPublisher& publisher) {
    const PublisherOptions& options = publisher.options();
    std::printf("%s: window %" PRIu64 ", cycle time %g s, value FIFO %" PRIu64 " lines, axes",
                program, publisher.window(), options.cycle_time, options.fifo_lines);
    for (const std::string& axis : options.axis_names) {
        std::printf(" %s", axis.c_str());
    }
    std::printf("\n");
    std::fflush(stdout);
}

void EndInOrder(MasterPublisher* publisher) {
    // Viewers that are about to open their FIFO, or still reading, may do so.
    const bool on_request = platform::TerminationRequested();
    const Clock::time_point end =
        Clock::now() + (on_request ? kTimeToTakeRestOnRequest : kTimeToTakeRest);
    while (!publisher->WaitUntilTaken(kLongestServe) && Clock::now() < end &&
           (on_request || !platform::TerminationRequested())) {
    }
    const std::vector<ViewerState> viewers = publisher->Viewers();
    publisher->End();
    for (const ViewerState& viewer : viewers) {
        PrintCounters(ViewerName(viewer).c_str(), viewer.counters);
    }
    PrintCounters("total", publisher->Total());
}

}  // namespace wavo::master
