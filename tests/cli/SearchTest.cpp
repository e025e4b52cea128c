// velmora search, show and words: requests, scopes, members, limits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/cli/Cli.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using testing::HasSubstr;
using testing::Not;

class SearchTest : public CliTest {};

TEST_F(SearchTest, AMalformedRequestTellsThePlace) {
    Write("docs/a.txt", "wombat and quoll\n");
    MakeIndex();
    const CliResult search = Here({u"search"_s, u"wombat and"_s});
    EXPECT_THAT(search, EndsWith(2));
    EXPECT_THAT(search.error, HasSubstr("A word is missing at the end of the request"));
    const CliResult open = Here({u"search"_s, u"(wombat"_s});
    EXPECT_THAT(open, EndsWith(2));
    EXPECT_THAT(open.error, HasSubstr("character 1"));
    EXPECT_THAT(Here({u"show"_s, u"docs/a.txt"_s, u"--query"_s, u"(wombat"_s}), EndsWith(2));
    const CliResult nothing = Here({u"search"_s, u"dodo"_s, u"--json"_s});
    EXPECT_THAT(nothing, EndsWith(1));
    EXPECT_EQ(nothing.output, "");
    EXPECT_THAT(Here({u"words"_s, u"dodo"_s}), EndsWith(1));
    EXPECT_THAT(Here({u"words"_s, u"---"_s}), EndsWith(2));
    EXPECT_THAT(Here({u"words"_s, u"--"_s, u"---"_s}), EndsWith(1)) << "no beginning of a word";
}

// The request goes the same way as the window's: small letters, accented vowels as any letter.
TEST_F(SearchTest, RequestsAreReadAsInTheWindow) {
    Write("docs/a.txt", "La citt\u00e0 \u00e8 bella\n");
    MakeIndex();
    EXPECT_THAT(Here({u"search"_s, u"CITTÀ AND BELLA"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"search"_s, u"bella and not città"_s}), EndsWith(1));
    EXPECT_EQ(Here({u"words"_s, u"CITTÀ"_s}).output, "1  citta\n");
}

TEST_F(SearchTest, ScopeAndLimit) {
    for (int number = 0; number < 12; ++number) {
        Write("docs/part" + QByteArray::number(number % 2) + '/' + QByteArray::number(number),
              QByteArray("bandicoot ").repeated(number + 1));
    }
    MakeIndex();
    const CliResult best = Here({u"search"_s, u"bandicoot"_s, u"--limit"_s, u"3"_s});
    EXPECT_THAT(best, EndsWith(0));
    EXPECT_EQ(best.output, "12  " + PathBytes("docs/part1/11") + "\n11  " +
                               PathBytes("docs/part0/10") + "\n10  " + PathBytes("docs/part1/9") +
                               "\n");
    EXPECT_THAT(best.error, HasSubstr("12 found")) << "nothing is cut silently";
    EXPECT_EQ(Here({u"search"_s, u"bandicoot"_s, u"--limit=1"_s}).error,
              "The document with the most hits, of 12 found\n");
    const CliResult folder =
        Here({u"search"_s, u"bandicoot"_s, u"--folder"_s, u"docs/part0/"_s, u"--json"_s});
    EXPECT_EQ(folder.Objects().size(), 6U);
    EXPECT_THAT(Here({u"search"_s, u"bandicoot"_s, u"--folder"_s, u"docs/part"_s}), EndsWith(1))
        << "a folder, not the beginning of names";
}

