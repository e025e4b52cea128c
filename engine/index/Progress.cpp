// Tells a handler of progress at a bearable rate.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/Progress.h"

#include "engine/IndexJob.h"
#include "platform/Names.h"

#include <chrono>
#include <thread>
#include <utility>

namespace engine {
namespace {

constexpr auto kInterval = std::chrono::milliseconds(33);
// What a handler that does not come back for a while finds waiting: no log shows more.
constexpr std::size_t kMostFiles = 2000;

} // namespace

void Progress::SetStep(int step) {
    const std::lock_guard lock(m_mutex);
    if (m_steps.empty() || m_steps.back() != step)
        m_steps.push_back(step);
}

void Progress::SetPercent(int percent) {
    const std::lock_guard lock(m_mutex);
    m_percent = percent;
}

void Progress::SetFile(std::string name, int percent) {
    const std::lock_guard lock(m_mutex);
    m_files.push_back(std::move(name));
    if (m_files.size() > kMostFiles)
        m_files.pop_front();
    m_filePercent = percent;
}

void Progress::Tell(StatusHandler& handler) {
    std::vector<int> steps;
    std::optional<int> percent;
    std::deque<std::string> files;
    int filePercent = 0;
    {
        const std::lock_guard lock(m_mutex);
        steps.swap(m_steps);
        if (m_percent != m_toldPercent)
            percent = m_toldPercent = m_percent;
        files.swap(m_files);
        filePercent = m_filePercent;
    }
    for (const int step : steps)
        handler.ReceiveStep(step);
    if (percent)
        handler.ReceiveProgress(*percent);
    if (!files.empty()) {
        QStringList names;
        for (const std::string& file : files)
            names << platform::DecodeName(QByteArray::fromStdString(file));
        handler.ReceiveFiles(names, filePercent);
    }
    if (handler.CheckForAbort())
        m_aborted = true;
}

void Progress::Run(const std::function<void()>& work, StatusHandler* handler) {
    // A person may have stopped the job before it could begin.
    if (handler != nullptr)
        Tell(*handler);
    std::thread worker([&] {
        work();
        const std::lock_guard lock(m_mutex);
        m_finished = true;
        m_woken.notify_all();
    });
    for (bool finished = false; !finished;) {
        {
            std::unique_lock lock(m_mutex);
            finished = m_woken.wait_for(lock, kInterval, [&] { return m_finished; });
        }
        if (handler != nullptr)
            Tell(*handler);
    }
    worker.join();
}

} // namespace engine
