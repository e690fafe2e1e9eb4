#include "platform/linux/TWLinuxMountTable.h"

#include "builders/TWPrivateMounts.h"
#include "builders/TWTemporaryFolder.h"
#include "contracts/TWMountTableContract.h"

namespace {

class Body {
public:
    ~Body() { TWPrivateMounts::detach(folder_.path("volume")); }
    TWMountTable& table() { return table_; }
    std::string mountOne()
    {
        const auto volume = folder_.folder("volume");
        return mayMount_ && TWPrivateMounts::mountEmpty(volume) ? volume : "";
    }

private:
    const bool mayMount_ = TWPrivateMounts::begin();
    TWTemporaryFolder folder_;
    TWLinuxMountTable table_;
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TWMountTableContract, Body);

TEST(TWLinuxMountTableTest, UnderstandsEveryLineOrNone)
{
    const std::string first = "36 35 98:0 /mnt1 /mnt2\\040a\\134b rw,noatime master:1 - ext3 /dev/root rw\n";
    const std::string second = "37 36 0:5 / / rw - tmpfs none rw\n";
    EXPECT_EQ(TWMountPointsIn(first + second), (TWMountPoints{ "/", "/mnt2 a\\b" }));
    EXPECT_EQ(TWMountPointsIn(""), TWMountPoints());
    for (const auto* damaged : { "36 35 98:0 /mnt1", "36 35 98:0 /mnt1 /mnt2", "36 35 98:0 /mnt1 mnt2 rw\n", "\n" })
        EXPECT_EQ(TWMountPointsIn(second + damaged), TWMountPoints()) << damaged;
}
