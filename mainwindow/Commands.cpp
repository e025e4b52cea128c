// The commands of the main window and their bars.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/Commands.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

const QList<Command>& Commands() {
    static const QList<Command> commands{
        {u"MNUFILE"_s, 1, 0, {}, {}},
        {u"MNUEDIT"_s, 4, 0, {}, {}},
        {u"MNUTOOLS"_s, 5, 0, {}, {}},
        {u"MNUINFO"_s, 2, 0, {}, {}},
        {u"MNUOPEN"_s, 19, 0, u"open"_s, {}},
        {u"MNUOPENWITH"_s, 21, 0, {}, {}},
        {u"MNUNEWFLD"_s, 204, 0, u"folder-add"_s, u"Ctrl+Shift+N"_s},
        {u"MNUPROPS"_s, 227, 0, u"properties"_s, u"Alt+Return"_s},
        {u"MNURENAME"_s, 242, 0, u"rename"_s, u"F2"_s},
        {u"MNUDELETE"_s, 1043, 0, u"delete"_s, u"Del"_s},
        {u"MNUEXIT"_s, 101, 0, u"exit"_s, u"Ctrl+Q"_s},
        {u"MNUCOPY"_s, 74, 0, u"copy"_s, u"Ctrl+C; Ctrl+Ins"_s},
        {u"MNUCUT"_s, 3643, 0, {}, u"Ctrl+X; Shift+Del"_s},
        {u"MNUPASTE"_s, 141, 0, u"paste"_s, u"Ctrl+V; Shift+Ins"_s},
        {u"MNUCONVERTTOTIFF"_s, 1066, 0, u"convert"_s, {}},
        {u"MNUCOPYTOFOLDER"_s, 76, 0, {}, {}},
        {u"MNUMOVETOFOLDER"_s, 279, 0, {}, {}},
        {u"MNUSELECTALL"_s, 253, 0, u"select-all"_s, u"Ctrl+A"_s},
        {u"MNUINVERTSELECTION"_s, 162, 0, {}, u"Ctrl+I"_s},
        {u"MNUIDXDFOLDERS"_s, 125, 0, u"folders"_s, {}},
        {u"MNUFIELDSMANAGER"_s, 124, 0, u"fields"_s, {}},
        {u"MNUSELMAIL"_s, 145, 0, u"file-mail"_s, {}},
        {u"MNUSEARCHINFOLDER"_s, 48, 0, u"search-folder"_s, {}},
        {u"MNUREBUILD"_s, 241, 0, u"rebuild"_s, {}},
        {u"MNUREIDX"_s, 9, 0, u"update"_s, u"F9"_s},
        {u"MNUOCR"_s, 95, 0, u"ocr"_s, {}},
        {u"MNUVERIFY"_s, 302, 0, u"verify"_s, {}},
        {u"MNUPRINTSP"_s, 22, 0, u"print-list"_s, {}},
        {u"MNUSEARCHTIF"_s, 234, 0, u"search-image"_s, {}},
        {u"MNUSCHEDULE"_s, 345, 0, u"schedule"_s, {}},
        {u"MNUSCANNER"_s, 155, 0, u"scanner"_s, {}},
        {u"MNUARCHIVEMANAGEMENT"_s, 322, 0, u"file-archive"_s, {}},
        {u"MNUSEARCHFIELDS"_s, 237, 0, u"fields"_s, {}},
        {u"MNUANNSEARCH"_s, 231, 0, u"annotation"_s, {}},
        {u"MNUFILESEARCH"_s, 369, 0, u"search-name"_s, {}},
        {u"MNUFILESEARCH2"_s, 369, 0, u"search-name"_s, {}},
        {u"MNUFINDELEMENT"_s, 293, 0, u"locate"_s, {}},
        {u"MNUINDEXFILE"_s, 8, 0, u"index-file"_s, {}},
        {u"MNUABOUT"_s, 3, 0, u"about"_s, {}},
        {u"MNUHELP"_s, 2, 0, u"help"_s, {}},
        {u"MNUFSTART"_s, 3020, 0, u"first-steps"_s, {}},
        {u"BACK"_s, 146, 42, u"back"_s, u"Alt+Left"_s},
        {u"NEXT"_s, 29, 229, u"forward"_s, u"Alt+Right"_s},
        {u"UPLEVEL"_s, 172, 172, u"up"_s, u"Alt+Up"_s},
        {u"NEWFLD"_s, 204, 204, u"folder-add"_s, {}},
        {u"COPY"_s, 74, 74, u"copy"_s, {}},
        {u"PASTE"_s, 141, 141, u"paste"_s, {}},
        {u"PROPS"_s, 227, 227, u"properties"_s, {}},
        {u"SHELL"_s, 103, 103, u"open"_s, {}},
        {u"MAKEOCR"_s, 94, 94, u"ocr"_s, {}},
        {u"SCANNER"_s, 154, 154, u"scanner"_s, {}},
        {u"DEL"_s, 1043, 1043, u"delete"_s, {}},
        {u"IDXEDFLD"_s, 43, 43, u"folders"_s, {}, true},
        {u"UPDATEIDX"_s, 10, 10, u"update"_s, {}, true},
        {u"PRINTSP"_s, 96, 20, u"print-list"_s, {}},
        {u"SEARCH"_s, 45, 49, u"search"_s, {}},
        {u"SEARCHBUILDER"_s, 1057, 0, u"builder"_s, {}},
    };
    return commands;
}

