#include "recorder/recorder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "graph/model/graph_ini_data.h"
#include "platform/folders.h"
#include "recording/json_text.h"
#include "support/fast_file.h"
#include "support/mini_data.h"

namespace wavo::recorder {

namespace {

/// A limit of the recordings' size is kept to an eighth.
constexpr std::uint64_t kFilesWithinLimit = 8;
/// Behind the end of --for no lines are waited for any longer.
constexpr double kGrace = 1.0;
/// Who watches is told at most so often.
constexpr std::chrono::seconds kNewsInterval{1};

/// How an interruption stands in a recording.
struct InterruptionWords {
    const char* kind;
    const char* text;
    bool loses_lines;  ///< that the master had
};

InterruptionWords WordsOf(Interruption why) {
    switch (why) {
        case Interruption::kOverrun:
            return {recording::kEventOverrun, "the value fifo ran over", true};
        case Interruption::kDamaged:
            return {recording::kEventDamaged, "the value fifo is damaged", true};
        case Interruption::kThrownAway:
            return {recording::kEventOverrun, "a batch had no room in the buffer", true};
        case Interruption::kLinkEnded:
            return {recording::kEventLinkEnded, "the master has ended the link", false};
        case Interruption::kGone:
            return {recording::kEventLinkEnded, "the master has gone", false};
        case Interruption::kReplaced:
            return {recording::kEventMasterRestarted, "another master took its place", false};
    }
    return {"", "", false};
}

std::uint64_t WallTime() {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                          std::chrono::system_clock::now().time_since_epoch())
                                          .count());
}

bool HasTrigger(const WavoGraph& graph) {
    return std::ranges::any_of(graph.Triggers, IsTrigger, &TriggerEntry::TriggerType);
}

std::string FileName(const std::string& path) {
    const std::size_t end = path.rfind(platform::PathSeparator());
    return end == std::string::npos ? path : path.substr(end + 1);
}

}  // namespace

std::string ToJson(const RecordOutcome& outcome) {
    const auto list = [](const std::vector<std::string>& texts) {
        std::string json = "[";
        for (const std::string& text : texts) {
            json += json.size() > 1 ? "," : "";
            recording::AppendJsonText(json, text);
        }
        return json + "]";
    };
    std::string json = "{\"exit_code\":" + std::to_string(static_cast<int>(outcome.exit_code));
    json += ",\"reason\":";
    recording::AppendJsonText(json, outcome.reason);
    json += ",\"files\":" + list(outcome.files) + ",\"removed\":" + list(outcome.removed);
    json += ",\"lines\":" + std::to_string(outcome.lines);
    json += ",\"lost\":" + std::to_string(outcome.lost);
    json += ",\"gaps\":" + std::to_string(outcome.gaps);
    json += ",\"bytes\":" + std::to_string(outcome.bytes) + ",\"seconds\":";
    recording::AppendJsonNumber(json, outcome.seconds);
    return json + "}";
}

Recorder::Recorder(RecordOptions options, std::string program, Say say)
    : m_options(std::move(options)),
      m_program(std::move(program)),
      m_say(std::move(say)),
      m_link(*this) {}

Recorder::~Recorder() = default;

void Recorder::Fail(const std::string& reason) {
    m_has_failed = true;
    Finish(reason);
}

bool Recorder::Start() {
    m_started = Clock::now();
    if (!OpenWindow() || !ReadGraphs()) {
        return false;
    }
    DiskOptions disk;
    disk.out = m_options.out;
    disk.keep = m_options.keep;
    disk.split_bytes =
        m_options.split == 0.0 && !m_options.repeat ? m_options.keep / kFilesWithinLimit : 0;
    m_disk = std::make_unique<DiskWriter>(std::move(disk));
    m_board->Announce();
    return true;
}

