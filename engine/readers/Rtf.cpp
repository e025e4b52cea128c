// Reads RTF, and HTML that a mail program has put into RTF.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/HtmlText.h"
#include "engine/readers/Reader.h"
#include "engine/readers/RtfReading.h"

namespace engine {

bool RtfReading::Step() {
    const RtfScanner::What what = m_scanner.Next();
    if (what != RtfScanner::What::Word)
        m_starred = false;
    switch (what) {
    case RtfScanner::What::End:
        return false;
    case RtfScanner::What::Text:
        Bytes(m_scanner.Text(), true);
        break;
    case RtfScanner::What::Byte: {
        const char byte = m_scanner.Character();
        Bytes({&byte, 1}, false);
        break;
    }
    case RtfScanner::What::Open:
        OpenGroup();
        break;
    case RtfScanner::What::Close:
        CloseGroup();
        // Behind the document's end there may be anything; more of it begins with a mark.
        if (m_groups.size() == 1) {
            const std::string_view rest = m_scanner.Rest();
            const std::size_t next = rest.find_first_not_of(std::string_view(" \t\r\n\0", 5));
            return next != std::string_view::npos &&
                   (rest[next] == '\\' || rest[next] == '{' || rest[next] == '}');
        }
        break;
    case RtfScanner::What::Word:
        Word();
        break;
    case RtfScanner::What::Symbol:
        Symbol(m_scanner.Character());
        break;
    case RtfScanner::What::Binary:
        if (m_fallback > 0)
            --m_fallback;
        else if (Top().into == Into::Picture)
            m_picture.AddBytes(m_scanner.Text());
        break;
    }
    return true;
}

void RtfReading::Finish() {
    EndCharacter();
    if (m_html) {
        HtmlParts parts;
        parts.fields = &m_sink;
        parts.wantsPictures = m_sink.WantsPictures();
        ReadHtmlText(m_run, m_flow, parts);
        m_flow.Finish();
    } else {
        if (m_header)
            EndHeader();
        Flush();
        m_bodyBlocks.EndAll();
        m_flow.Finish();
        for (const auto& header : m_lateHeaders)
            header->buffer.Replay(m_sink);
    }
    if (m_groups.size() > 1)
        m_sink.Incomplete("the end of the file is missing");
    if (m_wasTooDeep)
        m_sink.Incomplete("its groups are nested too deeply");
    if (m_htmlCut)
        m_sink.Incomplete("text beyond 256 MB");
}

void RtfReading::Run() {
    while (Step()) {
    }
    Finish();
}

void ReadRtf(const Source& source, DocumentSink& sink) {
    const std::size_t begin = source.bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    if (begin == std::string_view::npos || !source.bytes.substr(begin).starts_with("{\\rtf"))
        throw ReadError(ReadState::Damaged, "is no RTF document");
    RtfReading(source.bytes.substr(begin), sink).Run();
}

} // namespace engine
