// Conditions: what they let through and which are refused.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "StoreFixture.h"

#include "store/Criteria.h"

using namespace velmora;

namespace {

const QHash<QString, QVariant> kRecord{
    {QStringLiteral("I_ID"), QVariant::fromValue<qlonglong>(5)},
    {QStringLiteral("SFILENAME"), QStringLiteral("L'ORÈ.TIF")},
    {QStringLiteral("WEIGHT"), 1.5},
    {QStringLiteral("CODE"), QStringLiteral("007")},
    {QStringLiteral("EMPTY"), QVariant()},
};

bool Passes(const QString& condition) {
    return Criteria(condition).Matches(
        [](const QString& name) { return kRecord.value(name.toUpper()); });
}

TEST(Criteria, LetsThroughWhatHolds) {
    const struct {
        const char16_t* condition;
        bool expected;
    } cases[] = {
        {u"I_ID=5", true},
        {u" i_id = 5 ", true},
        {u"I_ID=50", false},
        {u"I_ID=-5", false},
        {u"I_ID='5'", true},
        {u"I_ID<>5", false},
        {u"I_ID>4 AND I_ID<6", true},
        {u"I_ID>=5 and I_ID<=5", true},
        {u"SFILENAME='l''orè.tif'", true},
        {u"SFILENAME='L''OR'", false},
        {u"SFILENAME='L''ORÈ.TIF' AND I_ID=6", false},
        {u"SFILENAME<>'AND'", true},
        {u"[SFILENAME]='L''ORÈ.TIF'", true},
        {u"SFILENAME=''", false},
        {u"WEIGHT=1.5", true},
        {u"CODE='007'", true},
        {u"CODE='7'", false},
        {u"EMPTY=NULL", true},
        {u"EMPTY=''", false},
        {u"EMPTY<>'x'", false},
        {u"EMPTY<5", false},
        {u"I_ID<>NULL", true},
    };
    for (const auto& c : cases) {
        const QString condition = QString::fromUtf16(c.condition);
        EXPECT_EQ(Passes(condition), c.expected) << condition.toStdString();
    }
}

TEST(Criteria, RefusesWhatItCannotRead) {
    for (const char16_t* text : {u"", u"I_ID", u"I_ID=", u"=5", u"I_ID=5 OR I_ID=6", u"I_ID=x",
                                 u"S='open", u"S='a'b", u"I_ID=5 AND", u"[I_ID=5"}) {
        const QString condition = QString::fromUtf16(text);
        EXPECT_EQ(NumberOf([&] { Criteria{condition}; }), kBadCondition) << condition.toStdString();
    }
}

} // namespace
