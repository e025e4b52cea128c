// The pool: endings of good and bad tasks, replacement of workers, caps, and the Cancel button.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "TestPool.h"

#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <deque>
#include <stdexcept>

using namespace workers;
using namespace std::chrono_literals;

namespace {

#ifdef VELMORA_SANITIZED
constexpr bool kSanitized = true; // which end a process in ways of their own
#else
constexpr bool kSanitized = false;
#endif

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Waits for the end of any process of this user, child or not.
class ProcessEnd {
  public:
    explicit ProcessEnd(int pid) : m_handle(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))) {}
    ~ProcessEnd() { ::close(m_handle); }
    ProcessEnd(const ProcessEnd&) = delete;
    ProcessEnd& operator=(const ProcessEnd&) = delete;
    [[nodiscard]] bool Exists() const { return m_handle >= 0; }
    [[nodiscard]] bool Comes() const {
        pollfd ended{m_handle, POLLIN, 0};
        return ::poll(&ended, 1, 20'000) == 1;
    }

  private:
    int m_handle;
};

} // namespace

TEST_F(PoolTest, ThousandsOfSmallTasksGetTheirOwnAnswers) {
    options.workers = 3;
    Pool pool(options);
    EXPECT_EQ(pool.Workers(), 3);
    constexpr int kTasks = 2'000;
    std::deque<Result> results(kTasks);
    for (int i = 0; i < kTasks; ++i)
        pool.Add(MakeTask(results[static_cast<std::size_t>(i)], "echo",
                          "5 100 " + std::to_string(i % 20)));
    pool.Wait();
    for (int i = 0; i < kTasks; ++i) {
        const Result& result = results[static_cast<std::size_t>(i)];
        ASSERT_EQ(result.ending, Ending::Done) << result.message;
        ASSERT_EQ(result.ends, 1);
        ASSERT_EQ(result.pieces.size(), 6U);
        for (int piece = 0; piece < 5; ++piece)
            ASSERT_EQ(result.pieces[static_cast<std::size_t>(piece)],
                      (std::pair<int, std::string>{
                          piece, std::string(100, static_cast<char>('a' + i % 20 + piece))}));
        ASSERT_EQ(result.pieces[5], (std::pair<int, std::string>{200, "the document"}));
    }
}

TEST_F(PoolTest, LargePiecesArriveWhole) {
    Pool pool(options);
    for (const auto& [pieces, size] :
         {std::pair{40, 1'000'000}, {3, 65'536}, {2, 30'000'000}, {20, 32'760}, {200, 5'000}}) {
        const Result result =
            Run(pool, "echo", std::to_string(pieces) + " " + std::to_string(size) + " 3");
        ASSERT_EQ(result.ending, Ending::Done) << result.message;
        ASSERT_EQ(result.pieces.size(), static_cast<std::size_t>(pieces) + 1);
        for (int i = 0; i < pieces; ++i)
            ASSERT_TRUE(
                result.pieces[static_cast<std::size_t>(i)].second ==
                std::string(static_cast<std::size_t>(size), static_cast<char>('a' + (3 + i) % 26)))
                << pieces << " x " << size << " at " << i;
    }
    const Result tooLarge = Run(pool, "misbehave", "too large a piece");
    EXPECT_EQ(tooLarge.ending, Ending::Refused);
    EXPECT_TRUE(Contains(tooLarge.message, "too large")) << tooLarge.message;
    ExpectGood(pool);
}

TEST_F(PoolTest, EachMisbehaviourCostsItsOwnTaskOnly) {
    struct Case {
        const char* manner;
        Ending ending;
        const char* message; // part of it
    };
    const Case cases[] = {
        {"refuse", Ending::Refused, "page 3 is damaged"},
        {"throw a number", Ending::Refused, "unknown kind"},
        {"segmentation fault", Ending::Crashed, kSanitized ? "" : "signal 11 (Segmentation fault)"},
        {"abort", Ending::Crashed, "last words?[0m"},
        {"uncaught", Ending::Crashed, "uncaught: no such request: out"},
        {"exit in the middle", Ending::Crashed, "exit code 0"},
        {"close the socket", Ending::Crashed, "closed its socket"},
        {"noise", Ending::BadAnswer, "broke the protocol"},
        {"a pool's word", Ending::BadAnswer, "broke the protocol"},
        {"go on after the end", Ending::BadAnswer, "after the end"},
        {"endless", Ending::BadAnswer, "larger than"},
        {"endless nothing", Ending::BadAnswer, "larger than"},
        {"answer to nothing", Ending::BadAnswer, "broke the protocol"},
        {"answer twice", Ending::Done, ""}, // or BadAnswer: as the second comes late or early
        {"talk much", Ending::Done, ""},
    };
    options.answerLimit = std::size_t{8} << 20;
    Pool pool(options);
    ExpectGood(pool);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.manner);
        const Result result = Run(pool, "misbehave", c.manner);
        if (c.manner != std::string("answer twice")) {
            EXPECT_EQ(result.ending, c.ending) << result.message;
            EXPECT_TRUE(Contains(result.message, c.message)) << result.message;
        }
        ExpectGood(pool);
        ExpectGood(pool);
    }
    EXPECT_EQ(Run(pool, "no such role", "").ending, Ending::Refused);
    EXPECT_EQ(pool.StartFailure(), "");
}

