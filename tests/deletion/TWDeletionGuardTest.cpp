#include "deletion/TWDeletionGuard.h"

#include "fakes/TWFakeDeletion.h"

namespace {

class TWDeletionGuardTest : public testing::Test, protected TWFakeDeletion {
protected:
    struct Row {
        std::string path;
        std::string reason; // "" when the path may be deleted
    };
    void expect(const std::vector<Row>& rows)
    {
        for (const auto& row : rows) {
            const auto* reason = guard.reason(row.path);
            EXPECT_EQ(reason ? reason : "", row.reason) << row.path;
        }
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
    expect({{"", "the path is empty."}, {"Documents", "the path does not begin with \"/\" or \"~\"."},
        {"~", "the path does not begin with \"/\" or \"~\"."}, {"/", "it is the whole file system."}, {"/tmp", System}, {"/etc", System},
        {"/var/log", System}, {"/home", System}, {"/usr", System}, {"/usr/bin/env", InsideSystem}, {"/proc/self", InsideSystem},
        {"/usr/local", System}, {"/usr/local/nobody", ""}, {"/var/log/nobody", ""}, {home, Home}, {root.path(), AboveHome},
        {home + "/.", Home}, {home + "/Documents/..", Home}, {home + "/Documents/../..", AboveHome}, {home + "/Documents", ""},
        {home + "/.local", AboveData}, {home + "/.local/share", AboveData},
        {dataFolder, "it is the folder where Tidewell keeps its settings."}, {dataFolder + "/Dictionary.plist", ""},
        {root.path("media/usb/stick"), MountPoint}, {root.path("media"), "a volume is mounted inside it."},
        {root.path("media/usb/stick/file"), ""}, {root.path("media/usb/sti"), ""}, {root.path("no/such/folder"), ""}});
    mountTable.points.clear();
    expect({{home + "/Documents", "the list of mounted volumes could not be read."}});
}

TEST_F(TWDeletionGuardTest, JudgesByTheRealPlaceButALinkItselfMayGo)
{
    root.link("to-home", places.home);
    root.link("to-root", root.path());
    root.link("to-usr", "/usr");
    expect({{root.path("to-home"), ""}, {root.path("to-usr"), ""}, {root.path("to-root/home"), Home},
        {root.path("to-usr/share"), InsideSystem}, {root.path("to-home/x"), ""}, {root.path("to-root/to-usr"), ""},
        {root.path("to-home/."), Home}, {root.path("to-home/.."), AboveHome}});
}

TEST_F(TWDeletionGuardTest, KnowsAHomeAndADataFolderThatAreReachedThroughLinks)
{
    auto linked = places;
    linked.home = root.link("linked-home", places.home);
    const TWDeletionGuard linkedGuard(linked, fileSystem, mountTable, root.path("linked-home/.local/share/Tidewell"));
    EXPECT_STREQ(linkedGuard.reason(places.home), Home);
    EXPECT_STREQ(linkedGuard.reason(places.home + "/.local"), AboveData);
}

TEST_F(TWDeletionGuardTest, ASandboxEndsAtItsWalls)
{
    auto boxed = places;
    boxed.sandboxRoot = root.path();
    const TWDeletionGuard boxedGuard(boxed, fileSystem, mountTable, dataFolder);
    root.link("out", "/var/tmp");
    const auto outside = "it lies outside the sandbox.";
    EXPECT_STREQ(boxedGuard.reason("/var/tmp/x"), outside);
    EXPECT_STREQ(boxedGuard.reason("/no/such/folder"), outside);
    EXPECT_STREQ(boxedGuard.reason(root.path("out/x")), outside);
    EXPECT_STREQ(boxedGuard.reason(root.path() + "x"), outside);
    EXPECT_STREQ(boxedGuard.reason(root.path()), "it is the sandbox itself.");
    EXPECT_STREQ(boxedGuard.reason(places.home), Home);
    EXPECT_EQ(boxedGuard.reason(root.path("out")), nullptr);
    EXPECT_EQ(boxedGuard.reason(root.path("var/log")), nullptr);
}
