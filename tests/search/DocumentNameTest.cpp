// Names of documents inside containers, taken apart.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/DocumentName.h"
#include "tests/core/Place.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

std::string Text(const DocumentName& name) {
    std::string text = name.file.toStdString();
    for (const MemberStep& step : name.members) {
        text +=
            (step.IntoMail ? " ~" : " >") + step.mark.toStdString() + "=" + step.name.toStdString();
    }
    return text;
}

TEST(DocumentNameTest, TakesNamesApart) {
    struct Case {
        QString name;
        std::string parts, mailMark, archive;
    };
    for (const auto& [name, parts, mailMark, archive] : {
             Case{u"\\A\\B.TXT"_s, "\\A\\B.TXT", "", ""},
             Case{u"\\B.ZIP>0|C\\D.TXT"_s, "\\B.ZIP >0=C/D.TXT", "", "\\B.ZIP"},
             Case{u"\\B.ZIP>0|C.ZIP>12|D.TXT"_s, "\\B.ZIP >0=C.ZIP >12=D.TXT", "", "\\B.ZIP"},
             Case{u"\\M.EML>{0:0}|D.PDF"_s, "\\M.EML ~{0:0}=D.PDF", "{0:0}", ""},
             Case{u"\\M>{0:0}|X{1}.TXT"_s, "\\M ~{0:0}=X{1}.TXT", "{0:0}", ""},
             Case{u"\\M.EML>{0:0}|Z.ZIP>3|D.TXT"_s, "\\M.EML ~{0:0}=Z.ZIP >3=D.TXT", "{0:0}",
                  "Z.ZIP"},
             Case{u"\\B.ZIP>0|M.EML>{1:0}|D.TXT"_s, "\\B.ZIP >0=M.EML ~{1:0}=D.TXT", "{1:0}", ""},
             Case{u"\\S.DBX>7|RE: HELLO{7}"_s, "\\S.DBX ~7|RE: HELLO{7}=", "7|RE: HELLO{7}", ""},
             Case{u"\\S.DBX>7|HELLO{7:1}D.TXT"_s, "\\S.DBX ~7|HELLO{7:1}=D.TXT", "7|HELLO{7:1}",
                  ""},
             Case{QString(), "", "", ""},
         }) {
        const DocumentName taken = DocumentName::OfFileName(name);
        EXPECT_EQ(Text(taken), parts);
        EXPECT_EQ(taken.MailMark().toStdString(), mailMark) << parts;
        EXPECT_EQ(taken.Archive().toStdString(), archive) << parts;
    }
}

TEST(DocumentNameTest, SpellingMayHoldMarksOfItsOwn) {
    const QString name = u"\\HOME\\A\uF03EB.ZIP>0|C\uF07CD\uF03E.TXT"_s;
    EXPECT_EQ(Text(DocumentName::OfSpelling(name, u"/home/a>b.zip>0|c\uF07Cd\uF03E.txt"_s)),
              "/home/a>b.zip >0=c|d>.txt");
    EXPECT_EQ(Text(DocumentName::OfSpelling(u"\\A\uF03EB"_s, u"/a>b"_s)), "/a>b");
    // A spelling that cannot belong to the name is not taken.
    EXPECT_EQ(Text(DocumentName::OfSpelling(u"\\B.ZIP>0|C"_s, u"/b.zip"_s)), "\\B.ZIP >0=C");
}

TEST(DocumentNameTest, AttachmentHasAColonBehindTheLastBrace) {
    EXPECT_TRUE(VerifyIfIsAttach(u"\\M.EML>{0:0}|D.PDF"_s));
    EXPECT_TRUE(VerifyIfIsAttach(u"A:B"_s));
    EXPECT_FALSE(VerifyIfIsAttach(u"\\S.DBX>RE: HELLO{12}"_s));
    EXPECT_FALSE(VerifyIfIsAttach(u"\\M.EML>12"_s));
    EXPECT_FALSE(VerifyIfIsAttach(QString()));
}

} // namespace
} // namespace velmora
