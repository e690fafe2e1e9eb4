#include "deletion/TWDeletionGuard.h"

#include "builders/TWPrivateMounts.h"
#include "fakes/TWFakeMachine.h"
#include "platform/linux/TWLinuxMountTable.h"

namespace {

class TWDeletionGuardTest : public testing::Test, protected TWFakeMachine {
protected:
    // Paths and reasons; "" if the path may be deleted.
    void expect(TWDeletionGuard& asked, const std::vector<std::pair<std::string, std::string>>& rows)
    {
        for (const auto& [path, expected] : rows)
            EXPECT_EQ(objectionTo(path, asked), expected) << path;
    }
};

constexpr auto System = "it is a folder of the system.";
constexpr auto InsideSystem = "it belongs to the system.";
constexpr auto Home = "it is the home folder.";
constexpr auto AboveHome = "the home folder lies inside it.";
constexpr auto Data = "it is the folder where Tidewell keeps its settings.";
constexpr auto InsideData = "it belongs to the settings of Tidewell.";
constexpr auto AboveData = "the folder where Tidewell keeps its settings lies inside it.";
constexpr auto MountPoint = "a volume is mounted there.";
constexpr auto CannotTell = "the folders on the way to it could not be looked at.";
constexpr auto MountInside = "a volume is mounted inside it.";

}

TEST_F(TWDeletionGuardTest, RefusesWhatNobodyCanHaveMeant)
{
    const auto home = places.home;
    root.folder("home/Documents");
    root.folder("media/usb/sti");
    root.write(".config/Tidewell/Tidewell.plist", "");
    root.write("home/.config/Tidewell/Tidewell.plist", "");
    root.write("home/.local/share/Tidewell/Dictionary.plist", "");
    mountTable.points.push_back(root.folder("media/usb/stick"));
    expect(guard,
        { { "", "the path is empty." }, { "Documents", "the path does not begin with \"/\" or \"~\"." },
            { "~", "the path does not begin with \"/\" or \"~\"." }, { "/", "it is the whole file system." },
            { "/tmp", System }, { "/etc", System }, { "/var/log", System }, { "/home", System }, { "/usr", System },
            { "/bin", System }, { "/usr/bin/env", InsideSystem }, { "/bin/sh", InsideSystem }, { "/usr/local", System },
            { "/usr/local/nobody", "" }, { "/var/log/nobody", "" }, { home, Home }, { root.path(), AboveHome },
            { home + "/Documents", "" }, { home + "/.local", AboveData }, { home + "/.local/share", AboveData },
            { home + "/.config", AboveData }, { dataFolder, Data }, { dataFolder + "/Dictionary.plist", InsideData },
            { home + "/.config/Tidewell", Data }, { root.path("media/usb/stick"), MountPoint },
            { root.path("media"), MountInside }, { root.path("media/usb/stick/file"), "" },
            { root.path("media/usb/sti"), "" } });
    mountTable.points.clear();
    expect(guard, { { home + "/Documents", "the list of mounted volumes could not be read." } });
}

TEST_F(TWDeletionGuardTest, KnowsFoldersByIdentityAndTheLinksThatLeadToThem)
{
    root.link("to-home", places.home);
    root.link("to-root", root.path());
    root.link("to-usr", "/usr");
    expect(guard,
        { { root.path("to-home"), "" }, { root.path("to-usr"), "" }, { root.path("to-root/home"), Home },
            { root.path("to-usr/share"), InsideSystem }, { root.path("to-root/to-usr"), "" } });
    // Now the user's home folder is reached through links, and the data folder through another one.
    root.folder("elsewhere");
    root.write("dotfiles/Tidewell/FilesRules.plist", "");
    root.link("links/second", "../to-home");
    root.link("home/data/Tidewell", root.path("dotfiles/Tidewell"));
    auto linked = places;
    linked.home = root.path("links/second");
    TWDeletionGuard linkedGuard(linked, fileSystem, mountTable, root.path("links/second/data/Tidewell"));
    expect(linkedGuard,
        { { root.path("links/second"), Home }, { root.path("to-home"), Home }, { places.home, Home },
            { root.path("links"), AboveHome }, { root.path("elsewhere"), "" }, { root.path("to-usr"), "" },
            { root.path("home/data/Tidewell"), Data }, { root.path("home/data"), AboveData },
            { root.path("dotfiles"), AboveData }, { root.path("dotfiles/Tidewell/FilesRules.plist"), InsideData } });
}