bool Recorder::OpenWindow() {
    ServedChannel& channel = m_link.Channel();
    channel.SetOthersHandler([this](const platform::Message& message) {
        if (message.number == kWatchRecorder && m_board != nullptr) {
            m_board->Watch(static_cast<platform::WindowHandle>(message.l_param));
        }
    });
    std::string error;
    if (!m_link.Open(&error)) {
        Fail("no message window: " + error);
        return false;
    }
    m_board = std::make_unique<NoticeBoard>(
        channel.OwnWindow(),
        [&channel](platform::WindowHandle window, std::uint32_t number, NoticeBoard::Way way) {
            return way == NoticeBoard::Way::kSent
                       ? channel.TellAndWait(window, number)
                       : channel.Tell(window, number) || channel.Exists(window);
        });
    if (m_options.tell != 0) {
        m_board->Watch(m_options.tell);
    }
    return true;
}

bool Recorder::ReadGraphs() {
    const std::string& file = m_options.graphs.empty() ? m_options.attach : m_options.graphs;
    if (file.empty()) {
        return true;
    }
    MIniData store;
    std::string error;
    std::string add_text;
    const bool is_read = store.Open(file);
    if (store.HasNoFileContent()) {
        Fail("file " + file + " not exist !");
        return false;
    }
    if (!is_read || !CreateGraphsFromIniData(store, m_graphs, error, add_text, kMinTimeRange)) {
        Fail(file + ": " + (error.empty() ? store.LastErrorText() : error));
        return false;
    }
    m_graph_file = {FileName(file), std::string(store.Content())};
    if (m_options.graphs.empty()) {
        m_graphs.clear();
        return true;
    }
    std::erase_if(m_graphs, [](const WavoGraph& graph) { return !HasTrigger(graph); });
    if (m_graphs.empty()) {
        Fail(file + ": no graph has a trigger");
        return false;
    }
    return true;
}

bool Recorder::Serve(std::chrono::milliseconds timeout) {
    if (m_has_ended) {
        return false;
    }
    m_link.Serve(timeout);
    CheckTimes();
    if (!m_has_ended && m_is_told_to_quit) {
        Finish("told to quit");
    }
    if (!m_has_ended && m_plan != nullptr && m_plan->IsDone()) {
        Finish("all that was asked for is recorded");
    }
    if (!m_has_ended) {
        if (const MaybeFault fault = m_disk->Status().fault) {
            Fail(fault->text);
        }
    }
    TellNews();
    ShowNotice(false);
    return !m_has_ended;
}

void Recorder::CheckTimes() {
    const std::chrono::duration<double> waited = Clock::now() - *m_started;
    if (!m_first_lines && m_options.wait && waited.count() > *m_options.wait) {
        Fail(m_link.IsMasterKnown() ? "the master gave no lines in time"
                                    : "Master process (Dorvane) not present");
    } else if (m_options.duration > 0.0 && SecondsSinceFirst() > m_options.duration + kGrace) {
        Finish("the time is over");
    }
}

double Recorder::SecondsSinceFirst() const {
    return m_first_lines ? std::chrono::duration<double>(Clock::now() - *m_first_lines).count()
                         : 0.0;
}

void Recorder::LinkBegan(const SourceDescription& lines, AxisLimitsSource& limits) {
    m_plan_is_due = m_plan == nullptr || !(lines == m_lines);
    m_lines = lines;
    m_limits = &limits;
    m_say("the master gives " + std::to_string(m_lines.axis_names.size()) + " axes, a line every " +
          std::to_string(m_lines.cycle_time * 1e3) + " ms");
}

PlanOptions Recorder::MakePlanOptions(double cycle_time) const {
    PlanOptions options;
    options.graphs = m_graphs;
    options.before = m_options.before;
    options.after = m_options.after;
    options.repeat = m_options.repeat;
    options.split = m_options.split;
    if (m_options.duration > 0.0) {
        const double left = std::max(m_options.duration - SecondsSinceFirst(), 0.0);
        // The first lines have just come: their plan has all of the time.
        const double seconds = m_lines_before == 0 && m_next_line == 0 ? m_options.duration : left;
        options.end_line =
            static_cast<std::uint64_t>(std::ceil(seconds / cycle_time * (1.0 - 1e-12)));
    }
    if (m_options.lines > 0) {
        options.lines = m_options.lines - m_lines_before;
    }
    return options;
}

