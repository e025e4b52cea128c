// Runs velmora as a person would, on a machine of the test's own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <csignal>
#include <gmock/gmock.h>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace velmora {

struct CliResult {
    int code = -1; // 128 + signal when a signal ended it
    std::string output;
    std::string error;

    [[nodiscard]] std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::istringstream stream(output);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }
    // How many anchors of hits a page holds.
    [[nodiscard]] int Anchors() const {
        return static_cast<int>(QByteArray::fromStdString(output).count("<A NAME=\"hit"));
    }
    [[nodiscard]] std::vector<QJsonObject> Objects() const {
        std::vector<QJsonObject> objects;
        for (const std::string& line : Lines()) {
            const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(line));
            EXPECT_TRUE(document.isObject()) << line;
            objects.push_back(document.object());
        }
        return objects;
    }
};

inline void PrintTo(const CliResult& result, std::ostream* out) {
    *out << "exit code " << result.code << "\n-- output:\n"
         << result.output << "-- error:\n"
         << result.error;
}

MATCHER_P(EndsWith, code, "ends with code " + std::to_string(code)) {
    return arg.code == code;
}

// A home, a program folder and a place for documents under one root; nothing else is touched.
class CliTest : public testing::Test {
  protected:
    CliTest() {
        for (const char* folder : {"home", "program", "tmp", "docs"}) {
            QDir(m_root.path()).mkpath(QLatin1StringView(folder));
        }
        QFile::setPermissions(Path("tmp"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QString Path(const char* name) const {
        return m_root.filePath(QString::fromUtf8(name));
    }
    [[nodiscard]] std::string PathBytes(const char* name) const { return Path(name).toStdString(); }

    // Bytes, so that names may be any. Folders above are made.
    void Write(const QByteArray& name, const QByteArray& content) const {
        const QByteArray path = m_root.path().toUtf8() + '/' + name;
        const QByteArray folder = path.left(path.lastIndexOf('/'));
        QDir().mkpath(QString::fromUtf8(folder));
        FILE* file = std::fopen(path.constData(), "wb");
        ASSERT_NE(file, nullptr) << path.constData();
        std::fwrite(content.constData(), 1, static_cast<std::size_t>(content.size()), file);
        std::fclose(file);
    }

    // Arguments go through QProcess as text: names that are no UTF-8 have a way of their own.
    void Prepare(QProcess& process, const QStringList& arguments) const {
        QProcessEnvironment environment;
        for (const char* kept : {"PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"}) {
            if (qEnvironmentVariableIsSet(kept)) {
                environment.insert(QLatin1StringView(kept), qEnvironmentVariable(kept));
            }
        }
        environment.insert(QStringLiteral("HOME"), Path("home"));
        environment.insert(QStringLiteral("TMPDIR"), Path("tmp"));
        environment.insert(QStringLiteral("VELMORA_HOME"), Path("program"));
        for (auto own = m_environment.cbegin(); own != m_environment.cend(); ++own) {
            environment.insert(own.key(), own.value());
        }
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(m_folder.isEmpty() ? m_root.path() : m_folder);
        process.setProgram(QStringLiteral(VELMORA_BIN_DIR "/velmora"));
        process.setArguments(arguments);
        // A test that runs in the background may have come with these ignored.
        process.setChildProcessModifier([] {
            for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
                std::signal(signal, SIG_DFL);
            }
        });
    }

    static CliResult Finish(QProcess& process) {
        EXPECT_TRUE(process.waitForFinished(120'000)) << "velmora does not end";
        CliResult result;
        result.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                                   : 128 + process.exitCode();
        result.output = process.readAllStandardOutput().toStdString();
        result.error = process.readAllStandardError().toStdString();
        return result;
    }

    [[nodiscard]] CliResult Run(const QStringList& arguments) const {
        QProcess process;
        Prepare(process, arguments);
        process.start(QIODevice::ReadOnly);
        return Finish(process);
    }
    // The same with words parted by blanks, "%" standing for the root of this test.
    [[nodiscard]] CliResult Velmora(const char* line) const {
        QStringList words = QString::fromUtf8(line).split(u' ');
        words.replaceInStrings(QStringLiteral("%"), m_root.path());
        return Run(words);
    }
    // On the archive of this test.
    [[nodiscard]] CliResult Here(const QStringList& arguments) const {
        return Run(
            QStringList{QStringLiteral("--lang=en"), QStringLiteral("--archive"), Path("archive")} +
            arguments);
    }

    // An archive with an index of "docs".
    void MakeIndex() const {
        ASSERT_THAT(Velmora("init %/archive"), EndsWith(0));
        ASSERT_THAT(Velmora("--archive %/archive folders add %/docs"), EndsWith(0));
        ASSERT_THAT(Velmora("--archive %/archive index"), EndsWith(0));
    }

    QTemporaryDir m_root;
    QString m_folder; // that commands run in; empty: the root
    QMap<QString, QString> m_environment;
};

} // namespace velmora
