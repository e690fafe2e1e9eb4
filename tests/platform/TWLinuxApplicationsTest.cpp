#include "platform/linux/TWLinuxApplications.h"

#include "builders/TWProgram.h"
#include "contracts/TWApplicationsContract.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxProcesses.h"
#include "platform/linux/TWLinuxProgram.h"
#include "platform/posix/TWPosixOwnFiles.h"

#include <chrono>
#include <csignal>
#include <thread>

namespace {

// A home and two data folders of the system below a throwaway folder.
struct Machine {
    Machine()
    {
        places.home = root.folder("home");
        places.configHome = root.path("home/.config");
        places.dataHome = root.path("home/.local/share");
        places.stateHome = root.path("home/.local/state");
        session.dataFolders = { root.path("near"), root.path("far"), root.path("near") };
        session.programFolders = { root.path("bin"), "/bin" };
        session.desktops = { "KDE", "Other" };
    }
    std::string write(const std::string& file, const std::string& lines) const
    {
        return root.write(file, "[Desktop Entry]\nType=Application\n" + lines);
    }
    TWLinuxApplications applications() const { return { places, fileSystem, files, session }; }
    std::string installed() const
    {
        std::string text;
        for (const auto& application : applications().installed())
            text += application.identifier + "=" + application.displayName + " ";
        return text;
    }

    TWTemporaryFolder root;
    TWLinuxFileSystem fileSystem;
    TWPosixOwnFiles files;
    TWPlaces places;
    TWLinuxApplications::Session session;
};

struct Real {
    Real()
    {
        machine.write("far/applications/one.desktop", "Name=One\nExec=true\n");
        machine.write(
            "near/applications/org.kde.two.desktop", "Name=Two\nName[de]=Zwei\nIcon=two\nExec=env A=b true %U\n");
    }
    TWApplications& applications() { return real; }

    Machine machine;
    TWLinuxApplications real = machine.applications();
};

// A copy of "sleep" with a name of its own, or any other command, that ends with the scope.
class Running {
public:
    Running(const Machine& machine, TWProgram::Words command)
        : program_(machine.root, std::move(command))
    {
    }
    ~Running() { end(); }
    void end()
    {
        if (!ended_) {
            kill(program_.process(), SIGKILL);
            program_.wait();
        }
        ended_ = true;
    }

private:
    TWProgram program_;
    bool ended_ = false;
};

// A process takes some time to become another program.
bool soonRuns(const Machine& machine, const std::string& source)
{
    using namespace std::chrono_literals;
    for (int turn = 0; turn < 1000; ++turn, std::this_thread::sleep_for(10ms)) {
        if (machine.applications().running().runs(source))
            return true;
    }
    return false;
}

}

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TWApplicationsContract, Real);

TEST(TWLinuxApplicationsTest, ListsWhatTheDesktopShows)
{
    const Machine machine;
    const auto write
        = [&](const std::string& file, const std::string& lines) { machine.write(file, lines + "\nExec=true\n"); };
    write("far/applications/seen.desktop", "Name=zebra\nName[xx]=Yak\nOnlyShowIn=GNOME;KDE;");
    write("far/applications/kde/deep/foo.desktop", "Name=b");
    write("far/applications/noname.desktop", "");
    machine.write("far/applications/bus.desktop", "Name=C\nDBusActivatable=true\n");
    int number = 0;
    for (const auto* line : { "Hidden=true", "NoDisplay=true", "OnlyShowIn=GNOME;", "NotShowIn=KDE;", "Type=Link",
             "TryExec=missing-program", "Exec=/missing/program", "Exec=", "Exec='true" })
        machine.write("far/applications/absent" + std::to_string(++number) + ".desktop",
            "Name=x\nExec=true\n" + std::string(line) + "\n");
    for (const auto* name : { "mine", "deleted", "broken" })
        write(std::string("far/applications/") + name + ".desktop", "Name=theirs");
    write("home/.local/share/applications/mine.desktop", "Name=Mine");
    write("near/applications/deleted.desktop", "Hidden=true");
    machine.root.write("near/applications/broken.desktop", "nonsense");
    machine.root.link("near/applications/circle", "..");
    EXPECT_EQ(machine.installed(), "kde-deep-foo=b bus=C mine=Mine noname=true seen=zebra ");
    setenv("LANGUAGE", "xx", 1);
    EXPECT_EQ(machine.installed(), "kde-deep-foo=b bus=C mine=Mine noname=true seen=Yak ");
    std::string problem;
    const auto seen = machine.applications().open(machine.root.path("far/applications/seen.desktop"), problem);
    unsetenv("LANGUAGE");
    EXPECT_EQ(seen->name + seen->executable, "zebratrue");
    EXPECT_EQ(
        machine.applications().open(machine.root.path("far/applications/kde/deep/foo.desktop"), problem)->identifier,
        "kde-deep-foo");
}

