// Reading the mount table and finding shares in it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/MountTable.h"
#include "platform/Drives.h"

#include "platform/Files.h"
#include "tests/platform/TestSupport.h"

#include <algorithm>

using namespace platform;

namespace {

const QByteArray kTable =
    "21 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
    "40 21 0:50 / /mnt/my\\040docs rw shared:2 master:1 - cifs //NAS/Docs rw,vers=3.0\n"
    "41 21 0:50 /Old/2019 /mnt/old rw - cifs //NAS/Docs rw\n"   // a folder of it once more
    "42 21 0:51 /Team /mnt/team rw - smb3 //nas/Data/Team rw\n" // the root repeats the source
    "43 21 0:52 / /mnt/plain rw - smb3 //nas/Data/Plain/ rw\n"
    "44 21 0:53 / /mnt/export rw - nfs4 files.example:/srv/export rw\n"
    "45 21 0:54 / /mnt/six rw - nfs [fe80::1]:/ rw\n"
    "46 21 0:55 / /mnt/later rw - cifs //NAS/Docs rw\n"
    "47 21 0:56 / /mnt/sub rw - cifs //nas/docs/Sub rw\n"
    "48 21 0:57 / /mnt/ssh rw - fuse.sshfs anna@far:/home/anna rw\n"
    "49 21 0:58 / /mnt/caf\xC3\xA9 rw - cifs //nas/caf\xC3\xA9\\040bar rw\n"
    "broken line\n"
    "50 21 0:59 / /mnt/nodash rw cifs //nas/nodash rw\n";

} // namespace

TEST(MountTable, ReadsSharesOfAllKinds) {
    const std::vector<Mount> mounts = ParseMountTable(kTable);
    ASSERT_EQ(mounts.size(), 11u);
    EXPECT_EQ(mounts[0].share, QString());
    EXPECT_EQ(mounts[1].mountPoint, "/mnt/my docs");
    EXPECT_EQ(mounts[1].type, "cifs");
    EXPECT_EQ(mounts[1].share, QStringLiteral("\\\\NAS\\Docs"));
    EXPECT_EQ(mounts[2].share, QStringLiteral("\\\\NAS\\Docs\\Old\\2019"));
    EXPECT_EQ(mounts[3].share, QStringLiteral("\\\\nas\\Data\\Team"));
    EXPECT_EQ(mounts[4].share, QStringLiteral("\\\\nas\\Data\\Plain"));
    EXPECT_EQ(mounts[5].share, QStringLiteral("\\\\files.example\\srv\\export"));
    EXPECT_EQ(mounts[6].share, QStringLiteral("\\\\fe80::1"));
    EXPECT_EQ(mounts[9].share, QString());
    EXPECT_EQ(mounts[10].share, QStringLiteral("\\\\nas\\café bar"));
}

TEST(MountTable, FindsTheMountThatCoversMost) {
    const std::vector<Mount> mounts = ParseMountTable(kTable);
    const struct {
        QString path;
        QByteArray mountPoint;
        QString rest;
    } cases[] = {
        {QStringLiteral("\\\\nas\\DOCS\\Letters\\a.txt"), "/mnt/later",
         QStringLiteral("Letters\\a.txt")},
        {QStringLiteral("\\\\NAS\\DOCS\\SUB\\A"), "/mnt/sub", QStringLiteral("A")},
        {QStringLiteral("\\\\NAS\\DOCS\\OLD\\2019"), "/mnt/old", QString()},
        {QStringLiteral("\\\\NAS\\DOCS\\OLD"), "/mnt/later", QStringLiteral("OLD")},
        {QStringLiteral("\\\\FILES.EXAMPLE\\SRV\\EXPORT\\X"), "/mnt/export", QStringLiteral("X")},
        {QStringLiteral("\\\\FE80::1\\X"), "/mnt/six", QStringLiteral("X")},
        {QStringLiteral("\\\\nas\\data"), "", QString()},
        {QStringLiteral("\\\\nas\\docs2\\x"), "", QString()},
        {QStringLiteral("\\\\nas"), "", QString()},
        {QStringLiteral("\\\\"), "", QString()},
    };
    for (const auto& c : cases) {
        const SharePlace place = FindShare(mounts, c.path);
        EXPECT_EQ(place.mountPoint, c.mountPoint) << c.path.toStdString();
        EXPECT_EQ(place.rest, c.rest) << c.path.toStdString();
    }
}

TEST(Drives, ArePlacesThatAPersonPutsFilesIn) {
    QByteArray table;
    for (const char* line : {
             "/ - overlay overlay rw", "/boot/efi - vfat /dev/sda1 rw", "/home - ext4 /dev/sda3 rw",
             "/etc/hosts - ext4 /dev/sda3 rw", "/proc - proc proc rw", "/dev/shm - tmpfs tmpfs rw",
             "/snap/core/1 - squashfs /dev/loop0 ro", "/run/user/1000 - tmpfs tmpfs rw",
             "/run/media/anna/A\\040B - vfat /dev/sdb1 rw", "/var/lib/x - ext4 /dev/sda4 rw",
             "/mnt/nas - cifs //nas/docs rw", "/mnt/far - fuse.sshfs anna@far:/ rw",
             "/media/stick - exfat /dev/sdc1 rw", "/media/stick - tmpfs tmpfs rw",
             "/variety - ext4 /dev/sdd1 rw"}) {
        const QByteArray text(line);
        table += "36 35 8:1 / " + text.left(text.indexOf(' ')) + " rw" +
                 text.mid(text.indexOf(' ')) + "\n";
    }
    const auto drives =
        DrivesOf(ParseMountTable(table), {{"/dev/sdb1", QStringLiteral("HOLIDAY")}});
    const std::vector<Drive> expected{
        {QStringLiteral("/"), QString(), false},
        {QStringLiteral("/home"), QStringLiteral("home"), false},
        {QStringLiteral("/mnt/far"), QStringLiteral("far"), true},
        {QStringLiteral("/mnt/nas"), QStringLiteral("nas"), true},
        {QStringLiteral("/run/media/anna/A B"), QStringLiteral("HOLIDAY"), false},
        {QStringLiteral("/variety"), QStringLiteral("variety"), false},
    };
    std::string found;
    for (const Drive& drive : drives) {
        found += drive.path.toStdString() + "\n";
    }
    EXPECT_EQ(drives, expected) << found;
}

TEST(MountTable, TheMachinesOwnTableNamesTheRoot) {
    const std::vector<Mount> mounts = CurrentMounts();
    const quint64 device = DeviceOf(QStringLiteral("/")).value_or(0);
    EXPECT_TRUE(std::any_of(mounts.begin(), mounts.end(), [&](const Mount& mount) {
        return mount.mountPoint == "/" && (mount.device == device || mount.type == "btrfs");
    }));
    EXPECT_EQ(CurrentMounts().size(), mounts.size());
    EXPECT_FALSE(IsNetworkFileSystem(QStringLiteral("/proc/no/such")));
}
