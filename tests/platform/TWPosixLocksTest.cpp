#include "platform/posix/TWPosixLocks.h"

#include "contracts/TWLocksContract.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, TWLocksContract, TWPosixLocks);

TEST(TWPosixLocksTest, AnotherProcessFreesItsLockHoweverItEnds)
{
    const TWTemporaryFolder root;
    const auto path = root.path("lock");
    const pid_t other = fork();
    if (other == 0) {
        const auto held = TWPosixLocks().tryLock(path);
        raise(SIGSTOP);
        _exit(0);
    }
    waitpid(other, nullptr, WUNTRACED);
    EXPECT_TRUE(TWPosixLocks().tryLock(path).heldByAnother);
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    EXPECT_TRUE(TWPosixLocks().tryLock(path).lock);
}

TEST(TWPosixLocksTest, ALockThatCannotBeMadeIsHeldByNobody)
{
    const TWTemporaryFolder root;
    const std::pair<std::string, int> rows[] = { { root.path("no/folder"), ENOENT }, { root.path(), EISDIR },
        { root.link("link", root.write("elsewhere", "")), ELOOP } };
    for (const auto& [path, error] : rows) {
        const auto result = TWPosixLocks().tryLock(path);
        EXPECT_TRUE(!result.lock && !result.heldByAnother) << path;
        EXPECT_EQ(result.error, error) << path;
    }
}
