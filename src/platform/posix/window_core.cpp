#include "platform/posix/window_core.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/last_error.h"
#include "platform/posix/message_packet.h"
#include "platform/posix/packet_socket.h"
#include "platform/posix/window_folder.h"

namespace wavo::platform {

namespace {

using std::chrono::nanoseconds;

constexpr std::size_t kEventsPerWait = 32;
constexpr int kQueuedPerDispatch = 64;
/// After a handler that waited for somebody the rest of the program gets its turn.
constexpr std::chrono::milliseconds kLongestDispatch{100};
constexpr nanoseconds kLongestWait = std::chrono::hours(24 * 365);

/// The windows of this process. Used by the threads of all of them.
struct Registry {
    struct Entry {
        pid_t process;  ///< a forked process has the entries of its parent, but not its windows
        std::thread::id thread;
        std::weak_ptr<WindowCore> core;
    };
    std::mutex lock;
    std::unordered_map<WindowHandle, Entry> windows;
};

Registry& Windows() {
    // Never destroyed: windows may live longer than the statics of this file.
    static Registry& registry = *new Registry;
    return registry;
}

}  // namespace

std::shared_ptr<WindowCore> FindInThread(WindowHandle handle) {
    Registry& registry = Windows();
    const std::lock_guard guard(registry.lock);
    const auto found = registry.windows.find(handle);
    if (found == registry.windows.end() || found->second.thread != std::this_thread::get_id() ||
        found->second.process != ::getpid()) {
        return nullptr;
    }
    return found->second.core.lock();
}

bool LivesInProcess(WindowHandle handle) {
    Registry& registry = Windows();
    const std::lock_guard guard(registry.lock);
    const auto found = registry.windows.find(handle);
    return found != registry.windows.end() && found->second.process == ::getpid();
}

/// Keeps a waiting Send known to those who read replies.
class WindowCore::PendingScope {
 public:
    PendingScope(std::vector<PendingSend*>* pending, PendingSend* send) : m_pending(pending) {
        m_pending->push_back(send);
    }
    ~PendingScope() { m_pending->pop_back(); }  // Sends nest, so the last one ends first
    PendingScope(const PendingScope&) = delete;
    PendingScope& operator=(const PendingScope&) = delete;

