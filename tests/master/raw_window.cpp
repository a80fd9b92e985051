#include "raw_window.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "platform/posix/packet_socket.h"
#include "platform/posix/window_folder.h"

namespace wavo::testing {

namespace {

using platform::Descriptor;
using platform::MessagePacket;
using platform::PacketKind;

std::string Folder() {
    std::string error;
    std::string folder = platform::WindowFolder(&error);
    EXPECT_FALSE(folder.empty()) << error;
    return folder;
}

bool WaitFor(const Descriptor& socket) {
    pollfd polled{socket.number(), POLLIN, 0};
    return ::poll(&polled, 1, 20000) == 1;
}

}  // namespace

RawConnection::RawConnection(platform::WindowHandle window)
    : m_socket(platform::ConnectToWindow(Folder(), window)) {
    EXPECT_TRUE(m_socket) << std::strerror(errno);
}

bool RawConnection::Write(const void* data, std::size_t size) const {
    return ::send(m_socket.number(), data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
}

std::optional<MessagePacket> RawConnection::Read() const {
    MessagePacket packet;
    if (!WaitFor(m_socket) ||
        platform::ReadPacket(m_socket.number(), &packet) != platform::ReadStatus::kPacket) {
        return std::nullopt;
    }
    return packet;
}

bool RawConnection::WaitForEnd() const {
    MessagePacket packet;
    platform::ReadStatus status = platform::ReadStatus::kPacket;
    while (status == platform::ReadStatus::kPacket && WaitFor(m_socket)) {
        status = platform::ReadPacket(m_socket.number(), &packet);
    }
    return status == platform::ReadStatus::kEnded;
}

MessagePacket Hello(platform::WindowHandle window) {
    MessagePacket packet;
    packet.w_param = window;
    return packet;
}

MessagePacket Packet(PacketKind kind, const platform::Message& message, std::uint64_t sequence) {
    return platform::PacketOf(kind, sequence, message);
}

RawWindow::RawWindow()
    : m_folder(Folder()),
      m_listener(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_handle = 4000;
    do {
        ++m_handle;
        std::memcpy(address.sun_path, path().c_str(), path().size());
    } while (::bind(m_listener.number(), reinterpret_cast<const sockaddr*>(&address),
                    sizeof address) != 0 &&
             errno == EADDRINUSE);
    EXPECT_EQ(::listen(m_listener.number(), 3), 0);
}

RawWindow::~RawWindow() {
    platform::RemoveWindowName(m_folder, m_handle);
}

void RawWindow::BeBusy() {
    while (Descriptor socket = platform::ConnectToWindow(m_folder, m_handle)) {
        m_waiting.push_back(std::move(socket));
    }
    EXPECT_EQ(errno, EAGAIN);
}

void RawWindow::BeBusyNoMore() {
    for (std::size_t i = 0; i < m_waiting.size(); ++i) {
        const Descriptor taken(::accept(m_listener.number(), nullptr, nullptr));
        EXPECT_TRUE(taken);
    }
    m_waiting.clear();
}

RawConnection RawWindow::Accept() {
    while (WaitFor(m_listener)) {
        Descriptor socket(
            ::accept4(m_listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        char byte = 0;
        // Who only asks whether the window exists closes without a word.
        if (WaitFor(socket) && ::recv(socket.number(), &byte, 1, MSG_PEEK) == 1) {
            return RawConnection(std::move(socket));
        }
    }
    ADD_FAILURE() << "nobody connects";
    return RawConnection(Descriptor());
}

}  // namespace wavo::testing
