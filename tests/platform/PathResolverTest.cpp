// Finding the machine's spelling of a logical path, on real folders that tell names apart by case.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/PathResolver.h"

#include "platform/LogicalPath.h"
#include "tests/platform/TestSupport.h"

#include <cstdio>
#include <thread>

using namespace platform;
using testing_support::Sandbox;

namespace {

class Resolving : public testing::Test {
  protected:
    Sandbox m_box;
    PathResolver m_resolver{[] { return std::vector<Mount>(); }};

    /// The logical path of a name in the sandbox, the sandbox's own folder spelled as it is.
    QString Logical(const char* below) const {
        return ToLogical(m_box.Path()) + QString::fromUtf8(below);
    }
    QString Find(const char* below) { return m_resolver.ToMachine(Logical(below)); }

    /// Asks until the folders' stamps are old enough to be believed: at most a tick of the clock.
    void Settle(const QString& logical) {
        for (int i = 0; i < 100'000; ++i) {
            const qint64 before = m_resolver.FolderReads();
            (void)m_resolver.ToMachine(logical);
            if (before == m_resolver.FolderReads()) {
                return;
            }
        }
        FAIL() << "folders are read each time";
    }
};

} // namespace

TEST_F(Resolving, FindsSpellingsThatExistInAnyCase) {
    m_box.MakeFolder("Docs/Über uns");
    m_box.Write("Docs/Über uns/Straße.TXT");
    m_box.Write("Docs/read me");
    const QString capitals = Capitals(Logical("\\docs\\über uns\\straße.txt"));
    EXPECT_EQ(m_resolver.ToMachine(capitals), m_box.Path("Docs/Über uns/Straße.TXT"));
    EXPECT_EQ(m_resolver.DisplayPath(capitals), m_box.Path("Docs/Über uns/Straße.TXT"));
    EXPECT_EQ(Find("\\dOCS\\READ me\\"), m_box.Path("Docs/read me"));
    EXPECT_EQ(Find("\\Docs\\read me"), m_box.Path("Docs/read me"));
    EXPECT_EQ(m_resolver.ToMachine(QStringLiteral("\\")), QStringLiteral("/"));
    EXPECT_EQ(m_resolver.ToMachine(QStringLiteral("\\TMP")), QStringLiteral("/tmp"));
}

TEST_F(Resolving, OfNamesThatDifferOnlyByCaseTheExactOneThenTheFirst) {
    m_box.Write("Plan.txt");
    m_box.Write("plan.txt");
    m_box.Write("pLan.txt");
    EXPECT_EQ(Find("\\plan.txt"), m_box.Path("plan.txt"));
    EXPECT_EQ(Find("\\pLan.txt"), m_box.Path("pLan.txt"));
    EXPECT_EQ(Find("\\PLAN.TXT"), m_box.Path("Plan.txt"));
}

TEST_F(Resolving, AFolderThatHoldsTheRestGoesBeforeOneThatDoesNot) {
    m_box.MakeFolder("DOCS");
    m_box.MakeFolder("Docs/2020");
    m_box.MakeFolder("docs/2021");
    m_box.Write("docs/2021/bill.txt");
    m_box.Write("dOCS", "a file in the way");
    EXPECT_EQ(Find("\\DOCS\\2021\\BILL.TXT"), m_box.Path("docs/2021/bill.txt"));
    EXPECT_EQ(Find("\\DOCS\\2020\\new"), m_box.Path("Docs/2020/new"));
    EXPECT_EQ(Find("\\DOCS\\new.txt"), m_box.Path("DOCS/new.txt"));
}