 private:
    std::vector<PendingSend*>* const m_pending;
};

WindowCore::WindowCore(MessageWindow::Handler handler)
    : m_handler(std::move(handler)), m_last_id(kListenerId) {}

WindowCore::~WindowCore() {
    Close();
}

bool WindowCore::Open(std::string* error) {
    m_process = ::getpid();
    m_folder = WindowFolder(error);
    if (m_folder.empty()) {
        return false;
    }
    // Those who clear old files out of temporary folders leave a locked folder alone.
    m_folder_lock = Descriptor(::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (m_folder_lock) {
        ::flock(m_folder_lock.number(), LOCK_SH | LOCK_NB);
    }
    m_spare = SpareDescriptor();
    if (!m_sockets.Open(kSignalId) || !m_spare) {
        *error = "cannot watch sockets: " + ErrorText(LastError());
        return false;
    }
    m_listener = ListenAsWindow(m_folder, &m_handle, error);
    if (!m_listener) {
        return false;
    }
    if (!m_sockets.Watch(m_listener.number(), kListenerId, EPOLLIN, EPOLL_CTL_ADD)) {
        *error = "cannot watch the window's socket: " + ErrorText(LastError());
        Close();
        return false;
    }
    Registry& registry = Windows();
    const std::lock_guard guard(registry.lock);
    registry.windows[m_handle] = {m_process, std::this_thread::get_id(), weak_from_this()};
    return true;
}

void WindowCore::Close() noexcept {
    if (std::exchange(m_closed, true)) {
        return;
    }
    if (m_handle != 0) {
        Registry& registry = Windows();
        const std::lock_guard guard(registry.lock);
        registry.windows.erase(m_handle);
    }
    if (m_process != ::getpid()) {
        // In a forked process: the sockets and the name are those of the other one, which lives.
        return;
    }
    const LastErrorKeeper keep;
    if (m_handle != 0) {
        RemoveWindowName(m_folder, m_handle);
    }
    if (m_listener) {
        ::shutdown(m_listener.number(), SHUT_RDWR);
        m_listener.Close();
    }
    for (const auto& [id, connection] : m_outgoing) {
        connection->Flush();
        m_sockets.Unwatch(connection->socket().number());
        connection->Close();
    }
    for (const auto& [id, connection] : m_incoming) {
        m_sockets.Unwatch(connection->socket.number());
        ::shutdown(connection->socket.number(), SHUT_RDWR);
        connection->socket.Close();
    }
    for (PendingSend* pending : m_pending) {
        pending->gone = true;
    }
    m_outgoing.clear();
    m_targets.clear();
    m_incoming.clear();
    m_silent.clear();
    m_queue.clear();
    m_refusals.clear();
    m_vanished.clear();
}

std::int64_t WindowCore::Call(const Message& message) {
    const std::shared_ptr<WindowCore> keep = shared_from_this();
    ++m_handled;
    UpdateSignal();
    return m_handler ? m_handler(message) : 0;
}

void WindowCore::SetPeerGoneHandler(MessageWindow::PeerGone handler) {
    m_peer_gone = std::move(handler);
}

void WindowCore::SetPeerRefusedHandler(MessageWindow::PeerRefused handler) {
    m_peer_refused = std::move(handler);
}

bool WindowCore::Post(WindowHandle target, const Message& message) {
    ResumeListening();
    const Outgoing connection = ConnectionTo(target);
    if (!connection) {
        return false;
    }
    const WriteStatus status = connection->Post(PacketOf(PacketKind::kPost, 0, message));
    if (status == WriteStatus::kEnded) {
        EndOutgoing(connection);
        UpdateSignal();
    } else {
        WatchWriting(connection);
    }
    return status == WriteStatus::kWritten;
}

SendResult WindowCore::Send(WindowHandle target, const Message& message) {
    ResumeListening();
    const Clock::time_point deadline = Clock::now() + MessageWindow::kSendTimeout;
    if (const std::shared_ptr<WindowCore> local = FindInThread(target)) {
        if (local.get() != this) {
            ConnectionTo(target);  // so that its end is noticed
            UpdateSignal();
        }
        return {SendStatus::kDone, local->Call(message)};
    }
    const Outgoing connection = ConnectionTo(target);
    if (!connection) {
        const bool none = errno == ENOENT || errno == ECONNREFUSED;
        return {none ? SendStatus::kGone : SendStatus::kNoAnswer, 0};
    }
    PendingSend pending{++m_last_sequence, connection->id()};
    const PendingScope scope(&m_pending, &pending);
    if (connection->Send(PacketOf(PacketKind::kSend, pending.sequence, message)) ==
        WriteStatus::kEnded) {
        EndOutgoing(connection);
    } else {
        WatchWriting(connection);
    }
    const SendResult result = WaitForReply(connection, &pending, deadline);
    UpdateSignal();
    return result;
}

SendResult WindowCore::WaitForReply(const Outgoing& connection, PendingSend* pending,
                                    Clock::time_point deadline) {
    while (!pending->answered && !pending->gone) {
        if (!m_closed) {
            // What is queued waits for Dispatch and must not keep us awake.
            m_sockets.SetSignal(false);
        }
        Pump(deadline);
        if (!pending->answered && !pending->gone && Clock::now() >= deadline) {
            // A handler that was entered meanwhile may have taken the time; the reply may wait.
            ReadReplies(connection);
            break;
        }
    }
    if (pending->answered) {
        return {SendStatus::kDone, pending->result};
    }
    if (pending->gone) {
        return {SendStatus::kGone, 0};
    }
    // What has not left yet never will: a peer that wakes up later does not get stale requests.
    connection->Withdraw(pending->sequence);
    WatchWriting(connection);
    return {SendStatus::kNoAnswer, 0};
}

void WindowCore::Dispatch() {
    ResumeListening();
    HandleWaiting(false);
    UpdateSignal();
}

bool WindowCore::WaitAndDispatch(nanoseconds timeout) {
    ResumeListening();
    const Clock::time_point deadline =
        Clock::now() + std::clamp(timeout, nanoseconds::zero(), kLongestWait);
    const std::uint64_t before = m_handled;
    while (!m_closed && m_handled == before) {
        bool pumped = false;
        UpdateSignal();
        if (m_queue.empty() && m_vanished.empty()) {
            if (Pump(deadline) <= 0) {
                break;
            }
            pumped = true;
        }
        HandleWaiting(pumped);
    }
    UpdateSignal();
    return m_handled != before;
}

void WindowCore::HandleWaiting(bool pumped) {
    const Clock::time_point begin = Clock::now();
    for (int handled = 0; handled < kQueuedPerDispatch && !m_closed; ++handled) {
        if (!std::exchange(pumped, false)) {
            Pump(Clock::time_point::min());
        }
        QueueVanished();
        if (m_closed || m_queue.empty()) {
            return;
        }
        HandleQueued();
        if (Clock::now() - begin > kLongestDispatch) {
            return;
        }
    }
}

void WindowCore::HandleQueued() {
    const Queued item = std::move(m_queue.front());
    m_queue.pop_front();
    if (const Incoming& from = item.from) {
        --from->queued;
        if (from->paused && from->queued <= IncomingConnection::kLargestQueue / 2 && from->socket) {
            from->paused =
                !m_sockets.Watch(from->socket.number(), from->id, EPOLLIN, EPOLL_CTL_ADD);
        }
    }
    if (item.peer == 0) {
        Call(item.message);
    } else {
        TellNews(item);
    }
}

void WindowCore::TellNews(const Queued& news) {
    ++m_handled;
    UpdateSignal();
    // Copies: the handlers may set other ones.
    if (news.refused_for != nullptr) {
        m_refusals.erase(news.peer);
        if (const MessageWindow::PeerRefused peer_refused = m_peer_refused) {
            peer_refused(news.peer, news.refused_for);
        }
    } else if (const MessageWindow::PeerGone peer_gone = m_peer_gone) {
        peer_gone(news.peer);
    }
}

// A peer's last words come before the news of its end.
void WindowCore::QueueVanished() {
    for (std::size_t i = 0; i < m_vanished.size();) {
        if (HasUnread(m_vanished[i])) {
            ++i;
            continue;
        }
        m_queue.push_back({{}, nullptr, m_vanished[i], nullptr});
        m_vanished.erase(m_vanished.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

bool WindowCore::HasUnread(WindowHandle peer) const {
    return std::any_of(m_incoming.begin(), m_incoming.end(), [peer](const auto& entry) {
        const IncomingConnection& connection = *entry.second;
        if (connection.peer != peer) {
            return false;
        }
        char byte = 0;
        ssize_t size = -1;
        do {
            size = ::recv(connection.socket.number(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
        } while (size < 0 && (errno == EINTR || errno == ECONNRESET));
        return size > 0;
    });
}

int WindowCore::Pump(Clock::time_point deadline) {
    std::array<epoll_event, kEventsPerWait> events;  // NOLINT(*-member-init): filled by the call
    const int count = m_sockets.Wait(events, deadline);
    for (int i = 0; i < count && !m_closed; ++i) {
        HandleEvent(events[static_cast<std::size_t>(i)]);
    }
    return count;
}

void WindowCore::HandleEvent(const epoll_event& event) {
    const ConnectionId id = event.data.u64;  // a copy: the event is packed and not aligned
    if (id == kSignalId) {
        return;  // what it tells of is found in the queue
    }
    if (id == kListenerId) {
        Accept();
        return;
    }
    if (const auto found = m_incoming.find(id); found != m_incoming.end()) {
        const Incoming connection = found->second;
        ReadIncoming(connection);
        return;
    }
    const auto found = m_outgoing.find(id);
    if (found == m_outgoing.end()) {
        return;  // a handler ended it while this event waited its turn
    }
    const Outgoing connection = found->second;
    if ((event.events & EPOLLOUT) != 0) {
        WriteMore(connection);
    }
    if ((event.events & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0) {
        ReadReplies(connection);
    }
}

void WindowCore::UpdateSignal() noexcept {
    if (!m_closed) {
        m_sockets.SetSignal(!m_queue.empty() || !m_vanished.empty());
    }
}

}  // namespace wavo::platform
