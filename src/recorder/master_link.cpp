#include "recorder/master_link.h"

#include <utility>

#include "support/diagnostics.h"
#include "support/flag_scope.h"

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

bool WindowChannel::Open(MasterMessages& messages) {
    if (m_window != nullptr) {
        return true;
    }
    m_window = platform::MessageWindow::Create(
        [this, &messages](const platform::Message& message) {
            if (message.number == static_cast<std::uint32_t>(FromMaster::kOverrun)) {
                m_before_leaving();
            }
            return messages.OnMessage(message);
        },
        &m_error, kLinkNumbers);
    if (m_window == nullptr) {
        return false;
    }
    m_window->SetPeerGoneHandler([this, &messages](platform::WindowHandle window) {
        m_before_leaving();
        messages.OnPeerGone(window);
    });
    m_window->SetPeerRefusedHandler([&messages](platform::WindowHandle window, const char* why) {
        messages.OnPeerRefused(window, why);
    });
    return true;
}

platform::WindowHandle WindowChannel::OwnWindow() const {
    return m_window == nullptr ? 0 : m_window->handle();
}

platform::Message WindowChannel::MessageTo(ToMaster number, std::uint64_t w_param) const {
    return {static_cast<std::uint32_t>(number), w_param, static_cast<std::int64_t>(OwnWindow())};
}

bool WindowChannel::Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) {
    return m_window != nullptr && m_window->Post(master, MessageTo(number, w_param));
}

platform::SendStatus WindowChannel::Send(platform::WindowHandle master, ToMaster number,
                                         std::uint64_t w_param) {
    return m_window == nullptr ? platform::SendStatus::kGone
                               : m_window->Send(master, MessageTo(number, w_param)).status;
}

bool WindowChannel::Exists(platform::WindowHandle master) const {
    return platform::WindowExists(master);
}

void WindowChannel::Serve(std::chrono::milliseconds timeout) {
    if (timeout.count() > 0) {
        m_window->WaitAndDispatch(timeout);
    } else {
        m_window->Dispatch();
    }
}

MasterLink::MasterLink(LinkListener& listener) : m_listener(listener), m_source(m_channel) {
    m_source.SetEvents(this);
    m_channel.SetBeforeLeaving([this] { TakeRest(); });
}

MasterLink::~MasterLink() {
    Close();
}

bool MasterLink::Open(std::string* error) {
    LookForMaster();
    *error = m_channel.Error();
    return m_channel.OwnWindow() != 0;
}

void MasterLink::Serve(std::chrono::milliseconds timeout) {
    LookForMaster();
    m_channel.Serve(timeout);
    TellInterruption();
}

void MasterLink::LookForMaster() {
    const Clock::time_point now = Clock::now();
    if (m_is_linked || !m_source.CanStart() || now < m_next_look) {
        return;
    }
    m_next_look = now + kLookInterval;
    const QuietScope quiet;
    (void)m_source.Start();  // there may be nobody yet
}

bool MasterLink::Take(bool is_answered) {
    ValueBatch batch;
    if (m_source.Take(batch) != BatchOutcome::kTaken) {
        return false;
    }
    const auto lines = static_cast<std::size_t>(batch.count);
    std::vector<double> values(batch.lines, batch.lines + lines * batch.axes);
    if (is_answered) {
        m_source.Answer();
    }
    if (lines > 0) {
        m_listener.LinesCame(std::move(values), lines);
    }
    return true;
}

void MasterLink::TakeRest() {
    if (m_is_linked && !m_taking_batch && m_source.IsReaderOpen()) {
        const FlagScope taking(m_taking_batch);
        Take(false);
    }
}

bool MasterLink::BatchReady() {
    if (m_taking_batch) {
        m_batch_waits = true;
        return true;
    }
    const FlagScope taking(m_taking_batch);
    bool is_taken = false;
    do {
        m_batch_waits = false;
        is_taken = Take(true);
    } while (m_batch_waits);
    return is_taken;
}

void MasterLink::ValuesBegin(bool /*by_itself*/) {
    m_is_interrupted = m_is_interrupted || m_is_linked;
    TellInterruption();
    m_is_linked = true;
    m_has_ended = false;
    m_seen = m_source.Counters();
    m_listener.LinkBegan(m_source.Description(), m_source.Limits());
}

void MasterLink::Closed() {
    if (std::exchange(m_is_linked, false)) {
        m_is_interrupted = true;
        m_next_look = {};  // at once
    }
}

void MasterLink::TellInterruption() {
    if (std::exchange(m_is_interrupted, false)) {
        m_listener.Interrupted(WhyInterrupted());
    }
}

Interruption MasterLink::WhyInterrupted() const {
    const SourceCounters now = m_source.Counters();
    if (now.overruns != m_seen.overruns) {
        return Interruption::kOverrun;
    }
    if (m_has_ended) {
        return Interruption::kLinkEnded;
    }
    if (m_is_linked) {  // lines go on to come
        return Interruption::kThrownAway;
    }
    if (now.links_broken != m_seen.links_broken) {
        return Interruption::kDamaged;
    }
    if (!m_source.IsPresent()) {
        return Interruption::kGone;
    }
    return m_source.CanStart() ? Interruption::kDamaged : Interruption::kReplaced;
}

void MasterLink::Close() {
    m_is_linked = false;
    m_source.Stop();
    m_is_interrupted = false;
}

}  // namespace wavo::recorder
