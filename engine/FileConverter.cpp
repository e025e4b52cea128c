// Pages from documents, or from what the index keeps of them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/FileConverter.h"

#include "engine/IndexJob.h"
#include "engine/html/PageRequest.h"
#include "engine/index/DamageNote.h"
#include "engine/index/IndexRun.h"
#include "engine/index/Paths.h"
#include "engine/index/StoredText.h"
#include "engine/readers/ReadRequest.h"
#include "platform/LogicalPath.h"
#include "workers/Pool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <utility>

namespace engine {
namespace {

constexpr auto kPageTime = std::chrono::seconds(60);
constexpr std::int64_t kNanoseconds = 1'000'000'000;

// What the index knows of the document.
struct Found {
    std::int64_t id = 0;
    std::string path;   // machine path of the file, as bytes
    std::string file;   // its name
    std::string member;
    std::string name;
    std::string display;
    std::int64_t size = 0, modified = 0; // of the file
};

Found Find(IndexFile& index, const QString& fileName, const QString& spelling) {
    // The size and time that count are those of the file, whose row is the member's parent.
    sqlite::Statement rows(
        index.Db(), "SELECT d.id, f.path, d.file, d.path, d.name, d.display, p.size, p.modified "
                    "FROM document d JOIN folder f ON f.id = d.folder "
                    "JOIN document p ON p.id = CASE d.parent WHEN 0 THEN d.id ELSE d.parent END "
                    "WHERE d.name = ?1");
    rows.Bind(1, platform::Capitals(fileName).toStdString());
    Found found;
    while (rows.Step()) {
        Found one;
        one.id = rows.Int64(0);
        const std::string folder(rows.Blob(1));
        one.file = rows.Blob(2);
        one.path = folder + (folder == "/" ? "" : "/") + one.file;
        one.member = rows.Text(3);
        one.name = rows.Text(4);
        one.display = rows.Text(5);
        one.size = rows.Int64(6);
        one.modified = rows.Int64(7);
        QString own = platform::DecodeName(QByteArray::fromStdString(one.path)) +
                      QString::fromStdString(one.member).replace(QLatin1Char('\\'), QLatin1Char('/'));
        if (found.id == 0 || own == spelling)
            found = std::move(one);
    }
    if (found.id == 0)
        throw IndexError(IndexFault::Other, "the document is not in the index");
    return found;
}

class PageTask final : public workers::Task {
  public:
    struct Outcome {
        std::string html;
        workers::Ending ending = workers::Ending::Cancelled;
        std::string message;
        bool changed = false;
    };
    PageTask(const Found& document, PageRequest request, Outcome& outcome)
        : m_document(document), m_request(std::move(request)), m_outcome(outcome) {}

