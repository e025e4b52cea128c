// All record access of the program: the connection, and one small function per statement.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "store/RecordSet.h"

#include <chrono>

namespace velmora {

// The process-wide connection, empty until the first record access.
struct ConnectionHolder {
    std::unique_ptr<Connection> gConnection;
    std::chrono::milliseconds busyWait{10'000}; // how long a statement waits for other programs
};
ConnectionHolder& Store();

// A test's own holder, in force for the lifetime of this object. Record sets must go first.
class ScopedConnection {
  public:
    ScopedConnection();
    ~ScopedConnection();
    ScopedConnection(const ScopedConnection&) = delete;
    ScopedConnection& operator=(const ScopedConnection&) = delete;

    ConnectionHolder* operator->() { return &m_own; }

  private:
    ConnectionHolder m_own;
    ConnectionHolder* m_covered;
};

// Makes gConnection and opens db.mdb of gArchivePath, which must be there, then brings its format
// up to date. After Cancel gConnection is there and not open: the next statement tries once more
// to open it and reports in its turn.
void OpenConn();
// Brings an older database up to date; called by OpenConn at every opening. Looks for the changes
// themselves, as there is no version number. Cancel leaves the steps that follow undone.
void UpdateDBFormat();
// The open connection, for work that is more than a statement. Throws when it cannot be opened.
Connection& OpenedConnection();

// The two doors to the database. A failure is reported; Retry runs the statement again, Cancel
// gives an empty RecordSetPtr or does nothing. "?" in the statement stands for the values in turn.
[[nodiscard]] RecordSetPtr GetRs(const QString& sql, const QVariantList& values = {});
void DbExecute(const QString& sql, const QVariantList& values = {});

// Below, every row is scoped by gUserKey but the stamps, texts compare without regard to case, and
// a closing back-slash of a folder does not count unless a line says so.

[[nodiscard]] RecordSetPtr GetRsIdxdFolders();
// id not 0: that row. id 0: every folder whose path begins with the letters of `path`, a
// neighbour (\DOCS2 beside \DOCS) included: deliberate, callers accept it. A closing back-slash
// counts here: with it the folder itself stays.
void DeleteFolders(const QString& path, qint32 id);

// Three forms: empty path, all rows of the user (the name is not looked at); path and name, the
// document's row; path and empty name, the rows of that one folder.
[[nodiscard]] RecordSetPtr GetRsOcrFile(const QString& path, const QString& fileName);
[[nodiscard]] RecordSetPtr GetRsAnnotationFile(const QString& path, const QString& fileName);

// The definitions of the user-defined fields: that of an id, all of the user for 0.
[[nodiscard]] RecordSetPtr GetRsFields(qint32 id);
// The values of the fields, a column for each: the same three forms as those of GetRsOcrFile.
[[nodiscard]] RecordSetPtr GetRsFieldsValues(const QString& path, const QString& fileName);

[[nodiscard]] RecordSetPtr GetRsTextAnnotation(qint32 fileId);
// With the flag the rows whose text is empty, without it those of one page hash.
void DeleteTextAnnotation(const QString& hash, bool emptyTexts);
// The documents with an annotation that holds the text; its characters stand for themselves.
[[nodiscard]] RecordSetPtr GetRsAnnotationSearch(const QString& text);

[[nodiscard]] RecordSetPtr GetRsMailFolder();
void DeleteAllMailFolders();
[[nodiscard]] RecordSetPtr GetRsMailConfig();
void DeleteMailConfig();

[[nodiscard]] RecordSetPtr GetRsScannerSetting();
// Stamps under a parent, all stamps for -1; those of all users of the archive.
[[nodiscard]] RecordSetPtr GetRsTimbri(qint32 parentId);

// Carries the rows of a moved or renamed document (or, with the flag, of the documents directly in
// a folder, not of deeper ones) along: fields, OCR and annotations, each keeping its id. In
// capitals. All three tables or none. Called after the move; touches no file.
void DbMoveFile(const QString& oldPath, const QString& newPath, bool isFolder);

// IsParentOrChildFolder of core over the rows of GetRsIdxdFolders, from the first on.
int IsParentOrChildFolder(const QString& path, RecordSet& folders, QString& folder);

} // namespace velmora
