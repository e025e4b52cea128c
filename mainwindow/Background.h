// Work on other threads whose answers arrive on the interface thread.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QObject>
#include <QThreadPool>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace velmora {

// One piece of work, shared by both sides.
class BackgroundTask : public std::enable_shared_from_this<BackgroundTask> {
  public:
    explicit BackgroundTask(QObject* receiver) : m_receiver(receiver) {}

    // The worker's side: to be asked often.
    [[nodiscard]] bool IsCancelled() const { return m_cancelled; }
    // Runs `call` on the interface thread, unless the task was cancelled until then.
    void Post(std::function<void()> call);

    // The interface's side. No posted call runs afterwards; the work ends when it next looks.
    void Cancel();
    // Whether the work ended within that time.
    [[nodiscard]] bool WaitFinished(int milliseconds);

  private:
    friend class Background;
    void Finish();

    QObject* m_receiver; // untouched once the task is cancelled
    std::atomic<bool> m_cancelled = false;
    bool m_finished = false;
    std::mutex m_mutex;
    std::condition_variable m_end;
};

using BackgroundTaskPtr = std::shared_ptr<BackgroundTask>;

// Runs tasks until its own end. A task that hangs on a dead share delays that end by two seconds at
// most; its thread is then left behind. So a task must own all that it uses.
class Background {
  public:
    explicit Background(int threads);
    ~Background();
    Background(const Background&) = delete;
    Background& operator=(const Background&) = delete;

    BackgroundTaskPtr Run(std::function<void(BackgroundTask&)> work);
    // Runs what tasks have posted until now.
    void Deliver();

  private:
    std::unique_ptr<QThreadPool> m_pool;
    QObject m_receiver;
    std::vector<std::weak_ptr<BackgroundTask>> m_tasks;
};

} // namespace velmora
