// Logical paths, the form in which the program holds every path, and the way to the machine's form.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/LogicalPath.h"

#include "platform/PathResolver.h"

namespace platform {

namespace {

PathResolver& SharedResolver() {
    static PathResolver resolver;
    return resolver;
}

bool IsNetworkPath(const QString& path) {
    return path.startsWith(QLatin1String("\\\\"));
}

} // namespace

QString Capitals(const QString& text) {
    return text.toUpper();
}

bool SamePath(const QString& a, const QString& b) {
    return Capitals(WithoutBackslash(a)) == Capitals(WithoutBackslash(b));
}

QString ToLogical(const QString& machinePath) {
    QString logical;
    logical.reserve(machinePath.size());
    for (const QChar c : machinePath) {
        if (c == u'/') {
            if (!logical.endsWith(u'\\')) {
                logical += u'\\';
            }
        } else if (c == u'\\') {
            logical += QChar(kBackslashInName);
        } else if (c == QChar(kBackslashInName)) {
            logical += MarkBytes(QString(c).toUtf8());
        } else {
            logical += c;
        }
    }
    return logical;
}

QString ToMachine(const QString& logicalPath) {
    return SharedResolver().ToMachine(logicalPath);
}

QString ToMachineAsSpelled(const QString& logicalPath) {
    const QString parent = ParentFolder(logicalPath);
    const QString folder = parent.isEmpty() ? QString() : ToMachine(parent);
    if (folder.isEmpty()) {
        return ToMachine(logicalPath); // the root, or the top of a share: nothing to be taken for
    }
    QString name = FileName(logicalPath);
    name.replace(QChar(kBackslashInName), u'\\');
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

QString DisplayPath(const QString& logicalPath) {
    return SharedResolver().DisplayPath(logicalPath);
}

QString WithBackslash(const QString& logicalPath) {
    return logicalPath.isEmpty() || logicalPath.endsWith(u'\\') ? logicalPath : logicalPath + u'\\';
}

QString WithoutBackslash(const QString& logicalPath) {
    qsizetype size = logicalPath.size();
    while (size > 1 && logicalPath[size - 1] == u'\\') {
        --size;
    }
    return logicalPath.left(size);
}

QString JoinPath(const QString& folder, const QString& name) {
    return WithBackslash(folder) + name;
}

QString ParentFolder(const QString& logicalPath) {
    const QString path = WithoutBackslash(logicalPath);
    const qsizetype last = path.lastIndexOf(u'\\');
    if (IsNetworkPath(path)) {
        const qsizetype serverEnd = path.indexOf(u'\\', 2);
        return last > serverEnd && serverEnd > 0 ? path.left(last) : QString();
    }
    if (last < 0 || path.size() == 1) {
        return {};
    }
    return last == 0 ? path.left(1) : path.left(last);
}

QString FileName(const QString& logicalPath) {
    const QString path = WithoutBackslash(logicalPath);
    return path.mid(path.lastIndexOf(u'\\') + 1);
}

} // namespace platform
