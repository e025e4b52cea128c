// Sorts the rows of the file list and compares two states of it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FileOrder.h"

#include "core/Messages.h"
#include "mainwindow/FolderRecords.h"

#include <QCollator>
#include <QSet>
#include <algorithm>
#include <numeric>

namespace velmora {

namespace {

QCollator Collator() {
    QCollator collator(ProgramLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

// For each text its rank among all of them; equal texts share one.
template <class Text>
std::vector<std::size_t> RanksOf(std::size_t count, const QCollator& collator, Text&& text) {
    // Keys are made once for each text: comparing texts again and again is slow in large folders.
    std::vector<QCollatorSortKey> keys;
    keys.reserve(count);
    for (std::size_t at = 0; at < count; ++at) {
        keys.push_back(collator.sortKey(text(at)));
    }
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return keys[a].compare(keys[b]) < 0; });
    std::vector<std::size_t> ranks(count);
    for (std::size_t at = 1; at < count; ++at) {
        const bool same = keys[order[at]].compare(keys[order[at - 1]]) == 0;
        ranks[order[at]] = same ? ranks[order[at - 1]] : at;
    }
    return ranks;
}

// What the rows are compared by before their names.
std::vector<qint64> ValuesOf(const std::vector<FileRow>& rows, const FileOrder& order,
                             const QCollator& collator, const FolderRecords* records) {
    std::vector<qint64> values(rows.size());
    const auto rank = [&](auto&& text) {
        const std::vector<std::size_t> ranks = RanksOf(rows.size(), collator, text);
        std::copy(ranks.begin(), ranks.end(), values.begin());
    };
    switch (order.column) {
    case FileColumn::Size:
        std::transform(rows.begin(), rows.end(), values.begin(),
                       [](const FileRow& row) { return row.isFolder ? 0 : row.size; });
        break;
    case FileColumn::Date:
        std::transform(rows.begin(), rows.end(), values.begin(),
                       [](const FileRow& row) { return row.modifiedNs; });
        break;
    case FileColumn::Field:
        if (records) {
            rank([&](std::size_t at) { return records->SortText(rows[at], order.field); });
        }
        break;
    case FileColumn::Folder:
        rank([&](std::size_t at) { return rows[at].folder; });
        break;
    case FileColumn::Name:
        break;
    }
    return values;
}

// Two rows of one folder never share it; rows from anywhere may share a name.
QString Identity(const FileRow& row) {
    return row.folder.isEmpty() ? row.name : row.folder + u'/' + row.name;
}

QSet<QString> Identities(const std::vector<FileRow>& rows) {
    QSet<QString> identities;
    identities.reserve(static_cast<qsizetype>(rows.size()));
    for (const FileRow& row : rows) {
        identities.insert(Identity(row));
    }
    return identities;
}

void Append(std::vector<RowChange>& changes, RowChange::Kind kind, std::size_t place) {
    const int at = static_cast<int>(place);
    if (!changes.empty() && changes.back().kind == kind) {
        RowChange& last = changes.back();
        if (at == (kind == RowChange::Removed ? last.first : last.first + last.count)) {
            ++last.count;
            return;
        }
    }
    changes.push_back({kind, at, 1});
}

} // namespace

QLocale ProgramLocale() {
    switch (CurrentLanguage()) {
    case Language::Italian:
        return QLocale(QLocale::Italian);
    case Language::German:
        return QLocale(QLocale::German);
    case Language::Spanish:
        return QLocale(QLocale::Spanish);
    case Language::French:
        return QLocale(QLocale::French);
    case Language::English:
        break;
    }
    return QLocale(QLocale::English);
}

std::vector<std::size_t> SortedPlaces(const std::vector<FileRow>& rows, const FileOrder& order,
                                      const FolderRecords* records) {
    const QCollator collator = Collator();
    const std::vector<std::size_t> ranks =
        RanksOf(rows.size(), collator, [&](std::size_t at) { return rows[at].name; });
    const std::vector<qint64> values = ValuesOf(rows, order, collator, records);
    std::vector<std::size_t> places(rows.size());
    std::iota(places.begin(), places.end(), 0);
    const bool namesTurned = order.descending && order.column == FileColumn::Name;
    std::sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
        if (rows[a].isFolder != rows[b].isFolder) {
            return rows[a].isFolder;
        }
        if (values[a] != values[b]) {
            return order.descending ? values[a] > values[b] : values[a] < values[b];
        }
        if (ranks[a] != ranks[b]) {
            return namesTurned ? ranks[a] > ranks[b] : ranks[a] < ranks[b];
        }
        return rows[a].name != rows[b].name ? rows[a].name < rows[b].name
                                            : rows[a].folder < rows[b].folder;
    });
    return places;
}

void SortRows(std::vector<FileRow>& rows, const FileOrder& order, const FolderRecords* records) {
    std::vector<FileRow> sorted;
    sorted.reserve(rows.size());
    for (const std::size_t at : SortedPlaces(rows, order, records)) {
        sorted.push_back(std::move(rows[at]));
    }
    rows = std::move(sorted);
}

void SortRows(std::vector<FileRow>& rows, FileColumn column, bool descending) {
    SortRows(rows, FileOrder{column, 0, descending}, nullptr);
}

void SortNames(QStringList& names) {
    const QCollator collator = Collator();
    const std::vector<std::size_t> ranks =
        RanksOf(static_cast<std::size_t>(names.size()), collator,
                [&](std::size_t at) { return names[static_cast<qsizetype>(at)]; });
    std::vector<std::size_t> places(ranks.size());
    std::iota(places.begin(), places.end(), 0);
    std::sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) {
        return ranks[a] != ranks[b]
                   ? ranks[a] < ranks[b]
                   : names[static_cast<qsizetype>(a)] < names[static_cast<qsizetype>(b)];
    });
    QStringList sorted;
    sorted.reserve(names.size());
    for (const std::size_t at : places) {
        sorted << names[static_cast<qsizetype>(at)];
    }
    names = std::move(sorted);
}

std::optional<std::vector<RowChange>> ChangesBetween(const std::vector<FileRow>& before,
                                                     const std::vector<FileRow>& after, int most) {
    std::vector<RowChange> changes;
    const QSet<QString> old = Identities(before);
    const QSet<QString> now = Identities(after);
    std::size_t from = 0;
    std::size_t to = 0;
    while (from < before.size() || to < after.size()) {
        if (static_cast<int>(changes.size()) > most) {
            return std::nullopt;
        }
        if (from < before.size() && to < after.size() &&
            Identity(before[from]) == Identity(after[to])) {
            if (before[from] != after[to]) {
                Append(changes, RowChange::Changed, to);
            }
            ++from;
            ++to;
        } else if (from < before.size() && !now.contains(Identity(before[from]))) {
            Append(changes, RowChange::Removed, to);
            ++from;
        } else if (to < after.size() && !old.contains(Identity(after[to]))) {
            Append(changes, RowChange::Inserted, to);
            ++to;
        } else {
            return std::nullopt;
        }
    }
    if (static_cast<int>(changes.size()) > most) {
        return std::nullopt;
    }
    return changes;
}

} // namespace velmora
