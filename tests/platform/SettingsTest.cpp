// The user's own settings.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Settings.h"

#include "tests/platform/TestSupport.h"

#include <QStringList>
#include <cerrno>

using namespace platform;
using testing_support::AsPlainUser;
using testing_support::InOtherProcess;
using testing_support::Sandbox;
using testing_support::Variable;

namespace {

const QString kSection = QStringLiteral("Archives");
const QString kKey = QStringLiteral("LastSelected");

} // namespace

TEST(Settings, KeepTextsBySectionAndKey) {
    const Sandbox box;
    const Variable config("VELMORA_CONFIG_HOME", box.Bytes("config"));
    EXPECT_EQ(GetSetting(kSection, kKey), QString());
    const QStringList values{QStringLiteral("3"),
                             QStringLiteral("a, b"),
                             QStringLiteral(" blanks "),
                             QStringLiteral("\"q\" = ;#"),
                             QStringLiteral("@x"),
                             QStringLiteral("più\nだ"),
                             QString()};
    for (const QString& value : values) {
        ASSERT_TRUE(SaveSetting(kSection, kKey, value).Ok());
        EXPECT_EQ(GetSetting(kSection, kKey), value);
    }
    ASSERT_TRUE(
        SaveSetting(QStringLiteral("General"), QStringLiteral("a/b\\c%2F"), QStringLiteral("1"))
            .Ok());
    EXPECT_EQ(GetSetting(QStringLiteral("General"), QStringLiteral("a/b\\c%2F")),
              QStringLiteral("1"));
    EXPECT_EQ(GetSetting(QStringLiteral("General"), QStringLiteral("a/b/c%2F")), QString());
    EXPECT_EQ(GetSetting(QStringLiteral("General"), QStringLiteral("a/b\\c/")), QString());
    EXPECT_EQ(GetSetting(QStringLiteral("Other"), kKey), QString());
    EXPECT_EQ(SaveSetting(kSection, QString(), QStringLiteral("1")).code, EINVAL);
    EXPECT_TRUE(IsFile(box.Path("config/velmora/Velmora.ini")));
}

TEST(Settings, OtherProcessesAndHandsAreSeenAndKept) {
    const Sandbox box;
    const Variable config("VELMORA_CONFIG_HOME", box.Bytes("config"));
    ASSERT_TRUE(SaveSetting(kSection, kKey, QStringLiteral("1")).Ok());
    EXPECT_EQ(InOtherProcess([&] {
                  return SaveSetting(kSection, QStringLiteral("Theirs"),
                                     QStringLiteral("longer text"))
                      .code;
              }),
              0);
    ASSERT_TRUE(SaveSetting(kSection, kKey, QStringLiteral("2")).Ok());
    EXPECT_EQ(GetSetting(kSection, QStringLiteral("Theirs")), QStringLiteral("longer text"));
    box.Write("config/velmora/Velmora.ini",
              "[Scanner]\nDuplexEnabled=1\nnonsense\nName=one, two\n");
    EXPECT_EQ(GetSetting(QStringLiteral("Scanner"), QStringLiteral("DuplexEnabled")),
              QStringLiteral("1"));
    EXPECT_EQ(GetSetting(QStringLiteral("Scanner"), QStringLiteral("Name")),
              QStringLiteral("one, two"));
    EXPECT_TRUE(SaveSetting(kSection, kKey, QStringLiteral("9")).Ok());
    EXPECT_EQ(GetSetting(QStringLiteral("Scanner"), QStringLiteral("DuplexEnabled")),
              QStringLiteral("1"));
    EXPECT_EQ(GetSetting(kSection, kKey), QStringLiteral("9"));
}

TEST(Settings, ARefusedFileIsTold) {
    const Sandbox box;
    box.MakeFolder("config/velmora");
    chmod(box.Bytes().constData(), 0755);
    const Variable config("VELMORA_CONFIG_HOME", box.Bytes("config"));
    EXPECT_EQ(AsPlainUser([&] { return SaveSetting(kSection, kKey, QStringLiteral("1")).code; }),
              EACCES);
    EXPECT_EQ(GetSetting(kSection, kKey), QString());
    const Variable file("VELMORA_CONFIG_HOME", "/proc/self/status");
    EXPECT_EQ(SaveSetting(kSection, kKey, QStringLiteral("1")).code, ENOTDIR);
}
