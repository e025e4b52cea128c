// Record sets: walking, filtering, and what reaches the database when.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "StoreFixture.h"

using namespace velmora;

namespace {

class RecordSetTest : public ArchiveTest {
  protected:
    RecordSetTest() { OpenConn(); }

    static void AddStamps(const QStringList& names) {
        RecordSetPtr rs = GetRsTimbri(-1);
        for (const QString& name : names) {
            rs->AddNew();
            rs->Fields(u"sdescr").SetValue(name);
            rs->Fields(u"i_idparent").SetValue(0);
            rs->UpdateBatch();
        }
    }
    static QString Names(RecordSet& rs) {
        QStringList names;
        for (rs.MoveFirst(); !rs.EOF_(); rs.MoveNext()) {
            names << rs.Fields(u"SDescr").Text();
        }
        return names.join(u',');
    }
    std::string StampsOnDisk() const {
        return Text("SELECT coalesce(group_concat(sdescr), '') FROM tbltimbri");
    }
};

TEST_F(RecordSetTest, WalksBothWays) {
    RecordSetPtr none = GetRsTimbri(-1);
    EXPECT_TRUE(none->BOF());
    EXPECT_TRUE(none->EOF_());
    none->MoveFirst();
    none->MoveLast();
    EXPECT_TRUE(none->EOF_());
    EXPECT_EQ(NumberOf([&] { none->MoveNext(); }), kNoCurrentRecord);
    EXPECT_EQ(NumberOf([&] { return none->Fields(u"sdescr").Value(); }), kNoCurrentRecord);
    EXPECT_EQ(NumberOf([&] { none->UpdateBatch(); }), kNoCurrentRecord);

    AddStamps({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    RecordSetPtr rs = GetRsTimbri(-1);
    EXPECT_EQ(rs->RecordCount(), 3);
    EXPECT_EQ(Names(*rs), QStringLiteral("A,B,C"));
    EXPECT_EQ(NumberOf([&] { rs->MoveNext(); }), kNoCurrentRecord);
    rs->MovePrevious();
    EXPECT_EQ(rs->Fields(u"sdescr").Text(), QStringLiteral("C"));
    rs->MoveFirst();
    rs->MovePrevious();
    EXPECT_TRUE(rs->BOF());
    EXPECT_FALSE(rs->EOF_());
    EXPECT_EQ(NumberOf([&] { rs->MovePrevious(); }), kNoCurrentRecord);
    rs->MoveNext();
    EXPECT_EQ(rs->Fields(1).Text(), QStringLiteral("A"));
    EXPECT_EQ(rs->Fields(1).Name(), QStringLiteral("sdescr"));
    EXPECT_TRUE(rs->HasField(u"SDESCR"));
    EXPECT_EQ(NumberOf([&] { return rs->Fields(u"none"); }), kNoSuchField);
    EXPECT_EQ(NumberOf([&] { return rs->Fields(3); }), kNoSuchField);
}

TEST_F(RecordSetTest, AddsOnlyWhenToldAndGivesTheNumber) {
    RecordSetPtr rs = GetRsTimbri(-1);
    rs->AddNew();
    rs->Fields(u"SDESCR").SetValue(QStringLiteral("new"));
    EXPECT_TRUE(rs->Fields(u"i_id").IsNull());
    EXPECT_TRUE(rs->Fields(u"i_idparent").IsNull());
    EXPECT_EQ(Count("tbltimbri"), 0);
    rs->UpdateBatch();
    EXPECT_EQ(rs->Fields(u"i_id").Number(), 1);
    EXPECT_EQ(rs->RecordCount(), 1);
    EXPECT_EQ(Text("SELECT i_id || sdescr || coalesce(i_idparent, '-') FROM tbltimbri"), "1new-");
    rs->UpdateBatch(); // nothing pending any more
    EXPECT_EQ(Count("tbltimbri"), 1);

    // The number names folders on the disk: a deleted one is not given again.
    rs->Delete();
    rs->UpdateBatch();
    AddStamps({QStringLiteral("next")});
    EXPECT_EQ(Text("SELECT i_id FROM tbltimbri"), "2");

    RecordSetPtr empty = GetRsTimbri(-1);
    empty->AddNew();
    empty->UpdateBatch();
    EXPECT_EQ(empty->Fields(u"i_id").Number(), 3);
}

TEST_F(RecordSetTest, TakesOnlyWhatTheColumnHolds) {
    RecordSetPtr rs = GetRs(QStringLiteral("SELECT * FROM tblFieldsDefs"));
    rs->AddNew();
    const auto set = [&](QStringView field, const QVariant& value) {
        return NumberOf([&] { rs->Fields(field).SetValue(value); });
    };
    // 50 characters as UTF-16 counts them: 25 outside the first plane.
    EXPECT_EQ(set(u"sdescr", QString(50, u'È')), 0);
    EXPECT_EQ(set(u"sdescr", QString(51, u'x')), kValueTooLong);
    EXPECT_EQ(set(u"sdescr", QStringLiteral("😀").repeated(25)), 0);
    EXPECT_EQ(set(u"sdescr", QStringLiteral("😀").repeated(26)), kValueTooLong);
    EXPECT_EQ(set(u"sdefaultvalue", QString(100000, u'x')), 0) << "a memo has no limit";
    EXPECT_EQ(set(u"itype", QStringLiteral("abc")), kValueMismatch);
    EXPECT_EQ(set(u"itype", QStringLiteral("")), kValueMismatch);
    EXPECT_EQ(set(u"itype", 3000000000LL), kValueMismatch);
    EXPECT_EQ(set(u"itype", QStringLiteral("12")), 0);
    EXPECT_EQ(set(u"ilenght", true), 0);
    EXPECT_EQ(set(u"suser", 5), 0);
    EXPECT_EQ(set(u"i_id", 5), kNotUpdatable) << "the database numbers";
    rs->UpdateBatch();
    EXPECT_EQ(Text("SELECT itype || '|' || ilenght || '|' || suser || '|' || typeof(suser) || '|' "
                   "|| length(sdescr) FROM TblFieldsDefs"),
              "12|-1|5|text|25");
    try {
        rs->Fields(u"sfieldname").SetValue(QString(30, u'x'));
        FAIL();
    } catch (const Error& error) {
        EXPECT_TRUE(error.Text().contains(QStringLiteral("sfieldname")));
        EXPECT_TRUE(error.Text().contains(QStringLiteral("30")));
        EXPECT_TRUE(error.Text().contains(QStringLiteral("20")));
    }
    rs->Fields(u"suser").SetValue(QVariant());
    rs->UpdateBatch();
    EXPECT_EQ(Text("SELECT suser FROM TblFieldsDefs"), "NULL");
    EXPECT_TRUE(rs->Fields(u"suser").IsNull());
    EXPECT_EQ(rs->Fields(u"suser").Text(), QString());
}

TEST_F(RecordSetTest, KeepsDoublesAndOddTexts) {
    OpenedConnection().AddColumn(QStringLiteral("tblDocFields"),
                                 {QStringLiteral("PRICE"), FieldType::Double});
    OpenedConnection().AddColumn(QStringLiteral("tblDocFields"),
                                 {QStringLiteral("NOTE"), FieldType::Memo});
    RecordSetPtr rs = GetRs(QStringLiteral("SELECT * FROM tblDocFields"));
    rs->AddNew();
    rs->Fields(u"price").SetValue(QStringLiteral("0.1"));
    rs->Fields(u"note").SetValue(QStringLiteral("007"));
    EXPECT_EQ(NumberOf([&] { rs->Fields(u"price").SetValue(QStringLiteral("1,5")); }),
              kValueMismatch);
    rs->UpdateBatch();
    rs = GetRs(QStringLiteral("SELECT * FROM tblDocFields"));
    EXPECT_EQ(rs->Fields(u"price").Value(), QVariant(0.1));
    EXPECT_EQ(rs->Fields(u"note").Text(), QStringLiteral("007"));
    rs->Fields(u"price").SetValue(2);
    rs->UpdateBatch();
    rs->Fields(u"price").SetValue(3); // what was written is what is compared with
    rs->UpdateBatch();
    EXPECT_EQ(Text("SELECT price FROM tblDocFields"), "3.0");
    OpenedConnection().DropColumn(QStringLiteral("tblDocFields"), QStringLiteral("price"));
    EXPECT_EQ(Text("SELECT count(*) FROM pragma_table_info('tblDocFields')"), "6");
    EXPECT_TRUE(GetRs(QStringLiteral("SELECT * FROM tblDocFields WHERE NOTE = '007'")));
}

TEST_F(RecordSetTest, FiltersAndFinds) {
    AddStamps(
        {QStringLiteral("A"), QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("it's")});
    RecordSetPtr rs = GetRsTimbri(-1);
    rs->SetFilter(QStringLiteral("SDESCR='a'"));
    EXPECT_EQ(rs->RecordCount(), 2);
    EXPECT_EQ(Names(*rs), QStringLiteral("A,a"));
    EXPECT_EQ(NumberOf([&] { rs->SetFilter(QStringLiteral("none=1")); }), kNoSuchField);
    EXPECT_EQ(NumberOf([&] { rs->SetFilter(QStringLiteral("what?")); }), kBadCondition);
    EXPECT_EQ(rs->RecordCount(), 2) << "a refused filter changes nothing";
    EXPECT_EQ(rs->Filter(), QStringLiteral("SDESCR='a'"));

    rs->MoveFirst();
    EXPECT_TRUE(rs->Find(QStringLiteral("I_ID=3")));
    EXPECT_FALSE(rs->Find(QStringLiteral("I_ID=2"))) << "only what the filter shows";
    EXPECT_TRUE(rs->EOF_());
    rs->SetFilter(QString());
    EXPECT_EQ(rs->RecordCount(), 4);
    EXPECT_TRUE(rs->Find(QStringLiteral("sdescr='IT''S'")));
    EXPECT_EQ(rs->Fields(u"i_id").Number(), 4);
    EXPECT_FALSE(rs->Find(QStringLiteral("I_ID=1"))) << "forwards only";
    rs->MoveFirst();
    EXPECT_TRUE(rs->Find(QStringLiteral("I_ID=1"))) << "the current one included";
    EXPECT_EQ(NumberOf([&] { return rs->Find(QStringLiteral("none=1")); }), kNoSuchField);
}

TEST_F(RecordSetTest, FindSeesEveryChange) {
    AddStamps({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("a")});
    RecordSetPtr rs = GetRsTimbri(-1);
    const auto find = [&](const char16_t* condition) {
        rs->MoveFirst();
        return rs->Find(QString::fromUtf16(condition)) ? rs->Fields(u"i_id").Number() : 0;
    };
    EXPECT_EQ(find(u"sdescr='a'"), 1);
    rs->Fields(u"sdescr").SetValue(QStringLiteral("Z"));
    EXPECT_EQ(find(u"sdescr='a'"), 3);
    EXPECT_EQ(find(u"sdescr='z'"), 1);
    rs->CancelUpdate();
    EXPECT_EQ(find(u"sdescr='a'"), 1);
    rs->Delete();
    EXPECT_EQ(find(u"sdescr='a'"), 3);
    rs->AddNew();
    rs->Fields(u"sdescr").SetValue(QStringLiteral("new"));
    EXPECT_EQ(find(u"i_id=4"), 0);
    rs->MoveFirst();
    EXPECT_TRUE(rs->Find(QStringLiteral("sdescr='NEW'")));
    rs->UpdateBatch();
    EXPECT_EQ(find(u"i_id=4"), 4);
    EXPECT_EQ(find(u"i_id='4'"), 4) << "a text for a number";
    EXPECT_EQ(find(u"sdescr=NULL"), 0);
}

TEST_F(RecordSetTest, EditsUnderAFilterStayCurrent) {
    AddStamps({QStringLiteral("old"), QStringLiteral("other")});
    RecordSetPtr rs = GetRsTimbri(-1);
    rs->SetFilter(QStringLiteral("sdescr='OLD'"));
    rs->Fields(u"sdescr").SetValue(QStringLiteral("new"));
    rs->UpdateBatch();
    EXPECT_EQ(rs->Fields(u"sdescr").Text(), QStringLiteral("new"));
    EXPECT_EQ(StampsOnDisk(), "new,other");
    rs->SetFilter(QStringLiteral("sdescr='OLD'"));
    EXPECT_EQ(rs->RecordCount(), 0);
}

TEST_F(RecordSetTest, DeletesWhenWritten) {
    AddStamps({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    RecordSetPtr rs = GetRsTimbri(-1);
    rs->MoveNext();
    rs->Delete();
    EXPECT_EQ(rs->RecordCount(), 2);
    EXPECT_EQ(NumberOf([&] { return rs->Fields(u"sdescr").Value(); }), kNoCurrentRecord);
    EXPECT_EQ(StampsOnDisk(), "A,B,C");
    rs->UpdateBatch();
    EXPECT_EQ(StampsOnDisk(), "A,C");
    rs->MoveNext();
    EXPECT_EQ(rs->Fields(u"sdescr").Text(), QStringLiteral("C"));
    rs->MovePrevious();
    EXPECT_EQ(rs->Fields(u"sdescr").Text(), QStringLiteral("A"));
    // Deleted through a filter, written with the rest after the filter is lifted.
    rs->SetFilter(QStringLiteral("sdescr='c'"));
    rs->Delete();
    rs->SetFilter(QString());
    EXPECT_EQ(Names(*rs), QStringLiteral("A"));
    rs->UpdateBatch(Affect::AllChapters);
    EXPECT_EQ(StampsOnDisk(), "A");
    for (rs->MoveFirst(); !rs->EOF_(); rs->MoveNext()) {
        rs->Delete();
        rs->UpdateBatch();
    }
    EXPECT_EQ(StampsOnDisk(), "");
    EXPECT_TRUE(rs->BOF() && rs->EOF_());
}

TEST_F(RecordSetTest, CancelledChangesAreGone) {
    AddStamps({QStringLiteral("A")});
    RecordSetPtr rs = GetRsTimbri(-1);
    rs->Fields(u"sdescr").SetValue(QStringLiteral("x"));
    rs->CancelUpdate();
    EXPECT_EQ(rs->Fields(u"sdescr").Text(), QStringLiteral("A"));
    rs->Delete();
    rs->CancelUpdate();
    rs->AddNew();
    EXPECT_EQ(rs->RecordCount(), 2);
    rs->CancelUpdate();
    EXPECT_EQ(rs->RecordCount(), 1);
    rs->AddNew();
    rs->Delete();
    rs->UpdateBatch(Affect::All);
    EXPECT_EQ(StampsOnDisk(), "A");
}

TEST_F(RecordSetTest, ABatchMayReplaceARowByOneOfTheSameKey) {
    const QString sql = QStringLiteral("SELECT * FROM tblTextAnnotation");
    const auto add = [](RecordSet& rs, const QString& text) {
        rs.AddNew();
        rs.Fields(u"I_IDFILE").SetValue(4);
        rs.Fields(u"SHASH").SetValue(QStringLiteral("f00"));
        rs.Fields(u"STESTO").SetValue(text);
    };
    RecordSetPtr rs = GetRs(sql);
    add(*rs, QStringLiteral("first"));
    rs->UpdateBatch();
    // The new one stands behind the deleted one and is written after it.
    rs->SetFilter(QStringLiteral("SHASH='f00'"));
    rs->Delete();
    rs->SetFilter(QString());
    add(*rs, QStringLiteral("second"));
    rs->UpdateBatch(Affect::All);
    EXPECT_EQ(Text("SELECT group_concat(stesto) FROM TblTextAnnotation"), "second");

    // All or nothing: the second of these two has a key that is taken, the first stays pending.
    rs->AddNew();
    rs->Fields(u"I_IDFILE").SetValue(5);
    rs->Fields(u"SHASH").SetValue(QStringLiteral("bar"));
    add(*rs, QStringLiteral("third"));
    EXPECT_NE(NumberOf([&] { rs->UpdateBatch(Affect::All); }), 0);
    EXPECT_EQ(Count("TblTextAnnotation"), 1);
    rs->CancelUpdate();
    rs->UpdateBatch(Affect::All);
    EXPECT_EQ(Count("TblTextAnnotation"), 2);
}

TEST_F(RecordSetTest, NoticesWhatOthersDidToTheSameRecord) {
    AddStamps({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    RecordSetPtr rs = GetRsTimbri(-1);
    sqlite::Database other = Beside();
    other.Exec("UPDATE tbltimbri SET sdescr = 'a' WHERE i_id = 1"); // a change of case is one
    rs->Fields(u"sdescr").SetValue(QStringLiteral("mine"));
    EXPECT_EQ(NumberOf([&] { rs->UpdateBatch(); }), kRecordChanged);
    EXPECT_EQ(StampsOnDisk(), "a,B,C");
    EXPECT_EQ(rs->Fields(u"sdescr").Text(), QStringLiteral("mine")) << "still pending";

    // Another column of the record: both changes stay.
    rs->MoveNext();
    other.Exec("UPDATE tbltimbri SET i_idparent = 9 WHERE i_id = 2");
    rs->Fields(u"sdescr").SetValue(QStringLiteral("mine"));
    rs->Fields(u"i_idparent").SetValue(0); // the value it had: no change
    rs->UpdateBatch();
    EXPECT_EQ(Text("SELECT sdescr || i_idparent FROM tbltimbri WHERE i_id = 2"), "mine9");

    rs->MoveNext();
    other.Exec("DELETE FROM tbltimbri WHERE i_id = 3");
    rs->Fields(u"sdescr").SetValue(QStringLiteral("mine"));
    EXPECT_EQ(NumberOf([&] { rs->UpdateBatch(); }), kRecordChanged);

    // Deleting what somebody has edited meanwhile would lose that work.
    RecordSetPtr again = GetRsTimbri(-1);
    other.Exec("UPDATE tbltimbri SET sdescr = 'work' WHERE i_id = 1");
    again->Delete();
    EXPECT_EQ(NumberOf([&] { again->UpdateBatch(); }), kRecordChanged);
    EXPECT_EQ(StampsOnDisk(), "work,mine");
}

TEST_F(RecordSetTest, RowsWithoutACounterAreKnownByTheirValues) {
    const auto add = [] {
        Add(QStringLiteral("tblScannerSetting"),
            {{QStringLiteral("ScannerName"), QStringLiteral("S")},
             {QStringLiteral("SUSER"), Program().gUserKey}});
    };
    add();
    add();
    RecordSetPtr rs = GetRsScannerSetting();
    ASSERT_EQ(rs->RecordCount(), 2);
    rs->Fields(u"ADF").SetValue(QStringLiteral("1"));
    rs->UpdateBatch();
    EXPECT_EQ(Count("TblScannerSetting WHERE ADF = '1'"), 1) << "one of two that are alike";
    Beside().Exec("UPDATE TblScannerSetting SET ScannerName = 'T'");
    rs->Fields(u"ADF").SetValue(QStringLiteral("0"));
    EXPECT_EQ(NumberOf([&] { rs->UpdateBatch(); }), kRecordChanged);
}

TEST_F(RecordSetTest, WhatHasNoOneTableCannotBeChanged) {
    RecordSetPtr rs = GetRs(QStringLiteral("SELECT count(*) AS n FROM tbltimbri"));
    EXPECT_EQ(rs->Fields(u"n").Number(), 0);
    EXPECT_EQ(NumberOf([&] { rs->AddNew(); }), kNotUpdatable);
    EXPECT_EQ(NumberOf([&] { rs->Delete(); }), kNotUpdatable);
}

} // namespace
