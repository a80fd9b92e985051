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

std::string FifoName(platform::WindowHandle viewer) {
    return kValueSegmentPrefix + std::to_string(viewer);
}

ViewerState StateOf(platform::WindowHandle window, bool connected, const Counters& counters) {
    return {window, connected, counters};
}

void Notify(const std::function<void(const ViewerState&)>& event, const ViewerState& state) {
    if (event) {
        event(state);
    }
}

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

std::int64_t MasterPublisher::Handle(const platform::Message& message) {
    const auto window = static_cast<platform::WindowHandle>(message.l_param);
    const auto viewer = m_viewers.find(window);
    const bool known = viewer != m_viewers.end();
    switch (static_cast<ToMaster>(message.number)) {
        case ToMaster::kLink:
            if (message.w_param == static_cast<std::uint64_t>(LinkRequest::kConnect)) {
                Connect(window);
            } else if (message.w_param == static_cast<std::uint64_t>(LinkRequest::kDisconnect) &&
                       known) {
                Disconnect(viewer);
            }
            return 1;
        case ToMaster::kReady:
            if (known) {
                Answer(viewer);
            }
            return 1;
        case ToMaster::kCapabilityBegin:
            if (known) {
                viewer->second.reading_capabilities = true;
            }
            return 1;
        case ToMaster::kCapabilityEnd:
            if (known) {
                CapabilitiesRead(viewer);
            }
            return 1;
    }
    return 0;
}

void MasterPublisher::Connect(platform::WindowHandle window) {
    // The viewer may have ended between posting and now.
    if (window == m_window->handle() || !platform::WindowExists(window)) {
        return;
    }
    const auto place = m_viewers.try_emplace(window).first;
    Viewer& viewer = place->second;
    if (viewer.fifo.IsIntact() && (viewer.batch_out || viewer.fifo.ReaderAttached())) {
        // It holds the FIFO, or opens it when it comes to the batch that was announced: invariant
        // 5. It goes on with that FIFO. An announced batch that it refused was never answered, so
        // the wait for the answer has an end.
        if (viewer.batch_out) {
            viewer.batch_lost_at = Clock::now() + m_options.batch_grace;
        }
    } else {
        // An answer to a batch in a FIFO that was damaged will not come.
        viewer.batch_out = false;
        viewer.batch_lost_at.reset();
        if (!RenewFifo(*place)) {
            Forget(place);
            return;
        }
    }
    viewer.overrun = false;
    viewer.overrun_told = false;
    const bool is_new = !std::exchange(viewer.connected, true);
    if (!viewer.capabilities) {
        RenewCapabilities(*place);
    }
    if (!m_options.limits.empty()) {
        TellCapabilities(*place);
    }
    if (is_new) {
        Notify(m_events.connected, StateOf(window, true, viewer.counters));
    }
}

void MasterPublisher::Disconnect(ViewerMap::iterator place) {
    Viewer& viewer = place->second;
    viewer.overrun = false;
    viewer.overrun_told = false;
    if (viewer.batch_out) {
        // The announcement may still wait in the viewer's queue, and handling it opens the FIFO:
        // keep it. What it holds is not wanted any more, and while the viewer waits for the
        // result of this message it reads nothing.
        viewer.fifo.Clear();
    } else {
        viewer.fifo = {};
    }
    if (std::exchange(viewer.connected, false)) {
        Notify(m_events.disconnected, StateOf(place->first, false, viewer.counters));
    }
    if (!viewer.told_anything) {
        // Nobody would report its vanishing, so nothing may be kept for it.
        Forget(place);
    }
}

void MasterPublisher::Answer(ViewerMap::iterator place) {
    Viewer& viewer = place->second;
    if (m_ignore_answers || !viewer.batch_out) {
        return;
    }
    viewer.batch_out = false;
    viewer.batch_lost_at.reset();
    ++viewer.counters.batches_answered;
    if (!viewer.connected && !viewer.fifo.ReaderAttached()) {
        viewer.fifo = {};
    }
    if (!Tend(*place)) {
        Forget(place);
    }
}

void MasterPublisher::CapabilitiesRead(ViewerMap::iterator place) {
    Viewer& viewer = place->second;
    viewer.reading_capabilities = false;
    if (std::exchange(viewer.capabilities_stale, false)) {
        RenewCapabilities(*place);
        if (viewer.connected) {
            TellCapabilities(*place);
        }
    }
}

