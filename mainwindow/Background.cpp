// Runs tasks in a pool of threads and brings their answers over.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/Background.h"

#include <QCoreApplication>
#include <QEvent>
#include <chrono>

namespace velmora {

namespace {

constexpr int kEndWaitMs = 2000;

} // namespace

void BackgroundTask::Post(std::function<void()> call) {
    const std::lock_guard lock(m_mutex);
    if (m_cancelled) {
        return;
    }
    QMetaObject::invokeMethod(
        m_receiver,
        [self = shared_from_this(), posted = std::move(call)] {
            if (!self->IsCancelled()) {
                posted();
            }
        },
        Qt::QueuedConnection);
}

void BackgroundTask::Cancel() {
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
}

bool BackgroundTask::WaitFinished(int milliseconds) {
    std::unique_lock lock(m_mutex);
    return m_end.wait_for(lock, std::chrono::milliseconds(milliseconds),
                          [this] { return m_finished; });
}

void BackgroundTask::Finish() {
    const std::lock_guard lock(m_mutex);
    m_finished = true;
    m_end.notify_all();
}

Background::Background(int threads) : m_pool(std::make_unique<QThreadPool>()) {
    m_pool->setMaxThreadCount(threads);
}

Background::~Background() {
    for (const auto& task : m_tasks) {
        if (const BackgroundTaskPtr running = task.lock()) {
            running->Cancel();
        }
    }
    m_pool->clear();
    if (!m_pool->waitForDone(kEndWaitMs)) {
        (void)m_pool.release(); // deliberate: its end would wait as long as the share is dead
    }
}

BackgroundTaskPtr Background::Run(std::function<void(BackgroundTask&)> work) {
    std::erase_if(m_tasks, [](const auto& task) { return task.expired(); });
    auto task = std::make_shared<BackgroundTask>(&m_receiver);
    m_tasks.push_back(task);
    m_pool->start([task, run = std::move(work)] {
        if (!task->IsCancelled()) {
            run(*task);
        }
        task->Finish();
    });
    return task;
}

void Background::Deliver() {
    QCoreApplication::sendPostedEvents(&m_receiver, QEvent::MetaCall);
}

} // namespace velmora
