// A window, and sockets that write to it by hand.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/message_packet.h"
#include "window_fixture.h"

namespace wavo::testing {

using platform::Descriptor;
using platform::Message;
using platform::MessagePacket;
using platform::MessageWindow;
using platform::PacketKind;
using platform::WindowHandle;

class PacketTest : public WindowTest {
 protected:
    void SetUp() override {
        m_window = Make([this](const Message& message) {
            m_seen.push_back(message);
            return std::int64_t{message.number} + 1000;
        });
    }

    [[nodiscard]] sockaddr_un AddressOf(WindowHandle handle) const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = WindowFolderPath() + "/" + std::to_string(handle);
        std::memcpy(address.sun_path, path.c_str(), path.size());
        return address;
    }

    [[nodiscard]] Descriptor Connect() const {
        Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        const sockaddr_un address = AddressOf(m_window->handle());
        EXPECT_EQ(
            ::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        return socket;
    }

    static MessagePacket Packet(PacketKind kind, std::uint32_t number = 0) {
        MessagePacket packet;
        packet.kind = kind;
        packet.number = number;
        packet.w_param = kind == PacketKind::kHello ? 4711 : 0;
        return packet;
    }

    static bool Write(const Descriptor& socket, const void* data, std::size_t size) {
        return ::send(socket.number(), data, size, MSG_NOSIGNAL) == static_cast<ssize_t>(size);
    }
    static bool Write(const Descriptor& socket, const MessagePacket& packet) {
        return Write(socket, &packet, sizeof packet);
    }

    /// Whether the window has closed the connection.
    static bool IsClosed(const Descriptor& socket) {
        MessagePacket packet;
        const ssize_t size = ::recv(socket.number(), &packet, sizeof packet, 0);
        return size == 0 || (size < 0 && errno == ECONNRESET);
    }

    void DispatchAll() const {
        while (IsReadable(m_window->PollDescriptor())) {
            m_window->Dispatch();
        }
    }

    /// Writes `packets` after one another; the last one is the one that must not be taken.
    void ExpectRefused(const std::vector<MessagePacket>& packets) {
        const Descriptor socket = Connect();
        for (const MessagePacket& packet : packets) {
            ASSERT_TRUE(Write(socket, packet));
        }
        DispatchAll();
        EXPECT_TRUE(IsClosed(socket));
        EXPECT_TRUE(m_seen.empty());
        ExpectWorks();
    }

    void ExpectWorks() {
        m_seen.clear();
        const Descriptor socket = Connect();
        Write(socket, Packet(PacketKind::kHello));
        Write(socket, Packet(PacketKind::kPost, 3));
        DispatchAll();
        ASSERT_EQ(m_seen.size(), 1U);
        EXPECT_EQ(m_seen[0].number, 3U);
        EXPECT_FALSE(IsClosed(socket));
        m_seen.clear();
    }

    std::vector<Message> m_seen;
    std::unique_ptr<MessageWindow> m_window;
};

}  // namespace wavo::testing
