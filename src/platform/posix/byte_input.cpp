#include "platform/byte_input.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/last_error.h"
#include "platform/posix/descriptor.h"

namespace wavo::platform {

namespace {

bool IsReadable(int descriptor) noexcept {
    pollfd polled{descriptor, POLLIN, 0};
    return ::poll(&polled, 1, 0) > 0;
}

/// Until one of them is readable; those below zero are not looked at.
void WaitFor(std::array<int, 3> descriptors, std::chrono::milliseconds timeout) noexcept {
    std::array<pollfd, 3> polled{};
    for (std::size_t i = 0; i < polled.size(); ++i) {
        polled[i] = {descriptors[i], POLLIN, 0};
    }
    ::poll(polled.data(), polled.size(), static_cast<int>(timeout.count()));
}

class StandardInputBytes final : public ByteInput {
 public:
    InputPart Read(char* data, std::size_t size) override {
        // Asked before each read, because others may share the descriptor and want it to block.
        if (m_ended || !IsReadable(STDIN_FILENO)) {
            return {m_ended ? InputEvent::kEnded : InputEvent::kNothing};
        }
        const ssize_t count = ::read(STDIN_FILENO, data, size);
        if (count > 0) {
            return {InputEvent::kData, static_cast<std::size_t>(count)};
        }
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            return {};
        }
        m_ended = true;
        return {InputEvent::kEnded};
    }

    void Wait(std::chrono::milliseconds timeout, int other) override {
        WaitFor({m_ended ? -1 : STDIN_FILENO, other, -1}, timeout);
    }

    [[nodiscard]] std::uint16_t port() const override { return 0; }

 private:
    bool m_ended = false;
};

class ClientBytes final : public ByteInput {
 public:
    bool Open(std::uint16_t port, std::string* error) {
        m_listener = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        const int yes = 1;
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        if (!m_listener ||
            ::setsockopt(m_listener.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
            ::bind(m_listener.number(), reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
            ::listen(m_listener.number(), SOMAXCONN) != 0 ||
            ::getsockname(m_listener.number(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
            *error = "cannot listen on port " + std::to_string(port) + ": " + ErrorText(errno);
            return false;
        }
        m_port = ntohs(address.sin_port);
        return true;
    }

    InputPart Read(char* data, std::size_t size) override {
        if (!m_client) {
            m_client = Accept();
            return {m_client ? InputEvent::kCame : InputEvent::kNothing};
        }
        const ssize_t count = ::recv(m_client.number(), data, size, MSG_DONTWAIT);
        if (count > 0) {
            return {InputEvent::kData, static_cast<std::size_t>(count)};
        }
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            return {Accept() ? InputEvent::kRefused : InputEvent::kNothing};
        }
        m_client.Close();
        return {InputEvent::kLeft};
    }

    void Wait(std::chrono::milliseconds timeout, int other) override {
        WaitFor({m_client.number(), m_listener.number(), other}, timeout);
    }

    [[nodiscard]] std::uint16_t port() const override { return m_port; }

 private:
    [[nodiscard]] Descriptor Accept() const {
        return Descriptor(
            ::accept4(m_listener.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    }

    Descriptor m_listener;
    Descriptor m_client;
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
