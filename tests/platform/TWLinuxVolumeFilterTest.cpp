#include "platform/linux/TWLinuxVolumeFilter.h"

#include <gtest/gtest.h>

namespace {

constexpr char Table[] = R"(1 0 8:1 / / rw - ext4 /dev/sda1 rw
2 1 8:2 / /boot/efi rw - vfat /dev/sda2 rw
3 1 8:3 / /home rw - ext4 /dev/sda3 rw
4 3 8:4 / /home/me rw - ext4 /dev/sda4 rw
5 3 8:5 / /home/other rw - ext4 /dev/sda5 rw
6 4 0:40 / /home/me/server rw - fuse.sshfs me@server: rw,user_id=1000
7 4 0:41 / /home/me/.cache/gvfs rw - fuse.gvfsd-fuse gvfsd-fuse rw
8 4 0:42 / /home/me/.private rw - fuse.gocryptfs /home/me/x rw
9 4 0:43 / /home/me/memory rw - tmpfs tmpfs rw
10 1 8:17 / /media/me/USB\040stick rw - vfat /dev/sdb1 rw
11 1 8:18 / /media/me/hidden rw - vfat /dev/sdb2 rw
12 1 8:33 / /run/media/me/disk rw - ext4 /dev/sdc1 rw
13 1 8:34 / /run/media/other/disk rw - ext4 /dev/sdc2 rw
14 1 0:44 / /run/user/1000/doc rw - fuse.portal portal rw
15 1 8:49 / /mnt rw - ext4 /dev/sdd1 rw
16 15 8:50 / /mnt/data rw - btrfs /dev/sdd2 rw
17 16 0:45 / /mnt/data/root/proc rw - proc proc rw
18 1 0:46 / /srv/shown rw - nfs4 server:/share rw
19 1 0:47 / /srv/not\040shown rw - nfs4 server:/other rw
20 1 7:0 / /snap/core/1 ro - squashfs /dev/loop0 ro
21 1 0:48 / /mnt/layers rw - overlay overlay rw
22 1 0:49 / /var/lib/shown rw - ext4 /dev/sde1 rw
23 1 8:65 / /tmp/box rw - ext4 /dev/sde1 rw
24 23 0:50 / /tmp/box/.memory rw - tmpfs tmpfs rw
25 23 0:51 / /tmp/box/proc rw - proc proc rw
26 1 8:66 / /tmp/boxes rw - ext4 /dev/sde2 rw
)";

constexpr char FileSystemsTable[] = "# LABEL=x /srv/not\\040shown ext4 x-gvfs-show 0 0\n"
                                    "server:/share\t /srv/shown/ \tnfs4  rw,x-gvfs-show 0 0\n"
                                    "/dev/sdb2 /media/me/hidden vfat noauto,user,x-gvfs-hide\n"
                                    "/dev/sde1 /var/lib/shown ext4 x-gvfs-show 0 0\n"
                                    "/dev/sda1 / ext4 x-gvfs-show 0 0\n"
                                    "/dev/sda9\n";

std::vector<std::string> shown(const TWLinuxVolumeFilter::Setup& setup)
{
    const TWLinuxVolumeFilter filter(setup, FileSystemsTable);
    std::vector<std::string> points;
    for (const auto& mount : TWLinuxMountsIn(Table)) {
        if (filter.shows(mount))
            points.push_back(mount.point);
    }
    return points;
}

}

TEST(TWLinuxVolumeFilterTest, ShowsWhatFileManagersShowAndNeverTheSystem)
{
    EXPECT_EQ(shown({ { "/media", "/mnt", "/home/me", "/run/media/me" }, { "/home/me" } }),
        (std::vector<std::string>{
            "/home/me/server", "/media/me/USB stick", "/run/media/me/disk", "/mnt/data", "/srv/shown" }));
    EXPECT_EQ(shown({ { "/tmp/box" }, { "/home/me" }, true }), std::vector<std::string>{ "/tmp/box/.memory" });
    // What is needed may be on a volume.
    EXPECT_EQ(shown({ { "/media" }, { "/media/me/USB stick/home" } }), std::vector<std::string>{ "/srv/shown" });
}
