#include "builders/TWProgram.h"
#include "platform/linux/TWLinuxMountInfo.h"
#include "platform/posix/TWDescriptor.h"
#include "support/TWText.h"

#include <gtest/gtest.h>

#include <csignal>
#include <set>
#include <unistd.h>

namespace {

using Lines = std::vector<std::string>;

class TWEjectTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (!TWPrivateMounts::begin())
            GTEST_SKIP() << "nothing can be mounted here";
        chmod(root.path().c_str(), 0755);
    }
    void TearDown() override
    {
        for (const auto& point : mounted())
            TWPrivateMounts::detach(point);
    }
    std::string mountEmpty(const std::string& name) const
    {
        EXPECT_TRUE(TWPrivateMounts::mountEmpty(root.folder(name)));
        return root.path(name);
    }
    // A file system that never answers, because nobody reads the requests from the descriptor that it returns.
    int mountSilent(const std::string& name) const
    {
        const int requests = open("/dev/fuse", O_RDWR | O_CLOEXEC);
        const auto options = "rootmode=40000,user_id=0,group_id=0,fd=" + std::to_string(requests);
        const bool done = mount("silent", root.folder(name).c_str(), "fuse", 0, options.c_str()) == 0;
        return done ? requests : -1;
    }
    std::multiset<std::string> mounted() const
    {
        std::multiset<std::string> points;
        for (const auto& mount : TWLinuxReadMounts()) {
            if (mount.point.starts_with(root.path()))
                points.insert(mount.point);
        }
        return points;
    }

    TWProgram start(
        TWProgram::Words arguments, const std::function<bool()>& prepare = [] { return true; }) const
    {
        arguments.insert(arguments.begin(), TIDEWELL_LIBEXEC "/eject");
        // The leak check does not work for another user.
        return TWProgram(root, arguments, { "ASAN_OPTIONS=detect_leaks=0" }, prepare);
    }
    TWProgramResult eject(
        const std::string& path, const std::function<bool()>& prepare = [] { return true; }) const
    {
        return start({ "eject", "-force", path }, prepare).wait();
    }
    void expectRefused(const std::string& path, const std::string& reason) const
    {
        const auto before = mounted();
        const auto result = eject(path);
        EXPECT_EQ(result.status, 1) << path;
        EXPECT_EQ(result.err, "eject: \"" + path + "\" is not unmounted: " + reason + "\n");
        EXPECT_EQ(mounted(), before);
    }

    static constexpr uid_t Somebody = 65534;
    const TWTemporaryFolder root;
};

}

TEST_F(TWEjectTest, RefusesWhatIsNoVolume)
{
    const std::string nothing = "nothing is mounted there";
    const std::string system = "it belongs to the system, or your session needs it";
    const auto volume = mountEmpty("volume");
    std::filesystem::create_symlink(volume, root.path("link"));
    for (const auto& path : { root.path(), root.path("link"), volume + "/", root.path() + "/./volume", root.path("-") })
        expectRefused(path, nothing);
    for (const auto* path : { "/", "/proc", "/dev" })
        expectRefused(path, system);
    const auto inside = mountEmpty("volume/inside");
    expectRefused(volume, "another volume is mounted inside, at \"" + inside + "\"");
    // What lies below a second mount cannot be reached, although the table shows it.
    mountEmpty("above/hidden");
    mountEmpty("above");
    expectRefused(root.path("above"), "another volume is mounted inside, at \"" + root.path("above/hidden") + "\"");
    root.folder("above/hidden");
    expectRefused(root.path("above/hidden"), "what is mounted there is hidden by another mount");

    for (const auto& arguments : { Lines{}, Lines{ "eject", "-force" }, Lines{ "eject", "-force", "volume" },
             Lines{ "-force", inside }, Lines{ "eject", "-force", inside, "-force" }, Lines{ "eject", "force", inside },
             Lines{ "detach", "-force", inside } }) {
        const auto result = start(arguments).wait();
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "eject: use as: eject eject -force PATH, with PATH an absolute path\n");
    }
    EXPECT_TRUE(mounted().contains(inside));
}

