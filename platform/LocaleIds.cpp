// Locale names of this system: their Windows ids and their form of dates.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/User.h"

#include <QLocale>
#include <QRegularExpression>
#include <QStringList>
#include <initializer_list>

namespace platform {

namespace {

struct LocaleId {
    const char* name; ///< language_COUNTRY; a language alone stands for its other countries
    unsigned id;
};

constexpr LocaleId kLocaleIds[] = {
    {"it", 1040},
    {"it_IT", 1040},
    {"it_CH", 2064},

    {"de", 1031},
    {"de_DE", 1031},
    {"de_CH", 2055},
    {"de_AT", 3079},
    {"de_LU", 4103},
    {"de_LI", 5127},

    {"fr", 1036},
    {"fr_FR", 1036},
    {"fr_BE", 2060},
    {"fr_CA", 3084},
    {"fr_CH", 4108},
    {"fr_LU", 5132},
    {"fr_MC", 6156},

    // 1034 is Spain with the traditional order of the alphabet, 3082 with the modern one.
    {"es", 3082},
    {"es_ES", 3082},
    {"es_MX", 2058},
    {"es_GT", 4106},
    {"es_CR", 5130},
    {"es_PA", 6154},
    {"es_DO", 7178},
    {"es_VE", 8202},
    {"es_CO", 9226},
    {"es_PE", 10250},
    {"es_AR", 11274},
    {"es_EC", 12298},
    {"es_CL", 13322},
    {"es_UY", 14346},
    {"es_PY", 15370},
    {"es_BO", 16394},
    {"es_SV", 17418},
    {"es_HN", 18442},
    {"es_NI", 19466},
    {"es_PR", 20490},
    {"es_US", 21514},

    {"en", 1033},
};

/// language_COUNTRY of "language_COUNTRY.charset@variant"
QString WithoutCharset(const QString& localeName) {
    static const QRegularExpression tail(QStringLiteral("[.@].*$"));
    return QString(localeName).remove(tail);
}

unsigned Find(const QString& name) {
    for (const LocaleId& entry : kLocaleIds) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0) {
            return entry.id;
        }
    }
    return 0;
}

QString FirstSet(std::initializer_list<const char*> variables) {
    for (const char* variable : variables) {
        if (const QByteArray value = qgetenv(variable); !value.isEmpty()) {
            return QString::fromLatin1(value);
        }
    }
    return {};
}

} // namespace

unsigned LocaleIdOf(const QString& localeName) {
    const QString name = WithoutCharset(localeName);
    if (name.compare(QLatin1String("es_ES"), Qt::CaseInsensitive) == 0 &&
        localeName.endsWith(QLatin1String("@tradicional"))) {
        return 1034;
    }
    const unsigned id = Find(name);
    return id != 0 ? id : Find(name.section(u'_', 0, 0));
}

unsigned UserLocaleId() {
    return LocaleIdOf(FirstSet({"LC_ALL", "LC_MESSAGES", "LANG"}));
}

DateForm DateFormOf(const QString& localeName) {
    const QLocale locale(WithoutCharset(localeName));
    if (locale.language() == QLocale::C) {
        return {};
    }
    static const QRegularExpression quoted(QStringLiteral("'[^']*'"));
    const QString format = locale.dateFormat(QLocale::ShortFormat).remove(quoted);
    const qsizetype day = format.indexOf(u'd');
    const qsizetype month = format.indexOf(u'M');
    const qsizetype year = format.indexOf(u'y');
    DateForm form;
    if (year < day && year < month) {
        form.order = DateOrder::YearFirst;
    } else if (day < month) {
        form.order = DateOrder::DayFirst;
    }
    for (const QChar c : format) {
        if (c == u'/' || c == u'.' || c == u'-') {
            form.separator = c;
            break;
        }
    }
    return form;
}

DateForm UserDateForm() {
    return DateFormOf(FirstSet({"LC_ALL", "LC_TIME", "LANG"}));
}

} // namespace platform
