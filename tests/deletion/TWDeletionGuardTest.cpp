#include "deletion/TWDeletionGuard.h"

#include "fakes/TWFakeMachine.h"

namespace {

class TWDeletionGuardTest : public testing::Test, protected TWFakeMachine {
protected:
    // Paths and reasons; "" when the path may be deleted.
    void expect(const TWDeletionGuard& asked, const std::vector<std::pair<std::string, std::string>>& rows)
    {
        for (const auto& [path, reason] : rows)
            EXPECT_EQ(asked.reason(path) ? asked.reason(path) : "", reason) << path;
    }
};

constexpr auto System = "it is a folder of the system.";
constexpr auto InsideSystem = "it belongs to the system.";
constexpr auto Home = "it is the home folder.";
constexpr auto AboveHome = "the home folder lies inside it.";
constexpr auto AboveData = "the folder where Tidewell keeps its settings lies inside it.";
constexpr auto MountPoint = "a volume is mounted there.";

}

TEST_F(TWDeletionGuardTest, RefusesWhatNobodyCanHaveMeant)
{
    const auto home = places.home;
    root.folder("home/Documents");
    mountTable.points.push_back(root.folder("media/usb/stick"));
    expect(guard,
        { { "", "the path is empty." }, { "Documents", "the path does not begin with \"/\" or \"~\"." },
            { "~", "the path does not begin with \"/\" or \"~\"." }, { "/", "it is the whole file system." },
            { "/tmp", System }, { "/etc", System }, { "/var/log", System }, { "/home", System }, { "/usr", System },
            { "/usr/bin/env", InsideSystem }, { "/proc/self", InsideSystem }, { "/usr/local", System },
            { "/usr/local/nobody", "" }, { "/var/log/nobody", "" }, { home, Home }, { root.path(), AboveHome },
            { home + "/.", Home }, { home + "/Documents/..", Home }, { home + "/Documents/../..", AboveHome },
            { home + "/Documents", "" }, { home + "/.local", AboveData }, { home + "/.local/share", AboveData },
            { dataFolder, "it is the folder where Tidewell keeps its settings." },
            { dataFolder + "/Dictionary.plist", "" }, { root.path("media/usb/stick"), MountPoint },
            { root.path("media"), "a volume is mounted inside it." }, { root.path("media/usb/stick/file"), "" },
            { root.path("media/usb/sti"), "" }, { root.path("no/such/folder"), "" } });
    mountTable.points.clear();
    expect(guard, { { home + "/Documents", "the list of mounted volumes could not be read." } });
}

TEST_F(TWDeletionGuardTest, JudgesByTheRealPlaceButALinkItselfMayGo)
{
    root.link("to-home", places.home);
    root.link("to-root", root.path());
    root.link("to-usr", "/usr");
    expect(guard,
        { { root.path("to-home"), "" }, { root.path("to-usr"), "" }, { root.path("to-root/home"), Home },
            { root.path("to-usr/share"), InsideSystem }, { root.path("to-home/x"), "" },
            { root.path("to-root/to-usr"), "" }, { root.path("to-home/."), Home },
            { root.path("to-home/.."), AboveHome } });
    auto linked = places;
    linked.home = root.path("to-home");
    const TWDeletionGuard linkedGuard(linked, fileSystem, mountTable, root.path("to-home/.local/share/Tidewell"));
    EXPECT_STREQ(linkedGuard.reason(places.home), Home);
    EXPECT_STREQ(linkedGuard.reason(places.home + "/.local"), AboveData);
}

TEST_F(TWDeletionGuardTest, ASandboxEndsAtItsWalls)
{
    auto boxed = places;
    boxed.sandboxRoot = root.path();
    const TWDeletionGuard boxedGuard(boxed, fileSystem, mountTable, dataFolder);
    root.link("out", "/var/tmp");
    const std::string outside = "it lies outside the sandbox.";
    expect(boxedGuard,
        { { "/var/tmp/x", outside }, { "/no/such/folder", outside }, { root.path("out/x"), outside },
            { root.path() + "x", outside }, { root.path(), "it is the sandbox itself." }, { places.home, Home },
            { root.path("out"), "" }, { root.path("var/log"), "" } });
}
