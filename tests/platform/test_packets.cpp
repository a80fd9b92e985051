// What a window makes of the packets that somebody writes to its socket by hand.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "packet_fixture.h"

namespace wavo::platform {

using testing::PacketTest;

namespace {

TEST_F(PacketTest, ASendWrittenByHandIsAnsweredWithItsNumber) {
    const Descriptor socket = Connect();
    MessagePacket send = Packet(PacketKind::kSend, 0x52D);
    send.sequence = 0x123456789;
    send.w_param = 17;
    send.l_param = -4;
    Write(socket, Packet(PacketKind::kHello));
    Write(socket, send);
    DispatchAll();
    ASSERT_EQ(m_seen.size(), 1U);
    EXPECT_EQ(m_seen[0], (Message{0x52D, 17, -4}));
    MessagePacket reply;
    ASSERT_EQ(::recv(socket.number(), &reply, sizeof reply, 0), 40);
    EXPECT_EQ(reply.magic, kPacketMagic);
    EXPECT_EQ(std::memcmp(&reply, "WAVO\1\0\4\0", 8), 0);
    EXPECT_EQ(reply.kind, PacketKind::kReply);
    EXPECT_EQ(reply.sequence, 0x123456789U);
    EXPECT_EQ(reply.l_param, 0x52D + 1000);
}

TEST_F(PacketTest, PacketsOfAnotherSizeEndTheConnection) {
    for (const std::size_t size : {1, 8, 39, 41, 80, 5000}) {
        for (const bool greeted : {false, true}) {
            const Descriptor socket = Connect();
            if (greeted) {
                Write(socket, Packet(PacketKind::kHello));
            }
            std::vector<char> bytes(size, 'x');
            const MessagePacket packet = Packet(PacketKind::kPost, 9);
            std::memcpy(bytes.data(), &packet, std::min(size, sizeof packet));
            ASSERT_TRUE(Write(socket, bytes.data(), bytes.size()));
            DispatchAll();
            EXPECT_TRUE(IsClosed(socket)) << size;
            EXPECT_TRUE(m_seen.empty());
        }
    }
    ExpectWorks();
}

TEST_F(PacketTest, AnotherMagicOrVersionEndsTheConnection) {
    MessagePacket hello = Packet(PacketKind::kHello);
    hello.magic ^= 1;
    ExpectRefused({hello});
    hello = Packet(PacketKind::kHello);
    hello.version = 2;
    ExpectRefused({hello});
    MessagePacket post = Packet(PacketKind::kPost, 1);
    post.magic = 0;
    ExpectRefused({Packet(PacketKind::kHello), post});
}

TEST_F(PacketTest, UnexpectedKindsEndTheConnection) {
    ExpectRefused({Packet(PacketKind::kPost, 1)});
    ExpectRefused({Packet(PacketKind::kSend, 1)});
    ExpectRefused({Packet(PacketKind::kReply)});
    ExpectRefused({Packet(PacketKind::kHello), Packet(PacketKind::kHello)});
    ExpectRefused({Packet(PacketKind::kHello), Packet(PacketKind::kReply)});
    ExpectRefused({Packet(PacketKind::kHello), Packet(static_cast<PacketKind>(0), 1)});
    ExpectRefused({Packet(PacketKind::kHello), Packet(static_cast<PacketKind>(5), 1)});
}

TEST_F(PacketTest, AHelloWithoutAWindowEndsTheConnection) {
    MessagePacket hello = Packet(PacketKind::kHello);
    hello.w_param = 0;
    ExpectRefused({hello});
    hello.w_param = std::uint64_t{1} << 31;
    ExpectRefused({hello});
}

TEST_F(PacketTest, WhatCameBeforeTheGarbageIsHandled) {
    const Descriptor socket = Connect();
    Write(socket, Packet(PacketKind::kHello));
    Write(socket, Packet(PacketKind::kPost, 1));
    Write(socket, "garbage", 7);
    Write(socket, Packet(PacketKind::kPost, 2));
    DispatchAll();
    ASSERT_EQ(m_seen.size(), 1U);
    EXPECT_EQ(m_seen[0].number, 1U);
}

TEST_F(PacketTest, SilentConnectionsComeAndGo) {
    for (int i = 0; i < 300; ++i) {
        const Descriptor silent = Connect();
        if (i % 3 == 0) {
            DispatchAll();
        }
    }
    std::vector<Descriptor> staying;
    for (int i = 0; i < 50; ++i) {
        staying.push_back(Connect());
    }
    DispatchAll();
    ExpectWorks();
    DispatchAll();
    for (const Descriptor& socket : staying) {
        EXPECT_FALSE(IsClosed(socket));
    }
}

TEST_F(PacketTest, OfManySilentConnectionsTheOldestAreClosed) {
    const Descriptor greeted = Connect();
    Write(greeted, Packet(PacketKind::kHello));
    DispatchAll();
    std::vector<Descriptor> silent;
    for (int i = 0; i < 100; ++i) {
        silent.push_back(Connect());
        DispatchAll();
    }
    for (std::size_t i = 0; i < silent.size(); ++i) {
        EXPECT_EQ(IsClosed(silent[i]), i < 36) << i;
    }
    EXPECT_FALSE(IsClosed(greeted));
    ExpectWorks();
}

TEST_F(PacketTest, AskingWhetherAWindowExistsDoesNotDisturbIt) {
    WindowHandle handle = m_window->handle();
    // From another thread's view the answer is the same; from another process it is a connection.
    EXPECT_TRUE(WindowExists(handle));
    ExpectWorks();
}

TEST_F(PacketTest, ASenderThatReadsNoRepliesLosesItsConnection) {
    const Descriptor socket = Connect();
    Write(socket, Packet(PacketKind::kHello));
    int sent = 0;
    bool alive = true;
    while (alive && sent < 100000) {
        alive = Write(socket, Packet(PacketKind::kSend, 1));
        ++sent;
        m_window->Dispatch();
    }
    EXPECT_FALSE(alive);
    ExpectWorks();
}

TEST_F(PacketTest, ThePostAfterASendOfAPeerThatHasClosedIsHandled) {
    Descriptor socket = Connect();
    Write(socket, Packet(PacketKind::kHello));
    Write(socket, Packet(PacketKind::kSend, 1));
    Write(socket, Packet(PacketKind::kPost, 2));
    socket.Close();
    DispatchAll();
    ASSERT_EQ(m_seen.size(), 2U);
    EXPECT_EQ(m_seen[0].number, 1U);
    EXPECT_EQ(m_seen[1].number, 2U);
}

TEST_F(PacketTest, APeerThatAnswersGarbageCountsAsGone) {
    // A window by hand: it listens under a number and answers with what is no reply.
    const Descriptor listener(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const sockaddr_un address = AddressOf(123);
    ASSERT_EQ(
        ::bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener.number(), 5), 0);
    std::vector<WindowHandle> gone;
    m_window->SetPeerGoneHandler([&](WindowHandle handle) { gone.push_back(handle); });

    for (const bool right_size : {false, true}) {
        std::thread peer([&] {
            const Descriptor socket(::accept(listener.number(), nullptr, nullptr));
            MessagePacket packet;
            EXPECT_EQ(::recv(socket.number(), &packet, sizeof packet, 0), 40);
            EXPECT_EQ(packet.kind, PacketKind::kHello);
            EXPECT_EQ(packet.w_param, m_window->handle());
            EXPECT_EQ(::recv(socket.number(), &packet, sizeof packet, 0), 40);
            EXPECT_EQ(packet.kind, PacketKind::kSend);
            Write(socket, &packet, right_size ? 40 : 10);
            ::recv(socket.number(), &packet, sizeof packet, 0);
        });
        EXPECT_EQ(m_window->Send(123, {1}).status, SendStatus::kGone);
        peer.join();
        m_window->Dispatch();
    }
    EXPECT_EQ(gone, (std::vector<WindowHandle>{123, 123}));
}

/// A window by hand, which lets everybody wait.
class Listener {
 public:
    explicit Listener(const sockaddr_un& address)
        : m_socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
        EXPECT_EQ(
            ::bind(m_socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        EXPECT_EQ(::listen(m_socket.number(), 5), 0);
    }

 private:
    Descriptor m_socket;
};

TEST_F(PacketTest, APeerThatWroteGarbageIsToldOfBehindItsMessages) {
    const Listener listener(AddressOf(4711));
    std::vector<std::string> told;
    m_window->SetPeerRefusedHandler([&](WindowHandle peer, const char* why) {
        told.push_back(std::to_string(peer) + " after " + std::to_string(m_seen.size()) + ": " +
                       why);
    });
    const auto write = [&](const std::vector<MessagePacket>& packets, std::size_t last_size = 40) {
        const Descriptor socket = Connect();
        for (const MessagePacket& packet : packets) {
            const bool is_last = &packet == &packets.back();
            ASSERT_TRUE(Write(socket, &packet, is_last ? last_size : sizeof packet));
        }
        DispatchAll();
    };
    const MessagePacket hello = Packet(PacketKind::kHello);
    // Nobody that this window talks to: there is nobody to tell of.
    write({hello, Packet(PacketKind::kReply)});
    EXPECT_EQ(told, std::vector<std::string>{});
    ASSERT_TRUE(m_window->Post(4711, {1}));
    MessagePacket head = hello;
    head.version = 2;
    MessagePacket nobody = hello;
    nobody.w_param = 0;
    write({hello, Packet(PacketKind::kPost, 1), Packet(PacketKind::kPost, 2), hello});
    write({hello, Packet(PacketKind::kReply)});
    write({hello, Packet(static_cast<PacketKind>(9))});
    write({hello, Packet(PacketKind::kPost)}, 39);
    // Without a true hello it is known by its process.
    write({Packet(PacketKind::kPost)});
    write({head});
    write({nobody});
    EXPECT_EQ(told, (std::vector<std::string>{
                        "4711 after 2: a second hello",
                        "4711 after 2: a reply to nothing that was sent there",
                        "4711 after 2: a packet of unknown kind",
                        "4711 after 2: a packet that is not 40 bytes long",
                        "4711 after 2: a first packet that is no hello",
                        "4711 after 2: a packet of another magic or version",
                        "4711 after 2: a hello with a number that no window has",
                    }));
    // Who closes or says nothing has done nothing wrong.
    told.clear();
    write({hello, Packet(PacketKind::kPost, 3)});
    { const Descriptor silent = Connect(); }
    DispatchAll();
    EXPECT_EQ(told, std::vector<std::string>{});
    EXPECT_EQ(m_seen.size(), 3U);
}

TEST_F(PacketTest, AFloodOfGarbageIsToldOnceAtATime) {
    const Listener listener(AddressOf(4711));
    ASSERT_TRUE(m_window->Post(4711, {1}));
    int told = 0;
    m_window->SetPeerRefusedHandler([&](WindowHandle, const char*) { ++told; });
    std::vector<Descriptor> sockets;
    for (int i = 0; i < 30; ++i) {
        sockets.push_back(Connect());
        Write(sockets.back(), Packet(PacketKind::kReply));
    }
    DispatchAll();
    EXPECT_EQ(told, 1);
    ExpectWorks();
}

TEST_F(PacketTest, AReplyWithAnotherNumberIsDropped) {
    const Descriptor listener(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const sockaddr_un address = AddressOf(123);
    ASSERT_EQ(
        ::bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(listener.number(), 5), 0);
    std::thread peer([&] {
        const Descriptor socket(::accept(listener.number(), nullptr, nullptr));
        MessagePacket packet;
        ::recv(socket.number(), &packet, sizeof packet, 0);
        ::recv(socket.number(), &packet, sizeof packet, 0);
        MessagePacket reply = Packet(PacketKind::kReply);
        for (const std::uint64_t distance : {100U, 1U, 0U}) {
            reply.sequence = packet.sequence - distance;
            reply.l_param = static_cast<std::int64_t>(distance) + 5;
            Write(socket, reply);
        }
        // Gone with the reply still unread: the reply counts.
    });
    const SendResult result = m_window->Send(123, {1});
    peer.join();
    EXPECT_EQ(result.status, SendStatus::kDone);
    EXPECT_EQ(result.result, 5);
}

}  // namespace

}  // namespace wavo::platform
