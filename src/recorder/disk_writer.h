// Writes recordings from a thread of its own, so that no disk makes a master wait.
//
// Invariants:
// 1. Lines are in the queue until their chunk is on the device. The queue holds kQueueSize bytes of
//    them, and history beyond; what has no room is refused at once.
// 2. What waits for longer than a second is written, full chunk or not.
// 3. All calls come from one thread; the other one is this object's own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "recorder/record_sink.h"
#include "recording/recording_names.h"
#include "support/fault.h"

namespace wavo::recorder {

inline constexpr std::size_t kQueueSize = std::size_t{64} << 20U;

struct DiskOptions {
    std::string out;
    std::uint64_t keep = 0;         ///< bytes that all files of this name may take; 0: any
    std::uint64_t split_bytes = 0;  ///< a new file after so many bytes; 0: none
    std::size_t queue_size = kQueueSize;
};

/// How far writing is.
struct DiskStatus {
    std::vector<std::string> files;    ///< that were made
    std::vector<std::string> removed;  ///< older ones that gave way
    std::uint64_t lines = 0;           ///< on the device
    std::uint64_t bytes = 0;           ///< of all files that were made
    std::size_t queued = 0;            ///< bytes of lines that are not on the device yet
    MaybeFault fault;                  ///< writing has ended
};

class DiskWriter final : public RecordSink {
 public:
    explicit DiskWriter(DiskOptions options);
    /// Ends as Stop does.
    ~DiskWriter() override;
    DiskWriter(const DiskWriter&) = delete;
    DiskWriter& operator=(const DiskWriter&) = delete;

    /// What the files that begin from now on say of themselves.
    void SetHead(recording::RecordingHead head, std::optional<recording::GraphFile> graph_file);

    void BeginFile() override;
    bool TakeLines(LineBlock block, bool is_history) override;
    void TakeEvent(const recording::Event& event) override;
    void EndFile() override;

    [[nodiscard]] DiskStatus Status() const;
    /// Bytes that may still be written; nothing when that cannot be told.
    [[nodiscard]] std::optional<std::uint64_t> FreeSpace() const;

    /// Writes all that waits and ends the thread. The file that is open is finished.
    void Stop();

 private:
    using Clock = std::chrono::steady_clock;

    struct Begin {
        recording::RecordingHead head;
        std::optional<recording::GraphFile> graph_file;
    };
    struct End {};
    using Item = std::variant<Begin, LineBlock, recording::Event, End>;

    void Push(Item item, std::size_t bytes);
    void Run();
    /// The next item; nothing when none came for a second, or when all is done.
    std::optional<Item> Next();
    void Handle(Item item);
    void HandleLines(LineBlock block);
    /// Makes the next file. False when it could not.
    bool Open();
    void Close();
    /// Takes note of what has become of the last call of the writer; goes on in a new file where
    /// older ones can make room.
    void Note(MaybeFault fault);
    /// Removes an older file where the disk is full and a limit is set.
    bool MakeRoomOnFullDisk();
    bool RemoveOldest();
    void Forget();
    void RemoveBeyondLimit();
    void ReleaseKept();
    void UpdateStatus();
    void Fail(const Fault& fault);

    const DiskOptions m_options;
    const recording::RecordingNames m_names;
    Begin m_next_head;  // of the calling thread

    mutable std::mutex m_lock;
    std::condition_variable m_wake;
    std::deque<Item> m_queue;
    DiskStatus m_status;
    bool m_is_stopping = false;

    // Of the thread.
    std::unique_ptr<recording::RecordingWriter> m_writer;
    Begin m_head;
    std::deque<LineBlock> m_unkept;
    Clock::time_point m_unkept_since;
    std::uint64_t m_kept_before = 0;   // lines of files that were closed
    std::uint64_t m_bytes_before = 0;  // bytes of them
    std::uint64_t m_others = 0;        // bytes of files of this name beside the present one

    std::thread m_thread;
};

}  // namespace wavo::recorder
