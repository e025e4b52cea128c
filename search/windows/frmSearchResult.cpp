// The result window: bars, list and viewer put together.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/frmSearchResult.h"

#include "core/Dialogue.h"
#include "core/FileFunctions.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "core/windows/Captions.h"
#include "platform/LogicalPath.h"
#include "search/MessageIds.h"
#include "search/windows/Glyphs.h"
#include "search/windows/HtmlPane.h"
#include "search/windows/ResultModel.h"
#include "ui_frmSearchResult.h"

#include <QActionGroup>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

const QString kSection = u"frmSearchResult"_s; // of the settings
const QString kGeometry = u"Geometry"_s;
const QString kSplitter = u"Splitter"_s;
constexpr int kSearchFor = 1051;
constexpr int kLeastRowHeight = 20;
constexpr int kCellMargin = 14; // of a column beside its text

QByteArray SavedState(const QString& key) {
    return QByteArray::fromBase64(GetSetting(kSection, key).toLatin1());
}

void SaveState(const QString& key, const QByteArray& state) {
    SaveSetting(kSection, key, QString::fromLatin1(state.toBase64()));
}

QWidget* Stretch(QWidget* parent) {
    auto* widget = new QWidget(parent);
    widget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    return widget;
}

// Its key behind what a button does.
void TellShortcut(QAction& action) {
    QString text = action.toolTip();
    if (!action.shortcut().isEmpty()) {
        text += u" ("_s + action.shortcut().toString(QKeySequence::NativeText) + u')';
    }
    action.setToolTip(text);
}

} // namespace

frmSearchResult::frmSearchResult(engine::SearchResults results, const QString& folder,
                                 const QString& request, QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::frmSearchResult>()),
      m_results(std::move(results), folder), m_model(new ResultModel(m_results, this)),
      m_html(new HtmlPane(this)) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinMaxButtonsHint | Qt::WindowCloseButtonHint);
    m_ui->picViewer->addWidget(m_html);
    FillBars();
    FillList(request);
    connect(m_html, &HtmlPane::Changed, this, &frmSearchResult::TlbDrawState);
    m_model->LoadResult(TypeFilter::ALL);
    RestorePlace();
    ShowCaptions();
    TlbDrawState();
}

frmSearchResult::~frmSearchResult() = default;

void frmSearchResult::FillBars() {
    const std::pair<QAction*, Glyph> glyphs[] = {
        {m_ui->ALL, Glyph::All},        {m_ui->IMG, Glyph::Image},   {m_ui->EML, Glyph::Mail},
        {m_ui->ATC, Glyph::Attachment}, {m_ui->ZIP, Glyph::Archive}, {m_ui->OTH, Glyph::Document},
        {m_ui->PDC, Glyph::Up},         {m_ui->NDC, Glyph::Down},    {m_ui->PrevHit, Glyph::Left},
        {m_ui->NextHit, Glyph::Right},  {m_ui->EXEC, Glyph::Open},   {m_ui->LOCATE, Glyph::Locate},
        {m_ui->CLOSE, Glyph::Close},
    };
    m_ui->EXEC->setShortcuts({Qt::CTRL | Qt::Key_O, Qt::Key_Return, Qt::Key_Enter});
    m_ui->CLOSE->setText(m_ui->CLOSE->text().replace(u'\n', u' '));
    for (const auto& [action, glyph] : glyphs) {
        action->setIcon(GlyphIcon(glyph));
        action->setToolTip(action->text().remove(u'&'));
        TellShortcut(*action);
        addAction(action); // its key works wherever the focus is
    }
    FillFilters();
    FillNavigation();
    connect(m_ui->PDC, &QAction::triggered, this, [this] { SelectRow(m_shownRow - 1); });
    connect(m_ui->NDC, &QAction::triggered, this, [this] { SelectRow(m_shownRow + 1); });
    connect(m_ui->PrevHit, &QAction::triggered, m_html, &HtmlPane::PrevoiusHit);
    connect(m_ui->NextHit, &QAction::triggered, m_html, &HtmlPane::NextHit);
    connect(m_ui->EXEC, &QAction::triggered, this, &frmSearchResult::mnuopen_Click);
    connect(m_ui->LOCATE, &QAction::triggered, this, &frmSearchResult::Locate);
    connect(m_ui->CLOSE, &QAction::triggered, this, &QDialog::reject);
}

