// Dates in the system's own form and in tables.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "core/Messages.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class DatesTest : public testing::Test {
  protected:
    DatesTest() : m_before(qgetenv("LC_ALL")) {}
    ~DatesTest() override { qputenv("LC_ALL", m_before); }

    ScopedGlobals program;
    ScriptedReporter reporter;

  private:
    QByteArray m_before;
};

TEST_F(DatesTest, TheSystemsFormMakesMaskAndPicture) {
    struct Case {
        const char* locale;
        QString mask;
        QString format;
        QString typed;
    };
    for (const auto& [locale, mask, format, typed] : {
             Case{"en_US.UTF-8", u"##/##/####"_s, u"mm/dd/yyyy"_s, u"02/29/2024"_s},
             Case{"it_IT.UTF-8", u"##/##/####"_s, u"dd/mm/yyyy"_s, u"29/02/2024"_s},
             Case{"de_DE.UTF-8", u"##.##.####"_s, u"dd.mm.yyyy"_s, u"29.02.2024"_s},
             Case{"sv_SE.UTF-8", u"####-##-##"_s, u"yyyy-mm-dd"_s, u"2024-02-29"_s},
             Case{"C.UTF-8", u"##/##/####"_s, u"mm/dd/yyyy"_s, u"02/29/2024"_s},
         }) {
        qputenv("LC_ALL", locale);
        program->gLocaleId = 1031; // the program's language has no say
        EXPECT_EQ(GetDateMask(), mask) << locale;
        EXPECT_EQ(GetDateFormat(), format) << locale;
        EXPECT_EQ(FrmtDateDb(typed), u"20240229"_s) << locale;
        EXPECT_EQ(UnFrmtDateDb(u"20240229"_s), typed) << locale;
        const QString empty = UnFrmtDateDb(QString());
        EXPECT_EQ(empty, QString(mask).replace(u'#', u'_')) << locale;
        EXPECT_EQ(FrmtDateDb(empty), QString()) << locale;
    }
    EXPECT_EQ(API_GetLocaleData(31), QString());
    EXPECT_TRUE(reporter.reports.isEmpty());
}

TEST_F(DatesTest, WhatIsNoDateIsReported) {
    qputenv("LC_ALL", "de_DE.UTF-8");
    for (const QString& bad : {u"30.02.2024"_s, u"1.2.2024"_s, u"29/02/2024"_s, u"__.02.2024"_s,
                               u""_s, u"29.02.20245"_s}) {
        reporter.reports.clear();
        EXPECT_EQ(FrmtDateDb(bad), QString()) << qPrintable(bad);
        EXPECT_EQ(reporter.reports.size(), 1) << qPrintable(bad);
    }
    reporter.reports.clear();
    for (const QString& bad : {u"2024"_s, u"20240230"_s, u"heute"_s}) {
        EXPECT_EQ(UnFrmtDateDb(bad), QString()) << qPrintable(bad);
    }
    EXPECT_EQ(reporter.reports.size(), 3);
}

} // namespace
} // namespace velmora
