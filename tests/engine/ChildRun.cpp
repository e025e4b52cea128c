// Starts the child, kills it in time, and hears what it told.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "ChildRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <sstream>
#include <thread>

namespace engine_test {
namespace {

Told ReadAll(int file) {
    std::string text;
    char bytes[4096];
    for (ssize_t count = 0; (count = read(file, bytes, sizeof bytes)) > 0;)
        text.append(bytes, static_cast<std::size_t>(count));
    Told told;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line[0] == 'e') {
            told.ended = true;
            std::istringstream(line.substr(2)) >> told.calls >> told.steps;
        } else if (line[0] == 'f') {
            told.fault = line.substr(2);
        } else {
            told.lines.push_back(line);
        }
    }
    return told;
}

} // namespace

Told RunChild(const CrashJob& job, std::optional<std::chrono::microseconds> killAfter) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    QList<QByteArray> texts{QByteArray(VELMORA_TEST_BIN "/engine_crash_child")};
    for (const QString& argument : job.Arguments())
        texts << argument.toUtf8();
    std::vector<char*> arguments;
    for (QByteArray& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], kReportFile);
        fcntl(kReportFile, F_SETFD, 0); // where the pipe had that number already
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    std::thread killer;
    if (killAfter)
        killer = std::thread([&] {
            std::this_thread::sleep_for(*killAfter);
            kill(child, SIGKILL);
        });
    Told told = ReadAll(ends[0]);
    close(ends[0]);
    if (killer.joinable())
        killer.join(); // before the child is waited for: its number stays its own until then
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 127) << "there is no child program";
    EXPECT_TRUE(!WIFSIGNALED(status) || WTERMSIG(status) == SIGKILL)
        << "signal " << WTERMSIG(status);
    return told;
}

} // namespace engine_test
