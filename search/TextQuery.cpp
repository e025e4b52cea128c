// Prepares and runs the engine's search job.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/TextQuery.h"

#include "core/Globals.h"
#include "core/Messages.h"
#include "platform/LogicalPath.h"
#include "search/OcrDocuments.h"
#include "store/ModDb.h"

#include <algorithm>
#include <iterator>
#include <string_view>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qint32 kItalian = 1040;
constexpr qint32 kItalianSwitzerland = 2064;
// The mail client whose messages lie in a store folder on the disk.
constexpr qlonglong kStoreClient = 1;
// Recognised texts among which those of one folder are looked for.
constexpr int kMaxRecognisedTexts = 3000;

QString StemLanguage() {
    switch (CurrentLanguage()) {
    case Language::Italian:
        return u"italian"_s;
    case Language::German:
        return u"german"_s;
    case Language::Spanish:
        return u"spanish"_s;
    case Language::French:
        return u"french"_s;
    case Language::English:
        break;
    }
    return u"english"_s;
}

// kind: "name" or "excl". A quotation mark would end the pattern, so any character stands for it.
QString Filter(QLatin1StringView kind, QString pattern) {
    return u"xfilter(%1 \"%2\")"_s.arg(kind, pattern.replace(u'"', u'?'));
}

// Whether each document below `inner` lies below `outer` too; both close in a back-slash.
bool IsWithin(const QString& inner, const QString& outer) {
    return platform::Capitals(inner).startsWith(platform::Capitals(outer));
}

// The clause that leaves mail out: either the store folder or the copies, never both.
QStringList WithoutMail() {
    RecordSetPtr config = GetRsMailConfig();
    if (!config || config->EOF_()) {
        return {};
    }
    if (config->Fields(u"iclient").Number() == kStoreClient) {
        return {Filter("excl"_L1, config->Fields(u"smailpath").Text() + u'*')};
    }
    return {Filter("excl"_L1, platform::JoinPath(gProgramPath(), u"OutlookMails\\*"_s))};
}

// The recognised texts of documents in the folder. Those of other documents must not take the
// places of what is looked for.
engine::SearchResults RecognisedTexts(engine::SearchJob job, const QString& folder) {
    job.MaxFiles = kMaxRecognisedTexts;
    engine::SearchResults results = job.Execute();
    const OcrDocuments documents;
    results.found -= std::erase_if(results.items, [&](const engine::SearchItem& item) {
        const QString name = documents.GetFileNameByOcrFile(item.FileName);
        return name.isEmpty() || !IsInScope(name, folder);
    });
    return results;
}

// The results of searches whose conditions no document satisfies twice, as if they were one.
void Merge(engine::SearchResults& results, engine::SearchResults&& more) {
    if (results.fault || more.fault) {
        if (!results.fault) {
            results = std::move(more);
        }
        return;
    }
    results.found += more.found;
    std::move(more.items.begin(), more.items.end(), std::back_inserter(results.items));
    std::stable_sort(results.items.begin(), results.items.end(), [](const auto& a, const auto& b) {
        return a.Hits.size() != b.Hits.size() ? a.Hits.size() > b.Hits.size()
                                              : a.FileName < b.FileName;
    });
    results.items.resize(std::min<std::size_t>(results.items.size(), kMaxResults));
}

} // namespace

QString IndexFolder() {
    return platform::WithoutBackslash(Program().gArchivePath) + u"\\indexes\\"_s +
           Program().gUserKey + u'\\';
}

QString OcrFolder() {
    return IndexFolder() + u"ocr\\"_s;
}

QString MailCopyFolder() {
    return platform::JoinPath(gProgramPath(), u"OutlookMails\\"_s + Program().gUserKey + u'\\');
}

QString AlphabetFile() {
    return platform::JoinPath(gProgramPath(), u"default.abc"_s);
}

void ParseRequest(const QString& text, QString& result) {
    result.clear();
    result.reserve(text.size());
    // Letter by letter: lower case of a whole text may be longer than the text.
    for (const char32_t letter : text.toUcs4()) {
        const char32_t lower = QChar::toLower(letter);
        const bool isAccented =
            std::u32string_view(U"àèéìòù").find(lower) != std::u32string_view::npos;
        result += isAccented ? u"?"_s : QString::fromUcs4(&lower, 1);
    }
}

QStringList FileConditions(const QString& folder, bool includeMail) {
    if (folder.isEmpty()) {
        return includeMail ? QStringList() : WithoutMail();
    }
    const QString scope = platform::WithBackslash(folder);
    const QString ocr = OcrFolder();
    QStringList conditions;
    if (!IsWithin(scope, ocr)) {
        conditions << Filter("name"_L1, scope + u'*');
    }
    // The text of a scanned document lies here and not beside it; what belongs to documents of
    // other folders is dropped from what is found.
    if (!IsWithin(ocr, scope)) {
        conditions << Filter("name"_L1, ocr + u'*');
    }
    return conditions;
}

engine::SearchJob MakeSearchJob(const QString& request, bool synonyms) {
    const qint32 locale = Program().gLocaleId;
    engine::SearchJob job;
    job.IndexPath = IndexFolder();
    job.AlphabetFile = AlphabetFile();
    job.Request = request;
    job.MaxFiles = kMaxResults;
    job.ThesaurusFile = platform::JoinPath(gProgramPath(), u"lib\\thesaurus.xml"_s);
    job.Synonyms = synonyms;
    // The thesaurus file is Italian, the word net English: each language has one of the two.
    job.UseWordNet = synonyms && locale != kItalian && locale != kItalianSwitzerland;
    job.StemLanguage = StemLanguage();
    return job;
}

void ExecuteSearch(QString& request, const QString& folder, bool includeMail, bool synonyms,
                   engine::SearchResults& results) {
    const QString typed = request;
    ParseRequest(typed, request);
    engine::SearchJob job = MakeSearchJob(request, synonyms);
    const QStringList conditions = FileConditions(folder, includeMail);
    job.FileConditions = conditions.value(0);
    results = job.Execute();
    // The engine joins the conditions of a job by "and"; the other one is a job of its own.
    if (conditions.size() > 1) {
        job.FileConditions = conditions[1];
        Merge(results, RecognisedTexts(job, folder));
    }
}

} // namespace velmora
