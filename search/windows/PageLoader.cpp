// Runs conversions on a thread of the pool.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/PageLoader.h"

#include <QPromise>
#include <QThreadPool>
#include <memory>

namespace velmora {

PageLoader::PageLoader(QObject* parent) : QObject(parent) {
    connect(&m_running, &QFutureWatcherBase::finished, this, &PageLoader::Finish);
}

void PageLoader::Load(const engine::FileConverter& job) {
    if (m_running.isRunning()) {
        m_next = job;
        m_isWanted = false;
    } else {
        Start(job);
    }
}

void PageLoader::Forget() {
    m_next.reset();
    m_isWanted = false;
}

void PageLoader::Start(const engine::FileConverter& job) {
    m_isWanted = true;
    const auto promise = std::make_shared<QPromise<engine::ConvertedPage>>();
    promise->start();
    m_running.setFuture(promise->future());
    // The thread owns all it needs: the window may close before the page is there.
    QThreadPool::globalInstance()->start([job, promise] {
        promise->addResult(job.Execute());
        promise->finish();
    });
}

void PageLoader::Finish() {
    if (const auto next = std::exchange(m_next, std::nullopt)) {
        Start(*next);
    } else if (std::exchange(m_isWanted, false)) {
        Q_EMIT Loaded(m_running.result());
    }
}

} // namespace velmora
