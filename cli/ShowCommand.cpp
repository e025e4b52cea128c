// velmora show: a document as the index knows it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"
#include "cli/Ending.h"
#include "cli/IndexFaults.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"
#include "engine/FileConverter.h"
#include "platform/Folders.h"
#include "platform/LogicalPath.h"
#include "platform/Names.h"
#include "search/Hits.h"
#include "search/TextQuery.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

// A document as the engine is asked for it.
struct Wanted {
    QString fileName; // logical, in capitals
    QString spelling; // machine path with members
};

// The engine's name of a path whose first `fileLength` characters are the file, the rest members.
Wanted NameOf(const QString& path, qsizetype fileLength) {
    QString file = platform::Capitals(platform::ToLogical(path.left(fileLength)));
    // In a name of a file these would part it from members.
    file.replace(u'>', QChar(0xF03E)).replace(u'|', QChar(0xF07C));
    QString members = path.mid(fileLength);
    members.replace(u'/', u'\\');
    return {file + platform::Capitals(members), path};
}

// The texts that an argument may be: bytes that are no UTF-8 come as they are or, from the lines
// for programs, as the characters that stand for them. Dots and doubled slashes are cut out last,
// as they may belong to the name of a member.
QStringList PathsOf(const QByteArray& argument) {
    QStringList paths;
    if (argument.startsWith('/')) {
        paths << platform::DecodeName(argument) << QString::fromUtf8(argument);
    }
    paths << MachinePathOf(argument);
    paths.removeDuplicates();
    return paths;
}

// What an argument may mean: a file, or a member behind any of its ">".
std::vector<Wanted> Meanings(const QByteArray& argument) {
    std::vector<Wanted> meanings;
    for (const QString& path : PathsOf(argument)) {
        meanings.push_back(NameOf(path, path.size()));
        for (qsizetype at = path.indexOf(u'>'); at >= 0; at = path.indexOf(u'>', at + 1)) {
            meanings.push_back(NameOf(path, at));
        }
    }
    return meanings;
}

// The document and its text; nothing when the index does not hold it.
struct Stored {
    Wanted document;
    QString text;
};
std::optional<Stored> FindStored(const QByteArray& argument) {
    for (const Wanted& meaning : Meanings(argument)) {
        try {
            return Stored{meaning, engine::StoredDocumentText(IndexFolder(), AlphabetFile(),
                                                              meaning.fileName, meaning.spelling)};
        } catch (const engine::IndexError& error) {
            // The engine has no fault of its own for a document that it does not hold.
            if (error.fault != engine::IndexFault::Other ||
                QByteArrayView(error.what()) != "the document is not in the index") {
                throw EndingOf(error);
            }
        }
    }
    return std::nullopt;
}

// The hits of the query in that one document, wherever it stands among all results.
QString HitsIn(Wanted& document, const QString& query) {
    QString request;
    ParseRequest(query, request);
    engine::SearchJob job = MakeSearchJob(request, false);
    // A quotation mark would end the pattern, so any character stands for it.
    job.FileConditions =
        u"xfilter(name \"%1\")"_s.arg(QString(document.fileName).replace(u'"', u'?'));
    const engine::SearchResults results = job.Execute();
    ThrowOnFault(results);
    QString hits;
    for (const engine::SearchItem& item : results.items) {
        // Others may fit the name: it may hold "*" or "?", or differ only by case.
        if (item.FileName == document.fileName &&
            (hits.isEmpty() || item.Spelling == document.spelling)) {
            hits = item.HitsString();
        }
    }
    return hits;
}

} // namespace

int RunShow(const Arguments& arguments, Output& output) {
    arguments.RefuseTogether("--html", "--text");
    arguments.RefuseTogether("--query", "--text");
    const bool html = arguments.Has("--html") || arguments.Has("--query");
    const QString query = TextOf(arguments.Value("--query"));
    const QString path = MachinePathOf(arguments.Operands().front());
    OpenArchive(arguments);
    auto stored = FindStored(arguments.Operands().front());
    if (!stored) {
        throw CommandError{kIncomplete, GetMessage(kNotInIndex, {path})};
    }
    if (!html) {
        output.Utf8(stored->text);
        return kDone;
    }
    const QString hits = query.isEmpty() ? QString() : HitsIn(stored->document, query);
    engine::FileConverter converter =
        HtmlConverter(stored->document.fileName, hits, stored->document.spelling);
    converter.WorkerProgram = platform::WorkerProgram();
    output.Utf8(PageOf(converter.Execute()) + u'\n');
    if (!query.isEmpty() && hits.isEmpty()) {
        output.Note(GetMessage(kNoHitInDocument, {path}));
        return kIncomplete;
    }
    return kDone;
}

} // namespace velmora