void Recorder::BeginPlan(AxisLimitsSource& limits, std::size_t lines) {
    EndPlan();
    m_plan_is_due = false;
    if (!recording::LineClock::CanRecord(m_lines.cycle_time)) {
        Fail("lines with a cycle time below 1 ns or above 1e6 s cannot be recorded");
        return;
    }
    recording::RecordingHead head;
    head.axis_names = m_lines.axis_names;
    head.cycle_time = m_lines.cycle_time;
    head.program = m_program;
    // Line 0 was taken by the machine when the others of this batch had yet to come.
    const double since = static_cast<double>(lines - 1) * m_lines.cycle_time * 1e9;
    head.start_time = WallTime() - static_cast<std::uint64_t>(std::min(since, 1e15));
    for (const std::string& name : m_lines.axis_names) {
        const std::optional<AxisCapabilities> axis = limits.FindAxis(name);
        head.limits.emplace_back();
        if (axis) {
            head.limits.back() = {axis->lower_limit, axis->upper_limit, axis->velocity_limit,
                                  axis->acceleration_limit, axis->resolution};
        }
    }
    m_next_line = 0;
    m_plan = std::make_unique<RecordPlan>(MakePlanOptions(m_lines.cycle_time), m_lines.axis_names,
                                          m_lines.cycle_time, *m_disk);
    m_disk->SetHead(std::move(head), m_graph_file);
    for (const std::string& trigger : m_plan->UnknownTriggers()) {
        m_say("the master has no axis for the trigger " + trigger);
    }
    if (const std::optional<double> seconds = m_plan->ShortenedHistory()) {
        m_say("only " + std::to_string(*seconds) + " s before a trigger fit into memory");
    }
}

void Recorder::EndPlan() {
    if (m_plan == nullptr) {
        return;
    }
    TakeEventsBefore(m_next_line);  // what ended it belongs to its file
    m_plan->Finish();
    m_lines_before += m_plan->LinesWritten();
    m_outcome.lost += m_plan->LinesDropped();
    m_plan.reset();
}

std::uint64_t Recorder::PlaceOf(std::size_t lines, Clock::time_point now) {
    if (m_gaps.empty() || m_next_line == 0) {
        return m_next_line;
    }
    // The last line before came with its batch; the first of these is as old as the others.
    const std::chrono::duration<double> passed = now - m_last_lines;
    const double cycles = std::round(passed.count() / m_lines.cycle_time);
    const double missing = cycles - static_cast<double>(lines);
    return m_next_line + (missing > 1.0 ? static_cast<std::uint64_t>(missing) : 1);
}

void Recorder::LinesCame(std::vector<double> values, std::size_t lines) {
    if (m_has_ended) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (m_plan_is_due) {
        BeginPlan(*m_limits, lines);
        if (m_plan == nullptr) {
            return;
        }
    }
    const std::uint64_t first = PlaceOf(lines, now);
    TakeEventsBefore(first);
    m_plan->Take({first, lines, std::move(values)});
    m_next_line = first + lines;
    m_last_lines = now;
    if (!m_first_lines) {
        m_first_lines = now;
    }
}

void Recorder::TakeEventsBefore(std::uint64_t line) {
    // What several interruptions have cost together is told with the last.
    const std::uint64_t lost = line - m_next_line;
    const bool is_lost = std::ranges::any_of(m_gaps, &Gap::is_lost);
    m_outcome.lost += is_lost ? lost : 0;
    for (std::size_t i = 0; i < m_gaps.size(); ++i) {
        const InterruptionWords words = WordsOf(m_gaps[i].why);
        m_plan->TakeEvent({words.kind, line, i + 1 == m_gaps.size() ? lost : 0, words.text});
    }
    m_gaps.clear();
}

