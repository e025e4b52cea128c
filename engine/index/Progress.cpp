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
    m_file = std::move(name);
    m_filePercent = percent;
    m_newFile = true;
}

void Progress::Tell(StatusHandler& handler) {
    std::vector<int> steps;
    std::optional<int> percent;
    std::optional<std::string> file;
    int filePercent = 0;
    {
        const std::lock_guard lock(m_mutex);
        steps.swap(m_steps);
        if (m_percent != m_toldPercent)
            percent = m_toldPercent = m_percent;
        if (std::exchange(m_newFile, false))
            file = m_file;
        filePercent = m_filePercent;
    }
    for (const int step : steps)
        handler.ReceiveStep(step);
    if (percent)
        handler.ReceiveProgress(*percent);
    if (file)
        handler.ReceiveFileInfo(platform::DecodeName(QByteArray::fromStdString(*file)), filePercent);
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
