#include "platform/posix/TWPosixLocks.h"

#include "contracts/TWLocksContract.h"
#include "platform/posix/TWDescriptor.h"

#include <csignal>
#include <sys/wait.h>

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, TWLocksContract, TWPosixLocks);

TEST(TWPosixLocksTest, AnotherProcessFreesItsLockHoweverItEnds)
{
    const TWTemporaryFolder root;
    const auto path = root.path("lock");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const TWDescriptor readEnd(ends[0]);
    const TWDescriptor writeEnd(ends[1]);
    const pid_t other = fork();
    if (other == 0) {
        const auto result = TWPosixLocks().tryLock(path);
        const char obtained = result.lock ? 'y' : 'n';
        if (write(writeEnd.get(), &obtained, 1) == 1)
            pause();
        _exit(0);
    }
    char obtained = 0;
    EXPECT_EQ(read(readEnd.get(), &obtained, 1), 1);
    EXPECT_EQ(obtained, 'y');
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