void Recorder::Interrupted(Interruption why) {
    const InterruptionWords words = WordsOf(why);
    ++m_outcome.gaps;
    m_gaps.push_back({why, words.loses_lines});
    m_say(words.text);
}

void Recorder::ToldToQuit() {
    m_is_told_to_quit = true;
}

void Recorder::Finish(const std::string& reason) {
    if (m_has_ended) {
        return;
    }
    m_has_ended = true;
    m_outcome.reason = reason;
    m_outcome.seconds = SecondsSinceFirst();
    m_link.Close();
    EndPlan();
    if (m_disk != nullptr) {
        m_disk->Stop();
        if (const MaybeFault fault = m_disk->Status().fault) {
            m_outcome.reason = fault->text;
            m_outcome.exit_code = ExitCode::kCouldNot;
        }
    }
    TellNews();
    const bool has_losses = m_outcome.lost > 0;
    if (m_has_failed) {
        m_outcome.exit_code = ExitCode::kCouldNot;
    } else if (m_outcome.exit_code == ExitCode::kComplete && has_losses) {
        m_outcome.exit_code = ExitCode::kWithLosses;
    }
    ShowNotice(true);
}

Notice Recorder::State() const {
    const RecordOutcome outcome = Outcome();
    Notice notice{RecorderState::kWaitsForMaster,
                  outcome.seconds,
                  outcome.lines,
                  outcome.lost,
                  outcome.bytes,
                  m_options.out,
                  m_has_ended ? outcome.reason : ""};
    if (!outcome.files.empty()) {
        notice.file = outcome.files.back();
    }
    if (m_has_ended) {
        notice.state = outcome.exit_code == ExitCode::kCouldNot ? RecorderState::kFailed
                                                                : RecorderState::kEnded;
    } else if (m_plan != nullptr && m_link.IsMasterKnown()) {
        notice.state =
            m_plan->IsWriting() ? RecorderState::kRecords : RecorderState::kWaitsForTrigger;
    }
    return notice;
}

void Recorder::ShowNotice(bool now) {
    if (m_board == nullptr || (!now && m_shown && Clock::now() - *m_shown < kNewsInterval)) {
        return;
    }
    m_shown = Clock::now();
    m_board->Show(State());
}

void Recorder::TellNews() {
    if (m_disk == nullptr) {
        return;
    }
    const DiskStatus status = m_disk->Status();
    for (; m_files_told < status.files.size(); ++m_files_told) {
        m_say("recording to " + status.files[m_files_told]);
    }
    for (; m_removed_told < status.removed.size(); ++m_removed_told) {
        m_say("removed " + status.removed[m_removed_told]);
    }
}

RecordOutcome Recorder::Outcome() const {
    RecordOutcome outcome = m_outcome;
    if (m_disk != nullptr) {
        const DiskStatus status = m_disk->Status();
        outcome.files = status.files;
        outcome.removed = status.removed;
        outcome.lines = status.lines;
        outcome.bytes = status.bytes;
    }
    if (!m_has_ended && m_plan != nullptr) {
        outcome.lost += m_plan->LinesDropped();
        outcome.seconds = SecondsSinceFirst();
    }
    return outcome;
}

std::string Recorder::StatusLine() const {
    const RecordOutcome outcome = Outcome();
    std::string line = TimeText(outcome.seconds) + "  " + std::to_string(outcome.lines) +
                       " lines, " + std::to_string(outcome.lost) + " lost, " +
                       SizeText(outcome.bytes);
    if (const std::optional<std::uint64_t> free = m_disk->FreeSpace()) {
        line += ", " + SizeText(*free) + " free";
    }
    switch (State().state) {
        case RecorderState::kWaitsForMaster:
            return line + ", waiting for the master";
        case RecorderState::kWaitsForTrigger:
            return line + ", waiting for the trigger";
        default:
            return line;
    }
}

}  // namespace wavo::recorder
