#include "TWProgramTest.h"

#include <csignal>
#include <pwd.h>
#include <sys/file.h>
#include <thread>

namespace {

using TWSandboxTest = TWProgramTest;

TEST_F(TWSandboxTest, TheRealHomeAndWhatHoldsItIsNoSandbox)
{
    folder_.link("alias", home_);
    folder_.link("above", folder_.path());
    folder_.link("box/home", home_);
    const auto* account = getpwuid(getuid());
    for (const auto& path : Lines{ "/usr/share/doc", "/usr/share/new/box", home_ + "/.local", home_ + "/.config",
             home_ + "/.config/Tidewell/new", account ? account->pw_dir : "/", "/", "//.", home_, home_ + "/", "~",
             folder_.path(), folder_.path("alias"), folder_.path("above"), "/proc/self/root", folder_.path("box") }) {
        expectRefused(run({ "words", "add", "x", "--sandbox", path }), path);
        expectRefused(run({ "--sandbox=" + path }), path); // the window
        expectRefused(run({ "demo", path }), path);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home_));

    // No path tells that a bind mount is the same folder. The mount is seen by the child only.
    const auto mounted = folder_.folder("mounted");
    for (const auto& held : { home_, folder_.path() }) {
        const auto bind = [&] { return TWProgram::mountPrivately(held, mounted); };
        const auto result = start({ "words", "add", "x", "--sandbox", mounted }, bind).wait();
        if (result.status == TWProgram::CannotPrepare)
            GTEST_SKIP() << "mounting is not permitted here";
        expectRefused(result, held);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home_));
}

TEST_F(TWSandboxTest, NobodyElseCanChangeIt)
{
    using std::filesystem::perms;
    const auto box = folder_.folder("open/box");
    const auto add = [&](const std::string& sandbox) { return run({ "words", "add", "x", "--sandbox", sandbox }); };
    const auto allow = [&](const std::string& name, perms permitted) {
        std::filesystem::permissions(folder_.path(name), permitted);
    };
    allow("open", perms::all);
    expectRefused(add(box), box);
    expectRefused(add(folder_.path("open/new/box")), "open/new/box");
    EXPECT_FALSE(folder_.exists("open/new") || folder_.exists("open/box/home")) << "nothing is made there";
    allow("open", perms::all | perms::sticky_bit);
    EXPECT_EQ(add(box).status, 0);
    for (const std::string inner : { "", "home", "home/.config/Tidewell", "home/.local/share/Tidewell", "run" }) {
        const auto name = "open/box/" + inner;
        folder_.folder(name);
        allow(name, perms::all | perms::sticky_bit);
        expectRefused(add(box), box);
        allow(name, perms::owner_all);
    }
    EXPECT_EQ(add(box).status, 0);
}

TEST_F(TWSandboxTest, NoLinkLeadsOutOfIt)
{
    const auto outside = folder_.folder("outside/Tidewell");
    const std::string data = Data;
    int number = 0;
    for (const auto& name : Lines{ "home", "home/.local", data + "Dictionary.plist", data + ".window.socket",
             data + "anything", "home/.config", "run" }) {
        const auto box = "box" + std::to_string(++number);
        folder_.link(box + "/" + name, outside);
        expectRefused(run({ "words", "add", "x", "--sandbox", folder_.path(box) }), name);
        folder_.link(box + "dangling/" + name, "nowhere");
        expectRefused(run({ "words", "list", "--sandbox", folder_.path(box + "dangling") }), name,
            name == "home" ? 1 : 2); // where no home can be made there is no sandbox
    }
    EXPECT_TRUE(std::filesystem::is_empty(outside));
    folder_.link("box/home/.config", folder_.folder("box/elsewhere"));
    EXPECT_EQ(run({ "words", "add", "x", "--sandbox", folder_.path("box") }).status, 0);
}

