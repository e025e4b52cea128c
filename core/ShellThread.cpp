// Runs file work in a thread and carries its progress and questions over to the interface thread.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/ShellThread.h"

#include "core/Events.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace velmora {

namespace {

constexpr std::chrono::milliseconds kTurn(30);

// Stands between the two threads. The worker calls the CarryObserver's functions.
class Bridge : public platform::CarryObserver {
  public:
    explicit Bridge(ShellView* view) : m_view(view) {}

    bool ShowProgress(const platform::CarryProgress& progress) override {
        const std::lock_guard lock(m_mutex);
        m_progress = progress;
        return !m_cancelled;
    }
    platform::ConflictAnswer AskConflict(const platform::Conflict& conflict) override {
        platform::ConflictAnswer answer;
        Ask([&] { answer = m_view->AskConflict(conflict); });
        return answer;
    }
    platform::ProblemAnswer AskProblem(const platform::Problem& problem) override {
        platform::ProblemAnswer answer;
        Ask([&] { answer = m_view->AskProblem(problem); });
        return answer;
    }

    void WorkIsOver() {
        const std::lock_guard lock(m_mutex);
        m_over = true;
        m_wake.notify_all();
    }

    // Interface thread: waits a turn at most, answers a question. False when the work is over.
    bool Turn() {
        std::unique_lock lock(m_mutex);
        m_wake.wait_for(lock, kTurn, [&] { return m_over || m_question; });
        const auto progress = std::exchange(m_progress, std::nullopt);
        const std::function<void()>* question = m_question;
        const bool over = m_over;
        lock.unlock();
        if (m_view && progress) {
            m_view->ShowProgress(*progress);
        }
        if (question) {
            (*question)();
            Answered();
        }
        if (m_view && m_view->IsCancelled()) {
            Cancel();
        }
        return !over;
    }

    // A question under way and all later ones are answered with Cancel.
    void Cancel() {
        const std::lock_guard lock(m_mutex);
        m_cancelled = true;
        m_question = nullptr;
        m_wake.notify_all();
    }

  private:
    // Worker: has the question put in the interface thread.
    void Ask(const std::function<void()>& question) {
        std::unique_lock lock(m_mutex);
        if (!m_view || m_cancelled) {
            return;
        }
        m_question = &question;
        m_wake.notify_all();
        m_wake.wait(lock, [&] { return !m_question; });
    }
    void Answered() {
        const std::lock_guard lock(m_mutex);
        m_question = nullptr;
        m_wake.notify_all();
    }

    ShellView* m_view;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::optional<platform::CarryProgress> m_progress;
    const std::function<void()>* m_question = nullptr; // of the worker, which waits for it
    bool m_cancelled = false;
    bool m_over = false;
};

// Ends the thread whatever happens on this side.
class Worker {
  public:
    Worker(Bridge& bridge, const std::function<void()>& work) : m_bridge(bridge), m_thread(work) {}
    ~Worker() {
        m_bridge.Cancel();
        m_thread.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

  private:
    Bridge& m_bridge;
    std::thread m_thread;
};

} // namespace

void RunShellWork(const ShellWorkFunction& work, ShellView* view, platform::CarryResult& result) {
    Bridge bridge(view);
    std::exception_ptr failure;
    {
        const Worker worker(bridge, [&] {
            try {
                work(bridge, result);
            } catch (...) {
                failure = std::current_exception();
            }
            bridge.WorkIsOver();
        });
        while (bridge.Turn()) {
            YieldToEvents();
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace velmora
