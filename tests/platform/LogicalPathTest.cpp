// Logical paths as text: capitals, the two forms, parts, names that are not UTF-8.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/LogicalPath.h"

#include "tests/platform/TestSupport.h"

#include <QStringList>

using namespace platform;

TEST(Names, EveryNameSurvivesTheWayToTextAndBack) {
    const QByteArray names[] = {
        "plain.txt",
        "gr\xC3\xBC\xC3\x9F"
        "e",
        "\xF0\x9F\x93\x84",         // outside the basic plane
        "latin \xFC\xE9.txt",       // two bytes of Latin-1
        "cut \xE2\x82",             // the beginning of a sequence
        "\xC0\xAF\xE0\x80\xAF",     // overlong forms of the slash
        "\xED\xA0\x80",             // half of a surrogate pair
        "\xF5\x80\x80\x80\xFF",     // beyond Unicode
        "\xEF\x81\x9C",             // U+F05C, which text uses for the back-slash
        "\xEF\x9F\xBC \xEF\x9E\x80" // U+F7FC, U+F780, which text uses for lone bytes
    };
    QStringList texts;
    for (const QByteArray& name : names) {
        texts += DecodeName(name);
        EXPECT_EQ(EncodeName(texts.last()), name) << name.toHex().constData();
        EXPECT_EQ(EncodeName(Capitals(texts.last())).isEmpty(), false);
        EXPECT_FALSE(texts.last().contains(QChar(0xFFFD)));
        EXPECT_FALSE(texts.last().contains(QChar(kBackslashInName)));
    }
    EXPECT_EQ(texts.removeDuplicates(), 0);
    EXPECT_NE(DecodeName("\xFC"), DecodeName("\xEF\x9F\xBC"));
}

TEST(Names, TextThatNamesNoFileGivesNoBytes) {
    EXPECT_TRUE(EncodeName(QString::fromUtf16(u"/etc/passwd\0.txt", 16)).isEmpty());
    EXPECT_TRUE(EncodeName(QStringLiteral("/tmp/") + QChar(0xD800)).isEmpty());
}

TEST(LogicalPath, CapitalsAreStableAndKnowAllScripts) {
    EXPECT_EQ(Capitals(QStringLiteral("\\straße\\Ærø\\ἀθῆναι\\привет")),
              QStringLiteral("\\STRASSE\\ÆRØ\\ἈΘΗ͂ΝΑΙ\\ПРИВЕТ"));
    QString all;
    for (char16_t c = 0x20; c < 0xD800; ++c) {
        all += QChar(c);
    }
    EXPECT_EQ(Capitals(Capitals(all)), Capitals(all));
    const QString marks = DecodeName("\xFC") + QChar(kBackslashInName);
    EXPECT_EQ(Capitals(marks), marks);
    EXPECT_TRUE(SamePath(QStringLiteral("\\home\\Anna\\"), QStringLiteral("\\HOME\\ANNA")));
    EXPECT_FALSE(SamePath(QStringLiteral("\\home\\ann"), QStringLiteral("\\home\\anna")));
}

TEST(LogicalPath, MachineFormBecomesLogical) {
    const std::pair<QString, QString> cases[] = {
        {QStringLiteral("/home/anna/Docs"), QStringLiteral("\\home\\anna\\Docs")},
        {QStringLiteral("/"), QStringLiteral("\\")},
        {QStringLiteral("/a//b/"), QStringLiteral("\\a\\b\\")},
        {QStringLiteral("//server/share"),
         QStringLiteral("\\server\\share")}, // never a network path
        {QStringLiteral("/\\\\x"), QStringLiteral("\\\uF05C\uF05Cx")},
        {QStringLiteral("/a\\b"), QStringLiteral("\\a\uF05Cb")},
        {QStringLiteral("/a\uF05Cb"), QStringLiteral("\\a\uF7EF\uF781\uF79Cb")},
    };
    for (const auto& [machine, logical] : cases) {
        EXPECT_EQ(ToLogical(machine), logical);
    }
}

TEST(LogicalPath, PartsOfAPath) {
    const struct {
        QString path, parent, name;
    } cases[] = {
        {QStringLiteral("\\a\\b.txt"), QStringLiteral("\\a"), QStringLiteral("b.txt")},
        {QStringLiteral("\\a\\b\\"), QStringLiteral("\\a"), QStringLiteral("b")},
        {QStringLiteral("\\a"), QStringLiteral("\\"), QStringLiteral("a")},
        {QStringLiteral("\\"), QString(), QString()},
        {QStringLiteral("bare"), QString(), QStringLiteral("bare")},
        {QStringLiteral("\\\\srv\\share\\x"), QStringLiteral("\\\\srv\\share"),
         QStringLiteral("x")},
        {QStringLiteral("\\\\srv\\share"), QString(), QStringLiteral("share")},
        {QStringLiteral("\\\\srv"), QString(), QStringLiteral("srv")},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ParentFolder(c.path), c.parent) << c.path.toStdString();
        EXPECT_EQ(FileName(c.path), c.name) << c.path.toStdString();
    }
    EXPECT_EQ(JoinPath(QStringLiteral("\\"), QStringLiteral("a")), QStringLiteral("\\a"));
    EXPECT_EQ(JoinPath(QStringLiteral("\\a"), QStringLiteral("b")), QStringLiteral("\\a\\b"));
    EXPECT_EQ(WithoutBackslash(QStringLiteral("\\a\\\\")), QStringLiteral("\\a"));
    EXPECT_EQ(WithoutBackslash(QStringLiteral("\\")), QStringLiteral("\\"));
    EXPECT_EQ(WithBackslash(QString()), QString());
}
