#include "link/shared_memory_source.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "link/report_texts.h"
#include "support/diagnostics.h"
#include "support/flag_scope.h"

namespace wavo {

namespace {

using namespace link_texts;

/// a x b, or the largest size when that does not fit.
std::size_t SaturatingProduct(std::size_t a, std::size_t b) {
    std::size_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::size_t>::max()
                                                  : product;
}

}  // namespace

SharedMemorySource::SharedMemorySource(MasterChannel& channel, Clock clock)
    : m_channel(channel),
      m_watched(channel, [this](platform::WindowHandle master,
                                platform::SendStatus status) { NoteOutcome(master, status); }),
      m_capabilities(m_watched),
      m_clock(std::move(clock)) {}

bool SharedMemorySource::CanStart() const {
    return !IsPresent() || m_state == State::kBroken || m_state == State::kRepaired;
}

SourceCounters SharedMemorySource::Counters() const {
    SourceCounters counters = m_counters;
    counters.lines_thrown_away += m_reader.LinesThrownAway();
    return counters;
}

void SharedMemorySource::Enter(State state, const char* text) {
    m_state = m_state == State::kStopped ? State::kStopped : state;
    m_why_broken = nullptr;
    switch (m_state) {
        case State::kNoMaster:
            m_info.master_window = 0;
            break;
        case State::kOverrun:
        case State::kBroken:
            m_why_broken = text;
            break;
        case State::kConnected:
        case State::kRepaired:
            break;
        case State::kStopped:
            m_info.master_window = 0;
            return;  // nobody is told any more
    }
    Say(text);
}

void SharedMemorySource::Say(const char* text) {
    m_text = text;
    m_events->StateChanged();
}

const char* SharedMemorySource::LinkText() const {
    return m_why_broken == nullptr ? kConnected : m_why_broken;
}

// ---- begin and end ----

MaybeFault SharedMemorySource::Start() {
    m_by_itself = false;
    if (!m_channel.Open(*this)) {
        Enter(State::kNoMaster, kNoMessageWindow);
        return Fault{kNoMessageWindow};
    }
    if (!IsPresent()) {
        // A reader that is still open belongs to a link that is over; the new one has a new
        // segment.
        CloseReader();
    }
    if (!Connect(true)) {
        return Fault{kNotPresentBox};
    }
    m_state = State::kConnected;
    m_why_broken = nullptr;
    m_events->StateChanged();
    return std::nullopt;
}

bool SharedMemorySource::Connect(bool post) {
    m_description.axis_names.clear();
    if (m_state == State::kStopped) {  // while a batch waited for its message box
        return false;
    }
    Expected<std::optional<MasterInfo>> found = ReadMasterInfo(m_channel);
    if (!found || !*found) {
        // One that hangs may still be there: lookups of limits go on sparing it.
        Enter(State::kNoMaster, found ? kNotPresent : kRefused);
        return false;
    }
    MasterInfo& info = **found;
    if (m_announced_to != 0 && m_announced_to != info.master_window) {
        LeaveFormerMaster();
    }
    if (info.master_window != m_info.master_window) {
        m_watched.SetSilent(false);
    }
    if (m_state == State::kNoMaster) {
        m_state = State::kConnected;
    }
    m_capabilities.SetMaster(info.master_window);
    m_info = std::move(info);
    m_description = {m_info.axis_names, m_info.cycle_time};
    m_events->Described(m_by_itself);
    const char* const text = post ? kConnected : LinkText();
    Say(m_watched.IsSilent() ? kHung : text);
    return !post || GoOn();
}

void SharedMemorySource::Hold() {
    m_by_itself = false;
    if (IsPresent()) {
        SayGoodbye(m_watched, m_info.master_window);
        CloseReader();
    }
}

bool SharedMemorySource::GoOn() {
    if (!IsPresent()) {
        return false;
    }
    if (m_channel.Post(m_info.master_window, ToMaster::kLink,
                       static_cast<std::uint64_t>(LinkRequest::kConnect))) {
        m_announced_to = m_info.master_window;
        return true;
    }
    ForgetMaster(kNotPresent);  // it ended after its info block was read
    return false;
}

void SharedMemorySource::Stop() {
    const platform::WindowHandle master = m_info.master_window;
    const bool was_present = IsPresent();
    m_state = State::kStopped;  // what comes meanwhile is ignored
    if (was_present) {
        SayGoodbye(m_channel, master);
    }
    Enter(State::kStopped, "");
    CloseReader();
}

void SharedMemorySource::LeaveFormerMaster() {
    CloseReader();
    // Should it still live, it must not go on writing, nor remove the FIFO of the other one later.
    if (m_channel.Exists(m_announced_to)) {
        SayGoodbye(m_channel, m_announced_to);
    }
}

void SharedMemorySource::SayGoodbye(MasterChannel& channel, platform::WindowHandle master) {
    constexpr auto kDisconnect = static_cast<std::uint64_t>(LinkRequest::kDisconnect);
    if (m_watched.IsSilent()) {
        channel.Post(master, ToMaster::kLink, kDisconnect);  // it finds it when it wakes up
    } else {
        channel.Send(master, ToMaster::kLink, kDisconnect);
    }
}

void SharedMemorySource::NoteOutcome(platform::WindowHandle master, platform::SendStatus status) {
    switch (status) {
        case platform::SendStatus::kDone:
            return;
        case platform::SendStatus::kGone:
            OnPeerGone(master);
            return;
        case platform::SendStatus::kNoAnswer:
            if (m_info.master_window == master) {  // it did not end the link meanwhile
                m_watched.SetSilent(true);
                Say(kHung);
            }
            return;
    }
}

void SharedMemorySource::CloseReader() {
    if (m_reader.IsOpen() && !m_reader.IsDamaged()) {
        m_counters.lines_left += m_reader.LinesWaiting();
    }
    m_reader.Close();
    ++m_link_number;
    m_events->Closed();
}

void SharedMemorySource::BreakLink(const char* why) {
    if (IsPresent()) {
        SayGoodbye(m_watched, m_info.master_window);
    }
    CloseReader();
    Enter(State::kBroken, why);
}

void SharedMemorySource::ForgetMaster(const char* why) {
    m_watched.SetSilent(false);
    m_looked.reset();  // the next one is looked for at once
    Enter(State::kNoMaster, why);
}

// ---- batches ----

BatchOutcome SharedMemorySource::Take(ValueBatch& batch) {
    const std::uint64_t link = m_link_number;
    const std::uint64_t thrown_away = m_reader.LinesThrownAway();
    if (Receive(batch)) {
        m_taken_link = link;
        return BatchOutcome::kTaken;
    }
    return m_reader.LinesThrownAway() != thrown_away ? BatchOutcome::kDrained
                                                     : BatchOutcome::kFailed;
}

bool SharedMemorySource::Receive(ValueBatch& batch) {
    if (!m_reader.IsOpen() && !OpenReader()) {
        return false;
    }
    if (m_state == State::kStopped || !ReadWaitingLines(batch)) {
        return false;
    }
    m_read_fault_shown = false;
    if (std::exchange(m_lines_lost, false)) {
        m_events->ValuesBegin(false);
    }
    if (batch.count != 0 && m_why_broken != nullptr && !m_overrun_shown && IsPresent()) {
        Enter(m_state == State::kBroken ? State::kRepaired : State::kConnected, kConnected);
    }
    return true;
}

bool SharedMemorySource::OpenReader() {
    const platform::WindowHandle master = m_info.master_window;
    const std::uint64_t link = m_link_number;
    const std::uint64_t announcements = m_announcements;
    const std::string name = kValueSegmentPrefix + std::to_string(m_channel.OwnWindow());
    if (!m_reader.Open(name.c_str())) {
        MERRLOG(kFifoNotOpened);
        m_events->ShowBatchFault(kFifoNotOpenedBox);
        if (m_link_number != link || m_announcements != announcements) {
            return false;  // of the next batch it may be there
        }
    } else {
        ++m_counters.links;
    }
    if (Connect(false)) {
        if (m_announced_to != 0 && m_announced_to != m_info.master_window) {
            GoOn();  // another one, which has made no FIFO yet
            return false;
        }
    } else if (master != 0 && !m_channel.Exists(master)) {
        // It died behind the announcement of its first batch.
        CloseReader();
        ForgetMaster(kGone);
        return false;
    }
    AllocateInputBuffer();
    if (m_link_number != link) {
        return false;
    }
    m_lines_lost = false;
    m_events->ValuesBegin(std::exchange(m_by_itself, false));
    return m_link_number == link;
}

void SharedMemorySource::AllocateInputBuffer() {
    m_input_buffer.reset();
    m_input_capacity = 0;
    if (m_description.axis_names.empty()) {
        return;
    }
    if (m_info.fifo_lines == 0) {
        MERRLOG(kFifoWithoutLines);
        m_events->ShowBatchFault(kFifoWithoutLinesBox);
    }
    constexpr std::size_t kTooMuch = std::numeric_limits<std::size_t>::max();
    const std::size_t bytes = SaturatingProduct(
        SaturatingProduct(m_description.axis_names.size(), m_info.fifo_lines), sizeof(double));
    if (bytes == 0 || bytes == kTooMuch) {
        return;
    }
    // Whatever number of lines the master tells of, no more can come than its FIFO has room for.
    const std::size_t needed = std::clamp<std::size_t>(m_reader.SlotsSize(), 1, bytes);
    m_input_buffer.reset(static_cast<double*>(std::calloc(needed, 1)));
    if (m_input_buffer != nullptr) {
        m_input_capacity = bytes;
    }
}

bool SharedMemorySource::ReadWaitingLines(ValueBatch& batch) {
    batch = {m_input_buffer.get(), m_reader.LinesWaiting(), m_info.axis_names.size()};
    if (m_input_capacity == 0) {
        MERRLOG(kNoInputBuffer);
        m_events->ShowBatchFault(kNoInputBufferBox);
        return false;
    }
    const std::uint64_t thrown_away = m_reader.LinesThrownAway();
    const bool is_read = m_reader.Read(m_input_buffer.get(), batch.axes * sizeof(double),
                                       batch.count, m_input_capacity);
    // Lines that waited cannot be gone, unless somebody has moved the write index back.
    const bool is_short = is_read && m_reader.LinesCopied() < batch.count;
    if (!is_read || is_short) {
        NoteReadFault(is_short, thrown_away);
        return false;
    }
    return true;
}

void SharedMemorySource::NoteReadFault(bool is_short, std::uint64_t thrown_away_before) {
    MERRLOG(kFifoNotRead);
    m_counters.lines_thrown_away += is_short ? m_reader.LinesCopied() : 0;
    m_lines_lost = m_lines_lost || m_reader.LinesThrownAway() != thrown_away_before;
    if (m_reader.IsDamaged() || is_short) {
        ++m_counters.links_broken;
        BreakLink(kDamaged);
    }
    if (!std::exchange(m_read_fault_shown, true)) {
        m_events->ShowBatchFault(kInputBufferTooSmallBox);
    }
}

bool SharedMemorySource::Answer() {
    if (m_taken_link != m_link_number || !IsPresent()) {
        return false;  // the link has ended, or the master vanished, since the answer was owed
    }
    // A master that has just not answered a lookup finds this answer when it wakes up.
    return m_watched.IsSilent() ? m_channel.Post(m_info.master_window, ToMaster::kReady, 0)
                                : m_watched.Send(m_info.master_window, ToMaster::kReady, 0) ==
                                      platform::SendStatus::kDone;
}

// ---- what masters say ----

std::int64_t SharedMemorySource::OnMessage(const platform::Message& message) {
    if (m_state == State::kStopped) {
        return 0;
    }
    if (message.number == kMasterIsHere) {
        return OnMasterIsHere();
    }
    const auto number = static_cast<FromMaster>(message.number);
    // What has waited here since before it hung says nothing; a batch at least is answered, so that
    // a master that still hangs is found out.
    if (m_watched.IsSilent() && number == FromMaster::kValues) {
        m_watched.SetSilent(false);
        Say(LinkText());
    }
    switch (number) {
        case FromMaster::kValues:
            return OnValues(message.w_param);
        case FromMaster::kOverrun:
            return OnOverrun();
        case FromMaster::kQuit:
            return OnQuit();
        case FromMaster::kCapabilitiesChanged:
            m_capabilities.OnCapabilitiesChanged(m_info.master_window, m_channel.OwnWindow());
            return 1;
    }
    return 0;  // a number that no master of ours uses
}

std::int64_t SharedMemorySource::OnValues(std::uint64_t notice) {
    switch (static_cast<ValuesNotice>(notice)) {
        case ValuesNotice::kNewValues:
            ++m_announcements;
            return m_events->BatchReady() ? 1 : 0;
        case ValuesNotice::kLinkEnded:
            return OnLinkEnded();
    }
    return 1;
}

std::int64_t SharedMemorySource::OnLinkEnded() {
    CloseReader();
    m_events->Ended();
    ForgetMaster(kLinkEnded);
    return 1;
}

std::int64_t SharedMemorySource::OnOverrun() {
    ++m_counters.overruns;
    m_lines_lost = true;  // batches may be read until the reader is closed
    if (m_overrun_shown) {
        return 1;
    }
    const FlagScope shown(m_overrun_shown);
    if (IsPresent()) {
        SayGoodbye(m_watched, m_info.master_window);
    }
    Enter(State::kOverrun, kOverrun);
    const std::uint64_t link = m_link_number;
    m_events->ShowFault(kOverrunBox);
    if (m_link_number != link) {  // it has ended meanwhile, and another may have begun
        return 1;
    }
    CloseReader();
    Enter(State::kBroken, kOverrun);
    return 1;
}

std::int64_t SharedMemorySource::OnQuit() {
    Stop();
    m_events->Quit();
    return 1;
}

std::int64_t SharedMemorySource::OnMasterIsHere() {
    if (!m_comes_back) {
        return 0;
    }
    if (IsPresent() && m_channel.Exists(m_info.master_window)) {
        return 1;  // another one; ours goes on
    }
    OnPeerGone(m_info.master_window);
    if (!MayLook()) {
        return 1;
    }
    m_by_itself = true;
    m_by_itself = Connect(true);
    if (m_by_itself) {
        Enter(State::kConnected, kConnected);
    } else {
        m_looked = m_clock();
    }
    return 1;
}

bool SharedMemorySource::MayLook() const {
    constexpr std::chrono::seconds kPause{1};
    return !m_looked || m_clock() - *m_looked >= kPause;
}

void SharedMemorySource::OnPeerGone(platform::WindowHandle window) {
    if (IsPresent() && window == m_info.master_window) {
        CloseReader();
        ForgetMaster(kGone);
    }
}

void SharedMemorySource::OnPeerRefused(platform::WindowHandle window, const char* why) {
    if (!IsPresent() || window != m_info.master_window || m_state == State::kBroken ||
        m_state == State::kRepaired) {
        return;
    }
    MERRLOG(kMasterRefused, why);
    BreakLink(kNoMessage);
}

}  // namespace wavo
