// When the commands of the main window can be used.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/CommandState.h"
#include "mainwindow/Commands.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

const QStringList kBar = KeysOfBar(u"STD"_s);

// The tool bar's keys that depend on the selection and are enabled.
QString Enabled(const CommandContext& context) {
    QStringList keys;
    for (const QString& key : kBar) {
        if (!key.isEmpty() && key != u"IDXEDFLD" && key != u"UPDATEIDX" &&
            IsEnabled(key, context)) {
            keys << key;
        }
    }
    return keys.join(u' ');
}

CommandContext Tree(NodeKind node) {
    CommandContext context;
    context.treeFocus = true;
    context.node = node;
    return context;
}

CommandContext List(int selected) {
    CommandContext context;
    context.node = NodeKind::Below;
    context.selected = selected;
    return context;
}

TEST(CommandState, TheTreeAllowsWhatItsNodeAllows) {
    CommandContext root = Tree(NodeKind::Root);
    root.clipboardFull = true;
    EXPECT_EQ(Enabled(root), QString());
    CommandContext indexed = Tree(NodeKind::Indexed);
    EXPECT_EQ(Enabled(indexed), u"UPLEVEL NEWFLD"_s);
    indexed.clipboardFull = true;
    EXPECT_EQ(Enabled(indexed), u"UPLEVEL NEWFLD PASTE"_s);
    EXPECT_FALSE(IsEnabled(u"MNURENAME"_s, indexed));
    EXPECT_TRUE(IsEnabled(u"MNUINDEXFILE"_s, indexed));
    const CommandContext below = Tree(NodeKind::Below);
    EXPECT_EQ(Enabled(below), u"UPLEVEL NEWFLD COPY DEL"_s);
    EXPECT_TRUE(IsEnabled(u"MNURENAME"_s, below));
    EXPECT_TRUE(IsEnabled(u"MNUSEARCHINFOLDER"_s, below));
}

TEST(CommandState, TheListAllowsWhatItsRowsAllow) {
    CommandContext none = List(0);
    none.clipboardFull = true;
    EXPECT_EQ(Enabled(none), u"UPLEVEL NEWFLD PASTE"_s);
    EXPECT_EQ(Enabled(List(1)), u"UPLEVEL NEWFLD COPY SHELL DEL"_s);
    CommandContext folder = List(1);
    folder.hasFolder = true;
    EXPECT_EQ(Enabled(folder), u"UPLEVEL NEWFLD COPY DEL"_s);
    EXPECT_TRUE(IsEnabled(u"MNUSEARCHINFOLDER"_s, folder));
    EXPECT_FALSE(IsEnabled(u"MNUSEARCHINFOLDER"_s, List(1)));
    EXPECT_EQ(Enabled(List(2)), u"UPLEVEL COPY SHELL DEL"_s);
    EXPECT_FALSE(IsEnabled(u"MNURENAME"_s, List(2)));
    EXPECT_FALSE(IsEnabled(u"MNUINDEXFILE"_s, List(2)));
    folder.selected = 2;
    EXPECT_EQ(Enabled(folder), u"UPLEVEL COPY DEL"_s);
}

TEST(CommandState, ASearchResultIsNoFolder) {
    CommandContext found = List(1);
    found.searchMode = found.clipboardFull = true;
    found.historyPosition = 1;
    found.historySize = 3;
    EXPECT_EQ(Enabled(found), u"COPY SHELL DEL"_s);
    EXPECT_TRUE(IsEnabled(u"MNUFINDELEMENT"_s, found));
    found.searchMode = false;
    EXPECT_EQ(Enabled(found), u"BACK NEXT UPLEVEL NEWFLD COPY PASTE SHELL DEL"_s);
    EXPECT_FALSE(IsEnabled(u"MNUFINDELEMENT"_s, found));
    found.historyPosition = 2;
    EXPECT_FALSE(IsEnabled(u"NEXT"_s, found));
    found.historyPosition = 0;
    EXPECT_FALSE(IsEnabled(u"BACK"_s, found));
}

TEST(CommandState, MenusAgreeWithTheBarAndSharedArchivesOfferLess) {
    for (const CommandContext& context : {Tree(NodeKind::Root), Tree(NodeKind::Indexed),
                                          Tree(NodeKind::Below), List(0), List(1), List(3)}) {
        for (const char* key : {"MNUNEWFLD", "MNUCOPY", "MNUPASTE", "MNUDELETE", "MNUOPEN",
                                "MNUOPENWITH", "MNUPROPS", "MNUOCR", "MNUSCANNER"}) {
            const QString name = QString::fromLatin1(key);
            EXPECT_EQ(IsEnabled(name, context), IsEnabled(ToolbarKey(name), context)) << key;
        }
        EXPECT_TRUE(IsEnabled(u"MNUEXIT"_s, context));
        EXPECT_FALSE(IsEnabled(u"NOSUCHKEY"_s, context));
    }
    CommandContext shared = List(0);
    EXPECT_TRUE(IsOffered(u"MNUARCHIVEMANAGEMENT"_s, shared));
    shared.isDefaultArchive = false;
    EXPECT_FALSE(IsOffered(u"MNUARCHIVEMANAGEMENT"_s, shared));
    EXPECT_FALSE(IsEnabled(u"MNUARCHIVEMANAGEMENT"_s, shared));
    EXPECT_FALSE(IsOffered(u"MNUSELMAIL"_s, shared));
    EXPECT_TRUE(IsOffered(u"MNUREBUILD"_s, shared));
}

} // namespace
} // namespace velmora
