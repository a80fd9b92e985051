// The standard input of Windows cannot be waited for when it is a pipe, and reading it blocks: a
// thread of its own reads ahead.
#include "platform/byte_input.h"

// Before windows.h:
#include <winsock2.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "platform/last_error.h"
#include "platform/win32/handle.h"
#include "platform/win32/termination.h"

namespace wavo::platform {

namespace {

constexpr std::size_t kReadAhead = 256 * 1024;  // bytes
constexpr DWORD kTimeToStop = 1000;             // ms

void WaitForInput(HANDLE input, std::chrono::milliseconds timeout) {
    std::array<HANDLE, 2> waits{input, TerminationEvent()};
    const DWORD count = waits[1] != nullptr ? 2 : 1;
    ::MsgWaitForMultipleObjectsEx(count, waits.data(), static_cast<DWORD>(timeout.count()),
                                  QS_ALLINPUT, MWMO_INPUTAVAILABLE);
}

/// What the reading thread and the reader share; it lives until both are done with it.
struct ReadAhead {
    const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
    const Handle there{::CreateEventW(nullptr, FALSE, FALSE, nullptr)};  // something can be read
    std::mutex lock;
    std::condition_variable room;
    std::string bytes;
    bool ended = false;
    bool unwanted = false;
};

DWORD WINAPI ReadInThread(void* place) {
    const std::unique_ptr<std::shared_ptr<ReadAhead>> own(
        static_cast<std::shared_ptr<ReadAhead>*>(place));
    ReadAhead& shared = **own;
    std::vector<char> buffer(kReadAhead / 4);
    for (bool more = true; more;) {
        DWORD count = 0;
        more = ::ReadFile(shared.input, buffer.data(), static_cast<DWORD>(buffer.size()), &count,
                          nullptr) != 0 &&
               count > 0;
        std::unique_lock guard(shared.lock);
        shared.bytes.append(buffer.data(), count);
        shared.ended = !more;
        ::SetEvent(shared.there.get());
        shared.room.wait(guard,
                         [&] { return shared.unwanted || shared.bytes.size() < kReadAhead; });
        more = more && !shared.unwanted;
    }
    return 0;
}

class StandardInputBytes final : public ByteInput {
 public:
    StandardInputBytes() {
        auto place = std::make_unique<std::shared_ptr<ReadAhead>>(m_shared);
        m_thread = Handle(::CreateThread(nullptr, 0, &ReadInThread, place.get(), 0, nullptr));
        if (m_thread) {
            static_cast<void>(place.release());  // the thread's
        } else {
            m_shared->ended = true;
        }
    }
    ~StandardInputBytes() override {
        {
            const std::lock_guard guard(m_shared->lock);
            m_shared->unwanted = true;
        }
        m_shared->room.notify_all();
        if (m_thread) {
            ::CancelSynchronousIo(m_thread.get());
            ::WaitForSingleObject(m_thread.get(), m_shared->ended ? kTimeToStop : 0);
        }
    }
    StandardInputBytes(const StandardInputBytes&) = delete;
    StandardInputBytes& operator=(const StandardInputBytes&) = delete;

    InputPart Read(char* data, std::size_t size) override {
        const std::lock_guard guard(m_shared->lock);
        std::string& bytes = m_shared->bytes;
        if (bytes.empty()) {
            return {m_shared->ended ? InputEvent::kEnded : InputEvent::kNothing};
        }
        const std::size_t count = std::min(size, bytes.size());
        std::memcpy(data, bytes.data(), count);
        bytes.erase(0, count);
        if (!bytes.empty() || m_shared->ended) {
            ::SetEvent(m_shared->there.get());
        }
        m_shared->room.notify_all();
        return {InputEvent::kData, count};
    }

    void Wait(std::chrono::milliseconds timeout, int /*other*/) override {
        WaitForInput(m_shared->there.get(), timeout);
    }

