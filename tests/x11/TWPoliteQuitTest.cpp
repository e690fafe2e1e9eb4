// Real windows: a private X server with a window manager, a private message bus, and an editor that asks to save.

#include "builders/TWProgram.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxWorkspace.h"
#include "platform/posix/TWPosixOwnFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <list>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto Editor = "/usr/share/applications/org.xfce.mousepad.desktop";

class TWPoliteQuitTest : public testing::Test {
protected:
    void SetUp() override
    {
        for (const auto* tool :
            { "/usr/bin/Xvfb", "/usr/bin/openbox", "/usr/bin/dbus-daemon", "/usr/bin/xdotool", Editor }) {
            if (!std::filesystem::exists(tool))
                GTEST_SKIP() << tool << " is missing; tools/install-dependencies test installs it";
        }
        set("HOME", root.folder("home"));
        set("XDG_RUNTIME_DIR", root.folder("run"));
        server = start({ "/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp" });
        bus = start({ "/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address=1" });
        ASSERT_TRUE(soon([&] { return server->out().ends_with('\n') && bus->out().ends_with('\n'); }));
        set("DISPLAY", ":" + firstLine(*server));
        set("DBUS_SESSION_BUS_ADDRESS", firstLine(*bus));
        // It says too early that it is there, but starts this only when it manages windows.
        const auto managed = root.path("managed");
        manager = start({ "/usr/bin/openbox", "--startup", "/usr/bin/touch " + managed });
        ASSERT_TRUE(soon([&] { return std::filesystem::exists(managed); })) << "no window manager";
        places.desktop = TIDEWELL_DESKTOP;
        session.dataFolders = { "/usr/share" };
        session.programFolders = { "/usr/bin" };
        workspace = std::make_unique<TWLinuxWorkspace>(places, fileSystem, files, session);
        copies = workspace->runningCopies({ Editor });
    }
    ~TWPoliteQuitTest()
    {
        for (auto program = programs.rbegin(); program != programs.rend(); ++program)
            end(*program);
        for (const auto& variable : environment)
            unsetenv(variable.substr(0, variable.find('=')).c_str());
    }

