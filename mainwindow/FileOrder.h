// The order of the file list, and what changed between two states of it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "mainwindow/FolderFiles.h"

#include <QLocale>
#include <QStringList>
#include <memory>
#include <optional>

namespace velmora {

class FolderRecords;

enum class FileColumn { Name, Size, Date, Field, Folder };

struct FileOrder {
    FileColumn column = FileColumn::Name;
    int field = 0; // which one, from 0, for FileColumn::Field
    bool descending = false;

    bool operator==(const FileOrder&) const = default;
};

// The places of the rows in that order: the n-th is the row that comes n-th. Sub-folders come
// first; equal rows by name; names with numbers in them by the number. `records` may be null.
std::vector<std::size_t> SortedPlaces(const std::vector<FileRow>& rows, const FileOrder& order,
                                      const FolderRecords* records);
void SortRows(std::vector<FileRow>& rows, const FileOrder& order, const FolderRecords* records);
void SortRows(std::vector<FileRow>& rows, FileColumn column, bool descending);
void SortNames(QStringList& names);

// A run of rows. Changes are applied one after the other; each `first` counts the rows as they
// then are, which from the top to that place are those of the new state.
struct RowChange {
    enum Kind { Removed, Inserted, Changed };
    Kind kind = Removed;
    int first = 0;
    int count = 0;

    bool operator==(const RowChange&) const = default;
};

// What makes `before` into `after`; nothing when there are more than `most` runs or a row has
// moved, so that showing everything anew is cheaper.
std::optional<std::vector<RowChange>> ChangesBetween(const std::vector<FileRow>& before,
                                                     const std::vector<FileRow>& after, int most);

// The locale of the program's language.
QLocale ProgramLocale();

} // namespace velmora
