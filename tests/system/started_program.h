// A program that a test starts and talks to as a shell would.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::testing {

class StartedProgram {
 public:
    /// Starts `program` with an empty standard input that stays open; standard output is collected,
    /// standard error too, apart from it.
    StartedProgram(const std::string& program, const std::vector<std::string>& arguments);
    /// Kills the program when it still runs.
    ~StartedProgram();
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    /// Whether it has ended; does not wait.
    bool HasEnded();
    /// Asks it to end, as a service manager does (SIGTERM; a thread's WM_CLOSE on Windows), or as
    /// Ctrl-C does (SIGINT; a console event). False when that cannot be done.
    bool RequestEnd();
    bool Interrupt();
    /// Stops it at once.
    void Kill();
    /// Waits for its end, at most 30 seconds. Returns its exit status, or -1 when it still runs.
    /// POSIX: 1000 + the signal that ended it.
    int Wait();

    /// Writes to its standard input, at most 20 seconds long. False when it did not take all of it.
    bool Feed(std::string_view text);
    /// The same without waiting; returns how many bytes were taken.
    std::size_t FeedSome(std::string_view text);
    /// It gets the end of its input behind what was written.
    void CloseInput();

    /// What it has written so far.
    std::string Output();
    std::string Errors();

    /// Waits until its standard output holds `text`, at most 20 seconds.
    bool WaitForOutput(const std::string& text);

 private:
    struct System;  // the process and its pipes
    void Collect();
    int ExitStatus();

    const std::unique_ptr<System> m_system;
    bool m_ended = false;
    std::string m_output;
    std::string m_errors;
};

}  // namespace wavo::testing
