// Any packets at the socket of a message window: each is a message or ends its connection, and the
// window answers an honest neighbour afterwards.
//
// Input: packets, each behind a byte with its size.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/message_packet.h"

namespace wavo::platform {
namespace {

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// The folder of the windows, its own for each fuzzer; removed at the end of the process.
class Folder {
 public:
    Folder() {
        std::string pattern = std::filesystem::temp_directory_path() / "wavo-fuzz-XXXXXX";
        Require(::mkdtemp(pattern.data()) != nullptr);
        m_path = pattern;
        ::setenv("XDG_RUNTIME_DIR", m_path.c_str(), 1);
    }
    ~Folder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    [[nodiscard]] const std::string& path() const { return m_path; }

 private:
    std::string m_path;
};

class Target {
 public:
    Target() {
        std::string error;
        m_window = MessageWindow::Create(
            [this](const Message&) {
                ++m_seen;
                return std::int64_t{1};
            },
            &error);
        Require(m_window != nullptr);
        m_neighbour = MessageWindow::Create(nullptr, &error);
        Require(m_neighbour != nullptr);
    }

    void Feed(std::span<const std::uint8_t> input) {
        const Descriptor socket = Connect();
        std::size_t written = 0;
        while (!input.empty()) {
            const std::size_t size = std::min<std::size_t>(input[0], input.size() - 1);
            const bool taken =
                ::send(socket.number(), &input[0] + 1, size, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
            written += taken ? 1 : 0;
            input = input.subspan(size + 1);
        }
        m_seen = 0;
        for (int i = 0; i < 20; ++i) {
            m_window->Dispatch();
        }
        Require(m_seen <= written);
        m_seen = 0;
        Require(m_neighbour->Post(m_window->handle(), {1}));
        for (int i = 0; i < 20 && m_seen == 0; ++i) {
            m_window->Dispatch();
        }
        Require(m_seen == 1);
    }

 private:
    [[nodiscard]] Descriptor Connect() const {
        Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = m_folder.path() + "/wavo/" + std::to_string(m_window->handle());
        std::memcpy(address.sun_path, path.c_str(), path.size());
        Require(::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address),
                          sizeof address) == 0);
        return socket;
    }

    const Folder m_folder;
    std::size_t m_seen = 0;
    std::unique_ptr<MessageWindow> m_window;
    std::unique_ptr<MessageWindow> m_neighbour;
};

}  // namespace
}  // namespace wavo::platform

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static wavo::platform::Target target;
    target.Feed({data, size});
    return 0;
}