TEST_F(TWDeletionGuardTest, ASandboxEndsAtItsWallsAndProtectsTheRealHome)
{
    auto boxed = places;
    boxed.sandboxRoot = root.folder("box");
    boxed.home = root.folder("box/home");
    TWDeletionGuard boxedGuard(boxed, fileSystem, mountTable, root.path("box/home/data"));
    root.link("box/out", "/var/tmp");
    const std::string outside = "it lies outside the sandbox.";
    expect(boxedGuard,
        { { "/var/tmp/x", outside }, { root.path("box/out/x"), outside }, { root.path("boxx"), outside },
            { root.path("home"), Home }, { root.path("home/x"), outside }, { root.path(), outside },
            { "/usr/local/nobody", outside }, { boxed.sandboxRoot, "it is the sandbox itself." }, { boxed.home, Home },
            { root.path("box/out"), "" }, { root.path("box/home/x"), "" } });
    boxed.realHomes.push_back(root.folder("account"));
    root.write("home/.local/share/Tidewell/FilesRules.plist", "");
    boxed.realOwnFolders = { dataFolder };
    boxed.sandboxRoot = root.path();
    TWDeletionGuard wideGuard(boxed, fileSystem, mountTable, root.path("box/home/data"));
    expect(wideGuard,
        { { places.home, Home }, { places.home + "/x", outside }, { root.path("account"), Home },
            { root.path("account/x"), outside } });
    boxed.sandboxRoot = root.path("home/.local");
    TWDeletionGuard innerGuard(boxed, fileSystem, mountTable, root.path("home/.local/home/data"));
    expect(innerGuard,
        { { root.path("home/.local/share"), AboveData }, { dataFolder, Data }, { dataFolder + "/x", InsideData },
            { root.path("home/.local/x"), "" } });
    boxed.sandboxRoot = "/usr/share";
    TWDeletionGuard systemGuard(boxed, fileSystem, mountTable, "/usr/share/home/data");
    expect(systemGuard, { { "/usr/share/doc", InsideSystem } });
}

TEST_F(TWDeletionGuardTest, LooksAgainWhenAVolumeIsMountedOrTheJobIsNew)
{
    const auto folder = root.folder("media/stick");
    expect(guard, { { folder, "" } });
    mountTable.points.push_back(folder);
    expect(guard, { { folder, MountPoint } });
    std::filesystem::rename(places.home, root.path("moved"));
    root.folder("home");
    expect(guard, { { root.path("moved"), Home }, { places.home, "" } });
    guard.renew();
    expect(guard, { { root.path("moved"), "" }, { places.home, Home } });
}

TEST_F(TWDeletionGuardTest, RefusesWhatCouldNotBeLookedAt)
{
    struct Unknown final : TWHeldFolder {
        std::vector<TWAncestor> above;
        TWFileIdentity identity() const override { return {}; }
        TWFileLook look(const std::string&) const override { return {}; }
        std::vector<TWAncestor> chain() const override { return above; }
        int descriptor() const override { return -1; }
    } folder;
    const auto rules = guard.rules();
    const auto there = fileSystem.look(root.write("folder/file", "x"));
    for (const auto known : { false, true }) {
        if (known)
            folder.above = { { there.facts.identity } };
        const auto judged = rules->judgeFolder(folder, root.path("folder"));
        EXPECT_EQ(rules->objection(judged, "file", there), known ? "" : CannotTell);
        EXPECT_EQ(rules->objection(judged, "file", {}), CannotTell);
    }
}

// A bind mount leads to the home folder under another name, which no comparison of paths would notice.
TEST_F(TWDeletionGuardTest, ABindMountIsNoWayAround)
{
    if (!TWPrivateMounts::begin())
        GTEST_SKIP() << "nothing can be mounted here";
    const auto alias = root.folder("outside/alias");
    root.write("home/.local/share/Tidewell/FilesRules.plist", "");
    ASSERT_TRUE(TWPrivateMounts::bind(root.path(), alias));
    const auto inner = root.folder("home/.local/share/Tidewell/x/y");
    ASSERT_TRUE(TWPrivateMounts::bind(root.path("home/.local/share/Tidewell/x"), inner));
    root.write("outside/sub/file", "");
    ASSERT_TRUE(TWPrivateMounts::bind(root.path("outside/sub"), root.folder("box/home/docs")));
    TWLinuxMountTable realTable;
    TWDeletionGuard realGuard(places, fileSystem, realTable, dataFolder);
    expect(realGuard,
        { { alias + "/home", Home }, { alias + "/home/.local", AboveData },
            { alias + "/home/.local/share/Tidewell/FilesRules.plist", InsideData }, { alias, AboveHome },
            { root.path("outside"), MountInside }, { alias + "/home/nobody", "" }, { inner + "/file", InsideData } });
    auto boxed = places;
    boxed.sandboxRoot = root.path("box");
    boxed.home = root.path("box/home");
    TWDeletionGuard boxedGuard(boxed, fileSystem, realTable, root.path("box/home/data"));
    expect(boxedGuard,
        { { root.path("box/home/docs/file"), "it lies on a volume that is mounted inside the sandbox." },
            { root.path("box/home/file"), "" } });
    EXPECT_TRUE(TWPrivateMounts::detach(inner) && TWPrivateMounts::detach(root.path("box/home/docs")));
    EXPECT_TRUE(TWPrivateMounts::detach(alias));
}
