// A TCP client on this computer.
#pragma once

#include <memory>
#include <string_view>

namespace wavo::testing {

class ClientSocket {
 public:
    explicit ClientSocket(int port);
    ~ClientSocket();
    ClientSocket(const ClientSocket&) = delete;
    ClientSocket& operator=(const ClientSocket&) = delete;

    bool Write(std::string_view text);
    /// Waits until the other side has closed the connection, at most 20 seconds.
    bool WaitForEnd();

 private:
    struct System;
    const std::unique_ptr<System> m_system;
};

}  // namespace wavo::testing