// What lies in mails is found, named, shown; and left out with the mail store only.
TEST_F(SearchTest, MembersGoByTheNameThatSearchPrints) {
    Write("docs/letter.eml",
          "From: a@example.org\nTo: b@example.org\nSubject: platypus\nMIME-Version: 1.0\n"
          "Date: Mon, 01 Jan 2024 10:00:00 +0000\n"
          "Content-Type: multipart/mixed; boundary=xx\n\n--xx\nContent-Type: text/plain\n\n"
          "A platypus in the body.\n--xx\nContent-Type: text/plain; name=\"List of eggs.txt\"\n"
          "Content-Disposition: attachment; filename=\"List of eggs.txt\"\n\n"
          "platypus eggs platypus eggs\n--xx--\n");
    MakeIndex();
    const auto found = Here({u"search"_s, u"platypus"_s, u"--json"_s}).Objects();
    ASSERT_EQ(found.size(), 2U);
    bool attachmentSeen = false;
    for (const QJsonObject& each : found) {
        const QString file = each[u"file"_s].toString();
        EXPECT_TRUE(file.startsWith(Path("docs/letter.eml")));
        const CliResult page = Here({u"show"_s, file, u"--query"_s, u"platypus"_s, u"--html"_s});
        EXPECT_THAT(page, EndsWith(0)) << file.toStdString();
        EXPECT_EQ(page.Anchors(), each[u"hits"_s].toInt());
        if (each[u"kind"_s] == u"attachment"_s) {
            attachmentSeen = true;
            EXPECT_EQ(each[u"display"_s], u"List of eggs.txt"_s);
            EXPECT_TRUE(file.contains(u'>') && file.endsWith(u"|List of eggs.txt"))
                << file.toStdString();
            EXPECT_THAT(page.output, HasSubstr("eggs"));
            EXPECT_THAT(page.output, Not(HasSubstr("in the body")));
            EXPECT_THAT(Here({u"show"_s, file}).output, HasSubstr("platypus eggs"));
        }
    }
    EXPECT_TRUE(attachmentSeen);
    EXPECT_EQ(Here({u"search"_s, u"platypus"_s, u"--exclude-mail"_s, u"--json"_s}).Objects().size(),
              2U)
        << "without a mail store nothing is left out";
}

// One of the best 300 or not: the hits of a document that is named are found.
TEST_F(SearchTest, ShowsHitsOfADocumentBeyondTheCap) {
    for (int number = 0; number < 310; ++number) {
        Write("docs/" + QByteArray::number(number) + ".txt",
              QByteArray("echidna ").repeated(number == 42 ? 1 : 2));
    }
    MakeIndex();
    const CliResult search = Here({u"search"_s, u"echidna"_s});
    EXPECT_EQ(search.Lines().size(), 300U);
    EXPECT_THAT(search.error, HasSubstr("310 found"));
    EXPECT_THAT(search.output, Not(HasSubstr("/42.txt")));
    EXPECT_EQ(Here({u"show"_s, u"docs/42.txt"_s, u"--query"_s, u"echidna"_s}).Anchors(), 1);
}

TEST_F(SearchTest, ShowTellsWhatItDoesNotHave) {
    Write("docs/a.txt", "possum\n");
    MakeIndex();
    Write("docs/new.txt", "possum\n");
    const CliResult absent = Here({u"show"_s, u"docs/new.txt"_s});
    EXPECT_THAT(absent, EndsWith(1));
    EXPECT_THAT(absent.error, HasSubstr("not in the index: " + PathBytes("docs/new.txt")));
    const CliResult noHit = Here({u"show"_s, u"docs/a.txt"_s, u"--query"_s, u"koala"_s});
    EXPECT_THAT(noHit, EndsWith(1));
    EXPECT_THAT(noHit.output, HasSubstr("possum")) << "the document is shown all the same";
    EXPECT_THAT(noHit.error, HasSubstr("no hits in this document"));
    // A file that is gone is shown from what the index keeps, and that is said in its page.
    QFile::remove(Path("docs/a.txt"));
    const CliResult stored = Here({u"show"_s, u"docs/a.txt"_s, u"--query"_s, u"possum"_s});
    EXPECT_THAT(stored, EndsWith(0));
    EXPECT_THAT(stored.output, HasSubstr("This is the text as it was indexed"));
    EXPECT_THAT(stored.output, HasSubstr("<A NAME=\"hit1\"></A><b>possum</b>"));
}

} // namespace

} // namespace velmora
