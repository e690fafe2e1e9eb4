#include "platform/linux/TWLinuxMountInfo.h"

#include <gtest/gtest.h>

#include <sys/sysmacros.h>

TEST(TWLinuxMountInfoTest, UnderstandsEveryLineOrNone)
{
    const std::string first = "36 35 98:300 /mnt1 /mnt2\\040a\\134b\\012c\xFF rw,noatime master:1 shared:7 - ext3 "
                              "/dev/a\\043b rw,errors=continue\n";
    const std::string second = "37 36 0:5 / / rw - tmpfs  rw\n"; // without a source
    const TWLinuxMounts both{
        { 36, 35, makedev(98, 300), "/mnt2 a\\b\nc\xFF", "ext3", "/dev/a#b", "rw,errors=continue" },
        { 37, 36, makedev(0, 5), "/", "tmpfs", "", "rw" },
    };
    EXPECT_EQ(TWLinuxMountsIn(first + second), both);
    EXPECT_EQ(TWLinuxMountsIn(""), TWLinuxMounts());
    for (const auto* damaged :
        { "36 35 98:0 /mnt1", "36 35 98:0 /mnt1 /mnt2", "36 35 98:0 / mnt2 rw - ext3 /dev/a rw\n",
            "36 35 98 / /mnt2 rw - ext3 /dev/a rw\n", "a 35 98:0 / /mnt2 rw - ext3 /dev/a rw\n",
            "36 35 98:0 / /mnt2 rw ext3 /dev/a rw\n", "36 35 98:0 / /mnt2 rw - ext3\n", "\n" })
        EXPECT_EQ(TWLinuxMountsIn(second + damaged), TWLinuxMounts()) << damaged;
}
