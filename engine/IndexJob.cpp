// Runs index jobs.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/IndexJob.h"

#include "engine/index/IndexRun.h"
#include "engine/index/Progress.h"
#include "platform/Folders.h"

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

} // namespace engine
