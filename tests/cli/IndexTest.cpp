// velmora index: what cannot be read, what cannot be written, and being stopped.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/cli/Cli.h"

#include "sqlite/Database.h"
#include "sqlite/Statement.h"

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using testing::HasSubstr;
using testing::Not;

class IndexTest : public CliTest {
  protected:
    [[nodiscard]] QString IndexPath() const { return Path("archive/indexes/SHARED/index_a.ix"); }
};

TEST_F(IndexTest, WhatCannotBeReadIsListed) {
    Write("docs/good.txt", "quokka\n");
    Write("docs/broken.pdf", "%PDF-1.4\nnothing of the kind\n");
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    ASSERT_THAT(Here({u"folders"_s, u"add"_s, u"docs"_s}), EndsWith(0));
    const CliResult index = Here({u"index"_s});
    EXPECT_THAT(index, EndsWith(1));
    EXPECT_THAT(index.error, HasSubstr(PathBytes("docs/broken.pdf") + ": "));
    EXPECT_THAT(index.output, HasSubstr("not or only partly read: 1"));
    EXPECT_THAT(Here({u"search"_s, u"quokka"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"search"_s, u"broken"_s}), EndsWith(0)) << "found by its name";
    EXPECT_THAT(Here({u"index"_s}), EndsWith(0)) << "not tried again until it changes";

    const CliResult list = Here({u"index"_s, u"--problems"_s, u"--json"_s});
    EXPECT_THAT(list, EndsWith(1));
    const auto problems = list.Objects();
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0][u"file"_s], Path("docs/broken.pdf"));
    EXPECT_EQ(problems[0][u"state"_s], u"damaged"_s);
    EXPECT_NE(problems[0][u"reason"_s].toString(), QString());
    EXPECT_THAT(Here({u"index"_s, u"--problems"_s, u"docs"_s}).output,
                HasSubstr(PathBytes("docs/broken.pdf") + ": Damaged"));
    EXPECT_THAT(Here({u"index"_s, u"--problems"_s, u"home"_s}), EndsWith(0));
    const CliResult gone = Here({u"index"_s, u"docs/not there.txt"_s});
    EXPECT_THAT(gone, EndsWith(1));
    EXPECT_THAT(gone.error, HasSubstr(PathBytes("docs/not there.txt")));
}

TEST_F(IndexTest, RetryReadsAgainWhatCouldNotBeRead) {
    // Of one length and one time, so that the update sees no change.
    const QByteArray broken = "%PDF-1.4\nnothing of the kind\n";
    const QByteArray good = "quokka" + QByteArray(broken.size() - 7, ' ') + "\n";
    const auto write = [&](const char* name, const QByteArray& content) {
        Write(name, content);
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(1'700'000'000),
                                     QFileDevice::FileModificationTime));
    };
    for (const char* name : {"docs/a.pdf", "docs/sub/b.pdf"}) {
        write(name, broken);
    }
    write("docs/good.txt", good);
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    ASSERT_THAT(Here({u"folders"_s, u"add"_s, u"docs"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"index"_s, u"--retry"_s}), EndsWith(1)) << "the first index needs none";
    for (const char* name : {"docs/a.pdf", "docs/sub/b.pdf"}) {
        write(name, good);
    }
    EXPECT_THAT(Here({u"index"_s}).output, HasSubstr("changed: 0, removed: 0, unchanged: 3"));
    EXPECT_THAT(Here({u"index"_s, u"--retry"_s, u"docs/sub"_s, u"docs/good.txt"_s}).output,
                HasSubstr("changed: 1, removed: 0, unchanged: 1"));
    const CliResult retry = Here({u"index"_s, u"--mail"_s, u"--retry"_s});
    EXPECT_THAT(retry, EndsWith(0));
    EXPECT_THAT(retry.output, HasSubstr("changed: 1, removed: 0, unchanged: 2"));
    EXPECT_EQ(Here({u"search"_s, u"quokka"_s}).Lines().size(), 3U);
    EXPECT_THAT(Here({u"index"_s, u"--problems"_s}), EndsWith(0));
}

