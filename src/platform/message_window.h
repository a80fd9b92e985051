// Messages with two integer parameters between windows of any processes of one user.
//
// A MessageWindow is an address (its handle) that messages can be posted or sent to.
// Windows: a real HWND with its own window procedure. POSIX: a SOCK_SEQPACKET Unix socket in a
// folder of the user, named by the handle; see docs/master-protocol.md for the packets.
//
// Invariants:
// 1. Post never blocks. Posted messages from one sender arrive in the order of posting.
// 2. Send returns after the receiver has handled the message, or when the receiver is gone, or
//    after kSendTimeout. While it waits, messages *sent* to this window are handled (handlers can
//    therefore be entered again); posted ones wait until Dispatch.
// 3. A sent message can overtake a posted one.
// 4. A reply that comes after the timeout is dropped by its number; nothing is sent twice.
// 5. One thread: a MessageWindow is used by the thread that created it only.
// 6. Where the system's own message loop calls the handler (Windows), a posted message waits once,
//    some 10 ms, for input, painting and timers that are due.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace wavo::platform {

/// Handle of a window anywhere on the system; 0 is no window. POSIX: positive, below 2^31.
using WindowHandle = std::uint64_t;

struct Message {
    std::uint32_t number = 0;
    std::uint64_t w_param = 0;
    std::int64_t l_param = 0;

    friend bool operator==(const Message&, const Message&) = default;
};

/// Message numbers from `first` to `last`; none when `last` is below `first`.
struct MessageNumbers {
    std::uint32_t first = 1;
    std::uint32_t last = 0;

    friend bool operator==(const MessageNumbers&, const MessageNumbers&) = default;
};

enum class SendStatus {
    kDone,  ///< the receiver handled the message; the result is valid
    /// There is no such window (any more). Windows: or this program may not reach it, as that of a
    /// program with more rights; LastError() is then ERROR_ACCESS_DENIED, and stays so.
    kGone,
    kNoAnswer,  ///< the receiver did not answer in time; it may still handle the message
};

struct SendResult {
    SendStatus status = SendStatus::kGone;
    std::int64_t result = 0;
};

class MessageWindow {
 public:
    /// Handles one message and returns its result (given to the sender of a sent message).
    using Handler = std::function<std::int64_t(const Message&)>;
    /// Told the handle of a window that this one has posted or sent to and whose process ended or
    /// closed it. Called from Dispatch, once per vanishing: at once on POSIX, within some 200 ms on
    /// Windows.
    using PeerGone = std::function<void(WindowHandle)>;
    /// Told the handle of a window that this one has posted or sent to and whose process wrote to
    /// this one what is no message, and in words what that was (static storage). Its connection is
    /// closed: what it posts there gets lost. Called from Dispatch, after what came before it was
    /// handled. Never on Windows, where the system carries the messages.
    using PeerRefused = std::function<void(WindowHandle, const char*)>;

    static constexpr std::chrono::milliseconds kSendTimeout{900};

    /// Makes a window. Returns null on failure and the reason in words in `*error`. Where a system
    /// keeps messages of programs with fewer rights from a window (Windows), `from_anyone` are let
    /// through.
    static std::unique_ptr<MessageWindow> Create(Handler handler, std::string* error,
                                                 MessageNumbers from_anyone = {});

    virtual ~MessageWindow() = default;
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    [[nodiscard]] virtual WindowHandle handle() const = 0;

    virtual void SetPeerGoneHandler(PeerGone handler) = 0;
    virtual void SetPeerRefusedHandler(PeerRefused handler) = 0;

    /// Queues a message for `target`. Returns false when there is no such window, its queue is full
    /// or, on Windows, this program may not reach it; LastError() tells which.
    virtual bool Post(WindowHandle target, const Message& message) = 0;

    /// Sends a message and waits for its result (invariant 2).
    virtual SendResult Send(WindowHandle target, const Message& message) = 0;

    /// Descriptor that is readable while Dispatch has work, for the program's event loop; -1 where
    /// the system's own message loop calls the handler (Windows).
    [[nodiscard]] virtual int PollDescriptor() const = 0;

    /// Handles what has arrived, sent messages before posted ones. Bounded: after a flood it
    /// returns with PollDescriptor still readable.
    virtual void Dispatch() = 0;

    /// Waits up to `timeout` for messages and handles them: the loop of a program without an
    /// event loop. Returns false when nothing came, also as soon as a signal was caught, so that a
    /// request to end is seen at once.
    virtual bool WaitAndDispatch(std::chrono::nanoseconds timeout) = 0;

 protected:
    MessageWindow() = default;
};

/// The message windows of this user that can be found now, those of this process too, in no order;
/// Windows: of this session. One that has ended since may be among them.
std::vector<WindowHandle> MessageWindows();

/// Whether a window of this handle exists now, in any process. 0 never does.
bool WindowExists(WindowHandle handle);

}  // namespace wavo::platform
