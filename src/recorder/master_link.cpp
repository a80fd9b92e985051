#include "recorder/master_link.h"

#include <algorithm>
#include <utility>

#include "support/diagnostics.h"

namespace wavo::recorder {

namespace {

/// How often a master is looked for.
constexpr std::chrono::milliseconds kLookInterval{200};

/// Drops the reports of calls that may fail in the normal run of things.
class QuietScope {
 public:
    QuietScope() { MErrTrace_BeginContext(); }
    ~QuietScope() {
        MErrTrace_ClearContext();
        MErrTrace_EndContext();
    }
    QuietScope(const QuietScope&) = delete;
    QuietScope& operator=(const QuietScope&) = delete;
};

}  // namespace

MasterLink::MasterLink(LinkListener& listener) : m_listener(listener), m_capabilities(*this) {}

MasterLink::~MasterLink() {
    Close();
}

bool MasterLink::Open(std::string* error) {
    m_window = platform::MessageWindow::Create(
        [this](const platform::Message& message) { return Handle(message); }, error);
    if (m_window == nullptr) {
        return false;
    }
    m_window->SetPeerGoneHandler([this](platform::WindowHandle window) { PeerGone(window); });
    m_window->SetPeerRefusedHandler([this](platform::WindowHandle window, const char* /*why*/) {
        if (window == m_info.master_window) {
            Break(Interruption::kDamaged);
        }
    });
    return true;
}

platform::WindowHandle MasterLink::OwnWindow() const {
    return m_window == nullptr ? 0 : m_window->handle();
}

bool MasterLink::Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) {
    return m_window->Post(master, {static_cast<std::uint32_t>(number), w_param,
                                   static_cast<std::int64_t>(OwnWindow())});
}

platform::SendStatus MasterLink::Send(platform::WindowHandle master, ToMaster number,
                                      std::uint64_t w_param) {
    const platform::SendStatus status =
        m_window
            ->Send(master, {static_cast<std::uint32_t>(number), w_param,
                            static_cast<std::int64_t>(OwnWindow())})
            .status;
    m_is_hung = m_is_hung || status == platform::SendStatus::kNoAnswer;
    return status;
}

bool MasterLink::Exists(platform::WindowHandle master) const {
    return platform::WindowExists(master);
}

void MasterLink::Serve(std::chrono::milliseconds timeout) {
    LookForMaster();
    if (timeout.count() > 0) {
        m_window->WaitAndDispatch(timeout);
    } else {
        m_window->Dispatch();
    }
}

bool MasterLink::ReadInfo(MasterInfo& info) {
    const QuietScope quiet;
    return ReadMasterInfo(*this, info) == MasterInfoStatus::kPresent;
}

void MasterLink::LookForMaster() {
    const Clock::time_point now = Clock::now();
    if (m_is_announced || now < m_next_look) {
        return;
    }
    m_next_look = now + kLookInterval;
    if (MasterInfo info; ReadInfo(info)) {
        m_info = std::move(info);
        Announce();
    }
}

void MasterLink::Announce() {
    m_capabilities.SetMaster(m_info.master_window);
    m_is_announced = Post(m_info.master_window, ToMaster::kLink,
                          static_cast<std::uint64_t>(LinkRequest::kConnect));
    if (!m_is_announced) {
        m_info.master_window = 0;
    }
}

std::int64_t MasterLink::Handle(const platform::Message& message) {
    switch (static_cast<FromMaster>(message.number)) {
        case FromMaster::kValues:
            m_is_hung = false;
            if (message.w_param == static_cast<std::uint64_t>(ValuesNotice::kNewValues)) {
                TakeBatch();
            } else if (message.w_param == static_cast<std::uint64_t>(ValuesNotice::kLinkEnded)) {
                Interrupt(Interruption::kLinkEnded);
            }
            return 1;
        case FromMaster::kOverrun:
            Break(Interruption::kOverrun);
            return 1;
        case FromMaster::kQuit:
            m_listener.ToldToQuit();
            return 1;
        case FromMaster::kCapabilitiesChanged:
            m_capabilities.OnCapabilitiesChanged(m_info.master_window, OwnWindow());
            return 1;
    }
    return 0;
}

