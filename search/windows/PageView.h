// Shows one converted document: a page of text, pictures and marked hits that fetches nothing.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QTextBrowser>
#include <vector>

namespace velmora {

// Paper is white in every theme: pages carry colours of their own. Links lead nowhere, and nothing
// is loaded but pictures that stand in the page itself.
class PageView : public QTextBrowser {
    Q_OBJECT

  public:
    explicit PageView(QWidget* parent = nullptr);

    void ShowPage(const QString& html);
    // Anchors hit1, hit2, … that the page holds, without a gap.
    [[nodiscard]] int HitCount() const { return static_cast<int>(m_hits.size()); }
    // Scrolls to a hit, counted from 1, and marks it among the others. A number that the page does
    // not hold changes nothing.
    void ShowHit(int number);

  protected:
    QVariant loadResource(int type, const QUrl& name) override;
    void doSetSource(const QUrl& url, QTextDocument::ResourceType type) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    struct HitPlace {
        int begin = 0; // position in the document
        int end = 0;
    };
    void FindHits();

    std::vector<HitPlace> m_hits;
};

} // namespace velmora
