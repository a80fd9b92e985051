#include "view/acquisition_cycle.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

#include "support/diagnostics.h"
#include "ui/dialogs/graph_editor.h"

namespace wavo {

namespace {

constexpr char kConnected[] = "Connected to the master process (Dorvane)";
constexpr char kNotPresent[] = "Master process (Dorvane) not present";
constexpr char kRefused[] = "The master's info block is not valid, see the error log";
constexpr char kGone[] =
    "The master process (Dorvane) has gone: Machine Data > Connect when it is back";
constexpr char kLinkEnded[] = "The master process (Dorvane) has ended the link";
constexpr char kHung[] = "The master process (Dorvane) does not respond";
constexpr char kOverrun[] = "The value fifo ran over: Machine Data > Connect to go on";
constexpr char kNoMessage[] =
    "The master process (Dorvane) wrote what is no message, see the error log: "
    "Machine Data > Connect to go on";
constexpr char kDamaged[] =
    "The value fifo is damaged, see the error log: Machine Data > Connect to go on";

/// a x b, or the largest size when that does not fit.
std::size_t SaturatingProduct(std::size_t a, std::size_t b) {
    std::size_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::size_t>::max()
                                                  : product;
}

/// The first axis named by exactly one of the characters x, y, z or c, else the first axis.
/// REQUIRES: `names` is not empty.
const std::string& ChooseDefaultAxis(const std::vector<std::string>& names) {
    const auto found = std::find_if(names.begin(), names.end(), [](const std::string& name) {
        return name.size() == 1 && std::string("xyzc").find(name[0]) != std::string::npos;
    });
    return found == names.end() ? names.front() : *found;
}

/// Sets a flag for the life of the object.
class FlagScope {
 public:
    explicit FlagScope(bool& flag) : m_flag(flag) { m_flag = true; }
    ~FlagScope() { m_flag = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

 private:
    bool& m_flag;
};

}  // namespace

AcquisitionCycle::AcquisitionCycle(MasterChannel& channel, GraphBoard& board, GraphEditor& editor,
                                   AcquisitionHost& host, std::recursive_mutex& value_lock)
    : m_channel(channel),
      m_board(board),
      m_editor(editor),
      m_host(host),
      m_value_lock(value_lock),
      m_watched_channel(channel, m_master_hung,
                        [this](platform::WindowHandle master, platform::SendStatus status) {
                            NoteOutcome(master, status);
                        }),
      m_capabilities(m_watched_channel) {}

LinkCounters AcquisitionCycle::Counters() const {
    LinkCounters counters = m_counters;
    counters.lines_thrown_away += m_reader.LinesThrownAway();
    return counters;
}

bool AcquisitionCycle::Connect(bool post) {
    m_axis_names.clear();
    if (m_ended) {  // while a batch waited for its message box
        return false;
    }
    MasterInfo info;
    const MasterInfoStatus status = ReadMasterInfo(m_channel, info);
    if (status != MasterInfoStatus::kPresent) {
        m_info.master_window = 0;
        m_host.SetPaneText(StatusPane::kMessage,
                           status == MasterInfoStatus::kRefused ? kRefused : kNotPresent);
        m_host.LinkChanged();
        return false;
    }
    if (m_announced_to != 0 && m_announced_to != info.master_window) {
        LeaveFormerMaster();
    }
    // Buffers count in cycles: those of another cycle time hold other times.
    if (info.cycle_time != m_info.cycle_time) {
        m_board.DropBuffers();
    }
    m_master_hung = m_master_hung && info.master_window == m_info.master_window;
    m_capabilities.SetMaster(info.master_window);
    m_info = info;
    m_axis_names = m_info.axis_names;
    char text[64];
    std::snprintf(text, sizeof text, "cycl. time=%.5fs", m_info.cycle_time);
    m_host.SetPaneText(StatusPane::kCycleTime, text);
    const char* const state = post ? kConnected : LinkText();
    m_host.SetPaneText(StatusPane::kMessage, m_master_hung ? kHung : state);
    InitialiseEditor();
    m_editor.SetCycleTime(m_info.cycle_time);
    if (post && !JoinMaster()) {
        return false;
    }
    m_host.LinkChanged();
    return true;
}

void AcquisitionCycle::InitialiseEditor() {
    const std::lock_guard guard(m_value_lock);
    m_editor.SetNotInitialised();
    m_editor.ResetSelection();
    m_editor.Init(m_board.Graphs(), m_axis_names);
}

void AcquisitionCycle::LeaveMaster() {
    if (IsMasterKnown()) {
        SendDisconnect();
        CloseReader();
    }
}

void AcquisitionCycle::LeaveFormerMaster() {
    CloseReader();
    // Should it still live, it must not go on writing, nor remove the FIFO of the other one later.
    if (m_channel.Exists(m_announced_to)) {
        Disconnect(m_announced_to, m_master_hung);
    }
}

void AcquisitionCycle::SendDisconnect() {
    const platform::WindowHandle master = m_info.master_window;
    NoteOutcome(master, Disconnect(master, m_master_hung));
}

platform::SendStatus AcquisitionCycle::Disconnect(platform::WindowHandle master, bool hangs) {
    constexpr auto kDisconnect = static_cast<std::uint64_t>(LinkRequest::kDisconnect);
    if (!hangs) {
        return m_channel.Send(master, ToMaster::kLink, kDisconnect);
    }
    m_channel.Post(master, ToMaster::kLink, kDisconnect);  // it finds it when it wakes up
    return platform::SendStatus::kDone;
}

bool AcquisitionCycle::JoinMaster() {
    if (!IsMasterKnown()) {
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

void AcquisitionCycle::ConnectByUser() {
    if (!IsMasterKnown()) {
        // A reader that is still open belongs to a link that is over; the new one has a new
        // segment.
        CloseReader();
    }
    if (Connect(true)) {
        m_link_broken = false;
        m_broken_why = nullptr;
        m_host.LinkChanged();
        return;
    }
    m_host.ShowError("Master process (Dorvane) not present.");
}

void AcquisitionCycle::End() {
    m_ended = true;
    if (IsMasterKnown()) {
        Disconnect(m_info.master_window, m_master_hung);
        m_info.master_window = 0;
    }
    CloseReader();
}

std::int64_t AcquisitionCycle::OnMessage(const platform::Message& message) {
    if (m_ended) {
        return 0;
    }
    const auto number = static_cast<FromMaster>(message.number);
    // What has waited here since before it hung says nothing; a batch at least is answered, so that
    // a master that still hangs is found out.
    if (m_master_hung && number == FromMaster::kValues) {
        m_master_hung = false;
        m_host.SetPaneText(StatusPane::kMessage, LinkText());
    }
    switch (number) {
        case FromMaster::kValues:
            return OnMessageFromMainNewMValues(message.w_param);
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

std::int64_t AcquisitionCycle::OnMessageFromMainNewMValues(std::uint64_t notice) {
    switch (static_cast<ValuesNotice>(notice)) {
        case ValuesNotice::kNewValues:
            return OnNewValues();
        case ValuesNotice::kLinkEnded:
            return EndLink();
    }
    return 1;
}

std::int64_t AcquisitionCycle::OnNewValues() {
    const Clock::time_point now = Clock::now();
    ++m_counters.batches_announced;
    if (m_host.IsDrawing()) {
        return RefuseBatch();
    }
    if (m_taking_batch) {  // the one before still waits for its message box
        m_counters.batches_refused += m_next_announced ? 1 : 0;  // the same, announced again
        m_next_announced = now;
        return 0;
    }
    m_boxes_closed.clear();
    const std::int64_t result = TakeBatch(now);
    while (m_next_announced) {
        TakeBatch(*std::exchange(m_next_announced, std::nullopt));
    }
    return result;
}

std::int64_t AcquisitionCycle::RefuseBatch() {
    ++m_counters.batches_refused;
    if (!m_refusal_shown) {
        const FlagScope shown(m_refusal_shown);
        m_host.ShowError(
            "Fatal prg. error, can not take new mvalues.\n All ax. values out of sync.");
    }
    return 0;
}

std::int64_t AcquisitionCycle::TakeBatch(Clock::time_point announced) {
    m_batch_begin = announced;
    const std::uint64_t link = m_link_number;
    Batch batch;
    const std::uint64_t thrown_away = m_reader.LinesThrownAway();
    if (!ReceiveBatch(batch)) {
        const bool is_drained = m_reader.LinesThrownAway() != thrown_away;
        ++(is_drained ? m_counters.batches_drained : m_counters.batches_failed);
        return 0;
    }
    m_ready_link = link;
    if (!m_running) {
        m_counters.lines_not_shown += batch.lines;
        MTRACE(4, "DrawingGraphsValue(): --- tx msg. 'ready for new values'");
        SendReady();
        return 1;
    }
    MTRACE(4, "OnMessageFromMainNewMValues(): --- start to set values");
    m_board.Distribute(m_input_buffer.get(), batch.lines, batch.axes);
    MTRACE(4, "OnMessageFromMainNewMValues(): --- end of set values");
    m_counters.lines_shown += batch.lines;
    // The answer to this one is then the only one of both.
    m_counters.batches_unanswered += m_ready_pending && !m_ready_on_its_way ? 1 : 0;
    m_ready_pending = true;
    m_ready_on_its_way = false;  // one that is, answers the batch before
    m_draw_begin = Clock::now();
    m_host.DrawNewValues();
    return 1;
}

bool AcquisitionCycle::ReceiveBatch(Batch& batch) {
    const FlagScope taking(m_taking_batch);
    if (!m_reader.IsOpen() && !OpenReader()) {
        return false;
    }
    if (m_ended || !ReadWaitingLines(batch)) {
        return false;
    }
    m_read_error_shown = false;
    if (std::exchange(m_lines_lost, false)) {
        StartCurvesAnew();
    }
    m_total_lines += batch.lines;
    m_counters.lines_read += batch.lines;
    m_host.SetPaneText(StatusPane::kTotalLines, std::to_string(m_total_lines));
    if (batch.lines != 0 && m_broken_why != nullptr && !m_overrun_shown && IsMasterKnown()) {
        m_broken_why = nullptr;  // the values flow again
        m_host.SetPaneText(StatusPane::kMessage, LinkText());
    }
    if (!m_editor.IsInitialised()) {
        InitEditor();
    }
    return true;
}

bool AcquisitionCycle::OpenReader() {
    const platform::WindowHandle master = m_info.master_window;
    const std::uint64_t link = m_link_number;
    const std::string name = kValueSegmentPrefix + std::to_string(m_channel.OwnWindow());
    if (!m_reader.Open(name.c_str())) {
        MERRLOG("CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Open() failed");
        ShowBatchError("Can not open mvales fifo");
        if (m_link_number != link || m_next_announced) {  // of the next batch it may be there
            return false;
        }
    } else {
        ++m_counters.links;
    }
    if (Connect(false)) {
        if (m_announced_to != 0 && m_announced_to != m_info.master_window) {
            JoinMaster();  // another one, which has made no FIFO yet
            return false;
        }
    } else if (master != 0 && !m_channel.Exists(master)) {
        // It died behind the announcement of its first batch.
        CloseReader();
        ForgetMaster(kGone);
        return false;
    }
    m_board.DropBuffers();
    AllocateInputBuffer();
    if (m_link_number != link) {
        return false;
    }
    m_lines_lost = false;
    const std::lock_guard guard(m_value_lock);
    m_host.RebuildGraphs();
    return m_link_number == link;
}

void AcquisitionCycle::StartCurvesAnew() {
    m_board.DropBuffers();
    const std::lock_guard guard(m_value_lock);
    m_host.RebuildGraphs();
}

void AcquisitionCycle::AllocateInputBuffer() {
    m_input_buffer.reset();
    m_input_capacity = 0;
    if (m_axis_names.empty()) {
        return;
    }
    if (m_info.fifo_lines == 0) {
        Fault("Prg. error, number of fifo lines=0");
    }
    constexpr std::size_t kTooMuch = std::numeric_limits<std::size_t>::max();
    const std::size_t bytes = SaturatingProduct(
        SaturatingProduct(m_axis_names.size(), m_info.fifo_lines), sizeof(double));
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

bool AcquisitionCycle::ReadWaitingLines(Batch& batch) {
    batch = {m_reader.LinesWaiting(), m_info.axis_names.size()};
    if (m_input_capacity == 0) {
        MERRLOG("CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available");
        ShowBatchError("Prg.error, value input buffer is not available");
        return false;
    }
    const std::size_t line_length = batch.axes * sizeof(double);
    const std::uint64_t thrown_away = m_reader.LinesThrownAway();
    const bool is_read =
        m_reader.Read(m_input_buffer.get(), line_length, batch.lines, m_input_capacity);
    // Lines that waited cannot be gone, unless somebody has moved the write index back.
    const bool is_short = is_read && m_reader.LinesCopied() < batch.lines;
    if (!is_read || is_short) {
        MERRLOG("CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Read() failed");
        m_counters.lines_thrown_away += is_short ? m_reader.LinesCopied() : 0;
        m_lines_lost = m_lines_lost || m_reader.LinesThrownAway() != thrown_away;
        if (m_reader.IsDamaged() || is_short) {
            ++m_counters.links_broken;
            BreakLink(kDamaged);
        }
        if (!m_read_error_shown) {
            m_read_error_shown = true;
            ShowBatchError("Prg.error, input buffer for axis values to small");
        }
        return false;
    }
    return true;
}

void AcquisitionCycle::InitEditor() {
    AddDefaultGraph();
    if (!m_editor.Init(m_board.Graphs(), m_axis_names)) {
        MERRLOG("CWavoView::OnMessageFromMainNewMValues(): m_GraphAxSelect.Init() failed");
        ShowBatchError("Prg.error, can not display graph data");
    }
}

void AcquisitionCycle::AddDefaultGraph() {
    if (!IsMasterKnown()) {
        ShowBatchError("Prg.error, m_MasterInfoData==NULL");
        return;
    }
    if (m_axis_names.empty()) {
        return;
    }
    std::vector<WavoGraph>& graphs = m_board.Graphs();
    std::uint32_t number = 0;
    for (const WavoGraph& graph : graphs) {
        number = std::max(number, graph.GraphNumber);
    }
    WavoGraph graph;
    graph.InitGraph(number + 1, ChooseDefaultAxis(m_axis_names).c_str(), m_host.BackgroundColor(),
                    &m_capabilities);
    graphs.push_back(graph);
    m_host.ShowRunTitle();
    // The graph gets its buffers before the values of this batch are handed out.
    const std::lock_guard guard(m_value_lock);
    m_host.RebuildGraphs();
}

void AcquisitionCycle::SendPendingReady() {
    if (!m_ready_pending || m_ready_on_its_way) {
        return;
    }
    MTRACE(4, "OnDraw(): --- tx msg. 'ready for new values'");
    m_ready_on_its_way = true;
    m_batch_times.drawing = Clock::now() - m_draw_begin;
    SendReady();
    m_ready_pending = false;
    m_ready_on_its_way = false;
}

void AcquisitionCycle::SendReady() {
    const bool is_owed = m_ready_link == m_link_number;  // the link has not ended meanwhile
    // A master that has just not answered a lookup finds this answer when it wakes up.
    if (is_owed && (m_master_hung ? m_channel.Post(m_info.master_window, ToMaster::kReady, 0)
                                  : SendToMaster(ToMaster::kReady, 0))) {
        ++m_counters.batches_answered;
    } else {
        ++m_counters.batches_unanswered;
    }
    m_batch_times.to_ready = Clock::now() - m_batch_begin;
}

std::int64_t AcquisitionCycle::EndLink() {
    CloseReader();
    m_total_lines = 0;
    m_host.SetPaneText(StatusPane::kTotalLines, "0");
    ForgetMaster(kLinkEnded);
    return 1;
}

std::int64_t AcquisitionCycle::OnOverrun() {
    ++m_counters.overruns;
    m_lines_lost = true;  // batches may be read until the reader is closed
    if (m_overrun_shown) {
        return 1;
    }
    const FlagScope shown(m_overrun_shown);
    if (IsMasterKnown()) {
        SendDisconnect();
    }
    m_broken_why = kOverrun;
    m_host.SetPaneText(StatusPane::kMessage, kOverrun);
    const std::uint64_t link = m_link_number;
    m_host.ShowError("overrun value fifo (main -> wavo.) from master proc. detected");
    if (m_link_number != link) {  // it has ended meanwhile, and another may have begun
        return 1;
    }
    CloseReader();
    m_link_broken = true;
    m_host.LinkChanged();
    return 1;
}

void AcquisitionCycle::BreakLink(const char* why) {
    if (IsMasterKnown()) {
        SendDisconnect();
    }
    CloseReader();
    m_link_broken = true;
    m_broken_why = why;
    m_host.SetPaneText(StatusPane::kMessage, why);
    m_host.LinkChanged();
}

void AcquisitionCycle::CloseReader() {
    if (m_reader.IsOpen() && !m_reader.IsDamaged()) {
        m_counters.lines_left += m_reader.LinesWaiting();
    }
    m_reader.Close();
    ++m_link_number;
    if (std::exchange(m_next_announced, std::nullopt)) {  // with what was read here
        ++m_counters.batches_failed;
    }
}

std::int64_t AcquisitionCycle::OnQuit() {
    End();
    m_host.EndProcess();
    return 1;
}

void AcquisitionCycle::OnPeerGone(platform::WindowHandle window) {
    if (IsMasterKnown() && window == m_info.master_window) {
        CloseReader();
        ForgetMaster(kGone);
    }
}

void AcquisitionCycle::OnPeerRefused(platform::WindowHandle window, const char* why) {
    if (!IsMasterKnown() || window != m_info.master_window || m_link_broken) {
        return;
    }
    MERRLOG("AcquisitionCycle::OnPeerRefused(): the master's connection was closed, it wrote %s",
            why);
    BreakLink(kNoMessage);
}

void AcquisitionCycle::ForgetMaster(const std::string& why) {
    m_info.master_window = 0;
    m_master_hung = false;
    m_broken_why = nullptr;
    m_host.SetPaneText(StatusPane::kMessage, why);
    m_host.LinkChanged();
}

bool AcquisitionCycle::SendToMaster(ToMaster number, std::uint64_t w_param) {
    const platform::WindowHandle master = m_info.master_window;
    if (master == 0) {  // it vanished since the message was owed
        return false;
    }
    return NoteOutcome(master, m_channel.Send(master, number, w_param));
}

bool AcquisitionCycle::NoteOutcome(platform::WindowHandle master, platform::SendStatus status) {
    switch (status) {
        case platform::SendStatus::kDone:
            return true;
        case platform::SendStatus::kGone:
            OnPeerGone(master);
            return false;
        case platform::SendStatus::kNoAnswer:
            if (m_info.master_window == master) {  // it did not end the link meanwhile
                m_master_hung = true;
                m_host.SetPaneText(StatusPane::kMessage, kHung);
            }
            return false;
    }
    return false;
}

const char* AcquisitionCycle::LinkText() const {
    return m_broken_why == nullptr ? kConnected : m_broken_why;
}

void AcquisitionCycle::Fault(const std::string& text) {
    MERRLOG("CWavoView::OnMessageFromMainNewMValues(): %s", text.c_str());
    ShowBatchError(text);
}

void AcquisitionCycle::ShowBatchError(const std::string& text) {
    if (std::find(m_boxes_closed.begin(), m_boxes_closed.end(), text) == m_boxes_closed.end()) {
        m_boxes_closed.push_back(text);
        m_host.ShowError(text);
    }
}

}  // namespace wavo
