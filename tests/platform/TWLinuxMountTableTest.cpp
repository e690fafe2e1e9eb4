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
