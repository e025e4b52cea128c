// The engine's English clauses in the words of people.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/EngineWords.h"
#include "core/Messages.h"
#include "tests/core/Place.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

TEST(EngineWordsTest, ClausesAreWordedWithTheirPlaces) {
    ScopedGlobals program;
    program->gLocaleId = 1031;
    struct Case {
        QString clause;
        QString worded;
    };
    for (const auto& [clause, worded] : {
             Case{u"needs a password"_s, u"durch ein Kennwort geschützt"_s},
             Case{u"2 of 9 pages are damaged"_s, u"beschädigte Seiten: 2 von 9"_s},
             Case{u"1 of 1 page is damaged"_s, u"beschädigte Seiten: 1 von 1"_s},
             // The second place takes the rest, colons and all.
             Case{u"damaged after 12 entries: bad: header"_s,
                  u"beschädigt nach 12 Einträgen: bad: header"_s},
             Case{u"the document inside it, a, b.docx, is not read"_s,
                  u"das eingebettete Dokument a, b.docx wird nicht gelesen"_s},
             // A special form goes before the general one that fits too.
             Case{u"the end of the file is missing"_s, u"das Ende der Datei fehlt"_s},
             Case{u"word/document.xml is missing"_s, u"der Teil word/document.xml fehlt"_s},
             Case{u"content.xml is malformed at line 7"_s, u"content.xml: fehlerhaft in Zeile 7"_s},
             Case{
                 u"text beyond 128 MB; its fonts do not tell what most characters mean"_s,
                 u"der Text jenseits von 128 MB ist nicht indiziert; die Schriftarten verraten den "
                 u"Text nicht"_s},
             // What nobody has worded stays; a place is never empty.
             Case{u"something quite new"_s, u"something quite new"_s},
             Case{u" of 9 pages are damaged"_s, u" of 9 pages are damaged"_s},
             Case{u""_s, u""_s},
         }) {
        EXPECT_EQ(ReasonMessage(clause), worded);
    }
}

TEST(EngineWordsTest, FaultsSayTheSystemsWordsWhereTheyHelp) {
    const ScopedGlobals program;
    const QString words = u"/x/index_a.ix: Permission denied"_s;
    EXPECT_EQ(FaultMessage(engine::IndexFault::NoRights, words), GetMessage(3104) + u'\n' + words);
    EXPECT_EQ(FaultMessage(engine::IndexFault::Busy, u"database is locked"_s), GetMessage(3102));
    EXPECT_EQ(FaultMessage(engine::IndexFault::Damaged, {}), GetMessage(3101));
    EXPECT_EQ(StateMessage(engine::ReadState::Encrypted), u"Encrypted"_s);
}

} // namespace
} // namespace velmora
