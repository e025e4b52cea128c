// Found documents as rows: what they are, what they are called, where they lie, in which order.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/ResultSet.h"
#include "core/Messages.h"
#include "search/TextQuery.h"
#include "tests/search/SearchFixture.h"

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class ResultSetTest : public SearchTest {
  protected:
    static engine::SearchResults Results(std::vector<engine::SearchItem> items) {
        engine::SearchResults results;
        results.found = items.size();
        results.items = std::move(items);
        return results;
    }
    // The one row of an item, as "display | path | kind"; the classes that show it behind it.
    std::string RowOf(const engine::SearchItem& item, const QString& folder = {}) const {
        ResultSet results(Results({item}), folder);
        results.LoadResult();
        if (results.Rows().empty()) {
            return "none";
        }
        const ResultRow row = results.Rows().front();
        std::string text = row.FILEDESCR.toStdString() + " | " + row.PATH.toStdString() + " | " +
                           std::to_string(static_cast<int>(row.kind));
        const std::pair<TypeFilter, const char*> classes[] = {{TypeFilter::IMG, " IMG"},
                                                              {TypeFilter::EML, " EML"},
                                                              {TypeFilter::ATC, " ATC"},
                                                              {TypeFilter::ZIP, " ZIP"},
                                                              {TypeFilter::OTH, " OTH"}};
        for (const auto& [filter, name] : classes) {
            results.LoadResult(filter);
            text += results.Rows().empty() ? "" : name;
        }
        return text;
    }
    static QStringList Names(const ResultSet& results) {
        QStringList names;
        for (const ResultRow& row : results.Rows()) {
            names << row.FILEDESCR;
        }
        return names;
    }
};

TEST_F(ResultSetTest, EveryKindOfNameGivesItsRow) {
    const QString copies = platform::Capitals(MailCopyFolder());
    struct Case {
        engine::SearchItem item;
        std::string row;
    };
    for (const auto& [item, row] : {
             Case{Item(u"\\D\\A.TXT"_s, {}, 1, u"/D/a.Txt"_s), "a.Txt | /D | 0 OTH"},
             Case{Item(u"\\A.TXT"_s), "a.txt | / | 0 OTH"},
             Case{Item(u"\\D\\M.EML"_s), "m.eml | /d | 0 OTH"},
             // members of archives
             Case{Item(u"\\D\\B.ZIP>0|C\\X.TXT"_s, {}, 1, u"/D/B.zip>0|c/X.txt"_s),
                  "c/X.txt | /D/B.zip | 2 ZIP"},
             Case{Item(u"\\D\\B.ZIP>0|C.ZIP>1|X.TXT"_s), "x.txt | /d/b.zip | 2 ZIP"},
             Case{Item(u"\\D\\B.TAR.GZ>4|X.TXT"_s), "x.txt | /d/b.tar.gz | 2 ZIP"},
             Case{Item(u"\\D\\B.ZIP>0|M.EML"_s), "m.eml | /d/b.zip | 2 ZIP"},
             // messages of store files
             Case{Item(u"\\D\\S.DBX>RE: HI{12}"_s, u"Re: Hi"_s), "Re: Hi | Mails | -1 EML"},
             Case{Item(u"\\D\\S.MBX>5"_s, u"Hello"_s), "Hello | Mails | -1 EML"},
             // their attachments
             Case{Item(u"\\D\\S.DBX>12|HI{12:1}X.PDF"_s, u"Hi {12:1}x.pdf"_s),
                  "x.pdf | Mail attachment (Hi) | -1 ATC"},
             Case{Item(u"\\D\\M.EML>{0:0}|X.PDF"_s, u"x.pdf"_s, 1, u"/D/m.eml>{0:0}|x.pdf"_s),
                  "x.pdf | Mail attachment (m.eml) | -1 ATC"},
             Case{Item(u"\\D\\M.EML>{0:0}|X{1}.PDF"_s),
                  "x{1}.pdf | Mail attachment (m.eml) | -1 ATC"},
             Case{Item(u"\\D\\M.EML>{0:0}|N.EML>{2:0}|X"_s),
                  "x | Mail attachment (n.eml) | -1 ATC"},
             Case{Item(u"\\D\\M.EML>{0:0}|Z.ZIP>3|X.TXT"_s),
                  "x.txt | Mail attachment (Zip File: z.zip - m.eml) | -1 ATC"},
             Case{Item(u"\\D\\B.ZIP>0|M.EML>{0:0}|X.TXT"_s),
                  "x.txt | Mail attachment (m.eml) | -1 ATC"},
             // copies of mails and their attachments
             Case{Item(copies + u"3\\MAILTEXT.TXT"_s, u"[MAILBODY]Dinner"_s),
                  "Dinner | Mails | 1 EML"},
             Case{Item(copies + u"3\\X.PDF"_s, u"Dinner"_s),
                  "x.pdf | Mail attachment (Dinner) | 1 ATC"},
             Case{Item(copies + u"3\\Z.ZIP>0|X.PDF"_s, u"Dinner"_s),
                  "x.pdf | Mail attachment (Zip File: z.zip) | 1 ATC"},
             Case{Item(u"\\D\\ELSEWHERE.TXT"_s, u"[MAILBODY]"_s), " | Mails | 1 EML"},
             Case{Item(QString()), "none"},
         }) {
        EXPECT_EQ(RowOf(item), row) << item.FileName.toStdString();
    }
}

