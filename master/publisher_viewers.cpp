// What passes between a publisher and one of its viewers: the messages of the viewer, and what it
// gets.
#include <string>
#include <utility>

#include "link/wire_format.h"
#include "master/publisher.h"
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

}  // namespace

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

}  // namespace wavo::master
