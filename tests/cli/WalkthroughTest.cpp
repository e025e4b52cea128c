// The whole road of a document on the command line: from a folder to its highlighted hits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/cli/Cli.h"

#include <QDateTime>
#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class WalkthroughTest : public CliTest {};

QList<int> Words(const QJsonObject& object) {
    QList<int> numbers;
    for (const QJsonValue& value : object[u"hitWords"_s].toArray()) {
        numbers << value.toInt();
    }
    return numbers;
}

// What every step prints is what the next one is fed with.
TEST_F(WalkthroughTest, FromInitToHighlightedHits) {
    Write("docs/letters/Meier.html",
          "<h1>Invoice</h1><p>The <i>invoice</i> of Mr M&uuml;ller &amp; Sons.</p>");
    Write("docs/note.txt", "No invoice yet.\n");
    Write("docs/other.txt", "Nothing of the kind.\n");

    EXPECT_THAT(Velmora("--lang en init %/archive").output, HasSubstr("/archive"));
    EXPECT_THAT(Here({u"folders"_s, u"add"_s, Path("docs")}), EndsWith(0));
    EXPECT_THAT(Here({u"folders"_s, u"list"_s}).Lines(), ElementsAre(PathBytes("docs")));

    const CliResult indexed = Here({u"index"_s});
    ASSERT_THAT(indexed, EndsWith(0));
    EXPECT_EQ(indexed.output,
              "Added: 3, changed: 0, removed: 0, unchanged: 0, not or only partly read: 0\n");
    EXPECT_EQ(indexed.error, "") << "no progress where there is no terminal";

    const CliResult search = Here({u"search"_s, u"Invoice"_s, u"--json"_s});
    ASSERT_THAT(search, EndsWith(0));
    const auto found = search.Objects();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0][u"file"_s], Path("docs/letters/Meier.html"));
    EXPECT_EQ(found[0][u"display"_s], u"Meier.html"_s);
    EXPECT_EQ(found[0][u"kind"_s], u"file"_s);
    EXPECT_EQ(found[0][u"hits"_s], 2);
    EXPECT_THAT(Words(found[0]), ElementsAre(1, 3));
    EXPECT_THAT(Words(found[1]), ElementsAre(2));
    const QString modified = found[0][u"modified"_s].toString();
    EXPECT_THAT(modified.toStdString(), testing::EndsWith("Z"));
    EXPECT_EQ(QDateTime::fromString(modified, Qt::ISODate).toSecsSinceEpoch(),
              QFileInfo(Path("docs/letters/Meier.html")).lastModified().toSecsSinceEpoch());

    const QString file = found[0][u"file"_s].toString();
    const CliResult page = Here({u"show"_s, file, u"--query"_s, u"INVOICE"_s, u"--html"_s});
    ASSERT_THAT(page, EndsWith(0));
    EXPECT_THAT(page.output, HasSubstr("<A NAME=\"hit1\"></A><b>Invoice</b>"));
    EXPECT_THAT(page.output, HasSubstr("<A NAME=\"hit2\"></A><b>invoice</b>"));
    EXPECT_THAT(page.output, HasSubstr("Müller &amp; Sons"));
    EXPECT_EQ(page.Anchors(), found[0][u"hits"_s].toInt());
    EXPECT_THAT(Here({u"show"_s, file, u"--html"_s}).output, Not(HasSubstr("<A NAME=\"hit")));
    EXPECT_THAT(Here({u"show"_s, Path("docs/note.txt")}).output, HasSubstr("No invoice yet."));

    const auto words = Here({u"words"_s, u"INV"_s, u"--json"_s}).Objects();
    ASSERT_EQ(words.size(), 1U);
    EXPECT_EQ(words[0][u"word"_s], u"invoice"_s);
    EXPECT_EQ(words[0][u"documents"_s], 2);
    EXPECT_EQ(Here({u"words"_s, u"invo"_s}).output, "2  invoice\n");
    EXPECT_EQ(Here({u"search"_s, u"invoice"_s}).output,
              "2  " + PathBytes("docs/letters/Meier.html") + "\n1  " + PathBytes("docs/note.txt") +
                  "\n");
}

// An update reads what has changed; a folder that leaves takes its documents along.
TEST_F(WalkthroughTest, UpdatesAndRemovesFolders) {
    Write("docs/a.txt", "walrus\n");
    Write("docs/gone.txt", "walrus\n");
    Write("more/b.txt", "walrus\n");
    MakeIndex();
    ASSERT_THAT(Velmora("--archive %/archive folders add %/more"), EndsWith(0));
    QFile::remove(Path("docs/gone.txt"));
    Write("docs/a.txt", "walrus and carpenter\n");
    EXPECT_EQ(Here({u"index"_s}).output,
              "Added: 1, changed: 1, removed: 1, unchanged: 0, not or only partly read: 0\n");
    EXPECT_EQ(Here({u"search"_s, u"walrus"_s}).Lines().size(), 2U);

    EXPECT_THAT(Here({u"folders"_s, u"remove"_s, Path("more")}), EndsWith(0));
    EXPECT_THAT(Here({u"folders"_s, u"list"_s}).Lines(), ElementsAre(PathBytes("docs")));
    EXPECT_EQ(Here({u"search"_s, u"walrus"_s}).output, "1  " + PathBytes("docs/a.txt") + "\n");
    EXPECT_TRUE(QFile::exists(Path("more/b.txt")));
    EXPECT_EQ(Here({u"index"_s, u"--rebuild"_s}).output,
              "Added: 1, changed: 0, removed: 0, unchanged: 0, not or only partly read: 0\n");
}

// Only what is named is read, even when more is new.
TEST_F(WalkthroughTest, IndexesNamedPathsOnly) {
    Write("docs/a.txt", "one\n");
    MakeIndex();
    Write("docs/sub/b.txt", "two\n");
    Write("docs/c.txt", "three\n");
    m_folder = Path("docs");
    EXPECT_THAT(Here({u"index"_s, u"sub"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"search"_s, u"two"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"search"_s, u"three"_s}), EndsWith(1));
    EXPECT_THAT(Here({u"index"_s, u"./sub/../c.txt"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"search"_s, u"three"_s}), EndsWith(0));
}

// The default archive lies in the program folder and keeps users apart.
TEST_F(WalkthroughTest, DefaultArchiveBelongsToTheUser) {
    Write("docs/a.txt", "hedgehog\n");
    ASSERT_THAT(Velmora("init %/program"), EndsWith(0));
    ASSERT_THAT(Velmora("folders add %/docs"), EndsWith(0));
    ASSERT_THAT(Velmora("index"), EndsWith(0));
    EXPECT_THAT(Velmora("search hedgehog"), EndsWith(0));
    EXPECT_THAT(Velmora("--user-key SOMEBODY.ELSE folders list").output, IsEmpty());
    EXPECT_THAT(Velmora("--user-key SOMEBODY.ELSE search hedgehog"), EndsWith(3));
    const QStringList keys =
        QDir(Path("program/indexes")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(keys.size(), 1);
    EXPECT_THAT(keys[0].toStdString(), HasSubstr(".")) << "domain and user";
    EXPECT_EQ(keys[0], keys[0].toUpper());
    // The same folder as an archive that all share is another one.
    EXPECT_THAT(Velmora("--archive %/program folders list").output, IsEmpty());
    EXPECT_THAT(Run({u"--archive"_s, Path("program"), u"search"_s, u"hedgehog"_s, u"--user-key"_s,
                     keys[0].toLower()}),
                EndsWith(0))
        << "a key counts without case";
}

} // namespace

} // namespace velmora
