// Settings of the HTML page, and the walk over its hits.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/Hits.h"

#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/Messages.h"
#include "indexing/EngineWords.h"
#include "platform/Folders.h"
#include "search/MessageIds.h"
#include "search/TextQuery.h"

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kEndOfSearch = 114;
constexpr int kFirstHit = 225;
constexpr int kLastHit = 295;
constexpr qsizetype kTopOfPage = 8192; // characters in which the note stands

// As the converter writes text.
QString Escaped(const QString& text) {
    return text.toHtmlEscaped().replace(u'\'', u"&#39;"_s);
}

} // namespace

engine::FileConverter HtmlConverter(const QString& fileName, const QString& hits,
                                    const QString& spelling) {
    engine::FileConverter converter;
    converter.IndexPath = IndexFolder();
    converter.AlphabetFile = AlphabetFile();
    converter.InputFile = fileName;
    converter.Spelling = spelling;
    converter.Hits = engine::FileConverter::ParseHits(hits);
    converter.BeforeHit =
        u"<span style=\"background-color: #FFFF00\"><A NAME=\"hit%%ThisHit%%\"></A><b>"_s;
    converter.AfterHit = u"</b> </span>"_s;
    converter.Footer = u"<HR>Generato mediante Velmora Orbelia"_s; // in every language
    converter.WorkerProgram = platform::WorkerProgram();
    converter.StoredTextNote = GetMessage(kStoredText);
    return converter;
}

// The converter gives its reason in English.
QString PageOf(const engine::ConvertedPage& page) {
    if (page.fault) {
        throw Error(static_cast<int>(*page.fault), FaultMessage(*page.fault, page.faultText));
    }
    QString html = page.html;
    if (page.origin == engine::PageOrigin::StoredText) {
        const QString note = Escaped(GetMessage(kStoredText, {page.reason}));
        const auto place = html.left(kTopOfPage).indexOf(note);
        if (place >= 0) {
            const QString reason = ReasonMessage(page.reason);
            html.replace(place, note.size(), Escaped(GetMessage(kStoredText, {reason})));
        }
    }
    return html;
}

void GetHtmlString(const QString& fileName, const QString& hits, QString& html,
                   const QString& spelling) {
    html = PageOf(HtmlConverter(fileName, hits, spelling).Execute());
}

QString HtmlHitWalk::Anchor() const {
    return u"hit"_s + QString::number(m_current);
}

bool HtmlHitWalk::NextHit() {
    if (m_current >= m_count) {
        Tell(GetMessage(kLastHit), GetMessage(kEndOfSearch));
        return false;
    }
    ++m_current;
    return true;
}

bool HtmlHitWalk::PrevoiusHit() {
    if (m_current <= 1) {
        Tell(GetMessage(kFirstHit), GetMessage(kEndOfSearch));
        return false;
    }
    --m_current;
    return true;
}

} // namespace velmora
