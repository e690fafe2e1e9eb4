#include "platform/linux/TWLinuxWorkspace.h"

#include "builders/TWProgram.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxListedApplications.h"
#include "platform/linux/TWLinuxProgram.h"
#include "platform/posix/TWPosixOwnFiles.h"
#include "support/TWPath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <list>
#include <set>
#include <thread>

namespace {

using Words = std::vector<std::string>;
using Copies = std::multiset<std::string>; // an application's name and a process
using namespace std::chrono_literals;

// Programs and .desktop files below a throwaway folder, in a session without a screen and without a message bus.
class TWLinuxWorkspaceTest : public testing::Test {
protected:
    TWLinuxWorkspaceTest()
    {
        for (const auto* variable : { "DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR" })
            unsetenv(variable);
        places.dataHome = root.path("data");
        session.programFolders = { root.path("bin"), "/bin" };
    }
    ~TWLinuxWorkspaceTest()
    {
        for (const auto& program : programs)
            end(program);
        for (const auto process : others) {
            if (contents(process, "cmdline").find(root.path()) != std::string::npos) // it has not ended
                kill(process, SIGKILL);
        }
    }

    std::string program(const std::string& name) const
    {
        root.folder(std::string(TWPath::parent(name)));
        std::filesystem::copy_file("/bin/sleep", root.path(name));
        return root.path(name);
    }
    std::string script(const std::string& name, const std::string& text) const
    {
        const auto path = root.write(name, "#!/bin/sh\n" + text + "\n");
        chmod(path.c_str(), 0700);
        return path;
    }
    std::string entry(const std::string& name, const std::string& lines) const
    {
        return root.write(
            "data/applications/" + name + ".desktop", "[Desktop Entry]\nType=Application\nName=x\n" + lines);
    }
    pid_t start(Words command)
    {
        programs.emplace_back(root, std::move(command), Words{ "PATH=/bin:/usr/bin" });
        return programs.back().process();
    }
    static void end(const TWProgram& program)
    {
        kill(program.process(), SIGKILL);
        program.wait();
    }