TEST_F(IndexTest, CountsTellWhatBecameOfTheDocuments) {
    Write("docs/good.txt", "quokka\n");
    Write("docs/sub/broken.pdf", "%PDF-1.4\nnothing of the kind\n");
    for (int number = 0; number < 9; ++number) {
        Write("docs/sub/" + QByteArray::number(number) + ".txt", "quokka\n");
    }
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    EXPECT_THAT(Here({u"index"_s, u"--counts"_s}), EndsWith(3)) << "there is no index yet";
    ASSERT_THAT(Here({u"folders"_s, u"add"_s, u"docs"_s}), EndsWith(0));
    ASSERT_THAT(Here({u"index"_s}), EndsWith(1));

    const CliResult table = Here({u"index"_s, u"--counts"_s});
    EXPECT_THAT(table, EndsWith(1)) << "a document could not be read";
    const std::string docs = PathBytes("docs");
    EXPECT_THAT(table.Lines(), testing::ElementsAre("Documents  Read  Damaged  Folder",
                                                    "        1     1        0  " + docs,
                                                    "       10     9        1  " + docs + "/sub",
                                                    "       11    10        1  Total"));
    const char* const kHeadings[][2] = {{"it", "Documenti  Letti  Danneggiati  Cartella"},
                                        {"de", "Dokumente  Gelesen  Beschädigt  Ordner"},
                                        {"es", "Documentos  Leídos  Dañados  Carpeta"},
                                        {"fr", "Documents  Lus  Endommagés  Dossier"}};
    for (const auto& [language, heading] : kHeadings) {
        EXPECT_EQ(Run({u"--lang"_s, QString::fromLatin1(language), u"--archive"_s, Path("archive"),
                       u"index"_s, u"--counts"_s})
                      .Lines()[0],
                  heading);
    }
    const auto counts = Here({u"index"_s, u"--counts"_s, u"--json"_s, u"docs/sub"_s}).Objects();
    ASSERT_EQ(counts.size(), 1U);
    EXPECT_EQ(counts[0], (QJsonObject{{u"folder"_s, Path("docs/sub")},
                                      {u"read"_s, 9},
                                      {u"partly"_s, 0},
                                      {u"encrypted"_s, 0},
                                      {u"damaged"_s, 1},
                                      {u"unknown"_s, 0},
                                      {u"name-only"_s, 0},
                                      {u"failed"_s, 0}}));
    const CliResult none = Here({u"index"_s, u"--counts"_s, u"home"_s});
    EXPECT_THAT(none, EndsWith(1));
    EXPECT_THAT(none.error, HasSubstr("no documents of this folder: " + PathBytes("home")));
    EXPECT_EQ(none.output, "");
    QFile::remove(Path("docs/sub/broken.pdf"));
    ASSERT_THAT(Here({u"index"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"index"_s, u"--counts"_s}), EndsWith(0));
}

TEST_F(IndexTest, WithoutFoldersItSaysSo) {
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    const CliResult index = Here({u"index"_s});
    EXPECT_THAT(index, EndsWith(1));
    EXPECT_THAT(index.error, HasSubstr("velmora folders add"));
}