void frmSearchResult::FillFilters() {
    const std::pair<QAction*, TypeFilter> filters[] = {
        {m_ui->ALL, TypeFilter::ALL}, {m_ui->IMG, TypeFilter::IMG}, {m_ui->EML, TypeFilter::EML},
        {m_ui->ATC, TypeFilter::ATC}, {m_ui->ZIP, TypeFilter::ZIP}, {m_ui->OTH, TypeFilter::OTH},
    };
    auto* group = new QActionGroup(this);
    for (const auto& [action, filter] : filters) {
        group->addAction(action);
        m_ui->tlbFilter->addAction(action);
        connect(action, &QAction::triggered, this,
                [this, type = filter] { tlbFilter_ButtonClick(type); });
    }
    m_ui->ALL->setChecked(true);
    m_ui->tlbFilter->addWidget(Stretch(m_ui->tlbFilter));
    m_ui->tlbFilter->addActions({m_ui->EXEC, m_ui->LOCATE, m_ui->CLOSE});
}

void frmSearchResult::FillNavigation() {
    QToolBar& bar = *m_ui->tlbNavigation;
    bar.addAction(m_ui->PDC);
    bar.addAction(m_ui->NDC);
    bar.addSeparator();
    bar.addAction(m_ui->PrevHit);
    auto* place = new QLabel(&bar);
    place->setObjectName(u"lblHit"_s);
    // The button behind it stays in its place while a person walks.
    place->setMinimumWidth(
        place->fontMetrics().horizontalAdvance(GetMessage(kHitOf, {u"000"_s, u"000"_s})) +
        kCellMargin);
    place->setAlignment(Qt::AlignCenter);
    bar.addWidget(place);
    bar.addAction(m_ui->NextHit);
    // The arrows of the documents speak for themselves beside the list.
    for (QAction* action : {m_ui->PDC, m_ui->NDC}) {
        if (auto* button = qobject_cast<QToolButton*>(bar.widgetForAction(action))) {
            button->setToolButtonStyle(Qt::ToolButtonIconOnly);
        }
    }
}

void frmSearchResult::FillList(const QString& request) {
    m_ui->lblRequest->setText(GetMessage(kSearchFor) + u' ' + request);
    m_ui->lblRequest->setToolTip(u"<span>"_s + request.toHtmlEscaped() + u"</span>"_s);
    QTableView& grid = *m_ui->grdResult;
    grid.setModel(m_model);
    grid.setIconSize({16, 16});
    grid.verticalHeader()->hide();
    grid.verticalHeader()->setDefaultSectionSize(
        std::max(kLeastRowHeight, grid.fontMetrics().height() + 6));
    QHeaderView& head = *grid.horizontalHeader();
    head.setSectionsClickable(true);
    head.setHighlightSections(false);
    head.setSortIndicatorShown(true);
    head.setSectionResizeMode(1, QHeaderView::Stretch);
    const auto width = [&](const QString& text) {
        return grid.fontMetrics().horizontalAdvance(text) + kCellMargin;
    };
    const QDateTime longDate(QDate(2028, 12, 28), QTime(22, 58, 58));
    grid.setColumnWidth(0, width(QLocale().toString(longDate, QLocale::ShortFormat)));
    grid.setColumnWidth(2, std::max(width(u"00000"_s), head.sectionSizeHint(2)));
    grid.setColumnWidth(3, width(QString(24, u'n')));
    connect(&head, &QHeaderView::sectionClicked, this, &frmSearchResult::grdResult_ColumnClick);
    connect(grid.selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& now) { grdResult_SelectionChange(now.row()); });
    connect(&grid, &QTableView::doubleClicked, this, &frmSearchResult::mnuopen_Click);
    connect(&grid, &QTableView::customContextMenuRequested, this,
            &frmSearchResult::grdResult_ContextMenu);
}

void frmSearchResult::RestorePlace() {
    m_ui->hsplitter->setStretchFactor(0, 2);
    m_ui->hsplitter->setStretchFactor(1, 3);
    m_ui->hsplitter->setSizes({600, 640});
    restoreGeometry(SavedState(kGeometry));
    m_ui->hsplitter->restoreState(SavedState(kSplitter));
}

