// A pool of worker processes: the queue, its threads, and when workers are started and replaced.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "workers/Pool.h"

#include "workers/Descriptor.h"
#include "workers/Protocol.h"
#include "workers/Worker.h"

#include <fcntl.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

namespace workers {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Pauses before the second and third attempt to start a worker: the machine may be out of
// processes or memory for a moment.
constexpr milliseconds kStartPauses[] = {milliseconds{20}, milliseconds{100}};
// After that no attempt is made for so long.
constexpr std::chrono::seconds kStartRest{5};
// Workers dying one after the other are replaced at once up to this number, then more slowly.
constexpr int kFreeDeaths = 5;
constexpr int kLongestPause = 50; // ms

// A cancelled generation that no task ever gets.
constexpr std::uint64_t kNeverRun = 0;

struct Entry {
    std::unique_ptr<Task> task;
    std::uint64_t generation = kNeverRun; // to be run only while this is the pool's
};

struct Slot {
    std::thread thread;
    // Changed by the slot's thread alone, under the mutex; Cancel reads it under the mutex.
    std::unique_ptr<Worker> worker;
    std::atomic<bool> cancelled{false}; // the task under way
    bool busy = false;
    int deaths = 0; // in a row
};

// The pool whose thread this is; such a thread never waits for room.
thread_local const void* ownPool = nullptr;

// The signals of the program are for its own threads.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t m_before{};
};

} // namespace

struct Pool::State {
    explicit State(PoolOptions given);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    void Serve(Slot& slot);
    bool Take(Slot& slot, Entry& entry);
    void RunEntry(Slot& slot, Task& task);
    Outcome Attempt(Slot& slot, Task& task);
    std::string EnsureWorker(Slot& slot);
    std::string StartWorker(Slot& slot);
    void Pause(Slot& slot, milliseconds time);
    void Discard(Slot& slot);
    bool MayStart(std::string& failure);
    void CancelAll();

    const PoolOptions options;
    std::mutex mutex;
    std::condition_variable work;  // something to take, or stopping
    std::condition_variable room;  // the queue became shorter
    std::condition_variable idle;  // unfinished became 0
    std::condition_variable hurry; // cancelled: pauses end
    std::deque<Entry> queue;
    std::size_t unfinished = 0;               // queued or under way
    std::uint64_t generation = kNeverRun + 1; // rises with every Cancel
    bool cancelling = false;                  // between Cancel and Resume
    bool stopping = false;
    std::string startFailure;
    steady_clock::time_point nextStart;
    std::string walls;
    std::vector<Slot> slots;
};

Pool::State::State(PoolOptions given)
    : options(std::move(given)),
      slots(static_cast<std::size_t>(
          options.workers > 0
              ? options.workers
              : std::max(1, static_cast<int>(std::thread::hardware_concurrency())))) {}

Pool::State::~State() {
    CancelAll();
    {
        const std::lock_guard lock(mutex);
        stopping = true;
    }
    work.notify_all();
    for (Slot& slot : slots)
        if (slot.thread.joinable())
            slot.thread.join();
}

void Pool::State::Serve(Slot& slot) {
    ownPool = this;
    ::pthread_setname_np(::pthread_self(), "worker pool");
    Entry entry;
    while (Take(slot, entry)) {
        RunEntry(slot, *entry.task);
        entry.task.reset();
        const std::lock_guard lock(mutex);
        slot.busy = false;
        if (--unfinished == 0)
            idle.notify_all();
    }
    Discard(slot);
}

// The next task; false when the pool goes away and none is left.
bool Pool::State::Take(Slot& slot, Entry& entry) {
    std::unique_lock lock(mutex);
    work.wait(lock, [&] { return stopping || !queue.empty(); });
    if (queue.empty())
        return false;
    entry = std::move(queue.front());
    queue.pop_front();
    slot.cancelled = entry.generation != generation;
    slot.busy = true;
    lock.unlock();
    room.notify_one();
    return true;
}

void Pool::State::RunEntry(Slot& slot, Task& task) {
    if (slot.cancelled) {
        task.OnEnd(Ending::Cancelled, {});
        return;
    }
    Outcome outcome;
    try {
        outcome = Attempt(slot, task);
    } catch (const std::exception& error) {
        outcome = {Ending::Refused, error.what(), false};
    }
    if (slot.cancelled) // the worker was killed, perhaps just after its answer
        outcome = {Ending::Cancelled, {}, false};
    if (outcome.reusable)
        slot.deaths = 0;
    else if (outcome.ending != Ending::Done && outcome.ending != Ending::Cancelled)
        ++slot.deaths;
    if (!outcome.reusable && slot.worker)
        slot.worker->Interrupt(); // buried later: the ending does not wait for it
    task.OnEnd(outcome.ending, outcome.message);
    if (!outcome.reusable)
        Discard(slot);
}

