#include "master/publisher.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <set>
#include <string_view>
#include <utility>

#include "link/wire_format.h"
#include "platform/last_error.h"
#include "support/diagnostics.h"

namespace wavo::master {

namespace {

bool NamesFit(const std::vector<AxisLimits>& limits) {
    return std::ranges::all_of(
        limits, [](const AxisLimits& axis) { return axis.axis.size() <= kLongestLimitedAxisName; });
}

/// Empty when these options can be published, else why not.
std::string WhyNot(const PublisherOptions& options) {
    std::size_t name_bytes = 0;
    std::set<std::string_view> names;
    for (const std::string& name : options.axis_names) {
        if (name.empty() || name.find('\0') != std::string::npos) {
            return "an axis name is empty or holds a NUL character";
        }
        if (!names.insert(name).second) {
            return "two axes are named " + name;
        }
        name_bytes += name.size() + 1;
    }
    if (name_bytes > sizeof(MasterInfoBlock::axis_names)) {
        return "the axis names are too long: " + std::to_string(name_bytes) + " bytes of " +
               std::to_string(sizeof(MasterInfoBlock::axis_names));
    }
    if (!std::isfinite(options.cycle_time) || options.cycle_time <= 0.0) {
        return "the cycle time is not above zero";
    }
    if (options.fifo_lines < 2 ||
        LineFifoWriter::SegmentSize(options.axis_names.size(), options.fifo_lines) == 0) {
        return "no value FIFO can have " + std::to_string(options.fifo_lines) + " lines";
    }
    if (!NamesFit(options.limits)) {
        return "the name of an axis with limits is too long";
    }
    return {};
}

}  // namespace

Counters& Counters::operator+=(const Counters& other) {
    lines_sent += other.lines_sent;
    batches_announced += other.batches_announced;
    batches_answered += other.batches_answered;
    overruns += other.overruns;
    return *this;
}

platform::WindowHandle RunningMaster() {
    const platform::MappingHandle mapping = platform::OpenSharedMemory(kInfoSegmentName);
    if (mapping == 0) {
        return 0;
    }
    std::uint64_t window = 0;
    if (void* address = platform::MapSharedMemory(mapping); address != nullptr) {
        const std::uint64_t size = platform::SharedMemorySize(address, mapping);
        if (size >= sizeof(MasterInfoBlock)) {
            std::memcpy(&window, address, sizeof window);
        }
        platform::UnmapSharedMemory(address, size);
    }
    platform::CloseSharedMemory(mapping);
    return platform::WindowExists(window) ? window : 0;
}

MasterPublisher::MasterPublisher(PublisherOptions options, PublisherEvents events)
    : m_options(std::move(options)), m_events(std::move(events)) {}

MasterPublisher::~MasterPublisher() {
    End();
}

std::unique_ptr<MasterPublisher> MasterPublisher::Start(PublisherOptions options,
                                                        PublisherEvents events,
                                                        std::string* error) {
    *error = WhyNot(options);
    if (!error->empty()) {
        return nullptr;
    }
    if (const platform::WindowHandle other = RunningMaster(); other != 0) {
        *error = "another master is running (window " + std::to_string(other) + ")";
        return nullptr;
    }
    std::unique_ptr<MasterPublisher> publisher(
        new MasterPublisher(std::move(options), std::move(events)));
    MasterPublisher* self = publisher.get();
    publisher->m_window = platform::MessageWindow::Create(
        [self](const platform::Message& message) { return self->Handle(message); }, error,
        kLinkNumbers);
    if (!publisher->m_window) {
        return nullptr;
    }
    publisher->m_window->SetPeerGoneHandler([self](platform::WindowHandle window) {
        if (const auto viewer = self->m_viewers.find(window); viewer != self->m_viewers.end()) {
            self->Forget(viewer);
        }
    });
    publisher->m_window->SetPeerRefusedHandler(
        [self](platform::WindowHandle window, const char* why) {
            if (const auto viewer = self->m_viewers.find(window); viewer != self->m_viewers.end()) {
                // Its connection was closed, which it takes for the end of this master.
                MERRLOG("MasterPublisher: viewer %llu is dropped, it wrote %s",
                        static_cast<unsigned long long>(window), why);
                self->Forget(viewer);
            }
        });
    // No master runs: all that is published is left over from one that died.
    platform::RemoveLeftoverSegments(kValueSegmentPrefix);
    platform::RemoveLeftoverSegments(kCapabilitySegmentPrefix);
    if (!publisher->PublishInfoBlock(error)) {
        return nullptr;
    }
    publisher->m_untold = platform::MessageWindows();
    std::erase(publisher->m_untold, publisher->window());
    publisher->Announce();
    return publisher;
}

bool MasterPublisher::PublishInfoBlock(std::string* error) {
    m_info = platform::SharedSegment::Create(kInfoSegmentName, sizeof(MasterInfoBlock));
    if (!m_info) {
        *error = std::string("cannot create the segment ") + kInfoSegmentName + ": " +
                 platform::ErrorText(platform::LastError());
        return false;
    }
    MasterInfoBlock block{};
    block.cycle_time = m_options.cycle_time;
    block.axis_count = m_options.axis_names.size();
    block.fifo_lines = m_options.fifo_lines;
    char* place = block.axis_names;
    for (const std::string& name : m_options.axis_names) {
        std::memcpy(place, name.c_str(), name.size() + 1);
        place += name.size() + 1;
    }
    std::memcpy(m_info.data(), &block, sizeof block);
    // Release, and last: who sees a master window sees the whole block.
    auto* shared = static_cast<MasterInfoBlock*>(m_info.data());
    std::atomic_ref<std::uint64_t>(shared->master_window)
        .store(m_window->handle(), std::memory_order_release);
    return true;
}

int MasterPublisher::PollDescriptor() const {
    return m_window ? m_window->PollDescriptor() : -1;
}

platform::WindowHandle MasterPublisher::window() const {
    return m_window ? m_window->handle() : 0;
}

void MasterPublisher::Publish(std::span<const double> line) {
    for (auto place = m_viewers.begin(); place != m_viewers.end();) {
        Fill(*place, line);
        place = Tend(*place) ? std::next(place) : Forget(place);
    }
}

void MasterPublisher::LinesLost() {
    for (auto& place : m_viewers) {
        if (place.second.connected && !place.second.overrun) {
            RunOver(place);
        }
    }
    TendAll();
}

/// A window that takes no message just now is told with a later Serve.
void MasterPublisher::Announce() {
    std::erase_if(m_untold, [this](platform::WindowHandle window) {
        return m_window->Post(window, {kMasterIsHere, 0, 0}) || !platform::WindowExists(window);
    });
}

void MasterPublisher::TendAll() {
    for (auto place = m_viewers.begin(); place != m_viewers.end();) {
        place = Tend(*place) ? std::next(place) : Forget(place);
    }
}

std::uint64_t MasterPublisher::Room() const {
    std::uint64_t room = kNoViewer;
    for (const auto& [window, viewer] : m_viewers) {
        if (viewer.connected && !viewer.overrun) {
            room = std::min(room, viewer.fifo.Room());
        }
    }
    return room;
}

void MasterPublisher::Serve(std::chrono::nanoseconds timeout) {
    if (!m_window) {
        return;
    }
    if (timeout <= std::chrono::nanoseconds::zero()) {
        m_window->Dispatch();
    } else {
        m_window->WaitAndDispatch(timeout);
    }
    Announce();
    TendAll();
}

bool MasterPublisher::WaitUntilTaken(std::chrono::milliseconds timeout) {
    const auto taken = [this] {
        return std::ranges::all_of(m_viewers, [](const ViewerMap::value_type& place) {
            const Viewer& viewer = place.second;
            return !viewer.connected || viewer.overrun ||
                   (!viewer.batch_out && viewer.fifo.Waiting() == 0);
        });
    };
    const Clock::time_point end = Clock::now() + timeout;
    while (!taken()) {
        const auto left = end - Clock::now();
        if (left <= Clock::duration::zero()) {
            return false;
        }
        // Short, so that what is due by time or was refused by a full queue is looked after.
        Serve(std::min<Clock::duration>(left, std::chrono::milliseconds(50)));
    }
    return true;
}

bool MasterPublisher::CapabilitiesChanged(std::vector<AxisLimits> limits) {
    if (!m_window || !NamesFit(limits)) {
        return false;
    }
    m_options.limits = std::move(limits);
    for (auto& place : m_viewers) {
        if (place.second.reading_capabilities) {
            place.second.capabilities_stale = true;
            continue;
        }
        RenewCapabilities(place);
        if (place.second.connected) {
            TellCapabilities(place);
        }
    }
    return true;
}

void MasterPublisher::Quit() {
    for (auto& place : m_viewers) {
        if (place.second.connected) {
            Tell(place, FromMaster::kQuit);
        }
    }
}

void MasterPublisher::End() {
    if (!m_window) {
        return;
    }
    m_info = {};  // nobody new finds this master
    for (auto& place : m_viewers) {
        if (place.second.connected) {
            Tell(place, FromMaster::kValues, static_cast<std::uint64_t>(ValuesNotice::kLinkEnded));
        }
        m_forgotten += place.second.counters;
    }
    m_viewers.clear();
    m_window.reset();
}

std::vector<ViewerState> MasterPublisher::Viewers() const {
    std::vector<ViewerState> viewers;
    viewers.reserve(m_viewers.size());
    for (const auto& [window, viewer] : m_viewers) {
        viewers.push_back({window, viewer.connected, viewer.counters});
    }
    return viewers;
}

std::size_t MasterPublisher::ConnectedCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(m_viewers, [](const auto& place) { return place.second.connected; }));
}

Counters MasterPublisher::Total() const {
    Counters total = m_forgotten;
    for (const auto& [window, viewer] : m_viewers) {
        total += viewer.counters;
    }
    return total;
}

}  // namespace wavo::master
