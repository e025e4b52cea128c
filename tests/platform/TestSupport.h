// What these tests share: folders of their own, environment, other processes and users.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Files.h"
#include "platform/Names.h"

#include <QByteArray>
#include <QString>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << text.toStdString();
}

namespace testing_support {

/// A folder that is removed with all it holds. Names are bytes, so that they may be any.
class Sandbox {
  public:
    Sandbox() { EXPECT_NE(mkdtemp(m_folder.data()), nullptr); }
    ~Sandbox() {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder.constData(), ignored);
    }
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    QString Path() const { return platform::DecodeName(m_folder); }
    QByteArray Bytes() const { return m_folder; }
    QByteArray Bytes(const QByteArray& name) const { return m_folder + '/' + name; }
    QString Path(const QByteArray& name) const { return platform::DecodeName(Bytes(name)); }

    void MakeFolder(const QByteArray& name) const {
        ASSERT_TRUE(platform::CreateFolders(Path(name)).Ok()) << name.constData();
    }
    void Write(const QByteArray& name, const QByteArray& content = "x") const {
        const int file = open(Bytes(name).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_GE(file, 0) << name.constData();
        ASSERT_EQ(write(file, content.constData(), static_cast<size_t>(content.size())),
                  content.size());
        close(file);
    }
    QByteArray Read(const QByteArray& name) const { return platform::ReadFile(Path(name)).bytes; }
    int Count(const QByteArray& name = ".") const {
        return static_cast<int>(platform::ListFolder(Path(name)).entries.size());
    }

  private:
    // QTemporaryDir does not remove names that are not UTF-8.
    QByteArray m_folder = "/tmp/platform-test-XXXXXX";
};

/// Sets a variable of the environment for as long as it lives.
class Variable {
  public:
    Variable(const char* name, const QByteArray& value) : m_name(name), m_old(qgetenv(name)) {
        m_wasSet = qEnvironmentVariableIsSet(name);
        qputenv(name, value);
    }
    ~Variable() { m_wasSet ? qputenv(m_name, m_old) : qunsetenv(m_name); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    const char* m_name;
    QByteArray m_old;
    bool m_wasSet = false;
};

/// Runs `work` in a process of its own and answers what it answered.
inline int InOtherProcess(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(work());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// The same as a user without special rights: root is refused nothing.
inline int AsPlainUser(const std::function<int()>& work) {
    return InOtherProcess([&] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            return -1;
        }
        return work();
    });
}

} // namespace testing_support
