// The help's pages as they are delivered, and what finds them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Help.h"
#include "tests/core/Place.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;
using testing::IsEmpty;

namespace velmora {
namespace {

const QString kPages = QStringLiteral(VELMORA_SOURCE_DIR "/docs/help");
constexpr Language kLanguages[] = {Language::Italian, Language::English, Language::German,
                                   Language::Spanish, Language::French};

QStringList PagesOf(Language language) {
    QStringList names;
    for (const QString& file :
         QDir(kPages + u'/' + FolderOfLanguage(language)).entryList({u"*.md"_s})) {
        names << file.chopped(3);
    }
    return names;
}

QString TextOf(Language language, const QString& page) {
    return QString::fromUtf8(
        BytesOf(kPages + u'/' + FolderOfLanguage(language) + u'/' + page + u".md"_s));
}

// A text of the table as a page names it: without access key, dots and outer blanks, in one line.
QString AsNamed(QString text) {
    return text.remove(u'&').remove(u"..."_s).remove(u'\u00A0').simplified();
}

TEST(HelpPagesTest, EveryWindowHasAPageInBothFullLanguages) {
    QStringList missing;
    int windows = 0;
    QDirIterator each(QStringLiteral(VELMORA_SOURCE_DIR), {u"*.ui"_s}, QDir::Files,
                      QDirIterator::Subdirectories);
    while (each.hasNext()) {
        const QString file = each.next();
        static const QRegularExpression ours(u"/[a-z]+/windows/[^/]+\\.ui$"_s);
        static const QRegularExpression named(
            u"<class>(\\w+)</class>\\s*<widget class=\"(QDialog|QMainWindow)\""_s);
        const auto window = named.match(QString::fromUtf8(BytesOf(file)));
        if (!ours.match(file).hasMatch() || !window.hasMatch()) {
            continue;
        }
        ++windows;
        for (const Language language : {Language::English, Language::Italian}) {
            if (!PagesOf(language).contains(window.captured(1))) {
                missing << FolderOfLanguage(language) + u'/' + window.captured(1);
            }
        }
    }
    EXPECT_GE(windows, 9);
    EXPECT_THAT(missing, IsEmpty());
}

TEST(HelpPagesTest, EveryPageHasATitleAndLinksThatLeadSomewhere) {
    for (const Language language : kLanguages) {
        const Help help(kPages, language);
        EXPECT_TRUE(PagesOf(language).contains(u"index"_s))
            << qPrintable(FolderOfLanguage(language));
        EXPECT_TRUE(PagesOf(language).contains(u"search-language"_s));
        for (const QString& page : PagesOf(language)) {
            SCOPED_TRACE((FolderOfLanguage(language) + u'/' + page).toStdString());
            EXPECT_FALSE(help.Page(page)->title.isEmpty());
            for (const QString& link : HelpLinks(TextOf(language, page))) {
                EXPECT_TRUE(link.startsWith("https://"_L1) || help.Page(PageOfLink(link)))
                    << link.toStdString();
            }
        }
    }
    EXPECT_EQ(PagesOf(Language::Italian), PagesOf(Language::English));
}

TEST(HelpPagesTest, TheOverviewLeadsToEveryPage) {
    for (const Language language : kLanguages) {
        QStringList listed;
        for (const HelpTopic& topic : Help(kPages, language).Contents()) {
            listed += topic.page;
        }
        for (const QString& page : PagesOf(Language::English)) {
            EXPECT_EQ(listed.count(page), 1)
                << qPrintable(FolderOfLanguage(language) + u": "_s + page);
        }
    }
}

// What stands in bold is a caption: a person must find it in the windows, word for word.
TEST(HelpPagesTest, CaptionsAreNamedAsTheWindowsShowThem) {
    static const QRegularExpression bold(u"\\*\\*([^*]+)\\*\\*"_s);
    for (const Language language : kLanguages) {
        QStringList captions;
        for (const QString& text : MessageBlock(language)) {
            captions << AsNamed(text);
        }
        for (const QString& page : PagesOf(language)) {
            for (auto each = bold.globalMatch(TextOf(language, page)); each.hasNext();) {
                const QString named = each.next().captured(1);
                EXPECT_TRUE(captions.contains(AsNamed(named)))
                    << qPrintable(FolderOfLanguage(language) + u'/' + page + u": "_s + named);
            }
        }
    }
}

class HelpTest : public testing::Test {
  protected:
    HelpTest() {
        ThePlace().Clear();
        Write("en/index.md",
              "# Help\n\n- [Start](start.md)\n\n## Windows\n\n- [Main](FrmMain.md)\n");
        Write("en/start.md", "# Start\n\nSee the [café list](FrmMain.md) of `old things`.\n");
        Write("en/FrmMain.md",
              "# Main window\n\nThe cafe. A cafe\n\n| a | b |\n|---|---|\n| wood | iron |\n");
        Write("de/index.md",
              "# Hilfe\n\n- [Anfang](start.md)\n\n## Fenster\n\n- [Haupt](FrmMain.md)\n");
        Write("de/start.md", "# Anfang\n\nÜber Größe und Holz\n");
    }
    static void Write(const char* file, const char* text) {
        WriteFile(Folder() + u'/' + QLatin1StringView(file), text);
    }
    static QString Folder() { return ThePlace().Path("home", u"help"_s); }
    static QStringList Found(const Help& help, const QString& words) {
        QStringList pages;
        for (const HelpHit& hit : help.Search(words)) {
            pages << hit.page;
        }
        return pages;
    }
};

TEST_F(HelpTest, PageComesInTheLanguageElseInEnglishElseTheOverview) {
    const Help german(Folder(), Language::German);
    EXPECT_EQ(german.Page(u"start"_s)->title, u"Anfang"_s);
    EXPECT_EQ(german.Page(u"FrmMain"_s)->title, u"Main window"_s);
    EXPECT_FALSE(german.Page(u"FrmNone"_s));
    EXPECT_FALSE(german.Page(u"../en/start"_s));
    EXPECT_EQ(german.PageOf({u"QMessageBox"_s, u"FrmMain"_s}), u"FrmMain"_s);
    EXPECT_EQ(german.PageOf({u"FrmNone"_s}), u"index"_s);
    EXPECT_EQ(Help(Folder(), Language::French).Page(u"start"_s)->title, u"Start"_s);

    const Help nowhere({}, Language::English);
    EXPECT_EQ(nowhere.PageOf({u"FrmMain"_s}), QString());
    EXPECT_THAT(nowhere.Contents(), IsEmpty());
    EXPECT_THAT(Found(nowhere, u"start"_s), IsEmpty());
}

TEST_F(HelpTest, ProgramsFindThePagesThatTheBuildLays) {
    const Help help(HelpFolder(), Language::Italian);
    EXPECT_EQ(help.Page(u"FrmMain"_s)->title, u"La finestra principale"_s);
}

TEST_F(HelpTest, ContentsAreTheOverviewsHeadingsAndLinks) {
    QStringList lines;
    for (const HelpTopic& topic : Help(Folder(), Language::German).Contents()) {
        lines << topic.title + u'|' + topic.page;
    }
    EXPECT_EQ(lines, QStringList(
                         {u"Hilfe|index"_s, u"Anfang|start"_s, u"Fenster|"_s, u"Haupt|FrmMain"_s}));
}

TEST_F(HelpTest, SearchWantsAllWordsAndDoesNotMindAccentsOrMarks) {
    const Help help(Folder(), Language::English);
    EXPECT_EQ(Found(help, u"CAFÉ"_s), QStringList({u"FrmMain"_s, u"start"_s})); // the most first
    EXPECT_EQ(Found(help, u"main"_s).first(), u"FrmMain"_s);                    // in the title
    EXPECT_EQ(Found(help, u"cafe thing"_s), QStringList(u"start"_s));
    EXPECT_THAT(Found(help, u"cafe nowhere"_s), IsEmpty());
    EXPECT_THAT(Found(help, u"FrmMain"_s), IsEmpty()); // a link's address is not read
    EXPECT_THAT(Found(help, u"  "_s), IsEmpty());
    EXPECT_EQ(help.Search(u"things"_s).first().excerpt, u"See the café list of old things ."_s);
    EXPECT_EQ(Found(Help(Folder(), Language::German), u"grosse"_s), QStringList());
    EXPECT_EQ(Found(Help(Folder(), Language::German), u"uber große"_s), QStringList(u"start"_s));
    // A page that the language lacks is searched in English.
    EXPECT_EQ(Found(Help(Folder(), Language::German), u"iron"_s), QStringList(u"FrmMain"_s));
}

TEST_F(HelpTest, LinksThatLeaveTheHelpAreNotPages) {
    EXPECT_EQ(PageOfLink(u"start.md"_s), u"start"_s);
    for (const QString& link : {u"https://x.org/start.md"_s, u"../start.md"_s, u"mailto:a@b.md"_s,
                                u"/etc/start.md"_s, u"start.txt"_s}) {
        EXPECT_EQ(PageOfLink(link), QString()) << link.toStdString();
    }
}

} // namespace
} // namespace velmora
