// Reading a condition and holding records against it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "store/Criteria.h"

#include "sqlite/Unicode.h"
#include "store/StoreError.h"

#include <algorithm>

namespace velmora {

// Reads a condition from left to right.
class CriteriaParser {
  public:
    explicit CriteriaParser(const QString& text) : m_text(text) {}

    std::vector<Criteria::Term> Parse() {
        std::vector<Criteria::Term> terms;
        do {
            Criteria::Term term;
            term.column = Name();
            term.op = Operator();
            term.value = Value();
            terms.push_back(term);
        } while (TakeWord(QStringLiteral("AND")));
        SkipBlanks();
        if (m_position < m_text.size()) {
            Refuse();
        }
        return terms;
    }

  private:
    using Op = Criteria::Operator;

    [[noreturn]] void Refuse() const { throw StoreError(kBadCondition, {m_text}); }

    void SkipBlanks() {
        while (m_position < m_text.size() && m_text[m_position].isSpace()) {
            ++m_position;
        }
    }

    bool Take(QStringView piece) {
        SkipBlanks();
        if (!QStringView(m_text).mid(m_position).startsWith(piece)) {
            return false;
        }
        m_position += piece.size();
        return true;
    }

    bool TakeWord(const QString& word) {
        SkipBlanks();
        const qsizetype end = EndOfWord();
        if (m_text.mid(m_position, end - m_position).compare(word, Qt::CaseInsensitive) != 0) {
            return false;
        }
        m_position = end;
        return true;
    }

    qsizetype EndOfWord() const {
        qsizetype end = m_position;
        while (end < m_text.size() && (m_text[end].isLetterOrNumber() || m_text[end] == u'_')) {
            ++end;
        }
        return end;
    }

    QString Name() {
        qsizetype end = 0;
        QString name;
        if (Take(u"[")) {
            end = m_text.indexOf(u']', m_position);
            name = m_text.mid(m_position, end - m_position);
            end = end < 0 ? m_text.size() : end + 1;
        } else {
            end = EndOfWord();
            name = m_text.mid(m_position, end - m_position);
        }
        if (name.isEmpty()) {
            Refuse();
        }
        m_position = end;
        return name;
    }

    Op Operator() {
        // The longer ones first.
        if (Take(u"<>")) {
            return Op::NotEqual;
        }
        if (Take(u"<=")) {
            return Op::LessOrEqual;
        }
        if (Take(u">=")) {
            return Op::GreaterOrEqual;
        }
        if (Take(u"<")) {
            return Op::Less;
        }
        if (Take(u">")) {
            return Op::Greater;
        }
        if (!Take(u"=")) {
            Refuse();
        }
        return Op::Equal;
    }

    QVariant Value() {
        if (Take(u"'")) {
            return QuotedText();
        }
        if (TakeWord(QStringLiteral("NULL"))) {
            return {};
        }
        const qsizetype start = m_position;
        while (m_position < m_text.size() && !m_text[m_position].isSpace()) {
            ++m_position;
        }
        const QString text = m_text.mid(start, m_position - start);
        bool isNumber = false;
        const qlonglong whole = text.toLongLong(&isNumber);
        if (isNumber) {
            return whole;
        }
        const double number = text.toDouble(&isNumber);
        if (!isNumber) {
            Refuse();
        }
        return number;
    }

    QString QuotedText() {
        QString text;
        for (; m_position < m_text.size(); ++m_position) {
            if (m_text[m_position] == u'\'') {
                ++m_position;
                if (m_position >= m_text.size() || m_text[m_position] != u'\'') {
                    return text;
                }
            }
            text += m_text[m_position];
        }
        Refuse(); // the closing quote is missing
    }

    QString m_text;
    qsizetype m_position = 0;
};

namespace {

bool IsText(const QVariant& value) {
    return value.typeId() == QMetaType::QString;
}

int CompareTexts(const QString& a, const QString& b) {
    return sqlite::CompareCaseBlind(a.toStdString(), b.toStdString());
}

// <0, 0, >0. Two texts as texts; what reads as numbers on both sides as numbers.
int Compare(const QVariant& a, const QVariant& b) {
    if (IsText(a) && IsText(b)) {
        return CompareTexts(a.toString(), b.toString());
    }
    bool isNumberA = false;
    bool isNumberB = false;
    const double numberA = a.toDouble(&isNumberA);
    const double numberB = b.toDouble(&isNumberB);
    if (isNumberA && isNumberB) {
        return numberA < numberB ? -1 : static_cast<int>(numberA > numberB);
    }
    return CompareTexts(a.toString(), b.toString());
}

} // namespace

Criteria::Criteria(const QString& condition) : m_terms(CriteriaParser(condition).Parse()) {}

bool Criteria::Matches(const std::function<QVariant(const QString&)>& value) const {
    return std::all_of(m_terms.begin(), m_terms.end(),
                       [&](const Term& term) { return Holds(term, value(term.column)); });
}

std::optional<Criteria::Equality> Criteria::AsEquality() const {
    const Term& term = m_terms.front();
    if (m_terms.size() > 1 || term.op != Operator::Equal || !term.value.isValid()) {
        return std::nullopt;
    }
    return Equality{term.column, term.value};
}

bool Criteria::Holds(const Term& term, const QVariant& value) {
    if (!term.value.isValid() || !value.isValid()) {
        const bool bothNull = !term.value.isValid() && !value.isValid();
        // "x <> 5" lets no null through, as in the database.
        const bool oneNamed = !term.value.isValid() && value.isValid();
        return (term.op == Operator::Equal && bothNull) ||
               (term.op == Operator::NotEqual && oneNamed);
    }
    const int order = Compare(value, term.value);
    switch (term.op) {
    case Operator::Equal:
        return order == 0;
    case Operator::NotEqual:
        return order != 0;
    case Operator::Less:
        return order < 0;
    case Operator::Greater:
        return order > 0;
    case Operator::LessOrEqual:
        return order <= 0;
    case Operator::GreaterOrEqual:
        return order >= 0;
    }
    return false;
}

} // namespace velmora