TEST_F(TWEjectTest, UnmountsTheTopmostOfAnyName)
{
    const auto volume = mountEmpty("-a b\\040\n\xFF");
    const auto beside = mountEmpty("-a b\\040\n\xFF beside");
    mountEmpty("-a b\\040\n\xFF");
    for (int left = 1; left >= 0; --left) {
        const auto result = eject(volume);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(mounted().count(volume), left);
    }
    EXPECT_EQ(mounted(), std::multiset<std::string>{ beside });
    EXPECT_TRUE(root.exists("-a b\\040\n\xFF"));
}

TEST_F(TWEjectTest, DetachesWhatIsHeldAndNamesWhoHoldsIt)
{
    const auto volume = mountEmpty("volume");
    root.write("volume/file", "text");
    const TWProgram holder(root, { "/bin/sh", "-c", "exec 3<\"$0\"; echo; exec sleep 60", volume + "/file" });
    for (int turn = 0; turn < 1000 && holder.out().empty(); ++turn)
        usleep(10'000);
    const auto result = eject(volume);
    EXPECT_EQ(result.status, 0);
    const auto name = "(" + std::to_string(holder.process()) + ")\n";
    EXPECT_TRUE(result.err.starts_with("eject: the kernel: Device or resource busy\n"
                                       "eject: note: \""
        + volume + "\" is held by s"))
        << result.err;
    EXPECT_TRUE(result.err.ends_with(name)) << result.err;
    EXPECT_TRUE(mounted().empty());
    std::ifstream still("/proc/" + std::to_string(holder.process()) + "/fd/3");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(still), {}), "text");
    kill(holder.process(), SIGKILL);
    holder.wait();
}

TEST_F(TWEjectTest, SaysWhatOthersMayNotUnmount)
{
    const auto volume = mountEmpty("volume");
    const auto become = [] { return setgid(Somebody) == 0 && setuid(Somebody) == 0; };
    // In a user namespace of their own, all mounts that they inherit are locked.
    const auto enter = [&] { return become() && unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0; };
    for (const auto& prepare : { std::function<bool()>(become), std::function<bool()>(enter) }) {
        const auto result = eject(volume, prepare);
        if (result.status == TWProgram::CannotPrepare)
            continue;
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(result.err.starts_with("eject: umount: ")) << result.err;
        EXPECT_EQ(mounted(), std::multiset<std::string>{ volume });
    }
}

TEST_F(TWEjectTest, WaitsForNoVolumeThatDoesNotAnswer)
{
    const auto volume = root.path("volume");
    const TWDescriptor requests(mountSilent("volume"));
    if (!requests.isOpen())
        GTEST_SKIP() << "no FUSE here";
    EXPECT_EQ(eject(volume).status, 0);
    EXPECT_TRUE(mounted().empty());

    const TWDescriptor again(mountSilent("volume"));
    const TWDescriptor hold(open(volume.c_str(), O_PATH | O_CLOEXEC));
    const auto lines = [&](const TWProgram& program) {
        return TWText::split(root.read("output." + std::to_string(program.process()) + ".err"), '\n').size();
    };
    // A signal ends it while it waits for the volume to be written out.
    const auto stopped = start({ "eject", "-force", volume });
    for (int turn = 0; turn < 2000 && lines(stopped) < 2; ++turn)
        usleep(10'000);
    kill(stopped.process(), SIGTERM);
    EXPECT_EQ(stopped.wait().status, 1000 + SIGTERM);
    EXPECT_EQ(mounted(), std::multiset<std::string>{ volume });

    const auto result = eject(volume);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.err.ends_with("could not be written, and may be lost\n")) << result.err;
    EXPECT_TRUE(mounted().empty());
}
