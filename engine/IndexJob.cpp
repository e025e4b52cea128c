// Runs index jobs and lists what could not be read.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/IndexJob.h"

#include "engine/index/IndexRun.h"
#include "engine/index/Progress.h"
#include "engine/readers/Reader.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"

#include <exception>

namespace engine {

IndexReport IndexJob::Execute() const {
    IndexReport report;
    const auto fail = [&](IndexFault fault, const char* words) {
        report.fault = fault;
        report.faultText = QString::fromUtf8(words);
    };
    Progress progress;
    progress.Run(
        [&] {
            try {
                IndexRun(*this, progress, report).Run();
            } catch (const IndexError& error) {
                fail(error.fault, error.what());
            } catch (const sqlite::Error& error) {
                fail(Translate(error).fault, error.what());
            } catch (const std::exception& error) {
                fail(IndexFault::Other, error.what());
            }
            report.aborted = progress.Aborted();
        },
        StatusHandler);
    return report;
}

QString DefaultWorkerProgram() { return platform::WorkerProgram(); }

std::vector<Problem> ListProblems(const QString& indexPath, const QString& alphabetFile,
                                  const QString& folder) {
    const std::string file =
        platform::EncodeName(platform::ToMachine(indexPath) + QLatin1Char('/')).toStdString() +
        kIndexFileName;
    IndexFile index(file, IndexMode::Search, AlphabetOf(alphabetFile));
    sqlite::Statement rows(
        index.Db(), "SELECT f.path, d.file, d.path, d.state, d.reason FROM document d "
                    "JOIN folder f ON f.id = d.folder "
                    "WHERE d.state <> 0 AND d.state <> ?1 AND d.name >= ?2 AND d.name < ?3 "
                    "ORDER BY d.name");
    const QString prefix = platform::Capitals(platform::WithBackslash(folder));
    rows.Bind(1, static_cast<int>(ReadState::NameOnly));
    rows.Bind(2, prefix.toStdString());
    rows.Bind(3, prefix.isEmpty() ? "\xFF" : prefix.chopped(1).toStdString() + "]");
    std::vector<Problem> problems;
    while (rows.Step()) {
        const auto text = [&](int column) {
            const auto bytes = rows.Blob(column);
            return QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size()));
        };
        const QString path = platform::DecodeName(text(0) + (text(0) == "/" ? "" : "/") + text(1));
        problems.push_back({path + QString::fromUtf8(text(2)).replace(QLatin1Char('\\'), QLatin1Char('/')), static_cast<ReadState>(rows.Int(3)),
                            QString::fromUtf8(text(4))});
    }
    return problems;
}

} // namespace engine
