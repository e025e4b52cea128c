// A plain text body as paragraphs and quotes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/MailText.h"

namespace engine {

namespace {

// Takes the quote marks off a line and counts them: "> > text" has two.
int TakeQuoteMarks(std::string_view& line) {
    int depth = 0;
    while (line.starts_with('>')) {
        ++depth;
        line.remove_prefix(1);
        if (line.starts_with(" >"))
            line.remove_prefix(1);
    }
    return depth;
}

bool IsBlank(std::string_view line) {
    return line.find_first_not_of(" \t\xC2\xA0") == std::string_view::npos;
}

class MailText {
  public:
    MailText(const MailTextRules& rules, DocumentSink& sink) : m_rules(rules), m_sink(sink) {}

    void Line(std::string_view line) {
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (InArmour(line))
            return;
        const int depth = TakeQuoteMarks(line);
        if ((m_rules.flowed || depth > 0) && line.starts_with(' '))
            line.remove_prefix(1);
        if (depth != m_depth)
            SetDepth(depth);
        if (IsBlank(line)) {
            EndParagraph();
            return;
        }
        const bool soft = m_rules.flowed && line.ends_with(' ') && line != "-- ";
        if (soft && m_rules.deletesBlanks)
            line.remove_suffix(1);
        if (!m_inParagraph) {
            m_sink.Open(Block::Paragraph);
            m_inParagraph = true;
        } else if (!m_joins) {
            m_sink.Break();
        }
        m_sink.Text(line);
        m_joins = soft;
    }

    bool Finish() {
        SetDepth(0);
        EndParagraph();
        return m_sawEncrypted;
    }

  private:
    // Armour is base 64: no words in it.
    bool InArmour(std::string_view line) {
        if (m_armourEnd.empty()) {
            if (line.starts_with("-----BEGIN PGP MESSAGE-----")) {
                m_armourEnd = "-----END PGP MESSAGE-----";
                m_sawEncrypted = true;
            } else if (line.starts_with("-----BEGIN PGP SIGNATURE-----")) {
                m_armourEnd = "-----END PGP SIGNATURE-----";
            }
            return !m_armourEnd.empty();
        }
        if (line.starts_with(m_armourEnd))
            m_armourEnd = {};
        return true;
    }

    void EndParagraph() {
        if (m_inParagraph)
            m_sink.Close(Block::Paragraph);
        m_inParagraph = false;
        m_joins = false;
    }

    void SetDepth(int depth) {
        constexpr int kDeepest = 16;
        if (depth == m_depth)
            return;
        EndParagraph();
        m_depth = depth;
        for (; m_open < depth && m_open < kDeepest; ++m_open)
            m_sink.Open(Block::Quote);
        for (; m_open > depth; --m_open)
            m_sink.Close(Block::Quote);
    }

    MailTextRules m_rules;
    DocumentSink& m_sink;
    std::string_view m_armourEnd; // empty: not inside armour
    int m_depth = 0;
    int m_open = 0; // quotes
    bool m_inParagraph = false;
    bool m_joins = false; // the line before ends softly
    bool m_sawEncrypted = false;
};

} // namespace

bool EmitMailText(std::string_view utf8, const MailTextRules& rules, DocumentSink& sink) {
    MailText text(rules, sink);
    while (!utf8.empty()) {
        const std::size_t end = utf8.find('\n');
        text.Line(utf8.substr(0, end));
        utf8.remove_prefix(end == std::string_view::npos ? utf8.size() : end + 1);
    }
    return text.Finish();
}

} // namespace engine
