// Computations in parts: programs of one thread do other things in between.
//
// A function that gives Steps<T> is a coroutine: where it says `co_await Pause{}`, whoever calls
// Step() goes on, and the next Step() comes back there. Such functions wait for each other with
// `co_await`; the pauses of the inner one are those of the outer. What they take by reference has
// to stay until the end.
#pragma once

#include <coroutine>
#include <cstddef>
#include <exception>
#include <optional>
#include <utility>

namespace wavo::measure {

/// Rows of a sum or a fit between two pauses: some 0.2 ms.
inline constexpr std::size_t kRowsPerStep = 8192;

/// Shared by a computation and all those that it waits for.
struct StepsRun {
    std::coroutine_handle<> innermost;  ///< goes on next; null when all is done
    bool is_paused = false;
};

class StepsPromise {
 public:
    std::suspend_always initial_suspend() noexcept { return {}; }

    struct End {
        bool await_ready() noexcept { return false; }
        template <typename Promise>
        void await_suspend(std::coroutine_handle<Promise> ended) noexcept {
            StepsPromise& promise = ended.promise();
            promise.m_run->innermost = promise.m_caller;
        }
        void await_resume() noexcept {}
    };
    End final_suspend() noexcept { return {}; }

    void unhandled_exception() { m_fault = std::current_exception(); }
    void RethrowFault() const {
        if (m_fault) {
            std::rethrow_exception(m_fault);
        }
    }

    [[nodiscard]] StepsRun& Run() const { return *m_run; }
    void SetRun(StepsRun& run) { m_run = &run; }
    void SetCaller(std::coroutine_handle<> caller) { m_caller = caller; }

 private:
    StepsRun* m_run = nullptr;
    std::coroutine_handle<> m_caller;
    std::exception_ptr m_fault;
};

struct Pause {
    bool await_ready() noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> paused) noexcept {
        paused.promise().Run().is_paused = true;
    }
    void await_resume() noexcept {}
};

template <typename T>
class [[nodiscard]] Steps {
 public:
    struct promise_type : StepsPromise {
        std::optional<T> result;

        Steps get_return_object() {
            return Steps(std::coroutine_handle<promise_type>::from_promise(*this));
        }
        void return_value(T value) { result = std::move(value); }
    };

    // Only of what has not begun: those that wait for each other know where the outermost is.
    Steps(Steps&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Steps& operator=(Steps&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        m_run = {};
        return *this;
    }
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;
    ~Steps() {
        if (m_handle) {
            m_handle.destroy();
        }
    }

    /// Computes up to the next pause; false when all is done. Throws what the computation throws.
    bool Step() {
        if (!m_run.innermost && !m_handle.done()) {
            m_handle.promise().SetRun(m_run);
            m_run.innermost = m_handle;
        }
        m_run.is_paused = false;
        while (m_run.innermost && !m_run.is_paused) {
            m_run.innermost.resume();
        }
        if (m_handle.done()) {
            m_handle.promise().RethrowFault();
        }
        return !m_handle.done();
    }

    /// REQUIRES: Step() gave false.
    [[nodiscard]] T& Result() { return *m_handle.promise().result; }

    /// All in one go.
    T Compute() {
        while (Step()) {
        }
        return std::move(Result());
    }

    // As what another one waits for.
    bool await_ready() noexcept { return false; }
    template <typename Promise>
    void await_suspend(std::coroutine_handle<Promise> caller) noexcept {
        StepsRun& run = caller.promise().Run();
        m_handle.promise().SetRun(run);
        m_handle.promise().SetCaller(caller);
        run.innermost = m_handle;
    }
    T await_resume() {
        m_handle.promise().RethrowFault();
        return std::move(Result());
    }

 private:
    explicit Steps(std::coroutine_handle<promise_type> handle) : m_handle(handle) {}

    std::coroutine_handle<promise_type> m_handle;
    StepsRun m_run;  ///< of the outermost
};

}  // namespace wavo::measure
