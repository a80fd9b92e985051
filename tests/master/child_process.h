// A program that a test starts and talks to as a shell would.
#pragma once

#include <string>
#include <vector>

namespace wavo::testing {

class ChildProcess {
 public:
    /// Starts `program`; standard output is collected, standard error too, apart from it.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
    /// Kills the program when it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Whether it has ended; does not wait.
    bool HasEnded();
    /// Asks it to end, as a service manager does (SIGTERM) or Ctrl-C (SIGINT).
    void RequestEnd();
    void Interrupt();
    /// Stops it at once.
    void Kill();
    /// Waits for its end, at most 30 seconds. Returns its exit status, 1000 + the signal that
    /// ended it, or -1 when it still runs.
    int Wait();

    /// What it has written so far.
    std::string Output();
    std::string Errors();

    /// Waits until its standard output holds `text`, at most 20 seconds.
    bool WaitForOutput(const std::string& text);

 private:
    void Collect();

    int m_process = -1;
    int m_output_pipe = -1;
    int m_error_pipe = -1;
    bool m_ended = false;
    int m_status = 0;
    std::string m_output;
    std::string m_errors;
};

}  // namespace wavo::testing