// Keys of a bar as one text: parted by blanks, "-" is a separator.
QStringList Keys(const QString& text) {
    QStringList keys = text.split(u' ', Qt::SkipEmptyParts);
    for (QString& key : keys) {
        if (key == u"-") {
            key.clear();
        }
    }
    return keys;
}

} // namespace

const Command* FindCommand(const QString& key) {
    static const QHash<QString, const Command*> byKey = [] {
        QHash<QString, const Command*> map;
        for (const Command& command : Commands()) {
            map[command.key] = &command;
        }
        return map;
    }();
    return byKey.value(key);
}

QStringList KeysOfBar(const QString& bar) {
    static const QHash<QString, QStringList> bars{
        {u"MENU"_s, Keys(u"MNUFILE MNUEDIT MNUTOOLS MNUINFO"_s)},
        {u"FILEMENU"_s, Keys(u"MNUNEWFLD - MNUSCANNER MNUPROPS MNURENAME MNUDELETE - MNUOCR "
                             "MNUINDEXFILE MNUPRINTSP MNUEXIT"_s)},
        {u"EDITMENU"_s, Keys(u"MNUCOPY MNUPASTE - MNUSELECTALL MNUINVERTSELECTION"_s)},
        {u"TOOLSMENU"_s, Keys(u"MNUIDXDFOLDERS MNUREBUILD MNUFIELDSMANAGER MNUSEARCHTIF MNUOCR "
                              "MNUSELMAIL MNUREIDX MNUVERIFY MNUARCHIVEMANAGEMENT MNUSCHEDULE"_s)},
        {u"INFOMENU"_s, Keys(u"MNUABOUT MNUHELP MNUFSTART"_s)},
        {u"MNUOTHERSEARCHES"_s, Keys(u"MNUSEARCHFIELDS MNUANNSEARCH MNUFILESEARCH"_s)},
        {u"POPUPMENU"_s,
         Keys(u"MNUNEWFLD - MNUOPEN MNUOPENWITH MNUSEARCHINFOLDER MNUCONVERTTOTIFF - MNUCOPY "
              "MNUPASTE - MNURENAME MNUDELETE - MNUOCR MNUINDEXFILE - MNUPROPS MNUFINDELEMENT "
              "MNUFILESEARCH2"_s)},
        {u"STD"_s, Keys(u"BACK NEXT UPLEVEL - NEWFLD - COPY PASTE - PROPS SHELL MAKEOCR SCANNER "
                        "DEL - IDXEDFLD UPDATEIDX PRINTSP"_s)},
    };
    return bars.value(bar);
}

QString MenuOf(const QString& key) {
    static const QHash<QString, QString> menus{{u"MNUFILE"_s, u"FILEMENU"_s},
                                               {u"MNUEDIT"_s, u"EDITMENU"_s},
                                               {u"MNUTOOLS"_s, u"TOOLSMENU"_s},
                                               {u"MNUINFO"_s, u"INFOMENU"_s}};
    return menus.value(key);
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

} // namespace velmora
