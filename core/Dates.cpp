// Dates in the system's own form: mask, picture, and the eight digits that tables keep.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "core/Failure.h"
#include "core/MessageIds.h"
#include "core/Messages.h"
#include "platform/User.h"

#include <QDate>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr int kDateSeparator = 29;
constexpr int kDateOrder = 33;

QString InOrder(const QString& day, const QString& month, const QString& year) {
    const QString separator = API_GetLocaleData(kDateSeparator);
    const QString order = API_GetLocaleData(kDateOrder);
    if (order == u"2") {
        return year + separator + month + separator + day;
    }
    return order == u"1" ? day + separator + month + separator + year
                         : month + separator + day + separator + year;
}

QString EmptyMask() {
    return GetDateMask().replace(u'#', u'_');
}

// The date in a filled mask, invalid when it is none. The mask fixes where each part stands.
QDate ParseMask(const QString& text) {
    const QString picture = GetDateFormat();
    if (text.size() != picture.size()) {
        return {};
    }
    int day = 0;
    int month = 0;
    int year = 0;
    for (qsizetype at = 0; at < picture.size(); ++at) {
        if (!picture[at].isLetter()) {
            if (text[at] != picture[at]) {
                return {};
            }
            continue;
        }
        const int digit = text[at].digitValue();
        if (digit < 0) {
            return {};
        }
        int& part = picture[at] == u'd' ? day : picture[at] == u'm' ? month : year;
        part = part * 10 + digit;
    }
    return QDate(year, month, day);
}

} // namespace

QString API_GetLocaleData(int id) {
    const platform::DateForm form = platform::UserDateForm();
    if (id == kDateSeparator) {
        return form.separator;
    }
    return id == kDateOrder ? QString::number(static_cast<int>(form.order)) : QString();
}

QString GetDateMask() {
    return InOrder(u"##"_s, u"##"_s, u"####"_s);
}

QString GetDateFormat() {
    return InOrder(u"dd"_s, u"mm"_s, u"yyyy"_s);
}

QString FrmtDateDb(const QString& text) {
    return Guard("CommonFunctions", "FrmtDateDb", [&]() -> QString {
        if (text == EmptyMask()) {
            return {};
        }
        const QDate date = ParseMask(text);
        if (!date.isValid()) {
            throw Error(kNoDate, GetMessage(kNoDate, {text, GetDateFormat()}));
        }
        return date.toString(u"yyyyMMdd");
    });
}

QString UnFrmtDateDb(const QString& text) {
    return Guard("CommonFunctions", "UnFrmtDateDb", [&]() -> QString {
        if (text.isEmpty()) {
            return EmptyMask();
        }
        if (!QDate::fromString(text, u"yyyyMMdd"_s).isValid()) {
            throw Error(kBadStoredDate, GetMessage(kBadStoredDate, {text}));
        }
        return InOrder(text.mid(6, 2), text.mid(4, 2), text.left(4));
    });
}

} // namespace velmora
