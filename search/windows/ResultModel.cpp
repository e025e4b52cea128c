// Rows as cells.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/ResultModel.h"

#include "core/Messages.h"
#include "search/MessageIds.h"
#include "search/windows/Glyphs.h"

#include <QGuiApplication>
#include <QLocale>
#include <QMimeDatabase>
#include <QPalette>
#include <array>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

enum Column { kDate, kFile, kHits, kPlace, kColumnCount };

constexpr std::array<int, kColumnCount> kCaptions = {79, 106, 128, kPath};

QIcon IconOfType(const QString& name) {
    const QMimeType type = QMimeDatabase().mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    const QIcon icon = QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
    if (!icon.isNull()) {
        return icon;
    }
    return GlyphIcon(type.name().startsWith(u"image/") ? Glyph::Image : Glyph::Document);
}

} // namespace

ResultModel::ResultModel(ResultSet& results, QObject* parent)
    : QAbstractTableModel(parent), m_results(results) {}

void ResultModel::LoadResult(TypeFilter filter) {
    beginResetModel();
    m_results.LoadResult(filter);
    endResetModel();
}

bool ResultModel::grdResult_ColumnClick(int column) {
    if (!ResultSet::Sorts(column + 1)) {
        return false; // and the selection stays
    }
    beginResetModel();
    m_results.grdResult_ColumnClick(column + 1);
    endResetModel();
    return true;
}

const ResultRow* ResultModel::Row(int row) const {
    const auto& rows = m_results.Rows();
    return row >= 0 && row < static_cast<int>(rows.size()) ? &rows[static_cast<std::size_t>(row)]
                                                           : nullptr;
}

int ResultModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_results.Rows().size());
}

int ResultModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant ResultModel::Text(const ResultRow& row, int column) const {
    switch (column) {
    case kDate:
        return row.DATE.isValid() ? QLocale().toString(row.DATE, QLocale::ShortFormat) : QString();
    case kFile:
        return row.FILEDESCR;
    case kHits:
        return QString::number(row.HITCOUNT);
    case kPlace:
        return row.PATH;
    default:
        return {};
    }
}

const QIcon& ResultModel::Icon(const ResultRow& row) const {
    const QString key =
        row.IsMailMessage ? u"/mail"_s : row.FILEDESCR.mid(row.FILEDESCR.lastIndexOf(u'.') + 1);
    auto found = m_icons.find(key);
    if (found == m_icons.end()) {
        found = m_icons.insert(
            key, row.IsMailMessage ? QIcon::fromTheme(u"mail-message"_s, GlyphIcon(Glyph::Mail))
                                   : IconOfType(row.FILEDESCR));
    }
    return *found;
}

QVariant ResultModel::data(const QModelIndex& index, int role) const {
    const ResultRow* row = Row(index.row());
    if (row == nullptr) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
        return Text(*row, index.column());
    case Qt::DecorationRole:
        return index.column() == kFile ? QVariant(Icon(*row)) : QVariant();
    case Qt::ForegroundRole:
        return index.column() == kPlace ? QVariant(QGuiApplication::palette().link()) : QVariant();
    case Qt::TextAlignmentRole:
        return index.column() == kHits ? int(Qt::AlignRight | Qt::AlignVCenter)
                                       : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ToolTipRole:
        // What a narrow column cuts off.
        return index.column() == kFile || index.column() == kPlace
                   ? QVariant(u"<span>"_s + Text(*row, index.column()).toString().toHtmlEscaped() +
                              u"</span>"_s)
                   : QVariant();
    default:
        return {};
    }
}

QVariant ResultModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount) {
        return {};
    }
    if (role == Qt::DisplayRole) {
        return GetMessage(kCaptions.at(static_cast<std::size_t>(section)));
    }
    if (role == Qt::TextAlignmentRole) {
        return section == kHits ? int(Qt::AlignRight | Qt::AlignVCenter)
                                : int(Qt::AlignLeft | Qt::AlignVCenter);
    }
    return {};
}

} // namespace velmora
