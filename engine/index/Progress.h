// Where a job stands, passed from the thread that works to the one that shows it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace engine {

class StatusHandler;

class Progress {
  public:
    // Working thread's side.
    void SetStep(int step);
    void SetPercent(int percent);
    void SetFile(std::string name, int percent); // machine path as bytes
    [[nodiscard]] bool Aborted() const { return m_aborted; }

    // Runs work on a thread of its own; this thread tells the handler (may be null) until work
    // has returned. work must not throw.
    void Run(const std::function<void()>& work, StatusHandler* handler);

  private:
    void Tell(StatusHandler& handler);

    std::mutex m_mutex;
    std::condition_variable m_woken;
    std::vector<int> m_steps; // not yet told
    int m_percent = 0, m_toldPercent = -1;
    std::deque<std::string> m_files; // not yet told
    int m_filePercent = 0;
    bool m_finished = false;
    std::atomic<bool> m_aborted{false};
};

} // namespace engine
