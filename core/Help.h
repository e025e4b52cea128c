// The help's pages on the disk: where they lie, the page of a window, what holds certain words.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Messages.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace velmora {

// The folder (machine path) that holds "en", "it" …: beside the executable, else where an
// installation keeps what it shares. Empty when there is none.
QString HelpFolder();

// The name of a language's folder: "it", "en", "de", "es", "fr".
QString FolderOfLanguage(Language language);

// A page as it is written.
struct HelpPage {
    QString name;  // "FrmMain", "search-language": the file's name without its ending
    QString title; // its first heading
    QString text;  // CommonMark
};

// A line of the contents. Without a page it is the heading of the lines that follow.
struct HelpTopic {
    QString title;
    QString page;
};

// A page that holds all words that were looked for.
struct HelpHit {
    QString page;
    QString title;
    QString excerpt; // plain text around the first of the words
};

// Reads the pages of one language; a page that it lacks comes in English. A folder that is not
// there has no pages.
class Help {
  public:
    // folder: as HelpFolder answers it.
    Help(const QString& folder, Language language);

    // The page of that name; nothing when there is none in either language. A name that is more
    // than a name (a path) is none.
    [[nodiscard]] std::optional<HelpPage> Page(const QString& name) const;
    // The first of these names that has a page, else the overview; empty when there is not even
    // that.
    [[nodiscard]] QString PageOf(const QStringList& names) const;
    // The overview's headings and links, in its order.
    [[nodiscard]] QList<HelpTopic> Contents() const;
    // The pages that hold every one of the words, parted by blanks; case and accents do not count,
    // parts of words do. Those with the words in the title first, then those with the most.
    [[nodiscard]] QList<HelpHit> Search(const QString& words) const;

  private:
    QString m_folder;
    QStringList m_languages; // best first
};

// The names that a page's links lead to, addresses outside the help among them.
QStringList HelpLinks(const QString& text);
// The name of the page that a link of a page leads to; empty when it leads out of the help.
QString PageOfLink(const QString& link);
// The folded words of a search, and a text folded like them, of the same length as the text.
QStringList HelpWords(const QString& words);
QString FoldForHelp(const QString& text);

inline const QString kHelpOverview = QStringLiteral("index");

} // namespace velmora
