// Every statement of the data layer.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/ModDb.h"

#include "core/CommonFunctions.h"
#include "core/Failure.h"
#include "core/Globals.h"
#include "platform/LogicalPath.h"
#include "sqlite/Unicode.h"
#include "store/StoreError.h"

namespace velmora {

namespace {

constexpr int kPathSize = 255; // of every spath and sfilename

QString Key() {
    return Program().gUserKey;
}

// A text as a pattern of LIKE ... ESCAPE '!' in which each character stands for itself.
QString Literally(const QString& text) {
    return QString::fromStdString(sqlite::EscapeLike(text.toStdString()));
}

RecordSetPtr OpenRs(const char* procedure, const QString& sql, const QVariantList& values) {
    if (!Store().gConnection) {
        OpenConn();
    }
    return Guard("ModDb", procedure, [&] {
        return RecordSetPtr(std::make_unique<RecordSet>(OpenedConnection(), sql, values));
    });
}

RecordSetPtr GetRsOfDocument(const QString& table, const QString& path, const QString& fileName) {
    const QString select = QStringLiteral("Select * from %1 where ").arg(table);
    if (path.isEmpty()) {
        return GetRs(select + QStringLiteral("suser = ?"), {Key()});
    }
    const QString folder = platform::WithoutBackslash(path);
    if (fileName.isEmpty()) {
        return GetRs(select + QStringLiteral("spath = ? and suser = ?"), {folder, Key()});
    }
    return GetRs(select + QStringLiteral("spath = ? and sfilename = ? and suser = ?"),
                 {folder, fileName, Key()});
}

// A folder or name as tables hold it.
QString Stored(const QString& column, const QString& text) {
    QString capitals = platform::Capitals(text);
    if (capitals.size() > kPathSize) {
        throw StoreError(kValueTooLong,
                         {column, QString::number(capitals.size()), QString::number(kPathSize)});
    }
    return capitals;
}

void MoveRows(const QString& assignments, const QString& condition, const QVariantList& values) {
    Connection& connection = OpenedConnection();
    connection.InTransaction([&] {
        for (const char16_t* table : {u"tbldocfields", u"tblocrfiles", u"tblannotationfiles"}) {
            connection.Execute(QStringLiteral("UPDATE %1 set %2 where %3 and suser = ?")
                                   .arg(QString::fromUtf16(table), assignments, condition),
                               values);
        }
    });
}

void MoveFolderRows(const QString& oldPath, const QString& newPath) {
    const QString path = QStringLiteral("spath");
    MoveRows(QStringLiteral("spath = ?"), QStringLiteral("spath = ?"),
             {Stored(path, platform::WithoutBackslash(newPath)),
              platform::WithoutBackslash(oldPath), Key()});
}

void MoveFileRows(const QString& oldPath, const QString& newPath) {
    const QString path = QStringLiteral("spath");
    const QString name = QStringLiteral("sfilename");
    MoveRows(
        QStringLiteral("spath = ?, sfilename = ?"), QStringLiteral("spath = ? and sfilename = ?"),
        {Stored(path, platform::ParentFolder(newPath)), Stored(name, platform::FileName(newPath)),
         platform::ParentFolder(oldPath), platform::FileName(oldPath), Key()});
}

} // namespace

RecordSetPtr GetRs(const QString& sql, const QVariantList& values) {
    return OpenRs("GetRs", sql, values);
}

void DbExecute(const QString& sql, const QVariantList& values) {
    if (!Store().gConnection) {
        OpenConn();
    }
    Guard("ModDb", "DbExecute", [&] { OpenedConnection().Execute(sql, values); });
}

RecordSetPtr GetRsIdxdFolders() {
    return GetRs(QStringLiteral("Select * from tblidxdfolders where suser = ?"), {Key()});
}

void DeleteFolders(const QString& path, qint32 id) {
    if (id != 0) {
        DbExecute(QStringLiteral("Delete from tblidxdfolders where i_id = ? and suser = ?"),
                  {id, Key()});
        return;
    }
    DbExecute(QStringLiteral("Delete from tblidxdfolders where spath like ? escape '!' and "
                             "suser = ?"),
              {Literally(path) + u'%', Key()});
}

RecordSetPtr GetRsOcrFile(const QString& path, const QString& fileName) {
    return GetRsOfDocument(QStringLiteral("tblocrfiles"), path, fileName);
}

RecordSetPtr GetRsAnnotationFile(const QString& path, const QString& fileName) {
    return GetRsOfDocument(QStringLiteral("tblAnnotationfiles"), path, fileName);
}

RecordSetPtr GetRsFields(qint32 id) {
    if (id == 0) {
        return GetRs(QStringLiteral("Select * from tblFieldsDefs where suser = ?"), {Key()});
    }
    return GetRs(QStringLiteral("Select * from tblFieldsDefs where i_id = ? and suser = ?"),
                 {id, Key()});
}

RecordSetPtr GetRsFieldsValues(const QString& path, const QString& fileName) {
    return GetRsOfDocument(QStringLiteral("tblDocFields"), path, fileName);
}

RecordSetPtr GetRsTextAnnotation(qint32 fileId) {
    return GetRs(QStringLiteral("select * from tbltextAnnotation where i_idfile = ? and suser = ?"),
                 {fileId, Key()});
}

void DeleteTextAnnotation(const QString& hash, bool emptyTexts) {
    if (emptyTexts) {
        DbExecute(QStringLiteral("Delete from tblTextAnnotation where stesto = '' and suser = ?"),
                  {Key()});
        return;
    }
    DbExecute(QStringLiteral("Delete from tblTextAnnotation where shash = ? and suser = ?"),
              {hash, Key()});
}

RecordSetPtr GetRsAnnotationSearch(const QString& text) {
    return GetRs(QStringLiteral("Select distinct tblannotationfiles.* from tbltextannotation, "
                                "tblannotationfiles where stesto like ? escape '!' and "
                                "i_idfile = i_id and tbltextannotation.suser = ?"),
                 {u'%' + Literally(text) + u'%', Key()});
}

RecordSetPtr GetRsMailFolder() {
    return GetRs(QStringLiteral("Select * from tblmailfolders where suser = ?"), {Key()});
}

void DeleteAllMailFolders() {
    DbExecute(QStringLiteral("Delete from tblmailfolders where suser = ?"), {Key()});
}

RecordSetPtr GetRsMailConfig() {
    return GetRs(QStringLiteral("Select * from tblmailconfigs where suser = ?"), {Key()});
}

void DeleteMailConfig() {
    DbExecute(QStringLiteral("delete from tblmailconfigs where suser = ?"), {Key()});
}

RecordSetPtr GetRsScannerSetting() {
    return OpenRs("GetRsScannerSetting",
                  QStringLiteral("SELECT * FROM TBLSCANNERSETTING WHERE SUSER = ?"), {Key()});
}

RecordSetPtr GetRsTimbri(qint32 parentId) {
    if (parentId == -1) {
        return OpenRs("GetRsTimbri", QStringLiteral("SELECT * FROM TBLTIMBRI"), {});
    }
    return OpenRs("GetRsTimbri", QStringLiteral("SELECT * FROM TBLTIMBRI where i_idparent = ?"),
                  {parentId});
}

void DbMoveFile(const QString& oldPath, const QString& newPath, bool isFolder) {
    Guard("ModDb", "DbMoveFile", [&] {
        if (isFolder) {
            MoveFolderRows(oldPath, newPath);
        } else {
            MoveFileRows(oldPath, newPath);
        }
    });
}

int IsParentOrChildFolder(const QString& path, RecordSet& folders, QString& folder) {
    QStringList paths;
    for (folders.MoveFirst(); !folders.EOF_(); folders.MoveNext()) {
        paths << folders.Fields(u"SPATH").Text();
    }
    return IsParentOrChildFolder(path, paths, folder);
}

} // namespace velmora