TEST(TWLinuxApplicationsTest, ASandboxReadsNoDataFolderOfTheRealHome)
{
    TWPlaces places;
    places.realHomes = { "/home/me", "/" };
    setenv("XDG_DATA_DIRS", "/home/me/exports:relative::/usr/share/:/home/me/box/share", 1);
    using Folders = std::vector<std::string>;
    EXPECT_EQ(TWLinuxApplications::Session::current(places).dataFolders,
        (Folders{ "/home/me/exports", "/usr/share", "/home/me/box/share" }));
    places.sandboxRoot = "/home/me/box";
    EXPECT_EQ(
        TWLinuxApplications::Session::current(places).dataFolders, (Folders{ "/usr/share", "/home/me/box/share" }));
    unsetenv("XDG_DATA_DIRS");
}

TEST(TWLinuxApplicationsTest, SurvivesHostileFiles)
{
    const Machine machine;
    const auto path = [&](const std::string& name) { return machine.root.path("near/applications/" + name); };
    machine.write("near/applications/nameless.desktop", "Name=\xFFx\nIcon=\xFF\nExec=/bin/true\n");
    const std::string unusual = "near/applications/\xFF\n.desktop";
    machine.write(unusual, "Name=a\\nb\nExec=true\n");
    const auto huge = machine.write("near/applications/huge.desktop", "Name=x\nExec=true\n");
    ASSERT_EQ(truncate(huge.c_str(), off_t{ 1 } << 30), 0);
    ASSERT_EQ(mkfifo(path("pipe.desktop").c_str(), 0600), 0);
    machine.root.folder("near/applications/folder.desktop");
    machine.root.link("near/applications/dangling.desktop", "nowhere");
    machine.root.link("near/applications/linked.desktop", "pipe.desktop");
    machine.root.write("near/applications/text", "");
    EXPECT_EQ(machine.installed(),
        "\xFF\n=a\xE2\x90\x8A"
        "b nameless=true ");
    const auto applications = machine.applications();
    for (const auto* name : { "huge.desktop", "pipe.desktop", "folder.desktop", "linked.desktop" }) {
        std::string problem;
        EXPECT_FALSE(applications.open(path(name), problem)) << name;
        EXPECT_EQ(problem, "\"" + path(name) + "\" does not describe an application.");
    }
    for (const auto* name : { "dangling.desktop", "missing", "text", "" }) {
        std::string problem;
        EXPECT_FALSE(applications.open(*name ? path(name) : "", problem)) << name;
        EXPECT_NE(problem, "") << name;
    }
    std::string problem;
    EXPECT_EQ(applications.open(path("nameless.desktop"), problem)->name, "");
    EXPECT_EQ(
        applications.open("/bin/true", problem), (TWApplication{ "true", "", "true", "true", "", "/bin/true", "" }));
}

TEST(TWLinuxApplicationsTest, FindsTheProgramThatACommandStarts)
{
    const std::pair<const char*, const char*> commands[] = {
        { "kate -b %U", "kate" },
        { "\"/opt/with blank/prog\" %f", "/opt/with blank/prog" },
        { "env -u X -- A=1 B=/x prog %F", "prog" },
        { "env GDK_BACKEND=x11 nice -n 5 prog", "prog" },
        { "sh -c 'cd /opt/x && A=1 exec ./prog \"$@\"'", "./prog" },
        { "bash -lc \"prog -c x\"", "prog" },
        { "sh -e /opt/run.sh", "/opt/run.sh" },
        { "/usr/bin/python3.11 -O /usr/share/x/x.py", "/usr/share/x/x.py" },
        { "python3.11 %f", "python3.11" },
        { "java -jar /opt/x.jar", "/opt/x.jar" },
        { "/usr/bin/flatpak run --branch=stable --command=okular org.kde.okular @@u %U @@", "okular" },
        { "flatpak run org.videolan.VLC", "VLC" },
        { "env HINT=x /snap/bin/firefox %u", "/snap/bin/firefox" },
        { "env", "" },
        { "", "" },
        { "'open", "" },
    };
    for (const auto& [command, program] : commands)
        EXPECT_EQ(TWLinuxProgram::startedBy(TWLinuxProgram::words(command)), program) << command;

    const auto arguments
        = [](const char* command) { return TWLinuxProgram::arguments(TWLinuxProgram::words(command)); };
    using Words = std::vector<std::string>;
    EXPECT_EQ(arguments("env A=1 prog -x %U"), Words{ "-x" });
    EXPECT_EQ(arguments("python3 -O /opt/x.py %f"), Words());
    for (const auto* command : { "sh -c 'prog x'", "flatpak run org.foo.Bar", "env" })
        EXPECT_FALSE(arguments(command)) << command;
}

TEST(TWLinuxApplicationsTest, FindsTheApplicationOfAControlGroup)
{
    const std::pair<const char*, const char*> lines[] = {
        { "0::/user.slice/user@1000.service/app.slice/app-gnome-org.gnome.Foo-12.scope", "org.gnome.Foo" },
        { "0::/app.slice/app-org.kde.okular-0a1b.scope/below", "org.kde.okular" },
        { "0::/app-flatpak-org.foo.with-dash-77.scope", "org.foo.with-dash" },
        { "1:name=systemd:/app-gnome-firefox\\x2desr-9.scope", "firefox-esr" },
        { "0::/app-org.kde.kate@9f3.service", "org.kde.kate" },
        { "0::/snap.firefox.firefox-01234567-89ab-cdef-0123-456789abcdef.scope", "firefox_firefox" },
        { "0::/app.slice/app-org.gnome.Terminal.slice/gnome-terminal-server.service", "org.gnome.Terminal" },
        { "0::/app.slice/app-org.gnome.Terminal.slice/vte-spawn-0123.scope", "" },
        { "0::/user.slice/session-1.scope", "" },
        { "0::/app-.scope", "" },
        { "", "" },
    };
    for (const auto& [line, application] : lines)
        EXPECT_EQ(TWLinuxUnitOfControlGroup(line).application, application) << line;
}

