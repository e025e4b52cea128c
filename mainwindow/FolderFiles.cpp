// Reads and sorts the content of a folder.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/FolderFiles.h"

#include "core/Messages.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"

#include <QCollator>
#include <QLocale>
#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

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

// The places of the rows in the order of their names, as a rank for each row.
std::vector<std::size_t> RanksByName(const std::vector<FileRow>& rows) {
    QCollator collator(ProgramLocale());
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // Keys are made once for each name: comparing texts again and again is slow in large folders.
    std::vector<QCollatorSortKey> keys;
    keys.reserve(rows.size());
    for (const FileRow& row : rows) {
        keys.push_back(collator.sortKey(row.name));
    }
    std::vector<std::size_t> order(rows.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        const int difference = keys[a].compare(keys[b]);
        return difference != 0 ? difference < 0 : rows[a].name < rows[b].name;
    });
    std::vector<std::size_t> ranks(rows.size());
    for (std::size_t rank = 0; rank < order.size(); ++rank) {
        ranks[order[rank]] = rank;
    }
    return ranks;
}

} // namespace

FolderContent ReadFolder(const QString& folder) {
    FolderContent content;
    const QString machinePath = platform::ToMachine(folder);
    content.exists = !machinePath.isEmpty() && platform::IsFolder(machinePath);
    if (!content.exists) {
        return content;
    }
    const platform::FolderListing listing = platform::ListFolder(machinePath);
    content.error = listing.error;
    content.rows.reserve(listing.entries.size());
    for (const platform::FolderEntry& entry : listing.entries) {
        const bool shown = entry.IsFolder() || entry.kind == platform::EntryKind::File;
        if (shown && !entry.name.startsWith(u'.')) {
            content.rows.push_back({entry.name, entry.IsFolder(), entry.size, entry.modifiedNs});
        }
    }
    SortRows(content.rows, FileColumn::Name, false);
    return content;
}

void SortRows(std::vector<FileRow>& rows, FileColumn column, bool descending) {
    const std::vector<std::size_t> ranks = RanksByName(rows);
    std::vector<std::size_t> order(rows.size());
    std::iota(order.begin(), order.end(), 0);
    const auto value = [&](std::size_t at) -> qint64 {
        switch (column) {
        case FileColumn::Size:
            return rows[at].isFolder ? 0 : rows[at].size;
        case FileColumn::Date:
            return rows[at].modifiedNs;
        case FileColumn::Name:
            break;
        }
        return static_cast<qint64>(ranks[at]);
    };
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        if (rows[a].isFolder != rows[b].isFolder) {
            return rows[a].isFolder;
        }
        const qint64 first = value(a);
        const qint64 second = value(b);
        if (first != second) {
            return descending ? first > second : first < second;
        }
        return ranks[a] < ranks[b];
    });
    std::vector<FileRow> sorted;
    sorted.reserve(rows.size());
    for (const std::size_t at : order) {
        sorted.push_back(std::move(rows[at]));
    }
    rows = std::move(sorted);
}

QString SizeText(qint64 bytes) {
    if (bytes < 0) {
        return {};
    }
    if (bytes < 1000) {
        return QString::number(bytes) + u" b"_s;
    }
    const bool kilo = bytes <= 1'000'000;
    const double value = static_cast<double>(bytes) / (kilo ? 1024.0 : 1024.0 * 1024.0);
    QLocale locale = ProgramLocale();
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    QString number = locale.toString(value, 'f', 2);
    // Two places at most, not at least.
    while (number.endsWith(u'0')) {
        number.chop(1);
    }
    if (!number.back().isDigit()) {
        number.chop(1);
    }
    return number + (kilo ? u" Kb"_s : u" Mb"_s);
}

QString PathOf(const QString& folder, const QString& name) {
    return platform::JoinPath(folder, platform::ToLogical(u'/' + name).mid(1));
}

} // namespace velmora
