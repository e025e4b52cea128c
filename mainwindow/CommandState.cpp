// When the commands of the main window can be used.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/CommandState.h"

#include "mainwindow/Commands.h"

#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

using Rule = bool (*)(const CommandContext&);

bool InFolder(const CommandContext& context) {
    return !context.searchMode && context.node != NodeKind::Root;
}

bool OneRow(const CommandContext& context) {
    return !context.treeFocus && context.selected == 1;
}

// Rows that may be copied or deleted, or a folder of the tree that is not an indexed one.
bool Movable(const CommandContext& context) {
    return context.treeFocus ? context.node == NodeKind::Below : context.selected > 0;
}

bool FolderChosen(const CommandContext& context) {
    return context.treeFocus ? context.node != NodeKind::Root
                             : context.selected == 1 && context.hasFolder;
}

// The commands that depend on what is selected; all others can always be used.
const QHash<QString, Rule>& Rules() {
    static const QHash<QString, Rule> rules{
        {u"UPLEVEL"_s, [](const CommandContext& c) { return InFolder(c); }},
        {u"BACK"_s, [](const CommandContext& c) { return !c.searchMode && c.historyPosition > 0; }},
        {u"NEXT"_s,
         [](const CommandContext& c) {
             return !c.searchMode && c.historyPosition + 1 < c.historySize;
         }},
        // Where the list is active and nothing or one row is selected, the folder that it shows is
        // meant.
        {u"NEWFLD"_s,
         [](const CommandContext& c) { return InFolder(c) && (c.treeFocus || c.selected <= 1); }},
        {u"SCANNER"_s, [](const CommandContext& c) { return InFolder(c) && c.treeFocus; }},
        {u"PASTE"_s, [](const CommandContext& c) { return InFolder(c) && c.clipboardFull; }},
        {u"COPY"_s, Movable},
        {u"MNUCUT"_s, Movable},
        {u"DEL"_s, Movable},
        {u"SHELL"_s,
         [](const CommandContext& c) { return !c.treeFocus && c.selected > 0 && !c.hasFolder; }},
        {u"PROPS"_s, [](const CommandContext& c) { return OneRow(c) && !c.hasFolder; }},
        {u"MAKEOCR"_s,
         [](const CommandContext& c) { return !c.treeFocus && c.selected > 0 && c.allTiff; }},
        {u"MNURENAME"_s,
         [](const CommandContext& c) {
             return c.treeFocus ? c.node == NodeKind::Below : c.selected == 1;
         }},
        {u"MNUSEARCHINFOLDER"_s, FolderChosen},
        {u"MNUINDEXFILE"_s,
         [](const CommandContext& c) { return c.treeFocus ? FolderChosen(c) : c.selected == 1; }},
        {u"MNUCONVERTTOTIFF"_s, [](const CommandContext& c) { return OneRow(c) && c.allPdf; }},
        {u"MNUFINDELEMENT"_s, [](const CommandContext& c) { return c.searchMode && OneRow(c); }},
        {u"MNUFILESEARCH2"_s, [](const CommandContext& c) { return c.searchMode && OneRow(c); }},
    };
    return rules;
}

} // namespace

QString ToolbarKey(const QString& key) {
    static const QHash<QString, QString> keys{
        {u"MNUNEWFLD"_s, u"NEWFLD"_s},  {u"MNUCOPY"_s, u"COPY"_s},
        {u"MNUPASTE"_s, u"PASTE"_s},    {u"MNUDELETE"_s, u"DEL"_s},
        {u"MNUPROPS"_s, u"PROPS"_s},    {u"MNUOPEN"_s, u"SHELL"_s},
        {u"MNUOPENWITH"_s, u"SHELL"_s}, {u"MNUOCR"_s, u"MAKEOCR"_s},
        {u"MNUSCANNER"_s, u"SCANNER"_s}};
    return keys.value(key, key);
}

bool IsOffered(const QString& key, const CommandContext& context) {
    // A shared archive has no personal mail and no list of further archives.
    return context.isDefaultArchive || (key != u"MNUSELMAIL" && key != u"MNUARCHIVEMANAGEMENT");
}

bool IsToCome(const QString& key) {
    static const QSet<QString> keys{
        u"MNUPROPS"_s,         u"MNUOCR"_s,        u"MNUSCANNER"_s,     u"MNUCONVERTTOTIFF"_s,
        u"MNUFIELDSMANAGER"_s, u"MNUSELMAIL"_s,    u"MNUVERIFY"_s,      u"MNUPRINTSP"_s,
        u"PRINTSP"_s,          u"MNUSEARCHTIF"_s,  u"MNUSCHEDULE"_s,    u"MNUSEARCHFIELDS"_s,
        u"MNUANNSEARCH"_s,     u"MNUFILESEARCH"_s, u"MNUFILESEARCH2"_s, u"PROPS"_s,
        u"MAKEOCR"_s,          u"SCANNER"_s,
    };
    return keys.contains(key);
}

bool IsEnabled(const QString& key, const CommandContext& context) {
    if (IsToCome(key) || !IsOffered(key, context)) {
        return false;
    }
    const auto rule = Rules().constFind(ToolbarKey(key));
    return rule == Rules().constEnd() ? FindCommand(key) != nullptr : (*rule)(context);
}

} // namespace velmora
