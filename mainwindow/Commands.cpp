// The commands of the main window.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/Commands.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

const QList<Command>& Commands() {
    static const QList<Command> commands{
        {u"MNUFILE"_s, 1, 0, {}, {}},
        {u"MNUTOOLS"_s, 5, 0, {}, {}},
        {u"MNUINFO"_s, 2, 0, {}, {}},
        {u"MNUOPEN"_s, 19, 0, u"open"_s, {}},
        {u"MNUSEARCHINFOLDER"_s, 48, 0, u"search-folder"_s, {}},
        {u"MNUINDEXFILE"_s, 8, 0, u"index-file"_s, {}},
        {u"MNUEXIT"_s, 101, 0, u"exit"_s, u"Ctrl+Q"_s},
        {u"MNUIDXDFOLDERS"_s, 125, 0, u"folders"_s, {}},
        {u"MNUREBUILD"_s, 241, 0, u"rebuild"_s, {}},
        {u"MNUREIDX"_s, 9, 0, u"update"_s, u"F5"_s},
        {u"MNUABOUT"_s, 3, 0, u"about"_s, {}},
        {u"MNUFSTART"_s, 3020, 0, u"first-steps"_s, {}},
        {u"UPLEVEL"_s, 172, 172, u"up"_s, u"Alt+Up"_s},
        {u"SHELL"_s, 103, 103, u"open"_s, {}},
        {u"IDXEDFLD"_s, 43, 43, u"folders"_s, {}},
        {u"UPDATEIDX"_s, 10, 10, u"update"_s, {}},
    };
    return commands;
}

} // namespace

const Command* FindCommand(const QString& key) {
    const auto found = std::find_if(Commands().cbegin(), Commands().cend(),
                                    [&](const Command& command) { return command.key == key; });
    return found == Commands().cend() ? nullptr : &*found;
}

QStringList KeysOfBar(const QString& bar) {
    if (bar == u"MENU") {
        return {u"MNUFILE"_s, u"MNUTOOLS"_s, u"MNUINFO"_s};
    }
    if (bar == u"FILEMENU") {
        return {u"MNUINDEXFILE"_s, {}, u"MNUEXIT"_s};
    }
    if (bar == u"TOOLSMENU") {
        return {u"MNUIDXDFOLDERS"_s, u"MNUREBUILD"_s, u"MNUREIDX"_s};
    }
    if (bar == u"INFOMENU") {
        return {u"MNUABOUT"_s, u"MNUFSTART"_s};
    }
    if (bar == u"POPUPMENU") {
        return {u"MNUOPEN"_s, u"MNUSEARCHINFOLDER"_s, {}, u"MNUINDEXFILE"_s};
    }
    if (bar == u"STD") {
        return {u"UPLEVEL"_s, {}, u"SHELL"_s, {}, u"IDXEDFLD"_s, u"UPDATEIDX"_s};
    }
    return {};
}

QString MenuOf(const QString& key) {
    return key == u"MNUFILE"    ? u"FILEMENU"_s
           : key == u"MNUTOOLS" ? u"TOOLSMENU"_s
           : key == u"MNUINFO"  ? u"INFOMENU"_s
                                : QString();
}

QString WithAccessKey(const QString& caption, QSet<QChar>& used) {
    const qsizetype marked = caption.indexOf(u'&');
    if (marked >= 0 && marked + 1 < caption.size()) {
        used.insert(caption[marked + 1].toLower());
        return caption;
    }
    for (qsizetype at = 0; at < caption.size(); ++at) {
        const QChar letter = caption[at].toLower();
        if (letter.isLetterOrNumber() && !used.contains(letter)) {
            used.insert(letter);
            return QString(caption).insert(at, u'&');
        }
    }
    return caption;
}

bool IsEnabled(const QString& key, const Selection& selection) {
    if (key == u"UPLEVEL") {
        return !selection.folder.isEmpty() && !selection.isIndexedFolder;
    }
    if (key == u"SHELL" || key == u"MNUOPEN" || key == u"MNUSEARCHINFOLDER" ||
        key == u"MNUINDEXFILE") {
        return !selection.Path().isEmpty();
    }
    return true;
}

} // namespace velmora