TEST(TWLinuxApplicationsTest, PreferenceFilesAreBelowTheFoldersOfTheApplication)
{
    const Machine machine;
    const auto applications = machine.applications();
    TWApplication okular{ "org.kde.okular", "Okular", "okular", "", "", "", "" };
    const auto files = applications.preferenceFiles(okular);
    const std::vector<std::string> first{ "okularrc", "okular/okular.conf", "okular/okularrc", "org.kde.okular.conf",
        "kde/okular.conf", "Okular/Okular.conf" };
    for (std::size_t i = 0; i < first.size(); ++i)
        EXPECT_EQ(files[i], machine.places.configHome + "/" + first[i]);
    EXPECT_NE(std::find(files.begin(), files.end(), machine.places.stateHome + "/okularstaterc"), files.end());
    EXPECT_EQ(std::set<std::string>(files.begin(), files.end()).size(), files.size());

    okular.flatpak = okular.identifier;
    const auto own = machine.places.home + "/.var/app/org.kde.okular";
    EXPECT_EQ(applications.preferenceFiles(okular)[0], own + "/config/okularrc");
    EXPECT_EQ(applications.sharedFileList(okular), own + "/data/org.kde.okular/recently-used.xbel");

    TWApplication writer{ "libreoffice-writer", "../..", "..", "", "", "", "../../x" };
    EXPECT_EQ(applications.preferenceFiles(writer)[0],
        machine.places.configHome + "/libreoffice/4/user/registrymodifications.xcu");
    for (const auto& file : applications.preferenceFiles(writer))
        EXPECT_EQ(file.find("/../"), std::string::npos) << file;
}

TEST(TWLinuxApplicationsTest, KnowsWhatRunsUntilItEnds)
{
    Machine machine;
    std::filesystem::create_directories(machine.root.path("bin"));
    const auto copy = [&](const std::string& name) {
        std::filesystem::copy_file("/bin/sleep", machine.root.path(name));
        return machine.root.path(name);
    };
    machine.write("far/applications/one.desktop", "Name=Tests Name\nName[de]=x\nExec=env A=1 Tidewell-sleeper %U\n");
    machine.write("far/applications/two.desktop", "Name=Wrapped\nNoDisplay=true\nExec=tidewell-wrapper\n");
    machine.write("far/applications/three.desktop", "Name=Script\nExec=tidewell-script.sh\n");
    machine.write("far/applications/kde/four.desktop", "Name=Launched\nExec=something-else\n");
    machine.write("far/applications/five.desktop", "Name=Idle\nExec=tidewell-idle\n");
    machine.root.folder("lib");
    machine.root.link("bin/tidewell-wrapper", "../lib/tidewell-real");
    ASSERT_EQ(mkfifo(machine.root.path("pipe").c_str(), 0600), 0);
    const auto script
        = machine.root.write("bin/tidewell-script.sh", "#!/bin/sh\nread line <" + machine.root.path("pipe") + "\n");
    chmod(script.c_str(), 0700);
    std::filesystem::copy_file("/bin/sleep", machine.root.path("lib/tidewell-real"));

    Running one(machine, { copy("bin/tidewell-sleeper"), "600" });
    Running two(machine, { copy("lib/tidewell-real.bin"), "600" });
    Running three(machine, { script });
    const auto launched = machine.root.path("far/applications/kde/four.desktop");
    Running four(machine,
        { "/bin/sh", "-c",
            "export GIO_LAUNCHED_DESKTOP_FILE=" + launched + " GIO_LAUNCHED_DESKTOP_FILE_PID=$$; exec "
                + copy("bin/tidewell-launched") + " 600" });
    for (const auto* source : { "Tests Name", "TIDEWELL-sleeper", "Wrapped", "Script", "tidewell-script", "Launched" })
        EXPECT_TRUE(soonRuns(machine, source)) << source;
    for (const auto* source : { "Idle", "x", "tests name", "600", "" })
        EXPECT_FALSE(machine.applications().running().runs(source)) << source;

    machine.places.sandboxRoot = machine.root.path("lib");
    EXPECT_FALSE(machine.applications().running().runs("Tests Name"));
    EXPECT_TRUE(machine.applications().running().runs("Wrapped"));
    machine.places.sandboxRoot = "";
    one.end();
    three.end();
    four.end();
    for (const auto* source : { "Tests Name", "tidewell-sleeper", "Script", "Launched" })
        EXPECT_FALSE(machine.applications().running().runs(source)) << source;
}
