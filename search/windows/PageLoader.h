// Converts documents into pages beside the window, so that it stays alive meanwhile.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "engine/FileConverter.h"

#include <QFutureWatcher>
#include <QObject>
#include <optional>

namespace velmora {

// One conversion at a time. A newer wish takes the place of one that has not begun, and the answer
// to an older one is dropped.
class PageLoader : public QObject {
    Q_OBJECT

  public:
    explicit PageLoader(QObject* parent = nullptr);

    void Load(const engine::FileConverter& job);
    // No answer is wanted any more.
    void Forget();

  Q_SIGNALS:
    void Loaded(const engine::ConvertedPage& page);

  private:
    void Start(const engine::FileConverter& job);
    void Finish();

    QFutureWatcher<engine::ConvertedPage> m_running;
    std::optional<engine::FileConverter> m_next;
    bool m_isWanted = false;
};

} // namespace velmora
