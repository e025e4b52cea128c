// Finds, reads and searches the help's pages.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Help.h"

#include "platform/Files.h"
#include "platform/Folders.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype kExcerptBefore = 40;
constexpr qsizetype kExcerptLength = 100;

const QString kEnding = u".md"_s;

QString TitleOf(const QString& text) {
    for (const QString& line : text.split(u'\n')) {
        if (line.startsWith(u"# ")) {
            return line.mid(2).trimmed();
        }
    }
    return {};
}

const QRegularExpression& Link() {
    static const QRegularExpression link(u"\\[([^\\]]+)\\]\\(([^)\\s]+)\\)"_s);
    return link;
}

// What a person reads of a page below its title, in one line.
QString PlainText(QString text) {
    static const QRegularExpression marks(u"[*`#|]|^\\s*[-:| ]+$|^ *[-] "_s,
                                          QRegularExpression::MultilineOption);
    static const QRegularExpression title(u"\\A# .*\n"_s);
    return text.remove(title).replace(Link(), u"\\1"_s).replace(marks, u" "_s).simplified();
}

// Where the first of the words stands; -1 when one of them is missing. `count`: how often they do.
qsizetype PlaceOf(const QStringList& words, const QString& folded, qsizetype& count) {
    qsizetype first = -1;
    count = 0;
    for (const QString& word : words) {
        const qsizetype at = folded.indexOf(word);
        if (at < 0) {
            return -1;
        }
        first = first < 0 ? at : std::min(first, at);
        count += folded.count(word);
    }
    return first;
}

QString Excerpt(const QString& plain, qsizetype place) {
    qsizetype from = std::max<qsizetype>(0, place - kExcerptBefore);
    if (from > 0) { // at the beginning of a word
        const qsizetype blank = plain.indexOf(u' ', from);
        from = blank >= 0 && blank < place ? blank + 1 : place;
    }
    QString excerpt = plain.mid(from, kExcerptLength);
    if (from + kExcerptLength < plain.size()) {
        excerpt = excerpt.section(u' ', 0, -2) + u" …"_s;
    }
    return from > 0 ? u"… "_s + excerpt : excerpt;
}

} // namespace

QString HelpFolder() {
    const platform::ProgramPlaces places = platform::PlacesOfThisProgram();
    QStringList folders{places.executableFolder};
    folders += places.shareFolders;
    for (const QString& folder : std::as_const(folders)) {
        const QString help = folder + u"/help"_s;
        if (platform::IsFile(help + u"/en/"_s + kHelpOverview + kEnding)) {
            return help;
        }
    }
    return {};
}

QString FolderOfLanguage(Language language) {
    switch (language) {
    case Language::Italian:
        return u"it"_s;
    case Language::German:
        return u"de"_s;
    case Language::Spanish:
        return u"es"_s;
    case Language::French:
        return u"fr"_s;
    case Language::English:
        break;
    }
    return u"en"_s;
}

Help::Help(const QString& folder, Language language)
    : m_folder(folder), m_languages{FolderOfLanguage(language), u"en"_s} {
    m_languages.removeDuplicates();
}

std::optional<HelpPage> Help::Page(const QString& name) const {
    if (m_folder.isEmpty() || name.isEmpty() || name.contains(u'/') || name.startsWith(u'.')) {
        return std::nullopt;
    }
    for (const QString& language : m_languages) {
        const platform::FileContent content =
            platform::ReadFile(m_folder + u'/' + language + u'/' + name + kEnding);
        if (content.error.Ok()) {
            const QString text = QString::fromUtf8(content.bytes);
            return HelpPage{name, TitleOf(text), text};
        }
    }
    return std::nullopt;
}

QString Help::PageOf(const QStringList& names) const {
    for (const QString& name : names + QStringList{kHelpOverview}) {
        if (Page(name)) {
            return name;
        }
    }
    return {};
}

QList<HelpTopic> Help::Contents() const {
    const auto overview = Page(kHelpOverview);
    if (!overview) {
        return {};
    }
    QList<HelpTopic> topics{{overview->title, kHelpOverview}};
    for (const QString& line : overview->text.split(u'\n')) {
        if (line.startsWith(u"## ")) {
            topics.append({line.mid(3).trimmed(), {}});
        } else if (const auto link = Link().match(line);
                   line.startsWith(u"- ") && link.hasMatch()) {
            topics.append({link.captured(1), PageOfLink(link.captured(2))});
        }
    }
    return topics;
}

QList<HelpHit> Help::Search(const QString& words) const {
    const QStringList folded = HelpWords(words);
    QSet<QString> names;
    for (const QString& language : m_languages) {
        for (const QString& file : QDir(m_folder + u'/' + language).entryList({u'*' + kEnding})) {
            names.insert(file.chopped(kEnding.size()));
        }
    }
    struct Found {
        HelpHit hit;
        bool inTitle;
        qsizetype count;
    };
    QList<Found> found;
    for (const QString& name : std::as_const(names)) {
        const auto page = folded.isEmpty() ? std::nullopt : Page(name);
        if (!page) {
            continue;
        }
        const QString plain = PlainText(page->text);
        const QString title = page->title + u' ';
        qsizetype count = 0;
        const qsizetype place = PlaceOf(folded, FoldForHelp(title + plain), count);
        qsizetype inTitle = 0;
        if (place >= 0) {
            const qsizetype inText = std::max<qsizetype>(0, place - title.size());
            found.append({{name, page->title, Excerpt(plain, inText)},
                          PlaceOf(folded, FoldForHelp(page->title), inTitle) >= 0,
                          count});
        }
    }
    std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
        return std::tuple(!a.inTitle, -a.count, a.hit.title) <
               std::tuple(!b.inTitle, -b.count, b.hit.title);
    });
    QList<HelpHit> hits;
    for (const Found& each : std::as_const(found)) {
        hits.append(each.hit);
    }
    return hits;
}

QStringList HelpLinks(const QString& text) {
    QStringList links;
    for (auto each = Link().globalMatch(text); each.hasNext();) {
        links.append(each.next().captured(2));
    }
    return links;
}

QString PageOfLink(const QString& link) {
    const bool isPage = link.endsWith(kEnding) && !link.contains(u'/') && !link.contains(u':');
    return isPage ? link.chopped(kEnding.size()) : QString();
}

QStringList HelpWords(const QString& words) {
    return FoldForHelp(words).split(u' ', Qt::SkipEmptyParts);
}

QString FoldForHelp(const QString& text) {
    QString folded = text;
    for (QChar& c : folded) {
        // The base letter alone, so that places in the folded text are places in the text.
        const QString parts = c.decomposition();
        c = (parts.isEmpty() || c.decompositionTag() != QChar::Canonical ? c : parts.front())
                .toCaseFolded();
    }
    return folded;
}

} // namespace velmora
