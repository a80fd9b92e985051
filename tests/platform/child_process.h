// Another process for a test: a fork that runs a function and talks with the test through pipes.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>

namespace wavo::testing {

/// One end of a pair of pipes that carry numbers.
class NumberPipe {
 public:
    NumberPipe() = default;
    NumberPipe(int in, int out, bool in_child) : m_in(in), m_out(out), m_in_child(in_child) {}

    void Put(std::uint64_t number) const;
    /// The next number. When the other end is gone, a child ends and a test fails with 0.
    std::uint64_t Get() const;  // NOLINT(modernize-use-nodiscard): also used just to wait
    void Close();

 private:
    int m_in = -1;
    int m_out = -1;
    bool m_in_child = false;
};

class ChildProcess {
 public:
    /// The child runs `body` and ends with the exit code it returns, without running destructors
    /// of statics.
    explicit ChildProcess(const std::function<int(NumberPipe&)>& body);
    /// Kills what still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] pid_t id() const { return m_id; }
    [[nodiscard]] const NumberPipe& pipe() const { return m_pipe; }

    /// Stops the child; on return it is stopped.
    void Stop() const;
    void Continue() const;
    void Signal(int number) const;
    /// Waits for the end. Returns the status as waitpid gives it.
    int Wait();

 private:
    pid_t m_id = -1;
    NumberPipe m_pipe;
};

}  // namespace wavo::testing