    std::string Role() const override { return kPageRole; }
    int Open() override {
        const int file = open(m_document.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
        if (file < 0)
            return -1;
        struct stat info {};
        if (fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_size == m_document.size &&
            info.st_mtim.tv_sec * kNanoseconds + info.st_mtim.tv_nsec == m_document.modified)
            return file;
        close(file);
        m_outcome.changed = true; // the words of the index are not those of the file any more
        errno = ESTALE;
        return -1;
    }
    std::string Request() override { return Pack(m_request); }
    void OnFrame(std::uint8_t, std::string_view payload) override { m_outcome.html.append(payload); }
    void OnEnd(workers::Ending ending, const std::string& message) override {
        m_outcome.ending = ending;
        m_outcome.message = message;
    }

  private:
    const Found& m_document;
    PageRequest m_request;
    Outcome& m_outcome;
};

std::string StoredPage(IndexFile& index, const Found& document, const PageRequest& request,
                       const Alphabet& alphabet) {
    std::string html;
    Tokenizer tokenizer(alphabet);
    HtmlWriter writer(tokenizer, request.rule, request.hits, request.marks,
                      [&](std::string_view piece) { html.append(piece); });
    writer.Begin(request.title);
    ReadStoredText(index, document.id, [&](const std::string& text) {
        for (std::size_t at = 0; at < text.size();) {
            auto end = text.find('\n', at);
            end = end == std::string::npos ? text.size() : end;
            if (end > at) {
                writer.Open(Block::Paragraph, 0);
                writer.Text(std::string_view(text).substr(at, end - at));
                writer.Close(Block::Paragraph);
            }
            at = end + 1;
        }
    });
    writer.End();
    return html;
}

QString Clause(const PageTask::Outcome& outcome) {
    if (outcome.changed)
        return QStringLiteral("the file has changed since it was indexed");
    return QString::fromStdString(outcome.message);
}

ConvertedPage Convert(const FileConverter& job) {
    const std::string alphabetText = ReadAlphabetFile(job.AlphabetFile);
    const Alphabet alphabet = Alphabet::Parse(alphabetText);
    const std::string indexFile =
        platform::EncodeName(platform::ToMachine(job.IndexPath) + QLatin1Char('/')).toStdString() +
        kIndexFileName;
    IndexFile index(indexFile, IndexMode::Search, alphabet.Canonical());
    const Found document = Find(index, job.InputFile, job.Spelling);
    PageRequest request;
    request.name = document.file;
    request.member = document.member;
    request.title = document.display;
    request.rule = RuleFor(document.name, document.member);
    request.hits = job.Hits;
    request.marks = {job.BeforeHit.toStdString(), job.AfterHit.toStdString(),
                     job.Footer.toStdString(), {}};
    PageTask::Outcome outcome;
    {
        workers::PoolOptions options;
        options.executable =
            (job.WorkerProgram.isEmpty() ? DefaultWorkerProgram() : job.WorkerProgram).toStdString();
        options.workers = 1;
        options.timeLimit = kPageTime;
        options.settings = {{kAlphabetSetting, alphabetText}};
        workers::Pool pool(options);
        pool.Add(std::make_unique<PageTask>(document, request, outcome));
        pool.Wait();
    }
    ConvertedPage page;
    if (outcome.ending == workers::Ending::Done) {
        page.html = QString::fromStdString(outcome.html);
        return page;
    }
    page.origin = PageOrigin::StoredText;
    page.reason = Clause(outcome);
    request.marks.note = QString(job.StoredTextNote).replace(QLatin1String("%1"), page.reason).toStdString();
    page.html = QString::fromStdString(StoredPage(index, document, request, alphabet));
    return page;
}

} // namespace

std::vector<std::uint32_t> FileConverter::ParseHits(const QString& hits) {
    std::vector<std::uint32_t> numbers;
    for (const QString& part : hits.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        numbers.push_back(part.toUInt());
    return numbers;
}

ConvertedPage FileConverter::Execute() const {
    ConvertedPage page;
    const auto fail = [&](IndexFault fault, const char* words) {
        page.fault = fault;
        page.faultText = QString::fromUtf8(words);
        if (fault == IndexFault::Damaged)
            NoteDamage(IndexFileOf(IndexPath));
    };
    try {
        return Convert(*this);
    } catch (const IndexError& error) {
        fail(error.fault, error.what());
    } catch (const sqlite::Error& error) {
        fail(Translate(error).fault, error.what());
    } catch (const std::exception& error) {
        fail(IndexFault::Other, error.what());
    }
    return page;
}

QString StoredDocumentText(const QString& indexPath, const QString& alphabetFile,
                           const QString& fileName, const QString& spelling) {
    const std::string indexFile =
        platform::EncodeName(platform::ToMachine(indexPath) + QLatin1Char('/')).toStdString() +
        kIndexFileName;
    IndexFile index(indexFile, IndexMode::Search, AlphabetOf(alphabetFile));
    const Found document = Find(index, fileName, spelling);
    std::string text;
    ReadStoredText(index, document.id, [&](const std::string& part) { text += part; });
    return QString::fromStdString(text);
}

} // namespace engine