void frmSearchResult::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (std::exchange(m_isActivated, true)) {
        return;
    }
    SelectRow(0);
    m_ui->grdResult->setFocus();
    CurrentDialogue().SetPointer(Pointer::Default);
    if (OnActivate) {
        OnActivate();
    }
}

void frmSearchResult::done(int result) {
    SaveState(kGeometry, saveGeometry());
    SaveState(kSplitter, m_ui->hsplitter->saveState());
    QDialog::done(result);
}

const ResultRow* frmSearchResult::CurrentRow() const {
    return m_model->Row(m_ui->grdResult->currentIndex().row());
}

void frmSearchResult::SelectRow(int row) {
    if (m_model->Row(row) != nullptr) {
        m_ui->grdResult->setCurrentIndex(m_model->index(row, 0));
    }
}

void frmSearchResult::grdResult_SelectionChange(int row) {
    if (row == m_shownRow) {
        return;
    }
    m_shownRow = row;
    if (const ResultRow* shown = m_model->Row(row)) {
        m_ui->tlbNavigation->show();
        m_html->Show(*shown);
    }
    TlbDrawState();
}

void frmSearchResult::tlbFilter_ButtonClick(TypeFilter filter) {
    m_shownRow = -1;
    m_model->LoadResult(filter);
    m_ui->grdResult->setFocus();
    m_ui->tlbNavigation->hide();
    m_html->Clear();
    ShowCaptions();
}

void frmSearchResult::grdResult_ColumnClick(int column) {
    if (m_model->grdResult_ColumnClick(column)) {
        m_shownRow = -1;
        SelectRow(0);
    }
    ShowCaptions();
}

void frmSearchResult::ShowCaptions() {
    setWindowTitle(m_results.Caption());
    m_ui->grdResult->horizontalHeader()->setSortIndicator(
        static_cast<int>(m_results.SortColumn()) - 1,
        m_results.Order() == SortOrder::Ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    QString more;
    if (m_results.Rows().empty()) {
        more = GetMessage(kNothingOfKind);
    } else if (m_results.FoundBeyond() > 0) {
        more = GetMessage(
            kBestOf, {QString::number(m_results.Kept()), QString::number(m_results.FoundBeyond())});
    }
    m_ui->lblMore->setText(more);
    m_ui->lblMore->setVisible(!more.isEmpty());
}

void frmSearchResult::TlbDrawState() {
    const ResultRow* row = CurrentRow();
    const HtmlHitWalk& walk = m_html->Walk();
    m_ui->PDC->setEnabled(m_model->Row(m_shownRow - 1) != nullptr);
    m_ui->NDC->setEnabled(m_model->Row(m_shownRow + 1) != nullptr);
    m_ui->PrevHit->setEnabled(m_html->IsLoaded());
    m_ui->NextHit->setEnabled(m_html->IsLoaded());
    m_ui->LOCATE->setEnabled(row != nullptr);
    m_ui->EXEC->setEnabled(row != nullptr && !row->IsMember);
    m_ui->EXEC->setToolTip(
        GetMessage(row != nullptr && row->IsMember ? kMemberNotOpened : kOpenDocument));
    QString hit;
    if (walk.Current() > 0) {
        hit = GetMessage(kHitOf, {QString::number(walk.Current()), QString::number(walk.Count())});
    } else if (m_html->IsLoaded()) {
        hit = walk.Count() == 1 ? GetMessage(kOneHit)
                                : GetMessage(kDocumentHits, {QString::number(walk.Count())});
    }
    findChild<QLabel*>(u"lblHit"_s)->setText(hit);
}

void frmSearchResult::grdResult_ContextMenu(const QPoint& place) {
    if (!m_ui->grdResult->indexAt(place).isValid()) {
        return;
    }
    QMenu menu(this);
    menu.addAction(m_ui->EXEC);
    menu.addAction(m_ui->LOCATE);
    menu.exec(m_ui->grdResult->viewport()->mapToGlobal(place));
}

void frmSearchResult::mnuopen_Click() {
    const ResultRow* row = CurrentRow();
    if (row != nullptr && !row->IsMember) {
        LaunchFile(QStringList{platform::ToLogical(row->File)});
    }
}

// A member is found in its folder by the file that holds it.
void frmSearchResult::Locate() {
    if (const ResultRow* row = CurrentRow()) {
        LocateTarget = platform::ToLogical(row->File);
        accept();
    }
}

} // namespace velmora