    void set(const std::string& name, const std::string& value)
    {
        setenv(name.c_str(), value.c_str(), 1);
        environment.push_back(name + "=" + value);
    }
    const TWProgram* start(std::vector<std::string> command)
    {
        return &programs.emplace_back(root, std::move(command), environment);
    }
    static void end(const TWProgram& program)
    {
        siginfo_t info{};
        if (waitid(P_PID, static_cast<id_t>(program.process()), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
            return; // already waited for, so the identifier may be another process's
        kill(program.process(), SIGKILL);
        program.wait();
    }
    static std::string firstLine(const TWProgram& program) { return program.out().substr(0, program.out().find('\n')); }
    static bool soon(const std::function<bool()>& isTrue)
    {
        const auto end = std::chrono::steady_clock::now() + 30s;
        while (!isTrue()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(10ms);
        }
        return true;
    }

    // An editor with a window of its own.
    const TWProgram* startEditor()
    {
        const auto before = windows();
        const auto* editor = start({ "/usr/bin/mousepad", "--disable-server" });
        EXPECT_TRUE(soon([&] { return windows() == before + 1; })) << windows();
        return editor;
    }
    std::string xdotool(std::vector<std::string> words) const
    {
        words.insert(words.begin(), "/usr/bin/xdotool");
        return TWProgram(root, words, environment).wait().out;
    }
    std::ptrdiff_t windows() const
    {
        const auto found = xdotool({ "search", "--onlyvisible", "--class", "Mousepad" });
        return std::count(found.begin(), found.end(), '\n');
    }
    bool soonEnds(const TWProgram& program) const
    {
        return soon([&] {
            siginfo_t info{};
            waitid(P_PID, static_cast<id_t>(program.process()), &info, WEXITED | WNOHANG | WNOWAIT);
            return info.si_pid != 0;
        });
    }
    // None if it does not run. Other copies may, on other screens.
    TWRunningCopy copy(const TWProgram& program) const
    {
        const auto running = copies->runningApplications({});
        for (const auto& each : running.value()) {
            if (each.process == program.process())
                return each;
        }
        return {};
    }
    bool runs(const TWProgram& program) const { return copy(program).process != 0; }

    TWTemporaryFolder root;
    std::vector<std::string> environment{ "PATH=/usr/bin:/bin", "GVFS_DISABLE_FUSE=1", "NO_AT_BRIDGE=1",
        "GSETTINGS_BACKEND=memory", "GIO_USE_VFS=local" };
    std::list<TWProgram> programs;
    const TWProgram* server = nullptr;
    const TWProgram* bus = nullptr;
    const TWProgram* manager = nullptr;
    TWLinuxFileSystem fileSystem;
    TWPosixOwnFiles files;
    TWPlaces places;
    TWLinuxApplications::Session session;
    std::unique_ptr<TWLinuxWorkspace> workspace;
    std::unique_ptr<TWRunningCopies> copies;
};

}

TEST_F(TWPoliteQuitTest, AnEditorWithUnsavedTextAsksAndIsLeftAlone)
{
    const auto* editor = startEditor();
    const auto title = [&] { return xdotool({ "getactivewindow", "getwindowname" }); };
    ASSERT_TRUE(soon([&] { return title().find("Mousepad") != std::string::npos; }));
    xdotool({ "type", "unsaved" });
    ASSERT_TRUE(soon([&] { return title().starts_with("*"); }));

    copies->terminate(copy(*editor));
    EXPECT_TRUE(soon([&] { return windows() == 2; })) << "does not ask";
    std::this_thread::sleep_for(300ms); // time to end by a signal
    xdotool({ "key", "Escape" });
    EXPECT_TRUE(soon([&] { return windows() == 1 && title().starts_with("*"); }));
    copies->forceTerminate(copy(*editor));
    EXPECT_TRUE(soonEnds(*editor));
    EXPECT_FALSE(runs(*editor));
}

TEST_F(TWPoliteQuitTest, OnlyTheCopyThatIsAskedClosesItsWindow)
{
    const auto* one = startEditor();
    const auto* two = startEditor();
    copies->terminate(copy(*one));
    EXPECT_TRUE(soonEnds(*one));
    EXPECT_EQ(one->wait().status, 0);
    EXPECT_EQ(windows(), 1);
    EXPECT_TRUE(runs(*two));

    // Without a window manager the window itself is asked.
    end(*manager);
    copies->terminate(copy(*two));
    EXPECT_TRUE(soonEnds(*two));
    EXPECT_EQ(two->wait().status, 0);
}

TEST_F(TWPoliteQuitTest, WithoutWindowsTheBusIsUsed)
{
    const auto* editor = start({ "/usr/bin/mousepad" });
    ASSERT_TRUE(soon([&] { return windows() == 1; })) << windows();
    unsetenv("DISPLAY");
    copies->terminate(copy(*editor));
    EXPECT_TRUE(soonEnds(*editor));
    EXPECT_EQ(editor->wait().status, 0) << "a signal has ended it";
}

TEST_F(TWPoliteQuitTest, AServerThatHangsIsNotWaitedFor)
{
    const auto* editor = startEditor();
    const auto known = copy(*editor);
    kill(server->process(), SIGSTOP);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_FALSE(copies->terminate(known));
    EXPECT_LT(std::chrono::steady_clock::now() - begun, 2500ms);
    const auto script
        = root.write("a.desktop", "[Desktop Entry]\nType=Application\nName=A\nExec=sh -c a\nStartupWMClass=A");
    EXPECT_FALSE(workspace->runningCopies({ script })->runningApplications({})) << "only its windows would tell";
    std::this_thread::sleep_for(300ms); // time to end by a signal
    EXPECT_TRUE(runs(*editor)) << "nobody knows whether it has windows that would ask";
    kill(server->process(), SIGCONT);
}
