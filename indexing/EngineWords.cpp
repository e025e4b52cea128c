// Words for what the engine answers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "indexing/EngineWords.h"

#include "core/Messages.h"
#include "indexing/MessageIds.h"

#include <array>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

struct Clause {
    QStringView pattern; // "%1", "%2" stand for any text that is not empty
    int message;         // with the same places, or fewer
};

// In the order of trying: the general ones come last.
constexpr std::array kClauses{
    Clause{u"is empty", 3130},
    Clause{u"needs a password", 3131},
    Clause{u"is no mail message", 3132},
    Clause{u"larger than what is read of a message", 3133},
    Clause{u"an encrypted part cannot be read", 3134},
    Clause{u"its parts are too many or nested too deeply", 3135},
    Clause{u"its HTML body cannot be read: %1", 3176},
    Clause{u"is nested too deeply", 3137},
    Clause{u"containers nested too deeply", 3137},
    Clause{u"binary data", 3138},
    Clause{u"no reader for this kind of file", 3139},
    Clause{u"unknown kind of file", 3139},
    Clause{u"the list of the book's parts is missing", 3140},
    Clause{u"is protected against copying", 3141},
    Clause{u"%1 parts are encrypted", 3142},
    Clause{u"cannot be opened as PDF: %1", 3143},
    Clause{u"has no pages", 3144},
    Clause{u"%1 of %2 pages are damaged", 3145},
    Clause{u"%1 of %2 page is damaged", 3145},
    Clause{u"pages are pictures without text", 3146},
    Clause{u"its fonts do not tell what most characters mean", 3147},
    Clause{u"the end of the file is missing", 3149},
    Clause{u"cannot be opened as an archive: %1", 3150},
    Clause{u"damaged after %1 entries: %2", 3151},
    Clause{u"damaged after %1 entry: %2", 3151},
    Clause{u"has more than %1 entries", 3152},
    Clause{u"is one part of a split archive", 3153},
    Clause{u"cannot be unpacked: %1", 3154},
    Clause{u"damaged: %1", 3155},
    Clause{u"unpacks to more than %1 GB", 3156},
    Clause{u"unpacks to more than %1 times its size", 3157},
    Clause{u"no zip archive or a damaged one", 3158},
    Clause{u"larger than what is unpacked", 3159},
    Clause{u"text beyond %1 MB", 3160},
    Clause{u"texts beyond %1 MB", 3160},
    Clause{u"the document inside it, %1, is not read", 3161},
    Clause{u"the reader crashed (%1)", 3162},
    Clause{u"the reader took too long", 3163},
    Clause{u"the reader ran out of memory", 3164},
    Clause{u"the reader gave a wrong answer (%1)", 3165},
    Clause{u"the reader gave up", 3166},
    Clause{u"the reader gave up in the middle", 3166},
    Clause{u"the folder is not there", 3167},
    Clause{u"the folder is empty: its drive or share is not there", 3168},
    Clause{u"the file is not there", 3169},
    Clause{u"there is no such place on this machine", 3170},
    Clause{u"the file has changed since it was indexed", 3174},
    Clause{u"the document is not in its container any more", 3175},
    Clause{u"the document is not in the index", 3177},
    Clause{u"Permission denied", 3173},
    Clause{u"the file is not an index", 3195},
    Clause{u"file is not a database", 3195},
    Clause{u"database disk image is malformed", 3196},
    Clause{u"a stored text cannot be unpacked", 3197},
    Clause{u"a stored text has no sensible length", 3197},
    Clause{u"disk I/O error", 3198},
    Clause{u"file locks do not work on this share", 3577},
    Clause{u"file locks do not work on this share (%1)", 3578},
    Clause{u"other computers do not see the file locks of this share (%1)", 3579},
    Clause{u"slide %1 is missing", 3171},
    Clause{u"the sheet %1 is missing", 3172},
    Clause{u"the part %1 is missing", 3148},
    Clause{u"%1 is missing", 3148},
    Clause{u"%1 is malformed at line %2", 3136},
};

// The texts that stand in the pattern's places; nothing when the clause is another one.
std::optional<QStringList> Match(QStringView pattern, QStringView clause) {
    QStringList found;
    while (!pattern.isEmpty()) {
        const qsizetype place = pattern.indexOf(u'%');
        const QStringView before = pattern.first(place < 0 ? pattern.size() : place);
        if (!clause.startsWith(before)) {
            return std::nullopt;
        }
        clause = clause.sliced(before.size());
        if (place < 0) {
            break;
        }
        pattern = pattern.sliced(place + 2);
        const qsizetype next = pattern.indexOf(u'%');
        const QStringView behind = pattern.first(next < 0 ? pattern.size() : next);
        const qsizetype end = behind.isEmpty() ? clause.size()
                              : next < 0       ? clause.size() - behind.size()
                                               : clause.indexOf(behind);
        if (end < 1) {
            return std::nullopt;
        }
        found << clause.first(end).toString();
        clause = clause.sliced(end);
    }
    return clause.isEmpty() ? std::optional(found) : std::nullopt;
}

QString ClauseMessage(const QString& clause) {
    for (const auto& [pattern, message] : kClauses) {
        if (const auto found = Match(pattern, clause)) {
            return GetMessage(message, *found);
        }
    }
    return clause;
}

int MessageOf(engine::IndexFault fault) {
    switch (fault) {
    case engine::IndexFault::Missing:
        return kIndexMissing;
    case engine::IndexFault::Damaged:
        return kIndexDamaged;
    case engine::IndexFault::Busy:
        return kIndexBusy;
    case engine::IndexFault::DiskFull:
        return kIndexDiskFull;
    case engine::IndexFault::NoRights:
        return kIndexNoRights;
    case engine::IndexFault::Unsuitable:
        return kIndexUnsuitable;
    case engine::IndexFault::Request:
        return kIndexRequest;
    case engine::IndexFault::Other:
        break;
    }
    return kIndexOther;
}

} // namespace

QString FaultMessage(engine::IndexFault fault, const QString& systemWords) {
    const QString text = GetMessage(MessageOf(fault));
    const bool wordsHelp = fault == engine::IndexFault::Damaged ||
                           fault == engine::IndexFault::NoRights ||
                           fault == engine::IndexFault::Other;
    return wordsHelp && !systemWords.isEmpty() ? text + u'\n' + ReasonMessage(systemWords) : text;
}

QString StateMessage(engine::ReadState state) {
    switch (state) {
    case engine::ReadState::Read:
        return GetMessage(kStateRead);
    case engine::ReadState::Partly:
        return GetMessage(kStatePartly);
    case engine::ReadState::Encrypted:
        return GetMessage(kStateEncrypted);
    case engine::ReadState::Damaged:
        return GetMessage(kStateDamaged);
    case engine::ReadState::Unknown:
        return GetMessage(kStateUnknown);
    case engine::ReadState::NameOnly:
        return GetMessage(kStateNameOnly);
    case engine::ReadState::Failed:
        break;
    }
    return GetMessage(kStateFailed);
}

QString ReasonMessage(const QString& reason) {
    // A reason of several clauses; one with "; " inside a name is then passed through in pieces.
    QStringList worded;
    for (const QString& clause : reason.split(u"; "_s)) {
        worded << ClauseMessage(clause);
    }
    return worded.join(u"; "_s);
}

} // namespace velmora