TEST_F(IndexTest, AnIndexThatCannotBeUsedEndsWithThree) {
    Write("docs/a.txt", "numbat\n");
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    const CliResult none = Here({u"search"_s, u"numbat"_s});
    EXPECT_THAT(none, EndsWith(3));
    EXPECT_THAT(none.error, HasSubstr("There is no index yet"));
    EXPECT_THAT(Here({u"words"_s, u"n"_s}), EndsWith(3));
    EXPECT_THAT(Here({u"show"_s, u"docs/a.txt"_s}), EndsWith(3));
    EXPECT_THAT(Here({u"index"_s, u"--problems"_s}), EndsWith(3));

    ASSERT_THAT(Here({u"folders"_s, u"add"_s, u"docs"_s}), EndsWith(0));
    ASSERT_THAT(Here({u"index"_s}), EndsWith(0));
    {
        const int lock = ::open((IndexPath() + u".lock"_s).toUtf8().constData(),
                                O_RDWR | O_CREAT | O_CLOEXEC, 0666);
        struct flock whole {};
        whole.l_type = F_WRLCK;
        ASSERT_EQ(::fcntl(lock, F_OFD_SETLK, &whole), 0);
        const CliResult busy = Here({u"index"_s});
        EXPECT_THAT(busy, EndsWith(3));
        EXPECT_THAT(busy.error, HasSubstr("in use by another program"));
        const CliResult removal = Here({u"folders"_s, u"remove"_s, u"docs"_s});
        EXPECT_THAT(removal, EndsWith(3));
        EXPECT_EQ(Here({u"folders"_s, u"list"_s}).Lines().size(), 1U)
            << "the folder stays listed, so that the removal can be repeated";
        EXPECT_THAT(Here({u"search"_s, u"numbat"_s}), EndsWith(0)) << "reading goes on";
        ::close(lock);
    }
    for (const char* suffix : {"-wal", "-shm"}) {
        QFile::remove(IndexPath() + QLatin1StringView(suffix));
    }
    Write("archive/indexes/SHARED/index_a.ix", QByteArray(20'000, 'x'));
    for (const QStringList& command : {QStringList{u"search"_s, u"numbat"_s},
                                       {u"words"_s, u"n"_s},
                                       {u"show"_s, u"docs/a.txt"_s}}) {
        const CliResult damaged = Here(command);
        EXPECT_THAT(damaged, EndsWith(3));
        EXPECT_THAT(damaged.error, HasSubstr("The index is damaged"));
    }
    const CliResult partial = Here({u"index"_s, u"docs/a.txt"_s});
    EXPECT_THAT(partial, EndsWith(1)) << "what else was in it is not known";
    EXPECT_THAT(partial.error, HasSubstr("index_a.ix.damaged-"));
    EXPECT_THAT(Here({u"index"_s}), EndsWith(0));
    EXPECT_THAT(Here({u"search"_s, u"numbat"_s}), EndsWith(0));
}

// Stopped in the middle it says so, keeps what it has, and the next run finishes the work.
TEST_F(IndexTest, SignalsCancel) {
    // Enough text to keep the readers busy for seconds after the first file.
    QByteArray text;
    for (int number = 0; number < 400'000; ++number) {
        text += "word" + QByteArray::number(number) + ' ';
    }
    for (int file = 0; file < 24; ++file) {
        Write("docs/" + QByteArray::number(file) + ".txt", text + QByteArray::number(file));
    }
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    ASSERT_THAT(Here({u"folders"_s, u"add"_s, u"docs"_s}), EndsWith(0));
    for (const int signal : {SIGINT, SIGTERM}) {
        QProcess process;
        Prepare(process,
                {u"--lang=en"_s, u"--archive"_s, Path("archive"), u"index"_s, u"--verbose"_s});
        process.start();
        process.setReadChannel(QProcess::StandardError);
        ASSERT_TRUE(process.waitForReadyRead(60'000)) << "the first file has been read";
        ::kill(static_cast<pid_t>(process.processId()), signal);
        const CliResult result = Finish(process);
        EXPECT_THAT(result, EndsWith(130));
        EXPECT_THAT(result.error, HasSubstr("Indexing cancelled"));
    }
    sqlite::Database index(IndexPath().toStdString());
    EXPECT_EQ(sqlite::QueryInt64(index, "SELECT count(*) FROM document WHERE state = 6"), 0)
        << "no document is blamed for the signal";
}

TEST_F(IndexTest, VerboseNamesFiles) {
    Write("docs/a.txt", "bilby\n");
    ASSERT_THAT(Velmora("init archive"), EndsWith(0));
    EXPECT_THAT(Here({u"index"_s, u"-v"_s, u"docs"_s}).error, HasSubstr(PathBytes("docs/a.txt")));
    Write("docs/b.txt", "bilby\n");
    EXPECT_EQ(Here({u"index"_s, u"-q"_s, u"docs"_s}).error, "");
}

} // namespace

} // namespace velmora