TEST_F(Resolving, WhatDoesNotExistKeepsItsSpellingUnderTheDeepestPart) {
    m_box.MakeFolder("Docs/Old");
    m_box.Write("Docs/file");
    EXPECT_EQ(Find("\\DOCS\\OLD\\No\\Such\\Deep\\fIle.txt"),
              m_box.Path("Docs/Old/No/Such/Deep/fIle.txt"));
    EXPECT_EQ(Find("\\DOCS\\FILE\\below"), m_box.Path("Docs/file/below"));
    EXPECT_EQ(m_resolver.DisplayPath(Logical("\\DOCS\\nEw")), m_box.Path("Docs/nEw"));
    const QByteArray tooLong(300, 'n');
    EXPECT_EQ(Find("\\DOCS\\" + tooLong), m_box.Path("Docs/" + tooLong));
}

TEST_F(Resolving, StrangeNamesLeadToTheirFiles) {
    for (const QByteArray name :
         {"a\\b.txt", "latin \xFC.txt", "\xEF\x81\x9C", "\xEF\x9F\xBC", "-rf", "a|b>c"}) {
        m_box.MakeFolder("Sub");
        m_box.Write("Sub/" + name, name);
        const QString logical = ToLogical(m_box.Path("Sub/" + name));
        EXPECT_EQ(m_resolver.ToMachine(logical), m_box.Path("Sub/" + name));
        const QString found = m_resolver.ToMachine(Capitals(logical));
        EXPECT_EQ(ReadFile(found).bytes, name) << name.toHex().constData();
    }
}

TEST_F(Resolving, NoPlaceOnThisMachine) {
    for (const char* path : {"", "C:\\DOCS", "docs\\x", "\\\\server\\share\\x", "\\\\"}) {
        EXPECT_EQ(m_resolver.ToMachine(QString::fromLatin1(path)), QString()) << path;
        EXPECT_EQ(m_resolver.DisplayPath(QString::fromLatin1(path)), QString::fromLatin1(path))
            << path;
    }
    EXPECT_EQ(m_resolver.ToMachine(QStringLiteral("\\etc\\passwd") + QChar(u'\0')), QString());
}

TEST_F(Resolving, SeesEveryChangeAtOnce) {
    m_box.MakeFolder("Docs");
    for (int i = 0; i < 50; ++i) { // quicker than the clock that stamps folders
        EXPECT_EQ(Find("\\DOCS\\LETTER.TXT"), m_box.Path("Docs/LETTER.TXT"));
        m_box.Write("Docs/letter.txt");
        EXPECT_EQ(Find("\\DOCS\\LETTER.TXT"), m_box.Path("Docs/letter.txt"));
        m_box.Write("Docs/Letter.txt");
        EXPECT_EQ(Find("\\DOCS\\LETTER.TXT"), m_box.Path("Docs/Letter.txt"));
        ASSERT_EQ(rename(m_box.Bytes("Docs").constData(), m_box.Bytes("dOcs").constData()), 0);
        EXPECT_EQ(Find("\\DOCS\\LETTER.TXT"), m_box.Path("dOcs/Letter.txt"));
        ASSERT_EQ(rename(m_box.Bytes("dOcs").constData(), m_box.Bytes("Docs").constData()), 0);
        ASSERT_EQ(unlink(m_box.Bytes("Docs/letter.txt").constData()), 0);
        ASSERT_EQ(unlink(m_box.Bytes("Docs/Letter.txt").constData()), 0);
    }
}

TEST_F(Resolving, FollowsALinkThatIsTurned) {
    m_box.MakeFolder("one");
    m_box.MakeFolder("two");
    m_box.Write("one/Alpha");
    m_box.Write("two/alpha");
    ASSERT_EQ(symlink("one", m_box.Bytes("Link").constData()), 0);
    EXPECT_EQ(Find("\\LINK\\ALPHA"), m_box.Path("Link/Alpha"));
    ASSERT_EQ(unlink(m_box.Bytes("Link").constData()), 0);
    ASSERT_EQ(symlink("two", m_box.Bytes("Link").constData()), 0);
    EXPECT_EQ(Find("\\LINK\\ALPHA"), m_box.Path("Link/alpha"));
    ASSERT_EQ(symlink("nowhere", m_box.Bytes("Dangling").constData()), 0);
    EXPECT_EQ(Find("\\DANGLING"), m_box.Path("Dangling"));
}

