// Asks a disk in a thread of its own: a share whose server is silent must not freeze the program.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <future>
#include <thread>
#include <utility>

namespace velmora {

// Runs the work in a thread that nobody waits for: letting go of the answer costs no time, however
// long the work still takes. It must therefore own all that it uses.
//   auto answer = RunAside([path] { return platform::IsFile(path); });
//   if (answer.wait_for(2s) == std::future_status::ready) Use(answer.get());
template <class Work> auto RunAside(Work work) {
    std::packaged_task<std::invoke_result_t<Work>()> task(std::move(work));
    auto answer = task.get_future();
    std::thread(std::move(task)).detach();
    return answer;
}

} // namespace velmora
