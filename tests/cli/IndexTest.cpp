// velmora index: what cannot be read, what cannot be written, and being stopped.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/cli/Cli.h"

#include "sqlite/Database.h"
#include "sqlite/Statement.h"

#include <fcntl.h>
#include <sys/file.h>
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
        ASSERT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
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
                                       {u"show"_s, u"docs/a.txt"_s},
                                       {u"index"_s}}) {
        const CliResult damaged = Here(command);
        EXPECT_THAT(damaged, EndsWith(3));
        EXPECT_THAT(damaged.error, HasSubstr("The index is damaged"));
    }
    EXPECT_THAT(Here({u"index"_s}).error, HasSubstr("velmora index --rebuild"));
    EXPECT_THAT(Here({u"index"_s, u"--rebuild"_s}), EndsWith(0));
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
