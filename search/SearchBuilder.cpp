// Makes a request from plain boxes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/SearchBuilder.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

QStringList WordsOf(const QString& box, const QString& prefix) {
    static const QRegularExpression blanks(u"\\s+"_s);
    static const QRegularExpression operators(
        u"^(and|or|not|contains|xfirstword|xlastword|xfilter|(w|pre)/.*)$"_s,
        QRegularExpression::CaseInsensitiveOption);
    QStringList words = box.split(blanks, Qt::SkipEmptyParts);
    for (QString& word : words) {
        word = operators.match(word).hasMatch() ? u'"' + word + u'"' : prefix + word;
    }
    return words;
}

} // namespace

QString BuildRequest(const SearchBoxes& boxes) {
    const QString fuzzy(boxes.fuzziness, u'%');
    const QStringList all = WordsOf(boxes.all, fuzzy);
    const QStringList any = WordsOf(boxes.any, fuzzy);
    const QStringList phrase = WordsOf(boxes.phrase, fuzzy);
    QString request = !all.isEmpty()   ? all.join(u" and "_s)
                      : !any.isEmpty() ? any.join(u" or "_s)
                                       : phrase.join(u' ');
    const QStringList none = WordsOf(boxes.none, {});
    if (request.isEmpty() || none.isEmpty()) {
        return request;
    }
    request = u'(' + request + u')';
    for (const QString& word : none) {
        request += u" and not "_s + word;
    }
    return request;
}

} // namespace velmora
