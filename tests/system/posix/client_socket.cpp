#include "system/client_socket.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace wavo::testing {

struct ClientSocket::System {
    int socket = -1;
};

ClientSocket::ClientSocket(int port) : m_system(std::make_unique<System>()) {
    m_system->socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(
        ::connect(m_system->socket, reinterpret_cast<const sockaddr*>(&address), sizeof address),
        0);
    const timeval most{20, 0};
    ::setsockopt(m_system->socket, SOL_SOCKET, SO_RCVTIMEO, &most, sizeof most);
}

ClientSocket::~ClientSocket() {
    ::close(m_system->socket);
}

bool ClientSocket::Write(std::string_view text) {
    return ::send(m_system->socket, text.data(), text.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(text.size());
}

bool ClientSocket::WaitForEnd() {
    char byte = 0;
    return ::recv(m_system->socket, &byte, 1, 0) == 0;
}

}  // namespace wavo::testing
