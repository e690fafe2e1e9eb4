#include "platform/posix/TWPosixLocks.h"

#include "contracts/TWLocksContract.h"

#include <sys/stat.h>
#include <unistd.h>

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, TWLocksContract, TWPosixLocks);

TEST(TWPosixLocksTest, ALockThatCannotBeMadeIsHeldByNobody)
{
    const TWTemporaryFolder root;
    const auto elsewhere = root.write("elsewhere", "");
    std::filesystem::create_hard_link(elsewhere, root.path("name"));
    // Root may have been lured into another user's folder.
    EXPECT_EQ(chown(root.path().c_str(), 1234, 1234), geteuid() == 0 ? 0 : -1);
    EXPECT_TRUE(TWPosixLocks().tryLock(root.write("old", "")).lock);
    const std::pair<std::string, int> rows[] = { { root.path("no/folder"), ENOENT }, { root.path(), EISDIR },
        { root.link("link", elsewhere), ELOOP }, { root.path("name"), EPERM }, { "", ENOENT } };
    for (const auto& [path, error] : rows) {
        const auto result = TWPosixLocks().tryLock(path);
        EXPECT_TRUE(!result.lock && !result.heldByAnother) << path;
        EXPECT_EQ(result.error, error) << path;
        EXPECT_EQ(result.mayBeHeld(), error != ENOENT) << path;
    }
    for (const auto* name : { "name", "old" }) {
        struct stat facts;
        EXPECT_TRUE(stat(root.path(name).c_str(), &facts) == 0 && facts.st_uid == geteuid()) << "given away: " << name;
    }
}
