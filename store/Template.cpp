// The tables of an archive, and making a database that holds them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/Template.h"

#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "platform/Temporary.h"
#include "store/SqliteConnection.h"
#include "store/StoreError.h"

#include <cerrno>

namespace velmora {

namespace {

using enum FieldType;

Column Counter(const char16_t* name) {
    return {QString::fromUtf16(name), AutoNumber};
}
Column TextOf(const char16_t* name, int size) {
    return {QString::fromUtf16(name), Text, size};
}
Column NumberOf(const char16_t* name) {
    return {QString::fromUtf16(name), Integer};
}
Column MemoOf(const char16_t* name) {
    return {QString::fromUtf16(name), Memo};
}

QList<Table> MakeTables() {
    const auto name = [](const char16_t* text) { return QString::fromUtf16(text); };
    const QString path = name(u"spath");
    const QString file = name(u"sfilename");
    const QString id = name(u"i_id");
    const Index byId{id, {id}};
    const Index byName{name(u"filenameidx"), {file}};
    const Index byPath{name(u"pathidx"), {path, file}};
    return {
        {name(u"TblIdxdFolders"),
         {TextOf(u"SDESCR", 255), TextOf(u"SPATH", 255), TextOf(u"SICONID", 10), Counter(u"I_ID"),
          TextOf(u"SUSER", 255)},
         {name(u"I_ID")},
         {{name(u"I_ID"), {name(u"I_ID")}}}},
        // One document has one row in an archive, whoever made it: no SUSER in the unique index.
        {name(u"tblOcrFiles"),
         {Counter(u"i_id"), TextOf(u"spath", 255), TextOf(u"sfilename", 255), TextOf(u"shash", 64),
          TextOf(u"SUSER", 255)},
         {id},
         {byName, byPath, {name(u"uniqueIDX"), {path, file}, true}}},
        {name(u"TblAnnotationFiles"),
         {Counter(u"i_id"), TextOf(u"spath", 255), TextOf(u"sfilename", 255),
          TextOf(u"suser", 255)},
         {id},
         {byName, byPath}},
        {name(u"TblTextAnnotation"),
         {NumberOf(u"I_IDFILE"), TextOf(u"STESTO", 255), TextOf(u"SHASH", 50),
          TextOf(u"SUSER", 255)},
         {name(u"I_IDFILE"), name(u"SHASH")},
         {}},
        {name(u"TblFieldsDefs"),
         {Counter(u"i_id"), TextOf(u"sdescr", 50), NumberOf(u"itype"), NumberOf(u"ilenght"),
          MemoOf(u"sdefaultvalue"), TextOf(u"sfieldname", 20), TextOf(u"suser", 255)},
         {id},
         {byId}},
        {name(u"TblDocFields"),
         {Counter(u"i_id"), TextOf(u"TESTO", 50), TextOf(u"spath", 255), TextOf(u"sfilename", 255),
          TextOf(u"suser", 255)},
         {id},
         {byId}},
        {name(u"TblScannerSetting"),
         {TextOf(u"ScannerName", 50), TextOf(u"ShowUI", 50), TextOf(u"ADF", 50),
          TextOf(u"Resolutions", 50), TextOf(u"PixelType", 50), TextOf(u"PageWidth", 50),
          TextOf(u"PageHeight", 50), TextOf(u"suser", 255)},
         {},
         {}},
        {name(u"TblMailFolders"),
         {Counter(u"i_id"), TextOf(u"sentryid", 255), TextOf(u"suser", 255), MemoOf(u"sstoreid")},
         {},
         {byId,
          {name(u"sentryid"), {name(u"sentryid")}},
          {name(u"sstoreid"), {name(u"sstoreid")}}}},
        {name(u"TblMailConfigs"),
         {Counter(u"i_id"), TextOf(u"suser", 255), NumberOf(u"iclient"), TextOf(u"smailpath", 255),
          TextOf(u"sidentities", 50)},
         {},
         {byId}},
    };
}

QString InFolder(const QString& folder, QStringView name) {
    return platform::JoinPath(folder, name.toString());
}

// A database with the empty tables in the user's temporary folder, gone with this object.
class TemporaryDatabase {
  public:
    TemporaryDatabase() {
        const platform::CreatedFile file = platform::CreateTemporaryFile();
        if (!file.error.Ok()) {
            throw StoreError(kDatabaseNotMade, {platform::TemporaryFolder(), file.error.text});
        }
        m_path = file.path;
        try {
            Fill();
        } catch (...) {
            Remove();
            throw;
        }
    }
    ~TemporaryDatabase() { Remove(); }
    TemporaryDatabase(const TemporaryDatabase&) = delete;
    TemporaryDatabase& operator=(const TemporaryDatabase&) = delete;

    const QString& Path() const { return m_path; }

  private:
    void Fill() const {
        SqliteConnection connection{std::chrono::seconds(1)};
        connection.Create(m_path);
        connection.InTransaction([&] {
            for (const Table& table : TemplateTables()) {
                connection.CreateTable(table);
            }
        });
    }
    void Remove() const {
        for (const QString& ending : {QString(), QStringLiteral("-journal")}) {
            (void)platform::RemoveFile(m_path + ending);
        }
    }

    QString m_path; // machine path
};

} // namespace

const QList<Table>& TemplateTables() {
    static const QList<Table> tables = MakeTables();
    return tables;
}

const Table& StampTable() {
    static const Table table{QStringLiteral("tbltimbri"),
                             {Counter(u"i_id"), TextOf(u"sdescr", 50), NumberOf(u"i_idparent")},
                             {},
                             {}};
    return table;
}

void CreateDatabase(const QString& folder) {
    // Looked up without regard to case: DB.MDB of another system counts.
    const QString target = platform::ToMachine(InFolder(folder, u"db.mdb"));
    if (!target.isEmpty() && platform::Exists(target)) {
        throw StoreError(kDatabaseExists, {target});
    }
    if (target.isEmpty() || !platform::IsFolder(platform::ToMachine(folder))) {
        throw StoreError(kFolderMissing, {folder});
    }
    // The folder first: with it and without a database the call can be repeated.
    const QString indexes = platform::ToMachine(InFolder(folder, u"indexes"));
    if (const auto error = platform::CreateFolders(indexes); !error.Ok()) {
        throw StoreError(kFolderNotMade, {indexes, error.text});
    }
    // Made in a private place: neither a kill nor a share that cannot lock leaves a half one here.
    const TemporaryDatabase draft;
    const platform::SystemError error = platform::CopyToNewFile(draft.Path(), target);
    if (error.code == EEXIST) {
        throw StoreError(kDatabaseExists, {target});
    }
    if (!error.Ok()) {
        throw StoreError(kDatabaseNotMade, {target, error.text});
    }
}

} // namespace velmora
