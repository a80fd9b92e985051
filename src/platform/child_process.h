// A program that ends with this one, however this one ends.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace wavo::platform {

/// It has no input; what it says on its standard streams is read here. No file of this process is
/// handed on to it. POSIX: the thread that starts it must live as long as the process.
class ChildProcess {
 public:
    /// Starts `program` (its path). Null when it could not be started, and the reason in words in
    /// `*error`.
    static std::unique_ptr<ChildProcess> Start(const std::string& program,
                                               const std::vector<std::string>& arguments,
                                               std::string* error);

    /// Asks it to end and waits for that; one that takes longer than two seconds is ended.
    virtual ~ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// False once it has ended.
    [[nodiscard]] virtual bool IsRunning() = 0;

    /// The next line that it says, without its end; what there is of it when the program ends or
    /// `timeout` is over.
    virtual std::string ReadLine(std::chrono::milliseconds timeout) = 0;
    /// Throws away what it has said; one that nobody reads would wait for a reader. Never waits.
    virtual void SkipOutput() = 0;

 protected:
    ChildProcess() = default;
};

}  // namespace wavo::platform