void MasterLink::PeerGone(platform::WindowHandle window) {
    if (window == m_info.master_window && window != 0) {
        Interrupt(Interruption::kGone);
    }
}

bool MasterLink::OpenReader() {
    const platform::WindowHandle before = m_info.master_window;
    MasterInfo info;
    const std::string name = kValueSegmentPrefix + std::to_string(OwnWindow());
    const bool is_open = [&] {
        const QuietScope quiet;
        return m_reader.Open(name.c_str());
    }();
    if (!is_open || !ReadInfo(info)) {
        m_reader.Close();
        return false;
    }
    m_info = std::move(info);
    if (m_info.master_window != before) {
        // Another one took its place, which has made no FIFO yet.
        m_reader.Close();
        m_listener.Interrupted(Interruption::kReplaced);
        Announce();
        return false;
    }
    m_listener.LinkBegan(m_info, m_capabilities);
    return true;
}

void MasterLink::TakeBatch() {
    if (m_taking_batch) {  // announced while the answer to the one before is on its way
        m_batch_waits = true;
        return;
    }
    m_taking_batch = true;
    do {
        m_batch_waits = false;
        if ((m_reader.IsOpen() || OpenReader()) && !TakeLines()) {
            Break(Interruption::kDamaged);
        }
        if (m_deferred) {
            m_listener.Interrupted(*std::exchange(m_deferred, std::nullopt));
        }
    } while (m_batch_waits);
    m_taking_batch = false;
}

bool MasterLink::TakeLines() {
    const std::size_t axes = m_info.axis_names.size();
    const std::size_t line = axes * sizeof(double);
    const std::uint64_t waiting = m_reader.LinesWaiting();
    if (line != 0 && waiting > m_reader.SlotsSize() / line) {
        return false;
    }
    std::vector<double> values(static_cast<std::size_t>(waiting) * axes);
    if (!m_reader.Read(values.data(), line, waiting, values.size() * sizeof(double)) ||
        m_reader.LinesCopied() < waiting) {
        return false;
    }
    const platform::WindowHandle master = m_info.master_window;
    if (m_is_hung) {  // it finds this when it wakes up
        Post(master, ToMaster::kReady, 0);
    } else if (Send(master, ToMaster::kReady, 0) == platform::SendStatus::kGone) {
        PeerGone(master);
    }
    if (waiting > 0) {
        m_listener.LinesCame(std::move(values), static_cast<std::size_t>(waiting));
    }
    return true;
}

void MasterLink::Disconnect() {
    constexpr auto kDisconnect = static_cast<std::uint64_t>(LinkRequest::kDisconnect);
    if (m_info.master_window == 0 || !m_is_announced) {
        return;
    }
    if (m_is_hung) {
        Post(m_info.master_window, ToMaster::kLink, kDisconnect);
    } else {
        Send(m_info.master_window, ToMaster::kLink, kDisconnect);
    }
}

void MasterLink::Break(Interruption why) {
    if (!m_is_announced) {
        return;
    }
    Disconnect();
    Interrupt(why);
    if (why == Interruption::kOverrun) {
        m_next_look = {};  // at once
    }
}

void MasterLink::Interrupt(Interruption why) {
    const bool was_linked = m_is_announced;
    m_reader.Close();
    m_is_announced = false;
    m_is_hung = false;
    m_batch_waits = false;
    m_info.master_window = 0;
    m_next_look = Clock::now() + kLookInterval;
    if (was_linked && m_taking_batch) {
        m_deferred = why;  // the lines that were read come first
    } else if (was_linked) {
        m_listener.Interrupted(why);
    }
}

void MasterLink::Close() {
    if (m_window == nullptr) {
        return;
    }
    Disconnect();
    m_reader.Close();
    m_is_announced = false;
    m_info.master_window = 0;
}

}  // namespace wavo::recorder