TEST_F(ResultSetTest, RowsKeepWhatViewerAndHitsNeed) {
    engine::SearchItem item = Item(u"\\D\\A\uF03EB.ZIP>0|X.TXT"_s, {}, 3, u"/D/a>b.zip>0|x.txt"_s);
    item.Id = 42;
    item.Date = QDateTime(QDate(2024, 2, 29), QTime(23, 59));
    ResultSet results(Results({Item(u"\\D\\Z.TXT"_s), item}), {});
    results.LoadResult();
    const ResultRow row = results.Rows().front();
    EXPECT_EQ(row.position, 1);
    EXPECT_EQ(row.HITCOUNT, 3);
    EXPECT_EQ(row.HITS, u"1 2 3 "_s);
    EXPECT_EQ(row.FILENAME, item.FileName);
    EXPECT_EQ(row.OCRFILENAME, item.FileName);
    EXPECT_EQ(row.DATETOSORT, u"20240229"_s);
    EXPECT_EQ(row.Spelling, item.Spelling);
    EXPECT_EQ(row.Id, 42);
    EXPECT_EQ(row.File, u"/D/a>b.zip"_s); // the real file, with a mark of its own
    EXPECT_TRUE(row.IsMember);
    EXPECT_EQ(results.Rows().back().DATETOSORT, QString()); // no date
}

TEST_F(ResultSetTest, RecognisedTextBecomesItsDocument) {
    const QString ocr = platform::Capitals(OcrFolder());
    const QString document = Write(u"Scans/Deed Öl.tif"_s, "II*");
    const qint64 id = AddOcrRow(LogicalDocs(u"Scans"_s), u"Deed Öl.tif"_s);
    const qint64 gone = AddOcrRow(LogicalDocs(u"Scans"_s), u"gone.tif"_s);
    const auto text = [&](qint64 row) {
        return Item(ocr + QString::number(row) + u"\\IFTEXT.OCR"_s, u"iftext.ocr"_s, 2);
    };
    const std::string shown = "Deed Öl.tif | " + Docs(u"Scans"_s).toStdString() + " | 0 IMG";
    EXPECT_EQ(RowOf(text(id)), shown);
    EXPECT_EQ(RowOf(text(gone)), "none");     // a document that is there no more
    EXPECT_EQ(RowOf(text(id + 100)), "none"); // no row
    EXPECT_EQ(RowOf(Item(ocr + u"IFTEXT.OCR"_s)), "none");

    // Only documents of the folder that was searched.
    EXPECT_EQ(RowOf(text(id), LogicalDocs()), shown);
    EXPECT_EQ(RowOf(text(id), platform::Capitals(LogicalDocs(u"Scans"_s)) + u'\\'), shown);
    EXPECT_EQ(RowOf(text(id), platform::ToLogical(document)), shown);
    EXPECT_EQ(RowOf(text(id), LogicalDocs(u"Sca"_s)), "none");

    ResultSet results(Results({text(id)}), {});
    results.LoadResult(TypeFilter::IMG);
    const ResultRow& row = results.Rows().front();
    EXPECT_EQ(row.FILENAME, platform::Capitals(platform::ToLogical(document)));
    EXPECT_EQ(row.OCRFILENAME, platform::Capitals(text(id).FileName));
    EXPECT_EQ(row.File, document);

    // Found both by its name and by its text: two rows.
    ResultSet both(Results({text(id), Item(row.FILENAME)}), {});
    both.LoadResult();
    EXPECT_EQ(both.Rows().size(), 2U);
}