Outcome Pool::State::Attempt(Slot& slot, Task& task) {
    const bool keep = true; // the worker, if there is one, was not touched
    const Descriptor file(task.Open());
    if (!file)
        return {Ending::CannotOpen, std::strerror(errno), keep};
    // The wall does not hold a worker back from writing to what it was given open.
    if ((::fcntl(file.Get(), F_GETFL) & O_ACCMODE) != O_RDONLY)
        return {Ending::CannotOpen, "the file is not opened read-only", keep};
    const std::string role = task.Role();
    const std::string request = task.Request();
    if (std::string failure = EnsureWorker(slot); !failure.empty())
        return {Ending::Crashed, std::move(failure), keep};
    return slot.worker->Run(task, {kGreeting, role, request}, file.Get(), slot.cancelled);
}

// Makes the slot have a worker that can take a task; the answer is empty, or why it has none.
std::string Pool::State::EnsureWorker(Slot& slot) {
    if (slot.worker && slot.worker->Idle())
        return {};
    Discard(slot);
    std::string failure;
    if (!MayStart(failure))
        return failure;
    if (slot.deaths > kFreeDeaths)
        Pause(slot, milliseconds{std::min(slot.deaths - kFreeDeaths, kLongestPause)});
    failure = StartWorker(slot);
    for (const milliseconds pause : kStartPauses) {
        if (failure.empty() || slot.cancelled)
            return failure;
        Pause(slot, pause);
        failure = StartWorker(slot);
    }
    if (!failure.empty() && !slot.cancelled) {
        const std::lock_guard lock(mutex);
        startFailure = failure;
        nextStart = steady_clock::now() + kStartRest;
    }
    return failure;
}

bool Pool::State::MayStart(std::string& failure) {
    const std::lock_guard lock(mutex);
    if (startFailure.empty() || steady_clock::now() >= nextStart)
        return true;
    failure = startFailure;
    return false;
}

std::string Pool::State::StartWorker(Slot& slot) {
    std::string failure;
    try {
        auto started = std::make_unique<Worker>(options);
        {
            // From here on Cancel finds it.
            const std::lock_guard lock(mutex);
            slot.worker = std::move(started);
            if (slot.cancelled)
                slot.worker->Interrupt();
        }
        failure = slot.worker->Greet();
    } catch (const std::system_error& error) {
        failure = error.what();
    }
    if (!failure.empty()) {
        Discard(slot);
        return "the worker cannot be started: " + failure;
    }
    const std::lock_guard lock(mutex);
    startFailure.clear();
    walls = slot.worker->Walls();
    return {};
}

void Pool::State::Pause(Slot& slot, milliseconds time) {
    std::unique_lock lock(mutex);
    hurry.wait_for(lock, time, [&] { return slot.cancelled.load(); });
}

void Pool::State::Discard(Slot& slot) {
    std::unique_ptr<Worker> worker;
    const std::unique_lock lock(mutex);
    worker.swap(slot.worker);
    // The lock goes first, the worker after it: burying may take a moment.
}

void Pool::State::CancelAll() {
    const std::lock_guard lock(mutex);
    ++generation;
    cancelling = true;
    for (Slot& slot : slots) {
        if (!slot.busy)
            continue;
        slot.cancelled = true;
        if (slot.worker)
            slot.worker->Interrupt();
    }
    hurry.notify_all();
}

Pool::Pool(PoolOptions options) : m_state(std::make_unique<State>(std::move(options))) {
    const SignalsBlocked blocked;
    for (Slot& slot : m_state->slots)
        slot.thread = std::thread([state = m_state.get(), &slot] { state->Serve(slot); });
}

Pool::~Pool() = default;

void Pool::Add(std::unique_ptr<Task> task) {
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    // A Cancel while this waits for room holds for this task too.
    const std::uint64_t generation = state.cancelling ? kNeverRun : state.generation;
    if (ownPool != &state)
        state.room.wait(lock, [&] { return state.queue.size() < 2 * state.slots.size(); });
    state.queue.push_back({std::move(task), generation});
    ++state.unfinished;
    lock.unlock();
    state.work.notify_one();
}

void Pool::Wait() {
    std::unique_lock lock(m_state->mutex);
    m_state->idle.wait(lock, [&] { return m_state->unfinished == 0; });
}

void Pool::Cancel() {
    m_state->CancelAll();
}

void Pool::Resume() {
    const std::lock_guard lock(m_state->mutex);
    m_state->cancelling = false;
}

int Pool::Workers() const {
    return static_cast<int>(m_state->slots.size());
}

std::string Pool::StartFailure() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->startFailure;
}

std::string Pool::Walls() const {
    const std::lock_guard lock(m_state->mutex);
    return m_state->walls;
}

} // namespace workers
