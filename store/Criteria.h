// Conditions of filters and searches over records in memory.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>
#include <QVariant>
#include <functional>
#include <optional>
#include <vector>

namespace velmora {

// COLUMN op value, several joined by AND. op: = <> < > <= >=. value: 'text' with each "'" doubled,
// a number with a full stop, or NULL. A column may stand in square brackets. Texts compare without
// regard to case. Null equals only NULL, and is neither less nor greater than anything.
//   Criteria("sfilename='L''ORO.TIF' AND i_id=5")
class Criteria {
  public:
    // Throws velmora::Error (kBadCondition) when the condition cannot be read.
    explicit Criteria(const QString& condition);

    // value: the record's value of a column, by name.
    [[nodiscard]] bool Matches(const std::function<QVariant(const QString&)>& value) const;

    // When the condition is a single COLUMN = value with a value other than NULL: these two. Lets
    // the owner of the records look it up instead of walking.
    struct Equality {
        QString column;
        QVariant value;
    };
    [[nodiscard]] std::optional<Equality> AsEquality() const;

  private:
    enum class Operator { Equal, NotEqual, Less, Greater, LessOrEqual, GreaterOrEqual };
    struct Term {
        QString column;
        Operator op = Operator::Equal;
        QVariant value;
    };
    friend class CriteriaParser;
    static bool Holds(const Term& term, const QVariant& value);

    std::vector<Term> m_terms;
};

} // namespace velmora
