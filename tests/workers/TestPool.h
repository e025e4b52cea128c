// Shared by the tests of the pool: a task that records what it was told, and a folder for it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "workers/Pool.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

inline std::string TestWorkerPath() {
    return VELMORA_BIN_DIR "/workers_test_worker";
}

struct Result {
    int ends = 0;
    workers::Ending ending{};
    std::string message;
    std::vector<std::pair<int, std::string>> pieces;
    [[nodiscard]] std::string Text() const {
        std::string text;
        for (const auto& [type, piece] : pieces)
            text += piece;
        return text;
    }
};

// Records into a result that outlives the pool.
class RecordingTask : public workers::Task {
  public:
    RecordingTask(Result& result, std::string role, std::string request, std::string path)
        : m_result(result), m_role(std::move(role)), m_request(std::move(request)),
          m_path(std::move(path)) {}
    std::function<void()> onFrame;
    std::function<void()> onEnd;
    int openFlags = O_RDONLY;

    [[nodiscard]] std::string Role() const override { return m_role; }
    [[nodiscard]] int Open() override { return ::open(m_path.c_str(), openFlags | O_CLOEXEC); }
    [[nodiscard]] std::string Request() override { return m_request; }
    void OnFrame(std::uint8_t type, std::string_view payload) override {
        m_result.pieces.emplace_back(type, payload);
        if (onFrame)
            onFrame();
    }
    void OnEnd(workers::Ending ending, const std::string& message) override {
        ++m_result.ends;
        m_result.ending = ending;
        m_result.message = message;
        if (onEnd)
            onEnd();
    }

  private:
    Result& m_result;
    std::string m_role;
    std::string m_request;
    std::string m_path;
};

class PoolTest : public testing::Test {
  protected:
    PoolTest() {
        std::string name = testing::TempDir() + "workers-XXXXXX";
        folder = ::mkdtemp(name.data());
        document = folder + "/secret";
        std::ofstream(document) << "the document";
        options.executable = TestWorkerPath();
        options.workers = 1;
        options.settings = {{"folder", folder}};
    }
    ~PoolTest() override { std::filesystem::remove_all(folder); }

    std::unique_ptr<RecordingTask> MakeTask(Result& result, const std::string& role,
                                            const std::string& request) const {
        return std::make_unique<RecordingTask>(result, role, request, document);
    }
    Result Run(workers::Pool& pool, const std::string& role, const std::string& request) const {
        Result result;
        pool.Add(MakeTask(result, role, request));
        pool.Wait();
        EXPECT_EQ(result.ends, 1);
        return result;
    }
    // A task that any sound worker does.
    void ExpectGood(workers::Pool& pool) const {
        const Result good = Run(pool, "echo", "2 3 0");
        EXPECT_EQ(good.ending, workers::Ending::Done) << good.message;
        EXPECT_EQ(good.Text(), "aaabbbthe document");
    }

    std::string folder;
    std::string document;
    workers::PoolOptions options;
};
