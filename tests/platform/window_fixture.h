// A folder of message windows for the tests of one process alone.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/message_window.h"
#include "support/temporary_folder.h"

namespace wavo::testing {

/// Sets an environment variable over a scope; null: not set.
class ScopedVariable {
 public:
    ScopedVariable(const char* name, const char* value) : m_name(name) {
        if (const char* old = std::getenv(name)) {
            m_old = old;
            m_was_set = true;
        }
        Set(value);
    }
    ~ScopedVariable() { Set(m_was_set ? m_old.c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
    void Set(const char* value) const {
        if (value != nullptr) {
            ::setenv(m_name, value, 1);
        } else {
            ::unsetenv(m_name);
        }
    }
    const char* m_name;
    std::string m_old;
    bool m_was_set = false;
};

class WindowTest : public ::testing::Test {
 protected:
    [[nodiscard]] std::string WindowFolderPath() const { return m_runtime.path() + "/wavo"; }

    static std::unique_ptr<platform::MessageWindow> Make(platform::MessageWindow::Handler handler) {
        std::string error;
        auto window = platform::MessageWindow::Create(std::move(handler), &error);
        EXPECT_NE(window, nullptr) << error;
        return window;
    }

    static bool IsReadable(int descriptor, int timeout_ms = 0) {
        pollfd entry{descriptor, POLLIN, 0};
        return ::poll(&entry, 1, timeout_ms) == 1;
    }

    [[nodiscard]] std::vector<std::string> NamesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(WindowFolderPath())) {
            names.push_back(entry.path().filename());
        }
        return names;
    }

 private:
    const TemporaryFolder m_runtime;
    const ScopedVariable m_variable{"XDG_RUNTIME_DIR", m_runtime.path().c_str()};
};

}  // namespace wavo::testing
