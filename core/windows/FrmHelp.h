// The help window: contents and search on the left, a page on the right.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Help.h"

#include <QDialog>
#include <QList>
#include <memory>

class QTreeWidgetItem;
class QUrl;

namespace Ui {
class FrmHelp;
}

namespace velmora {

// Stands beside its parent, which may be a modal window, and does not block it. Deletes itself when
// it is closed. Its size is remembered.
class FrmHelp : public QDialog {
    Q_OBJECT

  public:
    explicit FrmHelp(const Help& help, QWidget* parent = nullptr);
    ~FrmHelp() override;

    // Shows a page by its name and adds it to what Back goes through. A name without a page says so
    // in its place.
    void ShowPage(const QString& name);
    // The name of the page that is shown; empty when there is none.
    [[nodiscard]] QString CurrentPage() const;

  private:
    struct Visit {
        QString page;
        int scroll = 0;
    };

    void FillContents();
    void Go(qsizetype step);
    void Render(const Visit& visit);
    void MarkWords();
    void SelectInContents(const QString& page);
    void txtSearch_Change();
    void lvwContents_Click(const QTreeWidgetItem* item);
    void lvwHits_Click(int row);
    void txtPage_AnchorClicked(const QUrl& address);

    std::unique_ptr<Ui::FrmHelp> m_ui;
    Help m_help;
    QList<Visit> m_visits;
    qsizetype m_visit = -1;
    QList<HelpHit> m_hits; // in the order of the list
};

} // namespace velmora
