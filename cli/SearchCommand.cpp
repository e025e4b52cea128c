// velmora search: finds documents.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/IndexFaults.h"
#include "cli/Json.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "engine/FileConverter.h"
#include "search/MessageIds.h"
#include "search/ResultSet.h"
#include "search/TextQuery.h"

#include <QJsonArray>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kNoMatch = 183;

QString KindOf(const ResultRow& row) {
    if (row.IsMailMessage) {
        return u"mail"_s;
    }
    switch (row.kind) {
    case RowKind::StoreMessage:
    case RowKind::Mail:
        return u"attachment"_s;
    case RowKind::ZipMember:
        return u"zip"_s;
    case RowKind::File:
        break;
    }
    // A recognised text stands for its document, whose name then differs.
    return row.FILENAME == row.OCRFILENAME ? u"file"_s : u"ocr"_s;
}

// As `show` takes it: members too. A recognised text is known by its document.
QString FileOf(const ResultRow& row) {
    const bool ownSpelling = !row.Spelling.isEmpty() && row.FILENAME == row.OCRFILENAME;
    return ownSpelling ? row.Spelling : row.File;
}

QString JsonOf(const ResultRow& row) {
    QJsonArray words;
    for (const std::uint32_t hit : engine::FileConverter::ParseHits(row.HITS)) {
        words.append(static_cast<qint64>(hit));
    }
    const QJsonValue modified =
        row.DATE.isValid() ? row.DATE.toUTC().toString(Qt::ISODate) : QJsonValue();
    return JsonLine({{u"file"_s, FileOf(row)},
                     {u"display"_s, row.FILEDESCR},
                     {u"kind"_s, KindOf(row)},
                     {u"modified"_s, modified},
                     {u"hits"_s, row.HITCOUNT},
                     {u"hitWords"_s, words}});
}

void Print(const std::vector<ResultRow>& rows, bool json, Output& output) {
    const auto most = std::max_element(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
        return a.HITCOUNT < b.HITCOUNT;
    });
    const int width =
        most == rows.end() ? 0 : static_cast<int>(QString::number(most->HITCOUNT).size());
    for (const ResultRow& row : rows) {
        if (json) {
            output.Utf8(JsonOf(row));
        } else {
            output.Line(QString::number(row.HITCOUNT).rightJustified(width) + u"  "_s +
                        FileOf(row));
        }
    }
}

} // namespace

int RunSearch(const Arguments& arguments, Output& output) {
    QString request = TextOf(arguments.Operands().front());
    const auto limit =
        static_cast<std::size_t>(arguments.Number("--limit", 1, kMaxResults, kMaxResults));
    const QString folder =
        arguments.Has("--folder") ? LogicalPathOf(arguments.Value("--folder")) : QString();
    OpenArchive(arguments);
    engine::SearchResults results;
    ExecuteSearch(request, folder, !arguments.Has("--exclude-mail"), arguments.Has("--synonyms"),
                  results);
    ThrowOnFault(results);
    const std::uint64_t found = results.found;
    ResultSet set(std::move(results), folder);
    set.LoadResult();
    std::vector<ResultRow> rows = set.Rows();
    rows.resize(std::min(rows.size(), limit));
    Print(rows, arguments.Has("--json"), output);
    if (rows.empty()) {
        output.Note(GetMessage(kNoMatch));
    } else if (set.Rows().size() > rows.size() || set.FoundBeyond() != 0) {
        const QString all = QString::number(found);
        output.Note(rows.size() == 1 ? GetMessage(kBestOne, {all})
                                     : GetMessage(kBestOf, {QString::number(rows.size()), all}));
    }
    return rows.empty() ? kIncomplete : kDone;
}

} // namespace velmora
