// The program's side of reading a file.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/index/ReadTask.h"

#include "engine/index/StoredText.h"
#include "engine/readers/ReadRequest.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <utility>

namespace engine {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

bool IsRecognisedText(std::string_view file) {
    return file.size() > 4 && (file.ends_with(".ocr") || file.ends_with(".OCR"));
}

} // namespace

ReadTask::ReadTask(ReadQueue& queue, std::size_t item, std::string path)
    : m_queue(queue), m_path(std::move(path)) {
    m_file.item = item;
}

std::string ReadTask::Role() const { return kReadRole; }

int ReadTask::Open() {
    // Without O_NONBLOCK a pipe that has taken the file's place would hold everything up.
    const int file = open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (file < 0)
        return -1;
    struct stat info {};
    if (fstat(file, &info) == 0 && S_ISREG(info.st_mode)) {
        m_file.size = info.st_size;
        m_file.modified = info.st_mtim.tv_sec * kNanoseconds + info.st_mtim.tv_nsec;
        return file;
    }
    close(file);
    errno = EINVAL;
    return -1;
}

std::string ReadTask::Request() {
    const std::string file = m_path.substr(m_path.find_last_of('/') + 1);
    return Pack(ReadRequest{file, IsRecognisedText(file) ? WordRule::Blanks : WordRule::Letters});
}

void ReadTask::OnFrame(std::uint8_t type, std::string_view payload) {
    switch (static_cast<Frame>(type)) {
    case Frame::Begin:
        m_document = std::make_shared<IncomingDocument>();
        m_document->item = m_file.item;
        m_document->head = UnpackHead(payload);
        return;
    case Frame::Chunk:
        if (!m_document)
            break;
        (void)UnpackChunk(payload);
        m_queue.AddChunk(m_document, std::string(payload));
        return;
    case Frame::End:
        if (!m_document)
            break;
        m_queue.EndDocument(m_document, UnpackEnd(payload));
        m_document.reset();
        return;
    case Frame::Html:
        break;
    }
    throw std::runtime_error("a worker's answer is out of order");
}

void ReadTask::OnEnd(workers::Ending ending, const std::string& message) {
    if (m_document)
        m_queue.BreakDocument(m_document);
    m_document.reset();
    m_file.ending = ending;
    m_file.message = message;
    m_queue.AddFinished(m_file);
}

} // namespace engine
