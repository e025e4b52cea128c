// The logic below the folder tree and the file list: order, changes, rows of the database, history,
// drops, reading on other threads.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "mainwindow/DropRules.h"
#include "mainwindow/FileOrder.h"
#include "mainwindow/FolderHistory.h"
#include "mainwindow/FolderReader.h"
#include "mainwindow/FolderRecords.h"
#include "mainwindow/SubFolderReader.h"
#include "tests/mainwindow/FieldRows.h"

#include <QCoreApplication>
#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

QStringList Names(const std::vector<FileRow>& rows) {
    QStringList names;
    for (const FileRow& row : rows) {
        names << row.name;
    }
    return names;
}

FileRow File(const QString& name, qint64 size = 1, qint64 modifiedNs = 1) {
    return {name, false, size, modifiedNs};
}

class FolderListTest : public IndexingTest {
  protected:
    static bool WaitFor(const std::function<bool()>& done) {
        QElapsedTimer clock;
        clock.start();
        while (!done() && clock.elapsed() < 20'000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        return done();
    }
};

TEST_F(FolderListTest, SizesAndDatesSortByTheirKeys) {
    EXPECT_EQ(SizeKey(9'216), u"00000000000000009216"_s);
    EXPECT_LT(SizeKey(9'216), SizeKey(10'240));
    EXPECT_GT(SizeText(9'216), SizeText(10'240)); // the text alone would sort them wrongly
    EXPECT_EQ(SizeKey(-1), QString());
    const QDateTime time(QDate(2024, 2, 9), QTime(7, 5, 3));
    const qint64 stamp = time.toMSecsSinceEpoch() * 1'000'000;
    EXPECT_EQ(DateKey(stamp), u"20240209070503"_s);
    EXPECT_TRUE(DateText(stamp).startsWith(u"02/09/2024 "_s));

    std::vector<FileRow> rows{File(u"b"_s, 10'240, 3),
                              File(u"a10"_s, 9'216, 2),
                              File(u"A9"_s, 9'216, 1),
                              {u"z"_s, true, 4096, 9}};
    SortRows(rows, FileColumn::Size, false);
    EXPECT_EQ(Names(rows), QStringList({u"z"_s, u"A9"_s, u"a10"_s, u"b"_s}));
    SortRows(rows, FileColumn::Date, true);
    EXPECT_EQ(Names(rows), QStringList({u"z"_s, u"b"_s, u"a10"_s, u"A9"_s}));
    SortRows(rows, FileColumn::Name, true);
    EXPECT_EQ(Names(rows), QStringList({u"z"_s, u"b"_s, u"a10"_s, u"A9"_s}));
}

TEST_F(FolderListTest, ChangesLeadFromOneStateToTheOther) {
    const auto changes = [](std::vector<FileRow> before, std::vector<FileRow> after) {
        return ChangesBetween(before, after, 4);
    };
    const FileRow a = File(u"a"_s), b = File(u"b"_s), c = File(u"c"_s), d = File(u"d"_s);
    using Runs = std::vector<RowChange>;
    EXPECT_EQ(changes({a, b}, {a, b}), Runs());
    EXPECT_EQ(changes({a, b, c, d}, {a, d}), (Runs{{RowChange::Removed, 1, 2}}));
    EXPECT_EQ(changes({d}, {a, b, c, d}), (Runs{{RowChange::Inserted, 0, 3}}));
    EXPECT_EQ(changes({a, b, d}, {a, c, File(u"d"_s, 7)}), (Runs{{RowChange::Removed, 1, 1},
                                                                 {RowChange::Inserted, 1, 1},
                                                                 {RowChange::Changed, 2, 1}}));
    EXPECT_FALSE(changes({a, b}, {b, a})); // moved
    EXPECT_FALSE(changes({a, b, c, d, File(u"e"_s), File(u"f"_s), File(u"g"_s), File(u"h"_s),
                          File(u"i"_s), File(u"j"_s)},
                         {b, d, File(u"f"_s), File(u"h"_s), File(u"j"_s)})); // too many runs
}

TEST_F(FolderListTest, RowsOfTheDatabaseAreFoundByTheirNames) {
    AddField(u"TITLE"_s, u"Title"_s, 0);
    AddField(u"PAID"_s, u"Paid on"_s, 3);
    AddValues(LogicalDocs(), u"o'brien.tif"_s,
              {{u"TITLE"_s, u"Invoice"_s}, {u"PAID"_s, u"20240229"_s}});
    AddValues(LogicalDocs(), u"bad.tif"_s, {{u"PAID"_s, u"someday"_s}});
    AddValues(LogicalDocs(u"Other"_s), u"x.tif"_s, {{u"TITLE"_s, u"Elsewhere"_s}});
    AddOcr(LogicalDocs(), u"scan.TIF"_s);
    const QList<FieldColumn> columns = ReadFieldColumns();
    ASSERT_EQ(columns.size(), 2);
    EXPECT_EQ(columns[0], (FieldColumn{u"TITLE"_s, u"Title"_s, false}));
    EXPECT_TRUE(columns[1].isDate);

    const auto records = FolderRecords::Read(LogicalDocs(), columns);
    EXPECT_EQ(records->Shown(File(u"O'Brien.tif"_s), 0), u"Invoice"_s);
    EXPECT_EQ(records->Stored(File(u"O'Brien.tif"_s), 1), u"20240229"_s);
    EXPECT_EQ(records->Shown(File(u"O'Brien.tif"_s), 1), UnFrmtDateDb(u"20240229"_s));
    EXPECT_EQ(records->Shown(File(u"bad.tif"_s), 1), u"someday"_s);
    EXPECT_EQ(records->Shown(File(u"x.tif"_s), 0), QString());
    EXPECT_TRUE(records->HasOcr(File(u"scan.tif"_s)));
    EXPECT_FALSE(records->HasOcr(File(u"o'brien.tif"_s)));
    EXPECT_TRUE(reporter.reports.isEmpty());

    // Of all folders: a name counts together with its folder.
    const auto all = FolderRecords::Read({}, columns);
    FileRow row = File(u"x.tif"_s);
    row.folder = Docs();
    EXPECT_EQ(all->Shown(row, 0), QString());
    row.folder = Docs(u"Other"_s);
    EXPECT_EQ(all->Shown(row, 0), u"Elsewhere"_s);

    // Sorted by a field: by the stored date, not by its text.
    std::vector<FileRow> rows{File(u"o'brien.tif"_s), File(u"none.tif"_s)};
    SortRows(rows, FileOrder{FileColumn::Field, 1, true}, records.get());
    EXPECT_EQ(rows[0].name, u"o'brien.tif"_s);
}

TEST_F(FolderListTest, TheHistoryPassesOverWhatIsGone) {
    FolderHistory history;
    QString at;
    QSet<QString> gone;
    const auto select = [&](const QString& path) {
        if (gone.contains(path)) {
            return false;
        }
        at = path;
        history.Append(path); // what a chosen node does; no visit of its own here
        return true;
    };
    history.Back(select);
    EXPECT_EQ(history.Position(), -1);
    for (const QString& path : {u"\\A"_s, u"\\B"_s, u"\\B"_s, u"\\C"_s, u"\\D"_s}) {
        history.Append(path);
    }
    EXPECT_EQ(history.Size(), 4);
    gone = {u"\\B"_s, u"\\C"_s};
    history.Back(select);
    EXPECT_EQ(at, u"\\A"_s);
    EXPECT_EQ(history.Position(), 0);
    EXPECT_EQ(history.Size(), 4);
    history.Back(select);
    EXPECT_EQ(history.Position(), 0);
    history.Forward(select);
    EXPECT_EQ(at, u"\\D"_s);
    gone = {u"\\A"_s, u"\\B"_s, u"\\C"_s};
    history.Back(select);
    EXPECT_EQ(history.Position(), 3);
    history.Append(u"\\E"_s);
    EXPECT_EQ(history.Position(), 4);
    EXPECT_FALSE(history.IsMoving());
}

TEST_F(FolderListTest, ADropMovesOnOneDiskAndNeverIntoItself) {
    const auto effect = [](const QString& path, const QString& target, bool sameDisk,
                           Qt::KeyboardModifiers keys = {},
                           Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction) {
        return EffectOf({{path}, target, sameDisk, keys, offered});
    };
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\B"_s, true), DropEffect::Move);
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\B"_s, false), DropEffect::Copy);
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\B"_s, true, Qt::ControlModifier), DropEffect::Copy);
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\B"_s, false, Qt::ShiftModifier), DropEffect::Move);
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\B"_s, true, {}, Qt::CopyAction), DropEffect::Copy);
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\A"_s, true), DropEffect::None);
    EXPECT_EQ(effect(u"\\A\\f"_s, u"\\A"_s, true, Qt::ControlModifier), DropEffect::Copy);
    EXPECT_EQ(effect(u"\\A"_s, u"\\A"_s, true), DropEffect::None);
    EXPECT_EQ(effect(u"\\A"_s, u"\\A\\B\\C"_s, true), DropEffect::Impossible);
    EXPECT_EQ(effect(u"\\A"_s, u"\\AB"_s, true), DropEffect::Move);   // a neighbour, not below
    EXPECT_EQ(effect(u"\\A"_s, u"\\a\\B"_s, true), DropEffect::Move); // another folder
    EXPECT_EQ(effect(u"\\A\\f"_s, QString(), true), DropEffect::Impossible);
}

TEST_F(FolderListTest, ALargeFolderArrivesWholeAndACancelledOneNever) {
    for (int at = 0; at < 3000; ++at) {
        WriteFile(Docs(u"f%1.txt"_s.arg(at)), "x");
    }
    WriteFile(Docs(u"Sub/x"_s), "x");
    std::vector<std::shared_ptr<Listing>> listings;
    FolderReader reader(
        [&](const std::shared_ptr<Listing>& listing) { listings.push_back(listing); });
    ListingRequest request;
    request.folder = platform::Capitals(LogicalDocs());
    reader.Start(request);
    ASSERT_TRUE(WaitFor([&] { return !reader.IsRunning(); }));
    const std::shared_ptr<Listing> whole = listings.back();
    EXPECT_TRUE(whole->complete);
    EXPECT_EQ(whole->rows->size(), 3001U);
    EXPECT_EQ(whole->rows->at(3000).name, u"f2999.txt"_s);
    EXPECT_EQ(whole->folder, LogicalDocs());
    EXPECT_EQ(whole->subFolders, QStringList{u"Sub"_s});

    // Again, compared with what is shown; then sorted the other way round.
    WriteFile(Docs(u"f5a.txt"_s), "x");
    request.shown = whole->rows;
    reader.Start(request);
    ASSERT_TRUE(WaitFor([&] { return !reader.IsRunning(); }));
    EXPECT_EQ(listings.back()->changes, (std::vector<RowChange>{{RowChange::Inserted, 7, 1}}));
    request.sortOnly = true;
    request.order.descending = true;
    reader.Start(request);
    ASSERT_TRUE(WaitFor([&] { return !reader.IsRunning(); }));
    EXPECT_EQ(listings.back()->newPlaces[0], 0); // the sub-folder stays first
    EXPECT_EQ(listings.back()->newPlaces[1], 3000);

    listings.clear();
    request = {};
    request.folder = LogicalDocs(u"gone"_s);
    reader.Start(request);
    ASSERT_TRUE(WaitFor([&] { return !reader.IsRunning(); }));
    EXPECT_FALSE(listings.at(0)->exists);
    listings.clear();
    request.folder = LogicalDocs();
    reader.Start(request);
    reader.Cancel();
    QCoreApplication::processEvents();
    EXPECT_TRUE(listings.size() <= 1U); // nothing arrives after the cancel
    const std::size_t before = listings.size();
    QCoreApplication::processEvents(QEventLoop::AllEvents, 100);
    EXPECT_EQ(listings.size(), before);
}

TEST_F(FolderListTest, PlusSignsAreFoundOutWithoutReadingFurtherThanNeeded) {
    WriteFile(Docs(u"With/Sub/x"_s), "x");
    WriteFile(Docs(u"Without/x"_s), "x");
    WriteFile(Docs(u"Hidden/.git/x"_s), "x");
    QDir().mkpath(Docs(u"Linked"_s));
    QFile::link(Docs(u"With"_s), Docs(u"Linked/to"_s));
    QFile::link(Docs(u"nowhere"_s), Docs(u"Without/dead"_s));
    EXPECT_TRUE(HasSubFolders(Docs(u"With"_s), 1000));
    EXPECT_TRUE(HasSubFolders(Docs(u"Linked"_s), 1000));
    EXPECT_FALSE(HasSubFolders(Docs(u"Without"_s), 1000));
    EXPECT_FALSE(HasSubFolders(Docs(u"Hidden"_s), 1000));
    EXPECT_FALSE(HasSubFolders(Docs(u"gone"_s), 1000));

    QHash<quint64, bool> plus;
    SubFolders read;
    SubFolderReader reader([&](const SubFolders& folders) { read = folders; },
                           [&](const QList<PlusAnswer>& answers) {
                               for (const PlusAnswer& answer : answers) {
                                   plus[answer.node] = answer.plus;
                               }
                           });
    reader.FindPlus({{1, LogicalDocs(u"With"_s)}, {2, LogicalDocs(u"Without"_s)}});
    reader.Read(7, platform::Capitals(LogicalDocs()));
    ASSERT_TRUE(WaitFor([&] { return plus.size() == 2 && read.node == 7; }));
    EXPECT_TRUE(plus[1]);
    EXPECT_FALSE(plus[2]);
    EXPECT_EQ(read.names, QStringList({u"Hidden"_s, u"Linked"_s, u"With"_s, u"Without"_s}));
    EXPECT_EQ(read.machinePath, Docs());
}

} // namespace
} // namespace velmora