TEST_F(Resolving, ReadsAFolderOnceForAllItsFiles) {
    m_box.MakeFolder("Docs/Deep");
    for (int i = 0; i < 500; ++i) {
        m_box.Write("Docs/Deep/File" + QByteArray::number(i));
    }
    Settle(Logical("\\DOCS\\DEEP\\FILE0"));
    const qint64 before = m_resolver.FolderReads();
    for (int i = 0; i < 500; ++i) {
        const QByteArray number = QByteArray::number(i);
        EXPECT_EQ(Find("\\DOCS\\DEEP\\FILE" + number), m_box.Path("Docs/Deep/File" + number));
    }
    EXPECT_EQ(m_resolver.FolderReads(), before);
}

TEST_F(Resolving, SpellingsThatExistCostNoFolderRead) {
    m_box.MakeFolder("Docs");
    m_box.Write("Docs/a");
    EXPECT_EQ(Find("\\Docs\\a"), m_box.Path("Docs/a"));
    EXPECT_EQ(m_resolver.FolderReads(), 0);
}

TEST_F(Resolving, NestedTwinsDoNotMultiply) {
    QByteArray path;
    for (int depth = 0; depth < 30; ++depth) {
        m_box.MakeFolder(path + "a");
        m_box.MakeFolder(path + "A");
        path += "A/";
    }
    QByteArray wanted;
    for (int depth = 0; depth < 30; ++depth) {
        wanted += "\\A";
    }
    const QString missing = Find(wanted + "\\missing");
    EXPECT_EQ(missing, m_box.Path(path + "missing"));
}

TEST_F(Resolving, AFolderThatMayBePassedButNotReadStillLetsSmallLettersThrough) {
    m_box.MakeFolder("home/anna");
    chmod(m_box.Bytes().constData(), 0755);
    chmod(m_box.Bytes("home").constData(), 0711);
    const QString wanted = m_box.Path("home/anna");
    EXPECT_EQ(testing_support::AsPlainUser([&] { return Find("\\HOME\\ANNA") == wanted ? 0 : 1; }),
              0);
}

TEST_F(Resolving, SharesAreFoundWhereTheyAreMounted) {
    m_box.MakeFolder("mnt/nas/Letters");
    m_box.Write("mnt/nas/Letters/Anna.txt");
    PathResolver resolver([&] {
        return std::vector<Mount>{
            {m_box.Bytes("mnt/nas"), "cifs", QStringLiteral("\\\\nas\\docs"), 1}};
    });
    EXPECT_EQ(resolver.ToMachine(QStringLiteral("\\\\NAS\\DOCS\\LETTERS\\ANNA.TXT")),
              m_box.Path("mnt/nas/Letters/Anna.txt"));
    EXPECT_EQ(resolver.DisplayPath(QStringLiteral("\\\\NAS\\DOCS\\LETTERS\\NEW")),
              m_box.Path("mnt/nas/Letters/NEW"));
    EXPECT_EQ(resolver.ToMachine(QStringLiteral("\\\\NAS\\DOCS\\")), m_box.Path("mnt/nas"));
    EXPECT_EQ(resolver.ToMachine(QStringLiteral("\\\\NAS\\DOCSX\\LETTERS")), QString());
}

TEST_F(Resolving, ManyThreadsAtOnce) {
    m_box.MakeFolder("Docs");
    m_box.Write("Docs/Known");
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                const QByteArray name = QByteArray::number(t) + "-New" + QByteArray::number(i);
                close(open(m_box.Bytes("Docs/" + name).constData(), O_CREAT | O_WRONLY, 0600));
                wrong += Find("\\DOCS\\" + name.toUpper()) != m_box.Path("Docs/" + name);
                wrong += Find("\\DOCS\\KNOWN") != m_box.Path("Docs/Known");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}
