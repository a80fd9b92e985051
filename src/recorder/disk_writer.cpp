#include "recorder/disk_writer.h"

#include <algorithm>
#include <chrono>
#include <type_traits>
#include <utility>

#include "platform/data_file.h"

namespace wavo::recorder {

namespace {

using recording::RecordingWriter;

/// A chunk is full after a second of lines; where they come more slowly it is written as it is.
constexpr std::chrono::milliseconds kLongestUnwritten{1500};
constexpr std::chrono::milliseconds kLongestSleep{500};
/// Less room than this is taken for a full disk.
constexpr std::uint64_t kFullDisk = std::uint64_t{64} << 20U;

}  // namespace

DiskWriter::DiskWriter(DiskOptions options)
    : m_options(std::move(options)), m_names(m_options.out), m_thread([this] { Run(); }) {}

DiskWriter::~DiskWriter() {
    Stop();
}

void DiskWriter::SetHead(recording::RecordingHead head,
                         std::optional<recording::GraphFile> graph_file) {
    m_next_head = {std::move(head), std::move(graph_file)};
}

void DiskWriter::Push(Item item, std::size_t bytes) {
    {
        const std::lock_guard guard(m_lock);
        m_queue.push_back(std::move(item));
        m_status.queued += bytes;
    }
    m_wake.notify_one();
}

void DiskWriter::BeginFile() {
    Push(m_next_head, 0);
}

bool DiskWriter::TakeLines(LineBlock block, bool is_history) {
    const std::size_t bytes = block.Bytes();
    {
        const std::lock_guard guard(m_lock);
        const bool has_room = m_status.queued + bytes <= m_options.queue_size || is_history;
        if (!has_room || m_status.fault) {
            return false;
        }
    }
    Push(std::move(block), bytes);
    return true;
}

void DiskWriter::TakeEvent(const recording::Event& event) {
    Push(event, 0);
}

void DiskWriter::EndFile() {
    Push(End{}, 0);
}

DiskStatus DiskWriter::Status() const {
    const std::lock_guard guard(m_lock);
    return m_status;
}

std::optional<std::uint64_t> DiskWriter::FreeSpace() const {
    std::uint64_t bytes = 0;
    return platform::DataFiles().FreeSpace(m_names.Folder(), bytes) ? std::optional(bytes)
                                                                    : std::nullopt;
}

void DiskWriter::Stop() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard guard(m_lock);
        m_is_stopping = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void DiskWriter::Run() {
    for (;;) {
        if (std::optional<Item> item = Next()) {
            Handle(std::move(*item));
        } else {
            const std::lock_guard guard(m_lock);
            if (m_is_stopping && m_queue.empty()) {
                break;
            }
        }
        if (m_writer != nullptr && !m_unkept.empty() &&
            Clock::now() - m_unkept_since > kLongestUnwritten) {
            Note(m_writer->Keep());
        }
        ReleaseKept();
        UpdateStatus();
    }
    Close();
    UpdateStatus();
}

std::optional<DiskWriter::Item> DiskWriter::Next() {
    std::unique_lock guard(m_lock);
    m_wake.wait_for(guard, kLongestSleep, [this] { return !m_queue.empty() || m_is_stopping; });
    if (m_queue.empty()) {
        return std::nullopt;
    }
    Item item = std::move(m_queue.front());
    m_queue.pop_front();
    return item;
}

void DiskWriter::Handle(Item item) {
    std::visit(
        [this](auto&& content) {
            using Content = std::decay_t<decltype(content)>;
            if constexpr (std::is_same_v<Content, Begin>) {
                Close();
                m_head = std::forward<decltype(content)>(content);
                Open();
            } else if constexpr (std::is_same_v<Content, LineBlock>) {
                HandleLines(std::forward<decltype(content)>(content));
            } else if constexpr (std::is_same_v<Content, recording::Event>) {
                if (m_writer != nullptr) {
                    m_writer->AddEvent(content);
                }
            } else {
                Close();
            }
        },
        std::move(item));
}

void DiskWriter::HandleLines(LineBlock block) {
    if (m_unkept.empty()) {
        m_unkept_since = Clock::now();
    }
    m_unkept.push_back(std::move(block));
    if (m_writer == nullptr) {
        return;
    }
    const LineBlock& lines = m_unkept.back();
    Note(m_writer->Append(lines.first, lines.values, lines.lines));
    RemoveBeyondLimit();
    if (m_writer != nullptr && m_options.split_bytes > 0 &&
        m_writer->FileSize() >= m_options.split_bytes) {
        Close();
        Open();
    }
}

bool DiskWriter::Open() {
    {
        const std::lock_guard guard(m_lock);
        if (m_status.fault) {
            return false;
        }
    }
    auto writer = m_names.CreateNext(m_head.head, m_head.graph_file);
    while (!writer && MakeRoomOnFullDisk()) {
        writer = m_names.CreateNext(m_head.head, m_head.graph_file);
    }
    if (!writer) {
        Fail(writer.Why());
        return false;
    }
    m_writer = std::move(*writer);
    m_others = 0;
    for (const recording::RecordingNames::File& file : m_names.Files()) {
        m_others += m_names.PathOf(file.number) != m_writer->path() ? file.size : 0;
    }
    const std::lock_guard guard(m_lock);
    m_status.files.push_back(m_writer->path());
    return true;
}

void DiskWriter::Close() {
    while (m_writer != nullptr) {
        if (MaybeFault fault = m_writer->Finish()) {
            Note(fault);
        } else {
            ReleaseKept();
            m_others += m_writer->FileSize();
            Forget();
        }
    }
    ReleaseKept();
    RemoveBeyondLimit();  // with the index at the end it is larger than it was
}

void DiskWriter::Forget() {
    m_kept_before += m_writer->KeptLines();
    m_bytes_before += m_writer->FileSize();
    m_writer.reset();
}

void DiskWriter::Note(MaybeFault fault) {
    while (fault && m_writer != nullptr) {
        ReleaseKept();  // the rest goes into the next file
        Forget();
        if (!MakeRoomOnFullDisk()) {
            Fail(*fault);
            return;
        }
        if (!Open()) {
            return;
        }
        fault.reset();
        for (std::size_t i = 0; i < m_unkept.size() && !fault; ++i) {
            fault = m_writer->Append(m_unkept[i].first, m_unkept[i].values, m_unkept[i].lines);
        }
    }
}

bool DiskWriter::MakeRoomOnFullDisk() {
    const std::optional<std::uint64_t> free = FreeSpace();
    return free && *free < kFullDisk && RemoveOldest();
}

bool DiskWriter::RemoveOldest() {
    if (m_options.keep == 0) {
        return false;
    }
    const std::vector<recording::RecordingNames::File> files = m_names.Files();
    // The newest is the one that is written, or was written just now.
    for (std::size_t i = 0; i + 1 < files.size(); ++i) {
        const std::string path = m_names.PathOf(files[i].number);
        if (platform::DataFiles().RemoveUnused(path)) {
            m_others -= std::min(m_others, files[i].size);
            const std::lock_guard guard(m_lock);
            m_status.removed.push_back(path);
            return true;
        }
    }
    return false;
}

void DiskWriter::RemoveBeyondLimit() {
    const std::uint64_t present = m_writer != nullptr ? m_writer->FileSize() : 0;
    while (m_options.keep > 0 && m_others + present > m_options.keep && RemoveOldest()) {
    }
}

void DiskWriter::ReleaseKept() {
    std::size_t released = 0;
    const std::uint64_t kept = m_writer != nullptr ? m_writer->KeptEnd() : 0;
    const bool nothing_waits = m_writer == nullptr;
    while (!m_unkept.empty() && (nothing_waits || m_unkept.front().End() <= kept)) {
        released += m_unkept.front().Bytes();
        m_unkept.pop_front();
        m_unkept_since = Clock::now();
    }
    const std::lock_guard guard(m_lock);
    m_status.queued -= released;
}

void DiskWriter::UpdateStatus() {
    const std::lock_guard guard(m_lock);
    m_status.lines = m_kept_before + (m_writer != nullptr ? m_writer->KeptLines() : 0);
    m_status.bytes = m_bytes_before + (m_writer != nullptr ? m_writer->FileSize() : 0);
}

void DiskWriter::Fail(const Fault& fault) {
    const std::lock_guard guard(m_lock);
    m_status.fault = fault;
}

}  // namespace wavo::recorder
