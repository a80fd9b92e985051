// Bytes that other programs write: the standard input of this process, or what clients send that
// connect to a port of this computer, one at a time.
//
//   std::unique_ptr<ByteInput> input = ByteInput::StandardInput();
//   for (;;) {
//       const InputPart part = input->Read(buffer, sizeof buffer);
//       ...
//       if (part.event == InputEvent::kNothing) {
//           input->Wait(timeout, window.PollDescriptor());
//       }
//   }
//
// Read never waits. Invariant: what a client has sent before it left is read before kLeft.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace wavo::platform {

enum class InputEvent {
    kNothing,  ///< nothing to read now
    kData,     ///< `size` bytes, at least one
    kCame,     ///< a client has connected; its bytes follow
    kLeft,     ///< the client has gone
    kRefused,  ///< a further client was sent away, since one is there
    kEnded,    ///< no more bytes come: the writing side was closed, or reading failed
};

struct InputPart {
    InputEvent event = InputEvent::kNothing;
    std::size_t size = 0;  ///< of kData
};

class ByteInput {
 public:
    static std::unique_ptr<ByteInput> StandardInput();

    /// Listens on a port of the loopback interface; 0 takes a free one. Returns null on failure and
    /// the reason in words in `*error`.
    static std::unique_ptr<ByteInput> Listen(std::uint16_t port, std::string* error);

    virtual ~ByteInput() = default;
    ByteInput(const ByteInput&) = delete;
    ByteInput& operator=(const ByteInput&) = delete;

    /// Reads what is there, at most `size` bytes.
    virtual InputPart Read(char* data, std::size_t size) = 0;

    /// Waits until Read would give something, the descriptor `other` (-1: none) is readable, a
    /// signal was caught, on Windows also a message of this thread or a request to end came, or the
    /// time is over.
    virtual void Wait(std::chrono::milliseconds timeout, int other) = 0;

    /// The port that is listened on; 0 for the standard input.
    [[nodiscard]] virtual std::uint16_t port() const = 0;

 protected:
    ByteInput() = default;
};

}  // namespace wavo::platform
