// The list of shared archives.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/Archives.h"

#include "core/Dialogue.h"
#include "core/Events.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/Settings.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "store/RunAside.h"
#include "store/ShareLocks.h"
#include "store/StoreError.h"
#include "store/Template.h"

#include <QDir>
#include <chrono>
#include <optional>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr auto kModule = "FrmArchiveManagement";
const QString kRoot = u"Velmora"_s;
const QString kFile = u"SharedArchives.xml"_s;
// A count that nobody means, in a file that somebody has spoilt.
constexpr qint64 kMostArchives = 1000;
constexpr auto kPatience = std::chrono::seconds(10);

QString Read(const QString& key) {
    return XMLReadSettings(kRoot, kFile, key);
}

QString Line(const QString& key, const QString& value) {
    if (value.contains(u'\n') || value.contains(u'\r')) {
        throw Error(kLineBreakInSetting, GetMessage(kLineBreakInSetting, {value}));
    }
    return u"\t<%1>%2</%1>\r\n"_s.arg(key, value);
}

QString TextOf(const QList<SharedArchive>& archives) {
    QString text = u"<%1>\r\n"_s.arg(kRoot);
    text += Line(u"ARCHIVENUMBERS"_s, QString::number(archives.size()));
    for (qsizetype i = 0; i < archives.size(); ++i) {
        const QString position = QString::number(i + 1);
        text += Line(u"ARCHIVEPATH_"_s + position, archives[i].path);
        text += Line(u"ARCHIVEDESCRIPTION_"_s + position, archives[i].description);
    }
    return text + u"</%1>\r\n"_s.arg(kRoot);
}

// Nothing when the text is no path from a root on.
std::optional<QString> LogicalOf(const QString& typed) {
    if (typed.startsWith(u'/')) {
        return platform::WithoutBackslash(platform::ToLogical(QDir::cleanPath(typed)));
    }
    return typed.startsWith(u'\\') ? std::optional(platform::WithoutBackslash(typed))
                                   : std::nullopt;
}

// Whether the folder holds a database; nothing when its disk does not answer.
std::optional<bool> HoldsDatabase(const QString& folder) {
    auto answer = RunAside([database = platform::JoinPath(folder, u"db.mdb"_s)] {
        const QString path = platform::ToMachine(database);
        return !path.isEmpty() && platform::IsFile(path);
    });
    const Hourglass hourglass;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (answer.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready) {
        if (std::chrono::steady_clock::now() > end) {
            return std::nullopt;
        }
        YieldToEvents();
    }
    return answer.get();
}

void TellNotReachable() {
    Tell(GetMessage(328), GetMessage(99), Icon::Critical);
}

// Makes an archive where there is none, once that is confirmed. False: there is none.
bool EnsureArchive(const QString& folder) {
    const std::optional<bool> there = HoldsDatabase(folder);
    if (!there) {
        TellNotReachable();
        return false;
    }
    if (*there) {
        return true;
    }
    if (Ask(GetMessage(324), GetMessage(65), Icon::Question) == Answer::No) {
        return false;
    }
    return Attempt(kModule, "cmdSalva_Click", [&] {
        RequireShareLocks(MachinePath(folder));
        CreateDatabase(folder);
    });
}

} // namespace

QList<SharedArchive> ReadArchives() {
    QList<SharedArchive> archives;
    const qint64 count = std::min(NumericValue(Read(u"ArchiveNumbers"_s)), kMostArchives);
    for (qint64 i = 1; i <= count; ++i) {
        const QString position = QString::number(i);
        const QString path = Read(u"ArchivePath_"_s + position);
        if (const auto logical = LogicalOf(path); logical || !path.isEmpty()) {
            archives.append({logical.value_or(path), Read(u"ArchiveDescription_"_s + position)});
        }
    }
    return archives;
}

bool SaveArchives(const QList<SharedArchive>& archives) {
    return Attempt(kModule, "SaveArchives", [&] {
        const QString path = platform::JoinPath(gProgramPath(), kFile);
        Check(platform::ReplaceFile(MachinePath(path), EncodeSettings(TextOf(archives))), path);
    });
}

QString ShownArchivePath(const QString& path) {
    QString shown = path;
    if (!path.startsWith(u"\\\\") && path.startsWith(u'\\')) {
        shown.replace(u'\\', u'/').replace(QChar(platform::kBackslashInName), u'\\');
    }
    return shown;
}

QString ArchiveText(const SharedArchive& archive) {
    return archive.description + u" ("_s + ShownArchivePath(archive.path) + u')';
}

bool AddArchive(const QString& typedPath, const QString& description) {
    const QString typed = typedPath.trimmed();
    const QString name = description.trimmed();
    if (typed.isEmpty() || name.isEmpty()) {
        Tell(GetMessage(typed.isEmpty() ? 318 : 319), GetMessage(82), Icon::Critical);
        return false;
    }
    const std::optional<QString> path = LogicalOf(typed);
    if (!path) {
        Tell(GetMessage(kNoSuchPlace, {typed}), GetMessage(99), Icon::Critical);
        return false;
    }
    return EnsureArchive(*path) && SaveArchives(ReadArchives() << SharedArchive{*path, name});
}

bool RemoveArchive(const SharedArchive& archive) {
    if (Ask(GetMessage(325), GetMessage(66), Icon::Question) == Answer::No) {
        return false;
    }
    QList<SharedArchive> archives = ReadArchives();
    return archives.removeOne(archive) && SaveArchives(archives);
}

int LastSelectedArchive(qsizetype entries) {
    const qint64 index = NumericValue(GetSetting(u"Archives"_s, u"LastSelected"_s));
    return index > 0 && index < entries ? static_cast<int>(index) : 0;
}

bool IsArchiveReachable(const QString& path) {
    if (path.isEmpty() || HoldsDatabase(path).value_or(false)) {
        return true;
    }
    TellNotReachable();
    return false;
}

void RememberSelectedArchive(int index) {
    SaveSetting(u"Archives"_s, u"LastSelected"_s, QString::number(index));
}

} // namespace velmora