TEST_F(TWSandboxTest, APathThatMeansTwoThingsIsRefused)
{
    folder_.folder("elsewhere/deep");
    folder_.folder("home/plain");
    folder_.link("home/lnk", folder_.path("elsewhere/deep"));
    const auto inHome = [this] { return chdir(home_.c_str()) == 0; };
    for (const std::string path : { "~/lnk/../Documents", "lnk/../Documents", "./plain/../lnk/..",
             "plain/../lnk/../no/such/folder", "lnk/plain/../../x" }) {
        expectRefused(start({ "files", "add", path }, inHome).wait(), path);
        expectRefused(start({ "words", "add", "x", "--sandbox", path }, inHome).wait(), path);
        expectRefused(start({ "demo", path }, inHome).wait(), path);
    }
    expectRefused(run({ "files", "add", home_ + "/lnk/.." }), "absolute");
    const auto nowhere = [this] {
        return chdir(folder_.folder("gone").c_str()) == 0 && std::filesystem::remove(folder_.path("gone"));
    };
    expectRefused(start({ "files", "add", "data" }, nowhere).wait(), "in a folder that is gone");
    EXPECT_FALSE(folder_.exists("elsewhere/Documents") || folder_.exists("home/Documents"));
    folder_.write("home/.local/share/Tidewell/FilesRules.plist", "<plist><array/></plist>");
    for (const std::string path : { "~/plain/../a", "plain/.././/b", "..c", "lnk", "~/.cache/d/" })
        EXPECT_EQ(start({ "files", "add", path }, inHome).wait().status, 0) << path;
    EXPECT_EQ(run({ "files", "list" }).out,
        "1   on   item          ~/a  (a)\n2   on   item          ~/b  (b)\n3   on   item          ~/..c  (..c)\n"
        "4   on   item          ~/lnk  (lnk)\n5   on   item          ~/.cache/d  (d)\n");
}

TEST_F(TWSandboxTest, NothingIsTouchedUnlessAllPlacesAreCertain)
{
    folder_.link("lnk", folder_.folder("other/deep"));
    trash("a");
    std::filesystem::copy_file(TIDEWELL_PROGRAM, folder_.folder("alone/bin") + "/tidewell");
    const std::pair<std::string, std::string> rows[]
        = { { TIDEWELL_PROGRAM, folder_.path("lnk/../home") }, { folder_.path("alone/bin/tidewell"), home_ } };
    for (const auto& [program, home] : rows) {
        program_ = program;
        home_ = home;
        for (const Words& words : { Words{ "clean", "--only", "trash" }, { "words", "add", "x" }, { "paths" },
                 { "demo" }, { "words", "list", "--sandbox", folder_.path("box") }, {} })
            expectRefused(run(words), home + (words.empty() ? "" : words[0]), 1);
    }
    EXPECT_TRUE(folder_.exists("home" + std::string(Trash) + "/files/a"));
    EXPECT_FALSE(folder_.exists("box") || folder_.exists(Data) || folder_.exists("other/home"));
}

TEST_F(TWSandboxTest, WordsGoToTheirOwnWindowOnly)
{
    const auto lock = open(folder_.write(Data + std::string(".lists.lock"), "").c_str(), O_RDWR | O_CLOEXEC);
    const auto window = start({});
    while (!folder_.exists(Data + std::string(".window.socket")))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_EQ(flock(lock, LOCK_EX), 0); // once the window has let it go; from now on only the window can write
    EXPECT_EQ(run({ "words", "add", "ours" }).status, 0);
    EXPECT_EQ(run({ "words", "list" }).out, "ours\n");
    EXPECT_EQ(run({ "words", "add", "\xFF" }).status, 2) << "the window's answer";
    EXPECT_EQ(run({}).status, 0) << "a second start brings the window forward";

    // The window hangs; a second start can be ended nevertheless.
    kill(window.process(), SIGSTOP);
    const auto second = start({});
    const auto state = "../../proc/" + std::to_string(second.process()) + "/stat";
    while (folder_.read(state).find("(tidewell-window) S") == std::string::npos)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    kill(second.process(), SIGTERM);
    EXPECT_EQ(second.wait().status, 1000 + SIGTERM);
    kill(window.process(), SIGCONT);

    // Somebody has laid the real window's socket into a sandbox.
    const auto box = folder_.folder("box");
    const auto boxedData = folder_.folder("box/home/.local/share/Tidewell");
    std::filesystem::create_hard_link(
        folder_.path(Data + std::string(".window.socket")), boxedData + "/.window.socket");
    expectRefused(run({ "words", "add", "theirs", "--sandbox", box }), "from a sandbox", 3);
    EXPECT_EQ(run({ "words", "list" }).out, "ours\n");

    kill(window.process(), SIGHUP);
    EXPECT_EQ(window.wait().status, 0);
    expectRefused(run({ "words", "add", "later" }), "the lists are locked", 3);
    close(lock);
    EXPECT_EQ(run({ "words", "remove", "ours" }).status, 0);
}

}
