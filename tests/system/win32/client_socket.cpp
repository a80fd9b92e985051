#include "system/client_socket.h"

// Before windows.h:
#include <winsock2.h>

#include <gtest/gtest.h>

namespace wavo::testing {

struct ClientSocket::System {
    SOCKET socket = INVALID_SOCKET;
};

ClientSocket::ClientSocket(int port) : m_system(std::make_unique<System>()) {
    WSADATA data{};
    ::WSAStartup(MAKEWORD(2, 2), &data);
    m_system->socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = ::htons(static_cast<u_short>(port));
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    EXPECT_EQ(
        ::connect(m_system->socket, reinterpret_cast<const sockaddr*>(&address), sizeof address),
        0);
    const DWORD most = 20000;  // ms
    ::setsockopt(m_system->socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&most),
                 sizeof most);
}

ClientSocket::~ClientSocket() {
    ::closesocket(m_system->socket);
    ::WSACleanup();
}

bool ClientSocket::Write(std::string_view text) {
    return ::send(m_system->socket, text.data(), static_cast<int>(text.size()), 0) ==
           static_cast<int>(text.size());
}

bool ClientSocket::WaitForEnd() {
    char byte = 0;
    return ::recv(m_system->socket, &byte, 1, 0) == 0;
}

}  // namespace wavo::testing
