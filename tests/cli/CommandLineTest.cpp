// How the command line itself behaves: usage, help, languages, odd arguments and streams.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "tests/cli/Cli.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class CommandLineTest : public CliTest {};

TEST_F(CommandLineTest, MistakesEndWithTwoAndTellHowItIsWritten) {
    const struct {
        const char* line;
        const char* message;
    } kCases[] = {
        {"serch x", "There is no command \"serch\""},
        {"--lang en", "A command is missing"},
        {"search", "An argument is missing: QUERY"},
        {"search one two", "one argument too many: \"two\""},
        {"search x --frobnicate", "There is no option \"--frobnicate\""},
        {"search x --rebuild", "There is no option \"--rebuild\""},
        {"search x -z", "There is no option \"-z\""},
        {"search x --limit", "\"--limit\" needs a value"},
        {"search x --limit=", "\"--limit\" needs a value"},
        {"search x --json=yes", "\"--json\" takes no value"},
        {"search x --limit 0", "from 1 to 300, not \"0\""},
        {"search x --limit 301", "from 1 to 300, not \"301\""},
        {"search x --limit 5x", "from 1 to 300, not \"5x\""},
        {"folders", "An argument is missing: list | add | remove"},
        {"folders drop x", "There is no command \"folders drop\""},
        {"folders add", "An argument is missing: PATH"},
        {"folders list x", "one argument too many"},
        {"index --problems --rebuild", "\"--problems\" and \"--rebuild\" do not go together"},
        {"index --rebuild x", "\"--rebuild\" and \"PATH\" do not go together"},
        {"index --quiet -v", "do not go together"},
        {"index --counts --mail", "\"--counts\" and \"--mail\" do not go together"},
        {"index --problems --retry", "\"--problems\" and \"--retry\" do not go together"},
        {"index --retry --rebuild", "\"--rebuild\" and \"--retry\" do not go together"},
        {"index --counts --problems", "\"--problems\" and \"--counts\" do not go together"},
        {"index --counts one two", "one argument too many: \"two\""},
        {"index --json", "goes with \"--problems | --counts\" only"},
        {"show x --html --text", "do not go together"},
        {"show x --query y --text", "do not go together"},
        {"init x --archive y", "There is no option \"--archive\""},
        {"search x --user-key ../x", "cannot be a user key"},
    };
    for (const auto& each : kCases) {
        const CliResult result = Velmora((QByteArray("--lang=en ") + each.line).constData());
        EXPECT_THAT(result, EndsWith(2)) << each.line;
        EXPECT_THAT(result.error, HasSubstr(each.message)) << each.line;
        EXPECT_THAT(result.error, HasSubstr("\nUsage: velmora")) << each.line;
        EXPECT_THAT(result.error, Not(HasSubstr("%1"))) << each.line;
        EXPECT_EQ(result.output, "") << each.line;
    }
    EXPECT_FALSE(QFile::exists(Path("x"))) << "a mistake makes nothing";
    EXPECT_THAT(Velmora("--lang xx search x"), EndsWith(2));
    EXPECT_THAT(Run({u"show"_s, u""_s}), EndsWith(2));
}

TEST_F(CommandLineTest, HelpOfEveryCommandInEveryLanguage) {
    const QByteArrayList firstWords{"Uso:", "Usage:", "Aufruf:", "Uso:", "Utilisation\u00a0:"};
    int language = 0;
    for (const char* name : {"it", "en", "de", "es", "fr"}) {
        for (const char* command : {"", "init", "folders", "index", "search", "show", "words"}) {
            QStringList words{u"--help"_s, u"--lang"_s, QString::fromLatin1(name)};
            if (*command != 0) {
                words.prepend(QString::fromLatin1(command));
            }
            const CliResult help = Run(words);
            EXPECT_THAT(help, EndsWith(0)) << name << command;
            EXPECT_EQ(help.error, "");
            EXPECT_THAT(
                help.output,
                StartsWith((firstWords[language] + " velmora " + command).trimmed().toStdString()));
            EXPECT_THAT(help.output, HasSubstr("--archive DIR"));
            EXPECT_THAT(help.output, HasSubstr("\n  130  "));
            for (const std::string& line : help.Lines()) {
                EXPECT_LE(QString::fromStdString(line).size(), 79) << line;
            }
        }
        ++language;
    }
    EXPECT_EQ(Velmora("--version").output, "velmora " VELMORA_VERSION "\n");
}

