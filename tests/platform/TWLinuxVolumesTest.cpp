#include "platform/linux/TWLinuxVolumes.h"

#include "builders/TWProgram.h"
#include "contracts/TWVolumesContract.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/posix/TWDescriptor.h"

#include <csignal>
#include <sys/mman.h>

namespace {

// Memory mounted in a sandbox.
class Body {
public:
    ~Body()
    {
        for (const auto& mount : TWLinuxReadMounts()) {
            if (mount.point.starts_with(folder_.path()))
                TWPrivateMounts::detach(mount.point);
        }
    }
    bool possible() const { return possible_; }
    TWVolumes& volumes() { return volumes_; }
    std::string path(const std::string& name) const { return folder_.folder(name); }
    void mount(const std::string& path) { ASSERT_TRUE(TWPrivateMounts::mountEmpty(path)); }
    void unmount(const std::string& path) { ASSERT_TRUE(TWPrivateMounts::detach(path)); }

    const TWTemporaryFolder& folder() const { return folder_; }
    TWVolumeUse use(const TWVolume& volume) const { return volumes_.use(volume, {}); }

private:
    const bool possible_ = TWPrivateMounts::begin();
    TWTemporaryFolder folder_;
    TWLinuxVolumes volumes_{ TWLinuxSandboxPlaces(folder_.path(), TWLinuxPlaces()) };
};

class TWLinuxVolumesTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!body.possible())
            GTEST_SKIP() << "nothing can be mounted here";
        body.mount(path);
        volume = body.volumes().mountsAt(path)->at(0);
    }
    std::vector<std::string> holders()
    {
        const auto use = body.use(volume);
        const bool isMounted = !body.volumes().mountsAt(path)->empty();
        EXPECT_EQ(use.isInUse, isMounted && !use.holders.empty()) << "nobody can pull memory out";
        return use.holders;
    }

    Body body;
    const std::string path = body.path("a b\\c\n\xFF");
    const std::string thisProgram = "tests_platform (" + std::to_string(getpid()) + ")";
    TWVolume volume;
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TWVolumesContract, Body);

TEST_F(TWLinuxVolumesTest, NamesWhoHoldsItAndTellsTheFreeSpace)
{
    EXPECT_EQ(holders(), std::vector<std::string>());
    EXPECT_GT(body.volumes().freeBytes(volume), 4096U);

    std::filesystem::copy_file("/bin/sleep", path + "/sleep of ours");
    const TWProgram program(body.folder(), { path + "/sleep of ours", "60" });
    const auto name = "sleep of ours (" + std::to_string(program.process()) + ")";
    for (int turn = 0; turn < 1000 && holders().empty(); ++turn)
        usleep(10'000);
    EXPECT_EQ(holders(), std::vector{ name });

    TWDescriptor file(open((path + "/file").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
    EXPECT_EQ(holders(), (std::vector{ thisProgram, name }));
    ASSERT_EQ(ftruncate(file.get(), 4096), 0);
    void* memory = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file.get(), 0);
    file.close();
    EXPECT_EQ(holders(), (std::vector{ thisProgram, name }));
    munmap(memory, 4096);

    const auto inside = path + "/inside";
    std::filesystem::create_directory(inside);
    body.mount(inside);
    EXPECT_EQ(holders(), (std::vector{ name, "the volume at \"" + inside + "\"" }));
    body.unmount(inside);

    // Also after it was only detached.
    body.unmount(path);
    EXPECT_EQ(holders(), std::vector{ name });
    EXPECT_EQ(body.volumes().freeBytes(volume), std::nullopt);
    kill(program.process(), SIGKILL);
    program.wait();
    // Another mount gets the number of the volume, usually as soon as that is free.
    const auto other = body.path("other");
    body.mount(other);
    for (int turn = 0; turn < 200 && body.volumes().mountsAt(other)->at(0).mount != volume.mount; ++turn) {
        body.unmount(other);
        usleep(5'000);
        body.mount(other);
    }
    const TWDescriptor top(open(other.c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(holders(), std::vector<std::string>());
}
