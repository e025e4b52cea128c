// The pane that shows a found document as a page and walks its hits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "search/Hits.h"
#include "search/ResultRow.h"
#include "search/windows/PageLoader.h"

#include <QStackedWidget>
#include <QTimer>

namespace velmora {

class PageView;

class HtmlPane : public QStackedWidget {
    Q_OBJECT

  public:
    explicit HtmlPane(QWidget* parent = nullptr);

    // Begins to load the document of a row; the old page stays until it is there or it takes long.
    void Show(const ResultRow& row);
    // An empty page without hits.
    void Clear();

    // To the next or the previous hit. At the end a message, and nothing moves.
    void NextHit();
    void PrevoiusHit();
    // Whether a document is shown, so that its hits can be walked.
    [[nodiscard]] bool IsLoaded() const { return m_isLoaded; }
    [[nodiscard]] const HtmlHitWalk& Walk() const { return m_walk; }

  Q_SIGNALS:
    // The page or its current hit is another one.
    void Changed();

  private:
    void ShowLoaded(const engine::ConvertedPage& page);

    PageView* m_web;
    QWidget* m_animation;
    PageLoader m_loader;
    engine::FileConverter m_job; // of the row that was shown last
    QTimer m_patience;           // until the animation shows that something is going on
    HtmlHitWalk m_walk;
    int m_hitCount = 0; // of the document that is being loaded
    bool m_isLoaded = false;
};

} // namespace velmora