TEST_F(CommandLineTest, SpeaksTheLanguageOfTheDesktopInUtf8) {
    m_environment = {{u"LANG"_s, u"de_DE.ISO-8859-1"_s}};
    EXPECT_THAT(Velmora("search"), EndsWith(2));
    EXPECT_THAT(Velmora("--archive %/nowhere search x").error, HasSubstr("ist kein Archiv"));
    EXPECT_THAT(Velmora("--help").output, HasSubstr("Wörter"));
    m_environment = {{u"LC_ALL"_s, u"C"_s}};
    EXPECT_THAT(Velmora("--archive %/nowhere search x").error, HasSubstr("There is no archive"));
    EXPECT_THAT(Velmora("--lang=fr --help").output, HasSubstr("\u00a0:"));
    EXPECT_EQ(Velmora("--lang=fr --help").error, "") << "no remarks on the locale";

    // Results in the C locale: the index does not depend on who asks.
    Write("docs/M\u00fcnchen.txt", "Gr\u00fc\u00dfe\n");
    MakeIndex();
    EXPECT_EQ(Here({u"search"_s, u"grüße"_s}).output, "1  " + PathBytes("docs/München.txt") + "\n");
}

// Options may stand anywhere, and "--" makes a query of what looks like one.
TEST_F(CommandLineTest, OptionsStandAnywhere) {
    Write("docs/a.txt", "json limit\n");
    MakeIndex();
    const QString archive = Path("archive");
    EXPECT_THAT(Run({u"search"_s, u"--json"_s, u"json"_s, u"--archive="_s + archive}), EndsWith(0));
    EXPECT_THAT(Run({u"--archive"_s, archive, u"search"_s, u"--"_s, u"--json"_s}), EndsWith(0));
}

// Bytes that are no UTF-8: refused in a query, taken as they are in a path.
TEST_F(CommandLineTest, BytesThatAreNoUtf8) {
    Write("docs/a.txt", "caf\u00e9\n");
    Write("docs/caf\xE9.txt", "latin kettle\n");
    MakeIndex();
    const auto shell = [this](const QByteArray& tail) {
        QProcess process;
        Prepare(process, {});
        const QString script = Path("run.sh");
        Write("run.sh", QByteArray("exec '") + VELMORA_BIN_DIR + "/velmora' --lang=en --archive '" +
                            Path("archive").toUtf8() + "' " + tail + "\n");
        process.setProgram(u"/bin/sh"_s);
        process.setArguments({script});
        process.start();
        return Finish(process);
    };
    EXPECT_THAT(shell("search 'caf\xE9'"), EndsWith(2));
    EXPECT_THAT(shell("words 'caf\xE9'"), EndsWith(2));
    const QByteArray path = Path("docs").toUtf8() + "/caf\xE9.txt";
    EXPECT_THAT(shell("show '" + path + "'").output, HasSubstr("latin kettle"));
    EXPECT_EQ(shell("search kettle").output, "1  " + PathBytes("docs") + "/caf\xE9.txt\n");

    // The line for programs is UTF-8 all the same, and what it says finds the document again.
    const auto found = Here({u"search"_s, u"kettle"_s, u"--json"_s}).Objects();
    ASSERT_EQ(found.size(), 1U);
    EXPECT_THAT(Here({u"show"_s, found[0][u"file"_s].toString()}).output,
                HasSubstr("latin kettle"));
    std::remove(path.constData()); // QTemporaryDir cannot
}

// `velmora search ... | head -1` is no failure to be told.
TEST_F(CommandLineTest, AClosedPipeEndsQuietly) {
    for (int number = 0; number < 20; ++number) {
        Write("docs/" + QByteArray::number(number), "porcupine");
    }
    MakeIndex();
    QProcess process;
    Prepare(process, {u"--archive"_s, Path("archive"), u"search"_s, u"porcupine"_s});
    process.start();
    process.closeReadChannel(QProcess::StandardOutput);
    const CliResult result = Finish(process);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.code, testing::AnyOf(0, 141)) << "0: it was done before";

    // The reader has gone for sure: a pipe without its reading end.
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    QProcess orphan;
    Prepare(orphan, {u"--archive"_s, Path("archive"), u"search"_s, u"porcupine"_s});
    const int writing = ends[1];
    orphan.setChildProcessModifier([writing] {
        std::signal(SIGPIPE, SIG_DFL);
        ::dup2(writing, STDOUT_FILENO);
    });
    ::close(ends[0]);
    orphan.start();
    const CliResult closed = Finish(orphan);
    ::close(ends[1]);
    EXPECT_THAT(closed, EndsWith(141));
    EXPECT_EQ(closed.error, "");
}

TEST_F(CommandLineTest, AFullDiskBehindTheOutputIsTold) {
    Write("docs/a.txt", "porcupine\n");
    MakeIndex();
    QProcess process;
    Prepare(process,
            {u"--lang=en"_s, u"--archive"_s, Path("archive"), u"search"_s, u"porcupine"_s});
    process.setStandardOutputFile(u"/dev/full"_s);
    process.start();
    const CliResult result = Finish(process);
    EXPECT_THAT(result, EndsWith(3));
    EXPECT_THAT(result.error, HasSubstr("The output cannot be written: No space left"));
}

} // namespace

} // namespace velmora
