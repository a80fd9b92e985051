// A window and its connections by hand: slow to accept, or writing what no window would.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/message_packet.h"

namespace wavo::testing {

/// One end of a connection; the waits are 20 seconds at most.
class RawConnection {
 public:
    /// Connects to a window.
    explicit RawConnection(platform::WindowHandle window);
    explicit RawConnection(platform::Descriptor socket) : m_socket(std::move(socket)) {}

    explicit operator bool() const { return static_cast<bool>(m_socket); }
    bool Write(const void* data, std::size_t size) const;
    bool Write(const platform::MessagePacket& packet) const { return Write(&packet, 40); }
    /// Waits for a packet; nothing when the connection ends instead.
    std::optional<platform::MessagePacket> Read() const;
    /// Reads until the other side closes; false when it does not.
    bool WaitForEnd() const;

 private:
    platform::Descriptor m_socket;
};

platform::MessagePacket Hello(platform::WindowHandle window);
platform::MessagePacket Packet(platform::PacketKind kind, const platform::Message& message,
                               std::uint64_t sequence = 0);

/// A listening socket under a number, which accepts nobody by itself.
class RawWindow {
 public:
    RawWindow();
    /// Its name is removed.
    ~RawWindow();
    RawWindow(const RawWindow&) = delete;
    RawWindow& operator=(const RawWindow&) = delete;

    [[nodiscard]] platform::WindowHandle handle() const { return m_handle; }
    /// Of its socket.
    [[nodiscard]] std::string path() const { return m_folder + "/" + std::to_string(m_handle); }

    /// From now on it is too busy to take a connection.
    void BeBusy();
    /// It has come to the connections that waited, and may take others.
    void BeBusyNoMore();
    /// Waits for a connection whose maker says something, and takes it.
    RawConnection Accept();
    /// The process died: nobody listens, but the name is there.
    void Die() { m_listener.Close(); }

 private:
    std::string m_folder;
    platform::WindowHandle m_handle = 0;
    platform::Descriptor m_listener;
    std::vector<platform::Descriptor> m_waiting;
};

}  // namespace wavo::testing