    std::unique_ptr<TWLinuxWorkspace> workspace() const
    {
        return std::make_unique<TWLinuxWorkspace>(places, fileSystem, files, session);
    }
    static std::vector<TWRunningCopy> look(TWRunningCopies& copies) { return *copies.runningApplications({}); }
    static TWRunningCopy copyOf(TWRunningCopies& copies, const std::string& application)
    {
        const auto known = look(copies);
        const auto found = std::find_if(
            known.begin(), known.end(), [&](const auto& copy) { return copy.application == application; });
        return found == known.end() ? TWRunningCopy() : *found;
    }
    static Copies found(TWRunningCopies& copies)
    {
        Copies lines;
        for (const auto& copy : look(copies))
            lines.insert(line(std::string(TWPath::lastComponent(copy.application)), static_cast<pid_t>(copy.process)));
        return lines;
    }
    static std::string line(const std::string& application, pid_t process)
    {
        return application + " " + std::to_string(process);
    }
    // A process takes some time to become another program or to end.
    static testing::AssertionResult soonFinds(TWRunningCopies& copies, const Copies& expected)
    {
        for (int turn = 0; turn < 1000 && found(copies) != expected; ++turn)
            std::this_thread::sleep_for(10ms);
        return found(copies) == expected ? testing::AssertionSuccess()
                                         : testing::AssertionFailure()
                << testing::PrintToString(found(copies)) << " instead of " << testing::PrintToString(expected);
    }
    // The identifier that a program has written into a file.
    pid_t soonWritten(const std::string& name)
    {
        for (int turn = 0; turn < 1000; ++turn, std::this_thread::sleep_for(10ms)) {
            if (const auto text = root.read(name); text.ends_with('\n'))
                return others.emplace_back(std::stoi(text));
        }
        return 0;
    }
    static std::string contents(pid_t process, const std::string& name)
    {
        std::ifstream file("/proc/" + std::to_string(process) + "/" + name);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    static bool isAlive(pid_t process)
    {
        const auto stat = contents(process, "stat");
        return !stat.empty() && stat.at(stat.rfind(')') + 2) != 'Z';
    }
    static bool soonEnds(pid_t process)
    {
        for (int turn = 0; turn < 1000 && isAlive(process); ++turn)
            std::this_thread::sleep_for(10ms);
        return !isAlive(process);
    }

    TWTemporaryFolder root;
    TWLinuxFileSystem fileSystem;
    TWPosixOwnFiles files;
    TWPlaces places;
    TWLinuxApplications::Session session;
    std::list<TWProgram> programs;
    std::vector<pid_t> others;
};

}

TEST_F(TWLinuxWorkspaceTest, FindsTheCopiesOfAProgramAndNoOthers)
{
    const auto victim = program("bin/victim");
    entry("victim", "Exec=env A=1 victim --option %U\n");
    entry("hidden", "Exec=victim --other %U\nNoDisplay=true\n");
    const auto outside = root.write("desk/own.desktop", root.read("data/applications/victim.desktop"));
    entry("folder", "Exec=victim /folder\nNoDisplay=true\n");
    const auto place = workspace();
    const auto copies = place->runningCopies({ victim, root.path("data/applications/victim.desktop"), outside,
        root.path("data/applications/folder.desktop"), root.path("missing.desktop"), root.path("missing") });
    EXPECT_EQ(found(*copies), Copies());

    const auto one = start({ victim, "600" });
    const auto two = start({ "/bin/sh", "-c", "sleep 0.1; exec " + victim + " 600" });
    start({ program("elsewhere/victim"), "600" });
    start({ "/bin/sleep", "600" });
    const Copies ofTwo{ line("victim", two), line("victim.desktop", two), line("own.desktop", two) };
    auto ofBoth = ofTwo;
    ofBoth.insert({ line("victim", one), line("victim.desktop", one), line("own.desktop", one) });
    EXPECT_TRUE(soonFinds(*copies, ofBoth));
    const auto known = look(*copies);
    EXPECT_LT(std::abs(known[0].since / 1'000'000'000 - std::time(nullptr)), 60);

    std::filesystem::remove(victim); // an update replaces it
    program("bin/victim");
    EXPECT_EQ(found(*workspace()->runningCopies({ victim })), (Copies{ line("victim", one), line("victim", two) }));
    kill(one, SIGKILL); // a zombie until the end of the test
    EXPECT_TRUE(soonFinds(*copies, ofTwo));
    entry("part", "Exec=victim --part\n"); // now two applications of the menus share the program
    EXPECT_EQ(found(*workspace()->runningCopies({ root.path("data/applications/victim.desktop") })), Copies());

    places.sandboxRoot = root.path("elsewhere");
    EXPECT_EQ(found(*workspace()->runningCopies({ victim })), Copies());
    EXPECT_EQ(found(*workspace()->runningCopies({ root.path("elsewhere/victim") })),
        Copies{ line("victim", std::next(programs.begin(), 2)->process()) });
}

TEST_F(TWLinuxWorkspaceTest, NeverFindsWhatStartedTidewell)
{
    std::error_code error;
    const auto parent = std::filesystem::read_symlink("/proc/" + std::to_string(getppid()) + "/exe", error).string();
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error).string();
    const auto place = workspace();
    for (const auto& copy : look(*place->runningCopies({ parent, self }))) {
        EXPECT_NE(copy.process, getppid());
        EXPECT_NE(copy.application, self);
    }
}

TEST_F(TWLinuxWorkspaceTest, FindsWhatAScriptOrTheDesktopHasStarted)
{
    const auto other = program("lib/some/other");
    const auto inner = program("lib/inner/program");
    script("bin/wrapper", "exec " + program("lib/wrapper/wrapper") + " 600");
    const auto lasting = script("bin/lasting", inner + " 600 & echo $! >" + root.path("lasting") + "; wait");
    entry("wrapper", "Exec=wrapper\n");
    entry("launched", "Exec=sh -c 'cd / && " + other + " 600'\n");
    const auto place = workspace();
    const auto copies = place->runningCopies(
        { lasting, root.path("data/applications/wrapper.desktop"), root.path("data/applications/launched.desktop") });
    EXPECT_EQ(found(*copies), Copies());
    const auto script = start({ lasting });
    const auto wrapper = start({ root.path("bin/wrapper") });
    const auto launched = start({ "/bin/sh", "-c",
        "export GIO_LAUNCHED_DESKTOP_FILE=" + root.path("data/applications/launched.desktop")
            + " GIO_LAUNCHED_DESKTOP_FILE_PID=$$; exec " + other + " 600" });
    const Copies lines{ line("wrapper.desktop", wrapper), line("launched.desktop", launched) };
    const auto withLasting = [&](pid_t process) {
        auto more = lines;
        more.insert(line("lasting", process));
        return more;
    };
    EXPECT_TRUE(soonFinds(*copies, withLasting(script)));
    const auto left = soonWritten("lasting");
    const auto runs = [&] { return std::filesystem::read_symlink("/proc/" + std::to_string(left) + "/exe"); };
    while (runs() != inner)
        std::this_thread::sleep_for(1ms);
    look(*copies);
    kill(script, SIGKILL); // what it has started is still the application
    EXPECT_TRUE(soonFinds(*copies, withLasting(left)));
    copies->terminate(copyOf(*copies, lasting));
    EXPECT_TRUE(soonFinds(*copies, lines));
}

TEST_F(TWLinuxWorkspaceTest, EndsTheWholeCopyButNoOtherApplication)
{
    const auto application = program("bin/application");
    entry("application", "Exec=application %U\n");
    const auto job = script("bin/job", "echo $$ >\"$1.job\"; trap '' TERM; while :; do sleep 0.001; done");
    const auto started = script("bin/started", "echo $$ >\"$1.started\"; exec " + application + " 600");
    const auto terminal = script("bin/terminal",
        "trap '' TERM; setsid " + job + " $1 & setsid " + started + " $1 & while :; do sleep 600 & wait; done");
    const auto place = workspace();
    const auto copies = place->runningCopies({ terminal, application });
    const auto one = start({ terminal, root.path("one") });
    const auto two = start({ terminal, root.path("two") });
    const auto oneJob = soonWritten("one.job");
    const auto twoJob = soonWritten("two.job");
    const auto oneStarted = soonWritten("one.started");
    const auto twoStarted = soonWritten("two.started");
    const Copies all{ line("terminal", one), line("terminal", two), line("application", oneStarted),
        line("application", twoStarted) };
    ASSERT_TRUE(soonFinds(*copies, all));

    const auto first = copyOf(*copies, terminal);
    auto later = first; // the identifier has gone to another process
    ++later.start;
    copies->forceTerminate(later);
    copies->terminate(first);
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(found(*copies), all) << "both ignore SIGTERM";
    copies->forceTerminate(first);
    ASSERT_EQ(first.process, one);
    EXPECT_TRUE(soonEnds(one) && soonEnds(oneJob));
    EXPECT_TRUE(isAlive(oneStarted) && isAlive(two) && isAlive(twoJob) && isAlive(twoStarted));
    EXPECT_FALSE(found(*copies).contains(line("terminal", one)));
}

TEST(TWLinuxListedApplicationsTest, KnowsTheProgramBehindAScript)
{
    struct Row {
        const char* script;
        const char* executable;
        bool isBehind;
    };
    const Row rows[] = {
        { "/usr/bin/chromium", "/usr/lib/chromium/chromium", true },
        { "/usr/bin/chromium", "/usr/lib/chromium/chrome-sandbox", false },
        { "/usr/bin/chromium", "/usr/local/bin/chromium", false },
        { "/usr/bin/chromium", "/home/me/chromium/chromium", false },
        { "/usr/lib/libreoffice/program/soffice", "/usr/lib/libreoffice/program/soffice.bin", true },
        { "/usr/share/code/bin/code", "/usr/share/code/code", true },
        { "/opt/google/chrome/google-chrome", "/opt/google/chrome/chrome", true },
        { "/opt/suite/writer.sh", "/opt/suite/calc", false },
        { "/home/me/run.sh", "/home/me/other", false },
        { "/home/me/app/run.sh", "/home/me/app/run", true },
    };
    for (const auto& row : rows)
        EXPECT_EQ(
            TWLinuxIsBehindScript(row.script, "exec \"$HERE/chrome\" || log /calculate", row.executable), row.isBehind)
            << row.script << row.executable;
}

TEST(TWLinuxListedApplicationsTest, KnowsTheFirstProcessOfAUnit)
{
    const auto process = [](const char* unit) {
        TWLinuxKnownProcess made;
        made.process = 12;
        made.unit = TWLinuxUnitOfControlGroup(std::string("0::/user.slice/") + unit);
        return made;
    };
    const auto manager = process("init.scope");
    const auto shell = process("app-gnome-shell.service");
    const auto scope = process("app-gnome-org.gnome.Terminal-77.scope");
    auto service = process("app-org.kde.konsole@0f1e.service");
    EXPECT_TRUE(TWLinuxIsFirstOfUnit(process("app-gnome-org.gnome.Terminal-12.scope"), &manager));
    EXPECT_TRUE(TWLinuxIsFirstOfUnit(scope, &shell));
    EXPECT_FALSE(TWLinuxIsFirstOfUnit(scope, &scope)) << "runs in the terminal";
    EXPECT_FALSE(TWLinuxIsFirstOfUnit(scope, &manager)) << "was left behind by the terminal";
    EXPECT_FALSE(TWLinuxIsFirstOfUnit(service, nullptr));
    service.origin.isStartedByManager = true;
    EXPECT_TRUE(TWLinuxIsFirstOfUnit(service, &manager));
}
