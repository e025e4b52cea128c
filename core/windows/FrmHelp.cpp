// The help window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/FrmHelp.h"

#include "core/Dialogue.h"
#include "core/MessageIds.h"
#include "core/Settings.h"
#include "core/windows/Captions.h"
#include "platform/Shell.h"
#include "resources/icons/Icons.h"
#include "ui_FrmHelp.h"

#include <QScrollBar>
#include <QShortcut>
#include <QTextTable>
#include <functional>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// Where this window stood last, among the user's settings.
const QString kSection = u"FrmHelp"_s;
constexpr int kContentsWidth = 270;
constexpr int kPageMargin = 16;
constexpr int kRowRoom = 7;
constexpr int kPageRole = Qt::UserRole;
const QColor kMarked(255, 235, 59);

void SaveState(const QString& key, const QByteArray& state) {
    SaveSetting(kSection, key, QString::fromLatin1(state.toBase64()));
}

QByteArray SavedState(const QString& key) {
    return QByteArray::fromBase64(GetSetting(kSection, key).toLatin1());
}

// The importer leaves tables without room around their words and headings without room above.
void GiveRoom(QTextDocument& document) {
    document.setDocumentMargin(kPageMargin);
    for (QTextFrame* frame : document.rootFrame()->childFrames()) {
        if (auto* table = qobject_cast<QTextTable*>(frame)) {
            QTextTableFormat format = table->format();
            format.setCellPadding(5);
            format.setCellSpacing(0);
            format.setBorderCollapse(true);
            format.setTopMargin(6);
            format.setBottomMargin(10);
            table->setFormat(format);
        }
    }
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() > 1) {
            QTextBlockFormat format = block.blockFormat();
            format.setTopMargin(14);
            format.setBottomMargin(4);
            QTextCursor(block).setBlockFormat(format);
        }
    }
}

} // namespace

FrmHelp::FrmHelp(const Help& help, QWidget* parent)
    : QDialog(parent, Qt::Window), m_ui(std::make_unique<Ui::FrmHelp>()), m_help(help) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowIcon(ProgramIcon());
    m_ui->cmdBack->setIcon(LineIcon(u"back"_s));
    m_ui->cmdForward->setIcon(LineIcon(u"forward"_s));
    m_ui->txtSearch->addAction(LineIcon(u"search"_s), QLineEdit::LeadingPosition);
    m_ui->splHelp->setStretchFactor(1, 1);
    m_ui->splHelp->setSizes({kContentsWidth, width() - kContentsWidth});
    restoreGeometry(SavedState(u"Geometry"_s));
    m_ui->splHelp->restoreState(SavedState(u"Splitter"_s));

    connect(m_ui->cmdBack, &QPushButton::clicked, this, [this] { Go(-1); });
    connect(m_ui->cmdForward, &QPushButton::clicked, this, [this] { Go(1); });
    const auto onKey = [this](QKeySequence key, std::function<void()> act) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, std::move(act));
    };
    onKey(Qt::ALT | Qt::Key_Left, [this] { Go(-1); });
    onKey(Qt::ALT | Qt::Key_Right, [this] { Go(1); });
    onKey(QKeySequence::Find, [this] {
        m_ui->txtSearch->setFocus();
        m_ui->txtSearch->selectAll();
    });
    connect(m_ui->txtSearch, &QLineEdit::textChanged, this, &FrmHelp::txtSearch_Change);
    connect(m_ui->txtSearch, &QLineEdit::returnPressed, this, [this] { lvwHits_Click(0); });
    connect(m_ui->lvwContents, &QTreeWidget::currentItemChanged, this, &FrmHelp::lvwContents_Click);
    connect(m_ui->lvwHits, &QListWidget::currentRowChanged, this, &FrmHelp::lvwHits_Click);
    connect(m_ui->txtPage, &QTextBrowser::anchorClicked, this, &FrmHelp::txtPage_AnchorClicked);
    FillContents();
    m_ui->txtPage->setFocus();
}

FrmHelp::~FrmHelp() {
    SaveState(u"Geometry"_s, saveGeometry());
    SaveState(u"Splitter"_s, m_ui->splHelp->saveState());
}

QString FrmHelp::CurrentPage() const {
    return m_visit < 0 ? QString() : m_visits.at(m_visit).page;
}

void FrmHelp::FillContents() {
    const QSignalBlocker quiet(m_ui->lvwContents);
    QTreeWidgetItem* above = m_ui->lvwContents->invisibleRootItem();
    for (const HelpTopic& topic : m_help.Contents()) {
        const bool isHeading = topic.page.isEmpty();
        auto* item =
            isHeading ? new QTreeWidgetItem(m_ui->lvwContents) : new QTreeWidgetItem(above);
        item->setText(0, topic.title);
        item->setSizeHint(0, QSize(0, fontMetrics().height() + kRowRoom));
        item->setData(0, kPageRole, topic.page);
        if (isHeading) {
            QFont bold = item->font(0);
            bold.setBold(true);
            item->setFont(0, bold);
            item->setFlags(Qt::ItemIsEnabled);
            above = item;
        }
    }
    m_ui->lvwContents->expandAll();
}

