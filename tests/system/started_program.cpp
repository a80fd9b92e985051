// What is the same on all systems.
#include "system/started_program.h"

#include <chrono>
#include <thread>

namespace wavo::testing {

namespace {

constexpr std::chrono::milliseconds kPause{5};

}  // namespace

int StartedProgram::Wait() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!HasEnded()) {
        if (std::chrono::steady_clock::now() > end) {
            return -1;
        }
        std::this_thread::sleep_for(kPause);
    }
    return ExitStatus();
}

bool StartedProgram::Feed(std::string_view text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (true) {
        text.remove_prefix(FeedSome(text));
        if (text.empty() || HasEnded() || std::chrono::steady_clock::now() > end) {
            return text.empty();
        }
        std::this_thread::sleep_for(kPause);
    }
}

std::string StartedProgram::Output() {
    Collect();
    return m_output;
}

std::string StartedProgram::Errors() {
    Collect();
    return m_errors;
}

bool StartedProgram::WaitForOutput(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (Output().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > end || HasEnded()) {
            return Output().find(text) != std::string::npos;
        }
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

}  // namespace wavo::testing
