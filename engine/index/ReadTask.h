// Asks a worker to read one file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/index/ReadQueue.h"
#include "workers/Task.h"

#include <memory>
#include <string>

namespace engine {

class ReadTask final : public workers::Task {
  public:
    // path: machine path as bytes. The queue outlives the task.
    ReadTask(ReadQueue& queue, std::size_t item, std::string path);

    [[nodiscard]] std::string Role() const override;
    [[nodiscard]] int Open() override;
    [[nodiscard]] std::string Request() override;
    void OnFrame(std::uint8_t type, std::string_view payload) override;
    void OnEnd(workers::Ending ending, const std::string& message) override;

  private:
    ReadQueue& m_queue;
    std::string m_path;
    FinishedFile m_file;
    std::shared_ptr<IncomingDocument> m_document; // the one that is coming in
};

} // namespace engine
