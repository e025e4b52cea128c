// The window of a search's results: the list on the left, the document with its hits on the right.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "search/ResultSet.h"

#include <QDialog>
#include <functional>
#include <memory>

namespace Ui {
class frmSearchResult;
}

namespace velmora {

class HtmlPane;
class ResultModel;

// Set nothing, show it modally, read LocateTarget.
class frmSearchResult : public QDialog {
    Q_OBJECT

  public:
    // folder: what was searched, empty for the whole archive. request: as typed.
    frmSearchResult(engine::SearchResults results, const QString& folder, const QString& request,
                    QWidget* parent = nullptr);
    ~frmSearchResult() override;

    // In: called once, when the window is there and its rows are loaded.
    std::function<void()> OnActivate;
    // Out: logical path of a file that is to be shown in its folder; empty for none.
    QString LocateTarget;

    // Every way of closing comes here.
    void done(int result) override;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void FillBars();
    void FillFilters();
    void FillNavigation();
    void FillList(const QString& request);
    void RestorePlace();
    void tlbFilter_ButtonClick(TypeFilter filter);
    void grdResult_SelectionChange(int row);
    void grdResult_ColumnClick(int column);
    void grdResult_ContextMenu(const QPoint& place);
    void SelectRow(int row);
    void ShowCaptions();
    void TlbDrawState();
    void mnuopen_Click();
    void Locate();
    [[nodiscard]] const ResultRow* CurrentRow() const;

    std::unique_ptr<Ui::frmSearchResult> m_ui;
    ResultSet m_results;
    ResultModel* m_model;
    HtmlPane* m_html;
    QAction* m_all = nullptr; // the filter's button for everything
    int m_shownRow = -1;      // a new selection of the same row does nothing
    bool m_isActivated = false;
};

} // namespace velmora
