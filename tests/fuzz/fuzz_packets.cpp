// Any packets at the socket of a message window: each is a message or ends its connection, and the
// window answers an honest neighbour afterwards. The same packets as replies to a message that the
// window sends: it gets its answer, or learns that the other side has gone.
//
// Input: packets, each behind a byte with its size. Among the replies, the sequence kOfTheSend
// stands for that of the message that waits.

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
#include <vector>

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
        m_listener = Descriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        const sockaddr_un address = AddressOf(kPeer);
        Require(::bind(m_listener.number(), reinterpret_cast<const sockaddr*>(&address),
                       sizeof address) == 0);
        Require(::listen(m_listener.number(), 8) == 0);
    }

    /// The window sends to a peer that has written its replies already.
    void FeedReplies(std::span<const std::uint8_t> input) {
        Require(m_window->Post(kPeer, {1}));  // connects
        Descriptor socket(::accept(m_listener.number(), nullptr, nullptr));
        Require(static_cast<bool>(socket));
        const std::uint64_t sequence = ++m_sent;
        std::vector<std::int64_t> answers;
        bool is_bad = false;
        // What fits into the socket for certain: an honest reply comes last.
        for (int i = 0; i < 50 && !input.empty(); ++i) {
            const std::size_t size = std::min<std::size_t>(input[0], input.size() - 1);
            std::vector<std::uint8_t> bytes(input.begin() + 1,
                                            input.begin() + 1 + static_cast<std::ptrdiff_t>(size));
            input = input.subspan(size + 1);
            MessagePacket packet;
            if (size == sizeof packet) {
                std::memcpy(&packet, bytes.data(), sizeof packet);
                packet.sequence = packet.sequence == kOfTheSend ? sequence : packet.sequence;
                std::memcpy(bytes.data(), &packet, sizeof packet);
            }
            if (size != sizeof packet || packet.magic != kPacketMagic ||
                packet.version != kPacketVersion || packet.kind != PacketKind::kReply) {
                is_bad = true;
            } else if (packet.sequence == sequence) {
                answers.push_back(packet.l_param);
            }
            Write(socket, bytes.data(), size);
        }
        MessagePacket honest;
        honest.kind = PacketKind::kReply;
        honest.sequence = sequence;
        honest.l_param = 815;
        answers.push_back(honest.l_param);
        Write(socket, &honest, sizeof honest);
        const SendResult result = m_window->Send(kPeer, {2});
        if (result.status == SendStatus::kDone) {
            Require(std::find(answers.begin(), answers.end(), result.result) != answers.end());
            Require(is_bad || result.result == answers.front());
        } else {
            Require(result.status == SendStatus::kGone && is_bad);
        }
        socket.Close();
        for (int i = 0; i < 20; ++i) {
            m_window->Dispatch();
        }
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
    static constexpr WindowHandle kPeer = 7;
    static constexpr std::uint64_t kOfTheSend = 7;

    static void Write(const Descriptor& socket, const void* data, std::size_t size) {
        Require(::send(socket.number(), data, size, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0);
    }

    [[nodiscard]] sockaddr_un AddressOf(WindowHandle handle) const {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = m_folder.path() + "/wavo/" + std::to_string(handle);
        std::memcpy(address.sun_path, path.c_str(), path.size());
        return address;
    }

    [[nodiscard]] Descriptor Connect() const {
        Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        const sockaddr_un address = AddressOf(m_window->handle());
        Require(::connect(socket.number(), reinterpret_cast<const sockaddr*>(&address),
                          sizeof address) == 0);
        return socket;
    }

    const Folder m_folder;
    std::size_t m_seen = 0;
    std::unique_ptr<MessageWindow> m_window;
    std::unique_ptr<MessageWindow> m_neighbour;
    Descriptor m_listener;     // of the peer that replies
    std::uint64_t m_sent = 0;  // messages that wanted a reply
};

}  // namespace
}  // namespace wavo::platform

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static wavo::platform::Target target;
    target.Feed({data, size});
    target.FeedReplies({data, size});
    return 0;
}