    [[nodiscard]] std::uint16_t port() const override { return 0; }

 private:
    const std::shared_ptr<ReadAhead> m_shared = std::make_shared<ReadAhead>();
    Handle m_thread;
};

/// A socket that is closed with its owner.
class Socket {
 public:
    Socket() = default;
    explicit Socket(SOCKET socket) noexcept : m_socket(socket) {}
    ~Socket() { Close(); }
    Socket(Socket&& other) noexcept : m_socket(std::exchange(other.m_socket, INVALID_SOCKET)) {}
    Socket& operator=(Socket&& other) noexcept {
        if (this != &other) {
            Close();
            m_socket = std::exchange(other.m_socket, INVALID_SOCKET);
        }
        return *this;
    }
    explicit operator bool() const noexcept { return m_socket != INVALID_SOCKET; }
    [[nodiscard]] SOCKET get() const noexcept { return m_socket; }
    void Close() noexcept {
        if (m_socket != INVALID_SOCKET) {
            ::closesocket(std::exchange(m_socket, INVALID_SOCKET));
        }
    }

 private:
    SOCKET m_socket = INVALID_SOCKET;
};

class ClientBytes final : public ByteInput {
 public:
    ClientBytes() = default;
    ~ClientBytes() override {
        m_client.Close();
        m_listener.Close();
        ::WSACleanup();
    }
    ClientBytes(const ClientBytes&) = delete;
    ClientBytes& operator=(const ClientBytes&) = delete;

    bool Open(std::uint16_t port, std::string* error) {
        WSADATA data{};
        ::WSAStartup(MAKEWORD(2, 2), &data);
        m_listener = Socket(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = ::htons(port);
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        int size = sizeof address;
        if (!m_listener ||
            ::bind(m_listener.get(), reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
            ::listen(m_listener.get(), SOMAXCONN) != 0 ||
            ::getsockname(m_listener.get(), reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
            ::WSAEventSelect(m_listener.get(), m_event.get(), FD_ACCEPT) != 0) {
            *error = "cannot listen on port " + std::to_string(port) + ": " +
                     ErrorText(::WSAGetLastError());
            return false;
        }
        m_port = ::ntohs(address.sin_port);
        return true;
    }

    InputPart Read(char* data, std::size_t size) override {
        if (!m_client) {
            m_client = Accept();
            return {m_client ? InputEvent::kCame : InputEvent::kNothing};
        }
        const int count = ::recv(m_client.get(), data, static_cast<int>(size), 0);
        if (count > 0) {
            return {InputEvent::kData, static_cast<std::size_t>(count)};
        }
        if (count < 0 && ::WSAGetLastError() == WSAEWOULDBLOCK) {
            return {Accept() ? InputEvent::kRefused : InputEvent::kNothing};
        }
        m_client.Close();
        return {InputEvent::kLeft};
    }

    void Wait(std::chrono::milliseconds timeout, int /*other*/) override {
        WaitForInput(m_event.get(), timeout);
    }

    [[nodiscard]] std::uint16_t port() const override { return m_port; }

 private:
    /// A socket with an event does not block.
    [[nodiscard]] Socket Accept() const {
        Socket accepted(::accept(m_listener.get(), nullptr, nullptr));
        if (accepted) {
            ::WSAEventSelect(accepted.get(), m_event.get(), FD_READ | FD_CLOSE);
        }
        return accepted;
    }

    const Handle m_event{::CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    Socket m_listener;
    Socket m_client;
    std::uint16_t m_port = 0;
};

}  // namespace

std::unique_ptr<ByteInput> ByteInput::StandardInput() {
    return std::make_unique<StandardInputBytes>();
}

std::unique_ptr<ByteInput> ByteInput::Listen(std::uint16_t port, std::string* error) {
    auto input = std::make_unique<ClientBytes>();
    if (!input->Open(port, error)) {
        return nullptr;
    }
    return input;
}

}  // namespace wavo::platform
