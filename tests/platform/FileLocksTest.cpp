// Whether locks can be relied on, by mount options and by trying.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/FileLocks.h"
#include "tests/platform/PretendedShare.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(FileLocksTest, MountOptionsTellWhatOtherComputersSee) {
    struct Case {
        const char* line; // behind the dash of the mount table
        LockScope scope;
        const char* why;
    };
    for (const auto& [line, scope, why] : {
             Case{"nfs4 s:/x rw,vers=4.2,local_lock=none", LockScope::Everywhere, ""},
             Case{"nfs s:/x rw,vers=3,nolock,proto=tcp", LockScope::ThisMachine, "nolock"},
             Case{"nfs s:/x rw,local_lock=all", LockScope::ThisMachine, "local_lock=all"},
             // Only locks of another kind than ours stay on this machine.
             Case{"nfs s:/x rw,local_lock=flock", LockScope::Everywhere, ""},
             Case{"cifs //s/x rw,nobrl,cache=strict", LockScope::ThisMachine, "nobrl"},
             Case{"cifs //s/x rw,cache=strict", LockScope::Everywhere, ""},
             Case{"fuse.sshfs anna@s:/x rw", LockScope::ThisMachine, "fuse.sshfs"},
             // The same words mean nothing elsewhere.
             Case{"ext4 /dev/sda1 rw,nolock,nobrl", LockScope::Everywhere, ""},
         }) {
        const auto mounts = ParseMountTable(QByteArray("36 35 0:42 / /mnt/x rw - ") + line + "\n");
        ASSERT_EQ(mounts.size(), 1U) << line;
        const LockTrust trust = LocksAsMounted(mounts[0]);
        EXPECT_EQ(trust.scope, scope) << line;
        EXPECT_EQ(trust.why.toStdString(), why) << line;
    }
}

TEST(FileLocksTest, ALockIsTriedTwiceOnAShareAndNowhereElse) {
    using platform_test::PretendedShare;
    const QTemporaryDir folder;
    const auto scope = [&](std::optional<PretendedShare::Locks> locks) {
        std::optional<PretendedShare> share;
        if (locks) {
            share.emplace(*locks);
        }
        const LockTrust trust = LocksIn(folder.path());
        EXPECT_TRUE(QDir(folder.path()).isEmpty()) << "the try leaves nothing behind";
        EXPECT_EQ(!trust.why.isEmpty(), locks == PretendedShare::Locks::Refused);
        return trust.scope;
    };
    EXPECT_EQ(scope(std::nullopt), LockScope::Everywhere);
    EXPECT_EQ(scope(PretendedShare::Locks::Work), LockScope::Everywhere);
    EXPECT_EQ(scope(PretendedShare::Locks::Granted), LockScope::Nowhere);
    EXPECT_EQ(scope(PretendedShare::Locks::Refused), LockScope::Nowhere);
}

} // namespace
} // namespace platform
