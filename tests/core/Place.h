// A test's own machine: program folder, home, settings and temporary folder under one root.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "core/Globals.h"
#include "platform/LogicalPath.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <ostream>

// Readable failures: gtest finds this beside QString.
inline void PrintTo(const QString& text, std::ostream* stream) {
    *stream << '"' << text.toStdString() << '"';
}

namespace velmora {

// Made once, before anything asks for the program folder, which is chosen once per process.
class Place {
  public:
    Place() {
        for (const char* name : {"program", "home", "config", "tmp", "bin"}) {
            QDir(m_root.path()).mkpath(QLatin1StringView(name));
        }
        qputenv("VELMORA_HOME", Path("program").toUtf8());
        qputenv("HOME", Path("home").toUtf8());
        qputenv("XDG_CONFIG_HOME", Path("config").toUtf8());
        qunsetenv("VELMORA_CONFIG_HOME");
        qputenv("TMPDIR", Path("tmp").toUtf8());
        QFile::setPermissions(Path("tmp"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", Path("tmp").toUtf8());
    }

    // Machine path of one of the folders above, or of a file in it.
    QString Path(const char* folder, const QString& file = {}) const {
        const QString path = m_root.filePath(QLatin1StringView(folder));
        return file.isEmpty() ? path : path + u'/' + file;
    }
    QString Logical(const char* folder, const QString& file = {}) const {
        return platform::ToLogical(Path(folder, file));
    }

    // Empties all folders, as if nothing had run yet.
    void Clear() const {
        for (const char* name : {"program", "home", "config", "bin"}) {
            QDir(Path(name)).removeRecursively();
            QDir(m_root.path()).mkpath(QLatin1StringView(name));
        }
    }

  private:
    QTemporaryDir m_root;
};

// The one of this process.
Place& ThePlace();

inline void WriteFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

inline QByteArray BytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

} // namespace velmora