TEST_F(ResultSetTest, FoldersOfThePersonAreNamed) {
    WriteFile(ThePlace().Path("config", u"user-dirs.dirs"_s),
              "XDG_DESKTOP_DIR=\"$HOME/Desk\"\nXDG_DOCUMENTS_DIR=\"$HOME/Docs\"\n");
    const QString home = ThePlace().Path("home");
    const auto path = [&](const QString& file) {
        return RowOf(Item(platform::Capitals(platform::ToLogical(file)), {}, 1, file));
    };
    EXPECT_EQ(path(home + u"/Desk/a.txt"_s), "a.txt | Desktop | 0 OTH");
    EXPECT_EQ(path(home + u"/Docs/sub/a.txt"_s), "a.txt | Document/sub | 0 OTH");
    EXPECT_EQ(path(home + u"/Desktop2/a.txt"_s),
              "a.txt | " + home.toStdString() + "/Desktop2 | 0 OTH");
    program->gLocaleId = 1031;
    EXPECT_EQ(path(home + u"/Docs/a.txt"_s),
              "a.txt | " + GetMessage(92).toStdString() + " | 0 OTH");
}

TEST_F(ResultSetTest, CountsAndSortsAsItsHeadsAreClicked) {
    const auto dated = [](const char16_t* name, int hits, int day, int hour) {
        engine::SearchItem item = Item(u"\\"_s + QString::fromUtf16(name).toUpper(), {}, hits,
                                       u"/"_s + QString::fromUtf16(name));
        item.Date = QDateTime(QDate(2024, 1, day), QTime(hour, 0));
        return item;
    };
    ResultSet results(Results({dated(u"b10", 2, 10, 5), dated(u"B9", 10, 9, 0),
                               dated(u"é", 2, 10, 1), dated(u"f", 1, 1, 0)}),
                      {});
    results.LoadResult();
    EXPECT_EQ(results.Caption(), u"Search results: 4 Document/s - Hits: 15"_s);
    EXPECT_EQ(Names(results), QStringList({u"B9"_s, u"b10"_s, u"é"_s, u"f"_s}));
    EXPECT_EQ(results.SortColumn(), GridColumn::HITCOUNT);
    EXPECT_EQ(results.Order(), SortOrder::Descending);

    // The first click on a column rises, also on the one that is sorted from the beginning.
    EXPECT_TRUE(results.grdResult_ColumnClick(3));
    EXPECT_EQ(Names(results), QStringList({u"f"_s, u"b10"_s, u"é"_s, u"B9"_s}));
    EXPECT_TRUE(results.grdResult_ColumnClick(3));
    EXPECT_EQ(Names(results), QStringList({u"B9"_s, u"b10"_s, u"é"_s, u"f"_s}));
    EXPECT_TRUE(results.grdResult_ColumnClick(2));
    EXPECT_EQ(Names(results), QStringList({u"B9"_s, u"b10"_s, u"é"_s, u"f"_s}));
    EXPECT_TRUE(results.grdResult_ColumnClick(1));
    EXPECT_EQ(Names(results), QStringList({u"f"_s, u"B9"_s, u"é"_s, u"b10"_s}));
    EXPECT_EQ(results.SortColumn(), GridColumn::DATE);
    for (const int dead : {0, 4, 5, 8}) {
        EXPECT_FALSE(results.grdResult_ColumnClick(dead));
    }
    EXPECT_TRUE(results.grdResult_ColumnClick(1));
    EXPECT_EQ(Names(results), QStringList({u"b10"_s, u"é"_s, u"B9"_s, u"f"_s}));

    // A filter keeps the order; one that lets nothing through counts nothing.
    results.LoadResult(TypeFilter::OTH);
    EXPECT_EQ(Names(results).first(), u"b10"_s);
    results.LoadResult(TypeFilter::ZIP);
    EXPECT_EQ(results.Caption(), u"Search results: 0 Document/s - Hits: 0"_s);
}

TEST_F(ResultSetTest, RealContainersComeApart) {
    Write(u"Post/letter.eml"_s,
          Mail("Dinner", "see the walnut",
               {{"bill.txt", "walnut"}, {"old.zip", Zip({{"in/deep.txt", "walnut"}})}}));
    Write(u"pack.zip"_s, Zip({{"one.txt", "walnut"}, {"two.zip", Zip({{"three.txt", "walnut"}})}}));
    Index();
    ResultSet results(Search(u"walnut"_s), {});
    results.LoadResult();
    QStringList rows;
    for (const ResultRow& row : results.Rows()) {
        rows << row.FILEDESCR + u'|' + row.PATH + u'|' + row.File;
    }
    rows.sort();
    const QString letter = Docs(u"Post/letter.eml"_s);
    const QString pack = Docs(u"pack.zip"_s);
    EXPECT_EQ(
        rows,
        QStringList({u"bill.txt|Mail attachment (letter.eml)|"_s + letter,
                     u"in/deep.txt|Mail attachment (Zip File: old.zip - letter.eml)|"_s + letter,
                     u"letter.eml|"_s + Docs(u"Post"_s) + u'|' + letter,
                     u"one.txt|"_s + pack + u'|' + pack, u"three.txt|"_s + pack + u'|' + pack}));
}

} // namespace
} // namespace velmora
