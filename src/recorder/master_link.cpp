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

bool ServedChannel::Open(MasterMessages& messages) {
    m_messages = &messages;
    return WindowChannel::Open(*this);
}

std::int64_t ServedChannel::OnMessage(const platform::Message& message) {
    if (message.number > kLinkNumbers.last) {
        m_others(message);
        return 1;
    }
    if (message.number == static_cast<std::uint32_t>(FromMaster::kOverrun)) {
        m_before_leaving();
    }
    return m_messages->OnMessage(message);
}

void ServedChannel::OnPeerGone(platform::WindowHandle window) {
    m_before_leaving();
    m_messages->OnPeerGone(window);
}

void ServedChannel::OnPeerRefused(platform::WindowHandle window, const char* why) {
    m_messages->OnPeerRefused(window, why);
}

bool ServedChannel::TellAndWait(platform::WindowHandle window, std::uint32_t number) {
    return Window()->Send(window, {number, 0, static_cast<std::int64_t>(OwnWindow())}).status !=
           platform::SendStatus::kGone;
}

void ServedChannel::Serve(std::chrono::milliseconds timeout) {
    if (timeout.count() > 0) {
        Window()->WaitAndDispatch(timeout);
    } else {
        Window()->Dispatch();
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
