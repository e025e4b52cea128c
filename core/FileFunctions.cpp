// Walking folders, judging names, opening files with the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/FileFunctions.h"

#include "core/CommonFunctions.h"
#include "core/Dialogue.h"
#include "core/Events.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Shell.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// `folder` closes in a back-slash.
void Walk(const QString& folder, const QString& pattern) {
    const QString machinePath = platform::ToMachine(folder);
    if (machinePath.isEmpty()) {
        return;
    }
    QStringList subFolders;
    QStringList files;
    // One listing serves both passes. What could not be read is passed over, as the walk always
    // did with folders that are closed to the user.
    for (const platform::FolderEntry& entry : platform::ListFolder(machinePath).entries) {
        const QString name = platform::ToLogical(u'/' + entry.name).mid(1);
        if (entry.kind == platform::EntryKind::Folder) {
            subFolders.append(name);
        } else if (entry.kind == platform::EntryKind::File && MatchesPattern(name, pattern)) {
            files.append(folder + name);
        }
        YieldToEvents();
    }
    // The disk's order is no order; a person sees this list.
    const auto byName = [](const QString& a, const QString& b) {
        const int order = a.compare(b, Qt::CaseInsensitive);
        return order != 0 ? order < 0 : a < b;
    };
    std::sort(files.begin(), files.end(), byName);
    std::sort(subFolders.begin(), subFolders.end(), byName);
    FoundFiles().append(files);
    for (const QString& name : subFolders) {
        Walk(folder + name + u'\\', pattern);
    }
}

} // namespace

QString StripNulls(const QString& text) {
    return text.left(text.indexOf(QChar(u'\0')));
}

QStringList& FoundFiles() {
    return Program().foundFiles;
}

void FindFilesAPI(const QString& folder, const QString& pattern) {
    Guard("FileFunctions", "FindFilesAPI", [&] {
        // So that a second try does not list twice what the first one found.
        const qsizetype before = FoundFiles().size();
        try {
            Walk(platform::WithBackslash(folder), pattern);
        } catch (...) {
            FoundFiles().resize(std::min(before, FoundFiles().size()));
            throw;
        }
    });
}

bool MatchesPattern(const QString& name, const QString& pattern) {
    if (pattern == u"*.*") {
        return true; // also a name without a full stop
    }
    const QString text = platform::Capitals(name);
    const QString wanted = platform::Capitals(pattern);
    qsizetype at = 0;
    qsizetype in = 0;
    qsizetype star = -1;  // place of the last "*" in the pattern
    qsizetype resume = 0; // what that "*" has swallowed so far ends here
    while (at < text.size()) {
        if (in < wanted.size() && wanted[in] == u'*') {
            star = in++;
            resume = at;
        } else if (in < wanted.size() && (wanted[in] == u'?' || wanted[in] == text[at])) {
            ++in;
            ++at;
        } else if (star >= 0) {
            in = star + 1;
            at = ++resume;
        } else {
            return false;
        }
    }
    while (in < wanted.size() && wanted[in] == u'*') {
        ++in;
    }
    return in == wanted.size();
}

bool IsValidFileName(const QString& name) {
    // Code 22 stands where the double quote (22 in hexadecimal) was meant. It stays: names with a
    // double quote have passed ever since.
    constexpr QStringView kRefused = u"\\/:*?\u0016<>|";
    return std::any_of(name.cbegin(), name.cend(),
                       [&](QChar character) { return kRefused.contains(character); });
}

void LaunchFile(const QStringList& paths, bool) {
    for (const QString& path : paths) {
        const platform::SystemError error = platform::OpenWithDesktop(platform::ToMachine(path));
        if (!error.Ok()) {
            Tell(platform::DisplayPath(path) + u"\n"_s + error.text, GetMessage(99),
                 Icon::Critical);
        }
    }
}

void LaunchFile(const QString& paths, const QString& separator, bool openWith) {
    const bool one = VerifyExistsFileName(paths);
    LaunchFile(one ? QStringList(paths) : paths.split(separator, Qt::SkipEmptyParts), openWith);
}

} // namespace velmora