// However late the second answer comes, the next document does not get it.
TEST_F(PoolTest, ASecondAnswerIsNotTakenForThatOfTheNextTask) {
    Pool pool(options);
    std::deque<Result> results(400);
    for (std::size_t i = 0; i < results.size(); ++i)
        pool.Add(
            MakeTask(results[i], i % 2 ? "echo" : "misbehave", i % 2 ? "2 3 0" : "answer twice"));
    pool.Wait();
    for (std::size_t i = 1; i < results.size(); i += 2)
        ASSERT_EQ(results[i].Text(), "aaabbbthe document") << i;
}

TEST_F(PoolTest, NoMoreThanTheCapIsHandedOut) {
    options.answerLimit = 1'000'000;
    Pool pool(options);
    const Result result = Run(pool, "misbehave", "endless");
    EXPECT_LE(result.Text().size(), options.answerLimit);
    EXPECT_GE(result.Text().size(), options.answerLimit - 60'000);
}

TEST_F(PoolTest, TheTimeLimitEndsAWorkerThatDoesNotAnswer) {
    options.timeLimit = 200ms;
    Pool pool(options);
    for (const char* manner : {"stall", "spin", "begin and stall"}) {
        SCOPED_TRACE(manner);
        EXPECT_EQ(Run(pool, "misbehave", manner).ending, Ending::TimedOut);
    }
}

TEST_F(PoolTest, TimeThatTheTaskItselfTakesDoesNotCount) {
    options.timeLimit = 600ms;
    Pool pool(options);
    // The worker cannot run ahead: it gets its next step when the task is through with the last.
    const std::string pipe = folder + "/steps";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int steps = ::open(pipe.c_str(), O_RDWR | O_CLOEXEC);
    const auto step = [&](char byte) { EXPECT_EQ(::write(steps, &byte, 1), 1); };
    Result result;
    auto slow = std::make_unique<RecordingTask>(result, "step", "", pipe);
    slow->onFrame = [&] {
        std::this_thread::sleep_for(250ms);
        step(result.pieces.size() < 4 ? 'n' : 'e');
    };
    step('n');
    pool.Add(std::move(slow));
    pool.Wait();
    ::close(steps);
    EXPECT_EQ(result.ending, Ending::Done) << result.message;
    EXPECT_EQ(result.pieces.size(), 4U);
}

TEST_F(PoolTest, TheMemoryCapCostsTheTaskAndTheWorker) {
    options.memoryLimit = std::size_t{48} << 20;
    Pool pool(options);
    const std::string before = Run(pool, "tell", "pid").Text();
    // A build with sanitizers has no cap but that of one allocation.
    std::vector<const char*> manners = {"too much at once"};
    if (!kSanitized)
        manners.insert(manners.end(), {"fill the memory", "fill the memory and hide it",
                                       "fill the memory, no way out"});
    for (const char* manner : manners) {
        SCOPED_TRACE(manner);
        const Result result = Run(pool, "misbehave", manner);
        EXPECT_EQ(result.ending, kSanitized ? Ending::Crashed : Ending::OutOfMemory)
            << result.message;
        ExpectGood(pool);
    }
    EXPECT_NE(Run(pool, "tell", "pid").Text(), before);
}

TEST_F(PoolTest, AWorkerThatLeaksIsReplacedInTime) {
    options.memoryLimit = std::size_t{256} << 20;
    Pool pool(options);
    const std::string first = Run(pool, "tell", "pid").Text();
    if (!kSanitized) { // which hold freed memory back
        EXPECT_EQ(Run(pool, "misbehave", "use much memory").ending, Ending::Done);
        EXPECT_EQ(Run(pool, "tell", "pid").Text(), first);
    }
    EXPECT_EQ(Run(pool, "misbehave", "leak").ending, Ending::Done);
    EXPECT_NE(Run(pool, "tell", "pid").Text(), first);
}

TEST_F(PoolTest, AWorkerThatDiesOrIsAskedToBetweenTasksCostsNone) {
    Pool pool(options);
    const std::string first = Run(pool, "tell", "pid").Text();
    // What a terminal and a session manager send is for the program to answer.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        ::kill(std::stoi(first), signal);
    EXPECT_EQ(Run(pool, "tell", "pid").Text(), first);
    const ProcessEnd end(std::stoi(first));
    ::kill(std::stoi(first), SIGKILL);
    ASSERT_TRUE(end.Comes());
    const Result next = Run(pool, "tell", "pid");
    EXPECT_EQ(next.ending, Ending::Done);
    EXPECT_NE(next.Text(), first);
}

TEST_F(PoolTest, AWorkerKilledByTheSystemCountsAsOutOfMemory) {
    Pool pool(options);
    const int pid = std::stoi(Run(pool, "tell", "pid").Text());
    Result result;
    auto task = MakeTask(result, "misbehave", "begin and stall");
    task->onFrame = [pid] { ::kill(pid, SIGKILL); };
    pool.Add(std::move(task));
    pool.Wait();
    EXPECT_EQ(result.ending, Ending::OutOfMemory);
    EXPECT_TRUE(Contains(result.message, "killed")) << result.message;
}

TEST_F(PoolTest, FilesThatCannotBeUsedAreReported) {
    Pool pool(options);
    Result gone;
    pool.Add(std::make_unique<RecordingTask>(gone, "echo", "1 1 0", folder + "/gone"));
    Result writable;
    auto task = MakeTask(writable, "echo", "1 1 0");
    task->openFlags = O_RDWR;
    pool.Add(std::move(task));
    pool.Wait();
    EXPECT_EQ(gone.ending, Ending::CannotOpen);
    EXPECT_EQ(gone.message, std::strerror(ENOENT));
    EXPECT_EQ(writable.ending, Ending::CannotOpen);
    ExpectGood(pool);
}

TEST_F(PoolTest, ATaskThatThrowsIsRefused) {
    Pool pool(options);
    Result result;
    auto task = MakeTask(result, "echo", "3 40000 0");
    task->onFrame = [] { throw std::runtime_error("the disk is full"); };
    pool.Add(std::move(task));
    pool.Wait();
    EXPECT_EQ(result.ending, Ending::Refused);
    EXPECT_EQ(result.message, "the disk is full");
    EXPECT_EQ(result.pieces.size(), 1U);
    EXPECT_EQ(result.ends, 1);
    ExpectGood(pool);
}

TEST_F(PoolTest, CancelEndsHangingWorkersAtOnceAndResumeGoesOn) {
    options.workers = 2; // and a time limit of a minute
    Pool pool(options);
    std::deque<Result> results(6);
    std::promise<void> begun[2];
    for (std::size_t i = 0; i < results.size(); ++i) {
        auto task = MakeTask(results[i], "misbehave", "begin and stall");
        if (i < 2)
            task->onFrame = [&begun, i] { begun[i].set_value(); };
        pool.Add(std::move(task));
    }
    begun[0].get_future().wait();
    begun[1].get_future().wait();
    const auto before = std::chrono::steady_clock::now();
    pool.Cancel();
    Result late;
    pool.Add(MakeTask(late, "echo", "1 1 0"));
    pool.Resume(); // does not bring back what was cancelled
    pool.Wait();
    EXPECT_LT(std::chrono::steady_clock::now() - before, 10s);
    for (const Result& result : results) {
        EXPECT_EQ(result.ending, Ending::Cancelled);
        EXPECT_EQ(result.ends, 1);
    }
    EXPECT_EQ(late.ending, Ending::Cancelled);
    ExpectGood(pool);
}

TEST_F(PoolTest, CancelDoesNotWaitForATaskThatHandlesAPiece) {
    Pool pool(options);
    Result result;
    std::promise<void> inside;
    std::promise<void> goOn;
    auto task = MakeTask(result, "echo", "50 40000 0");
    task->onFrame = [&] {
        inside.set_value();
        goOn.get_future().wait();
    };
    pool.Add(std::move(task));
    inside.get_future().wait();
    pool.Cancel();
    EXPECT_EQ(result.ends, 0);
    goOn.set_value();
    pool.Wait();
    EXPECT_EQ(result.ending, Ending::Cancelled);
    EXPECT_EQ(result.pieces.size(), 1U) << "pieces after Cancel";
}

TEST_F(PoolTest, CancelReachesAWorkerThatHangsWhileItStarts) {
    options.settings.emplace_back("hang at start", "");
    std::string log = folder + "/starts";
    ASSERT_EQ(::mkfifo(log.c_str(), 0600), 0);
    options.settings.emplace_back("start log", log); // opening it waits for a reader
    Pool pool(options);
    Result result;
    pool.Add(MakeTask(result, "echo", "1 1 0"));
    const int reader = ::open(log.c_str(), O_RDONLY | O_CLOEXEC); // and this for the worker
    pool.Cancel();
    pool.Wait();
    ::close(reader);
    EXPECT_EQ(result.ending, Ending::Cancelled) << result.message;
    EXPECT_EQ(pool.StartFailure(), "");
}

TEST_F(PoolTest, TheQueueIsBoundedButNotForThePoolsOwnThreads) {
    Pool pool(options);
    std::promise<void> inside;
    std::promise<void> goOn;
    Result first;
    auto blocker = MakeTask(first, "echo", "1 40000 0");
    bool once = true;
    std::deque<Result> own(5);
    blocker->onFrame = [&] {
        if (!std::exchange(once, false))
            return;
        inside.set_value();
        goOn.get_future().wait();
    };
    blocker->onEnd = [&] {
        for (Result& result : own)
            pool.Add(MakeTask(result, "echo", "1 1 0"));
    };
    pool.Add(std::move(blocker));
    inside.get_future().wait();
    std::deque<Result> queued(3);
    pool.Add(MakeTask(queued[0], "echo", "1 1 0"));
    pool.Add(MakeTask(queued[1], "echo", "1 1 0"));
    auto third =
        std::async(std::launch::async, [&] { pool.Add(MakeTask(queued[2], "echo", "1 1 0")); });
    EXPECT_EQ(third.wait_for(100ms), std::future_status::timeout);
    goOn.set_value();
    third.get();
    pool.Wait();
    for (const auto* results : {&queued, &own})
        for (const Result& result : *results)
            EXPECT_EQ(result.ending, Ending::Done);
}

TEST_F(PoolTest, DestructionCancelsWhatWaits) {
    std::deque<Result> results(3);
    {
        Pool pool(options);
        std::promise<void> begun;
        for (Result& result : results) {
            auto task = MakeTask(result, "misbehave", "begin and stall");
            if (&result == &results.front())
                task->onFrame = [&] { begun.set_value(); };
            pool.Add(std::move(task));
        }
        begun.get_future().wait();
    }
    for (const Result& result : results)
        EXPECT_EQ(result.ending, Ending::Cancelled);
}

TEST_F(PoolTest, WorkersThatCannotStartFailEveryTaskWithTheReason) {
    struct Case {
        std::string executable;
        std::string reason;
    };
    for (const Case& c :
         {Case{folder + "/missing", std::strerror(ENOENT)}, Case{document, std::strerror(EACCES)},
          Case{"/bin/true", "exit code 0"}}) {
        SCOPED_TRACE(c.executable);
        options.executable = c.executable;
        options.workers = 2;
        Pool pool(options);
        std::deque<Result> results(50);
        for (Result& result : results)
            pool.Add(MakeTask(result, "echo", "1 1 0"));
        pool.Wait();
        for (const Result& result : results) {
            EXPECT_EQ(result.ending, Ending::Crashed);
            EXPECT_TRUE(Contains(result.message, "the worker cannot be started")) << result.message;
            EXPECT_TRUE(Contains(result.message, c.reason)) << result.message;
        }
        EXPECT_EQ(pool.StartFailure(), results.back().message);
    }
}

TEST_F(PoolTest, AFailingPreparationIsNotRepeatedForEveryTask) {
    const std::string log = folder + "/starts";
    options.settings.emplace_back("start log", log);
    options.settings.emplace_back("fail", "the language data are missing");
    Pool pool(options);
    std::deque<Result> results(200);
    for (Result& result : results)
        pool.Add(MakeTask(result, "echo", "1 1 0"));
    pool.Wait();
    for (const Result& result : results)
        EXPECT_EQ(result.message, "the worker cannot be started: the language data are missing");
    EXPECT_LE(std::filesystem::file_size(log), 10U);
}

TEST_F(PoolTest, ManyDeathsInARowAreServedToTheEnd) {
    Pool pool(options);
    std::deque<Result> results(20);
    for (Result& result : results)
        pool.Add(MakeTask(result, "misbehave", "exit in the middle"));
    pool.Wait();
    for (const Result& result : results)
        EXPECT_EQ(result.ending, Ending::Crashed);
    EXPECT_EQ(pool.StartFailure(), "");
    ExpectGood(pool);
}

// A program that is killed, hard, leaves no worker behind, be it busy or idle.
TEST_F(PoolTest, WorkersDieWithTheProgram) {
    for (const char* request : {"stall", "pid"}) {
        SCOPED_TRACE(request);
        int ends[2] = {};
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
        std::string name = TestWorkerPath();
        std::string argument = request;
        char* arguments[] = {name.data(), argument.data(), nullptr};
        pid_t program = 0;
        ASSERT_EQ(::posix_spawn(&program, name.c_str(), &actions, nullptr, arguments, environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        char text[64] = {};
        ASSERT_GT(::read(ends[0], text, sizeof text - 1), 0);
        ::close(ends[0]);
        const ProcessEnd worker(std::atoi(text));
        ASSERT_TRUE(worker.Exists()) << text;
        ::kill(program, SIGKILL);
        ::waitpid(program, nullptr, 0);
        EXPECT_TRUE(worker.Comes());
    }
}

TEST_F(PoolTest, WorkersAreNicerThanTheProgram) {
    options.niceness = 7;
    Pool pool(options);
    const auto worker = static_cast<id_t>(std::stoi(Run(pool, "tell", "pid").Text()));
    EXPECT_EQ(::getpriority(PRIO_PROCESS, worker),
              std::min(19, ::getpriority(PRIO_PROCESS, 0) + 7));
}
