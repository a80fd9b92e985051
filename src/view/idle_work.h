// Work in parts between the events: a batch that comes meanwhile waits for some kSlice and one part
// at most.
#pragma once

#include <QObject>
#include <chrono>
#include <functional>

namespace wavo {

class IdleWork final : public QObject {
 public:
    static constexpr std::chrono::microseconds kSlice{300};

    /// `part` does a part of the work; false when there is no more. It may throw nothing.
    explicit IdleWork(std::function<bool()> part) : m_part(std::move(part)) {}

    /// There is work, from now on until `part` says that there is no more.
    void Begin();
    /// Does all of it at once.
    void Finish() const {
        while (m_part()) {
        }
    }

 private:
    void Go();

    const std::function<bool()> m_part;
    bool m_is_posted = false;
};

}  // namespace wavo