void FrmHelp::ShowPage(const QString& name) {
    if (m_visit >= 0 && CurrentPage() == name) {
        MarkWords();
        return;
    }
    if (m_visit >= 0) {
        m_visits[m_visit].scroll = m_ui->txtPage->verticalScrollBar()->value();
    }
    m_visits.resize(m_visit + 1); // what lay ahead is given up
    m_visits.append({name, 0});
    ++m_visit;
    Render(m_visits.at(m_visit));
}

void FrmHelp::Go(qsizetype step) {
    if (m_visit + step < 0 || m_visit + step >= m_visits.size()) {
        return;
    }
    m_visits[m_visit].scroll = m_ui->txtPage->verticalScrollBar()->value();
    m_visit += step;
    Render(m_visits.at(m_visit));
}

void FrmHelp::Render(const Visit& visit) {
    const auto page = m_help.Page(visit.page);
    QTextDocument& document = *m_ui->txtPage->document();
    document.setMarkdown(page ? page->text : GetMessage(kNoHelpPages),
                         QTextDocument::MarkdownFeatures(QTextDocument::MarkdownDialectGitHub) |
                             QTextDocument::MarkdownNoHTML);
    GiveRoom(document);
    const QString help = GetMessage(kHelpTitle);
    setWindowTitle(page && page->title != help ? page->title + u" - "_s + help : help);
    m_ui->cmdBack->setEnabled(m_visit > 0);
    m_ui->cmdForward->setEnabled(m_visit + 1 < m_visits.size());
    SelectInContents(visit.page);
    m_ui->txtPage->moveCursor(QTextCursor::Start);
    MarkWords();
    if (visit.scroll > 0) {
        m_ui->txtPage->verticalScrollBar()->setValue(visit.scroll);
    }
}

void FrmHelp::MarkWords() {
    const QString text = FoldForHelp(m_ui->txtPage->document()->toPlainText());
    QList<QTextEdit::ExtraSelection> marks;
    qsizetype first = -1;
    for (const QString& word : HelpWords(m_ui->txtSearch->text())) {
        for (qsizetype at = text.indexOf(word); at >= 0;
             at = text.indexOf(word, at + word.size())) {
            QTextEdit::ExtraSelection mark;
            mark.cursor = QTextCursor(m_ui->txtPage->document());
            mark.cursor.setPosition(static_cast<int>(at));
            mark.cursor.setPosition(static_cast<int>(at + word.size()), QTextCursor::KeepAnchor);
            mark.format.setBackground(kMarked);
            mark.format.setForeground(Qt::black);
            marks.append(mark);
            first = first < 0 ? at : std::min(first, at);
        }
    }
    m_ui->txtPage->setExtraSelections(marks);
    if (first >= 0) {
        QTextCursor cursor(m_ui->txtPage->document());
        cursor.setPosition(static_cast<int>(first));
        m_ui->txtPage->setTextCursor(cursor);
        m_ui->txtPage->ensureCursorVisible();
    }
}

void FrmHelp::SelectInContents(const QString& page) {
    const QSignalBlocker quiet(m_ui->lvwContents);
    m_ui->lvwContents->setCurrentItem(nullptr);
    for (QTreeWidgetItemIterator each(m_ui->lvwContents); *each; ++each) {
        if ((*each)->data(0, kPageRole).toString() == page) {
            m_ui->lvwContents->setCurrentItem(*each);
        }
    }
}

void FrmHelp::txtSearch_Change() {
    const QString words = m_ui->txtSearch->text().trimmed();
    const QSignalBlocker quiet(m_ui->lvwHits);
    m_hits = m_help.Search(words);
    m_ui->lvwHits->clear();
    for (const HelpHit& hit : std::as_const(m_hits)) {
        auto* item = new QListWidgetItem(hit.title + u'\n' + hit.excerpt, m_ui->lvwHits);
        item->setData(Qt::AccessibleTextRole, hit.title);
    }
    m_ui->stkLeft->setCurrentWidget(words.isEmpty()    ? static_cast<QWidget*>(m_ui->lvwContents)
                                    : m_hits.isEmpty() ? static_cast<QWidget*>(m_ui->lblNoHits)
                                                       : static_cast<QWidget*>(m_ui->lvwHits));
    MarkWords();
}

void FrmHelp::lvwContents_Click(const QTreeWidgetItem* item) {
    const QString page = item ? item->data(0, kPageRole).toString() : QString();
    if (!page.isEmpty()) {
        ShowPage(page);
    }
}

void FrmHelp::lvwHits_Click(int row) {
    if (row >= 0 && row < m_hits.size()) {
        const QSignalBlocker quiet(m_ui->lvwHits);
        m_ui->lvwHits->setCurrentRow(row);
        ShowPage(m_hits.at(row).page);
    }
}

void FrmHelp::txtPage_AnchorClicked(const QUrl& address) {
    const QString text = address.toString();
    if (const QString page = PageOfLink(text); !page.isEmpty()) {
        ShowPage(page);
        return;
    }
    const platform::SystemError error =
        text.startsWith("mailto:"_L1) ? platform::OpenMailTo(text) : platform::OpenWebPage(text);
    if (!error.Ok()) {
        Tell(GetMessage(kCannotOpenAddress, {text}) + u'\n' + error.text, GetMessage(kHelpTitle),
             Icon::Exclamation);
    }
}

} // namespace velmora
