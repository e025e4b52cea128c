// Finds the machine's spelling of a logical path, with a cache of folder listings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/PathResolver.h"

#include "platform/LogicalPath.h"

#include <sys/stat.h>

namespace platform {

namespace {

/// How often a search may turn to another spelling: many folders that differ only by case, nested,
/// would otherwise multiply.
constexpr int kMostTries = 256;

bool StatusOfName(const QByteArray& path, struct stat& status) {
    return lstat(path.constData(), &status) == 0;
}

bool IsThere(const QByteArray& path) {
    struct stat status {};
    return StatusOfName(path, status);
}

QByteArray Below(const QByteArray& folder, const QByteArray& name) {
    return folder + '/' + name;
}

QByteArray WithRest(QByteArray folder, const QList<QByteArray>& names, qsizetype at) {
    for (; at < names.size(); ++at) {
        folder = Below(folder, names[at]);
    }
    return folder;
}

QString AsText(const QByteArray& path) {
    return path.isEmpty() ? QStringLiteral("/") : DecodeName(path);
}

} // namespace

PathResolver::PathResolver(MountSource mounts) : m_mounts(std::move(mounts)) {}

QString PathResolver::ToMachine(const QString& logicalPath) {
    const std::optional<Route> route = RouteOf(logicalPath);
    return route ? AsText(Resolve(*route)) : QString();
}

QString PathResolver::DisplayPath(const QString& logicalPath) {
    const std::optional<Route> route = RouteOf(logicalPath);
    if (!route) {
        return logicalPath;
    }
    const QByteArray path = Resolve(*route);
    QByteArray shown = route->base;
    for (const QByteArray& name : path.mid(route->base.size()).split('/')) {
        if (!name.isEmpty()) {
            shown = Below(shown, SpellingOnDisk(shown, name));
        }
    }
    return AsText(shown);
}

std::optional<PathResolver::Route> PathResolver::RouteOf(const QString& logicalPath) const {
    Route route;
    QString path = logicalPath;
    if (path.startsWith(QLatin1String("\\\\"))) {
        const SharePlace place = FindShare(m_mounts(), path);
        if (place.mountPoint.isEmpty()) {
            return std::nullopt;
        }
        route.base = place.mountPoint == "/" ? QByteArray() : place.mountPoint;
        path = place.rest;
    } else if (!path.startsWith(u'\\') && !path.startsWith(u'/')) {
        return std::nullopt;
    }
    // No name of the disk holds a slash, so one can only be meant as a separator.
    path.replace(u'/', u'\\');
    for (QString name : path.split(u'\\', Qt::SkipEmptyParts)) {
        name.replace(QChar(kBackslashInName), QChar(u'\\'));
        const QByteArray bytes = EncodeName(name);
        if (bytes.isEmpty()) {
            return std::nullopt;
        }
        route.names += bytes;
    }
    return route;
}

QByteArray PathResolver::Resolve(const Route& route) {
    const QByteArray asGiven = WithRest(route.base, route.names, 0);
    if (asGiven.isEmpty() || IsThere(asGiven)) {
        return asGiven;
    }
    int triesLeft = kMostTries;
    return Descend(route.base, route.names, 0, triesLeft).path;
}

PathResolver::Found PathResolver::Descend(const QByteArray& folder, const QList<QByteArray>& names,
                                          qsizetype at, int& triesLeft) {
    if (at == names.size()) {
        return {folder, at};
    }
    Found best{{}, at};
    const QByteArray exact = Below(folder, names[at]);
    if (IsThere(exact)) {
        best = Descend(exact, names, at + 1, triesLeft);
    }
    // Also after an exact folder that lacks the rest: a path in
    // capitals may mean the one beside it.
    if (best.depth < names.size()) {
        for (const QByteArray& spelling : Candidates(folder, names[at])) {
            const QByteArray path = Below(folder, spelling);
            if (spelling == names[at] || --triesLeft < 0 || !IsThere(path)) {
                continue;
            }
            Found found = Descend(path, names, at + 1, triesLeft);
            if (found.depth > best.depth) {
                best = std::move(found);
            }
            if (best.depth == names.size()) {
                break;
            }
        }
    }
    if (best.path.isEmpty()) {
        best.path = WithRest(folder, names, at);
    }
    return best;
}

QList<QByteArray> PathResolver::Candidates(const QByteArray& folder, const QByteArray& name) {
    bool readable = true;
    QList<QByteArray> spellings = m_folders.Spellings(folder, name, readable);
    if (!readable) {
        // A folder like /home that lets pass but not read: small letters are the likely spelling.
        const QByteArray small = EncodeName(DecodeName(name).toLower());
        if (IsThere(Below(folder, small))) {
            spellings += small;
        }
    }
    return spellings;
}

QByteArray PathResolver::SpellingOnDisk(const QByteArray& folder, const QByteArray& name) {
    bool readable = true;
    const QList<QByteArray> spellings = m_folders.Spellings(folder, name, readable);
    struct stat wanted {};
    if (spellings.contains(name) || !StatusOfName(Below(folder, name), wanted)) {
        return name;
    }
    for (const QByteArray& spelling : spellings) {
        struct stat status {};
        if (StatusOfName(Below(folder, spelling), status) && status.st_dev == wanted.st_dev &&
            status.st_ino == wanted.st_ino) {
            return spelling;
        }
    }
    return name;
}

} // namespace platform