void MasterPublisher::TellCapabilities(ViewerMap::value_type& place) {
    place.second.capabilities_due = !Tell(place, FromMaster::kCapabilitiesChanged);
}

void MasterPublisher::Publish(std::span<const double> line) {
    for (auto place = m_viewers.begin(); place != m_viewers.end();) {
        Fill(*place, line);
        place = Tend(*place) ? std::next(place) : Forget(place);
    }
}

void MasterPublisher::Fill(ViewerMap::value_type& place, std::span<const double> line) {
    Viewer& viewer = place.second;
    if (!viewer.connected || viewer.overrun) {
        return;
    }
    if (viewer.fifo.Push(line)) {
        ++viewer.counters.lines_sent;
        return;
    }
    RunOver(place);
}

void MasterPublisher::RunOver(ViewerMap::value_type& place) {
    Viewer& viewer = place.second;
    viewer.overrun = true;
    ++viewer.counters.overruns;
    Notify(m_events.overrun, StateOf(place.first, true, viewer.counters));
}

void MasterPublisher::LinesLost() {
    for (auto& place : m_viewers) {
        if (place.second.connected && !place.second.overrun) {
            RunOver(place);
        }
    }
    TendAll();
}

/// Posts what is due to a viewer: news of its limits, the overrun, or the next batch. What finds
/// the viewer's queue full is tried again. Returns false when the viewer is gone.
bool MasterPublisher::Tend(ViewerMap::value_type& place) {
    Viewer& viewer = place.second;
    if (!viewer.connected) {
        return true;
    }
    if (viewer.capabilities_due) {
        TellCapabilities(place);
    }
    if (viewer.overrun) {
        viewer.overrun_told = viewer.overrun_told || Tell(place, FromMaster::kOverrun);
        return viewer.overrun_told || platform::WindowExists(place.first);
    }
    if (viewer.batch_lost_at && Clock::now() >= *viewer.batch_lost_at) {
        viewer.batch_lost_at.reset();
        viewer.batch_out = false;
    }
    if (viewer.batch_out || viewer.fifo.Waiting() == 0) {
        return true;
    }
    std::optional<Clock::time_point> now;
    if (m_options.announce_interval > std::chrono::nanoseconds::zero()) {
        now = Clock::now();
        const bool is_early =
            viewer.announced_at && *now - *viewer.announced_at < m_options.announce_interval;
        if (is_early && viewer.fifo.Waiting() <= m_options.fifo_lines / 2) {
            return true;
        }
    }
    if (!Tell(place, FromMaster::kValues, static_cast<std::uint64_t>(ValuesNotice::kNewValues))) {
        return platform::WindowExists(place.first);
    }
    viewer.batch_out = true;
    viewer.announced_at = now;
    ++viewer.counters.batches_announced;
    return true;
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

bool MasterPublisher::Tell(ViewerMap::value_type& place, FromMaster number, std::uint64_t w_param) {
    if (!m_window->Post(place.first, {static_cast<std::uint32_t>(number), w_param, 0})) {
        return false;
    }
    place.second.told_anything = true;
    return true;
}

bool MasterPublisher::RenewFifo(ViewerMap::value_type& place) {
    Viewer& viewer = place.second;
    // The old one goes first: its end removes the name that the new one is going to have.
    viewer.fifo = {};
    viewer.fifo = LineFifoWriter::Create(FifoName(place.first), m_options.axis_names.size(),
                                         m_options.fifo_lines);
    if (!viewer.fifo) {
        MERRLOG("MasterPublisher::RenewFifo(): can not create %s (%d)",
                FifoName(place.first).c_str(), platform::LastError());
        return false;
    }
    return true;
}

void MasterPublisher::RenewCapabilities(ViewerMap::value_type& place) {
    Viewer& viewer = place.second;
    viewer.capabilities = {};
    viewer.capabilities = CreateCapabilityModule(place.first, m_options.limits);
    if (!viewer.capabilities) {
        MERRLOG("MasterPublisher::RenewCapabilities(): can not create %s (%d)",
                CapabilityModuleName(place.first).c_str(), platform::LastError());
    }
}

MasterPublisher::ViewerMap::iterator MasterPublisher::Forget(ViewerMap::iterator place) {
    const ViewerState state = StateOf(place->first, false, place->second.counters);
    m_forgotten += state.counters;
    const auto next = m_viewers.erase(place);
    Notify(m_events.gone, state);
    return next;
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
        viewers.push_back(StateOf(window, viewer.connected, viewer.counters));
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
