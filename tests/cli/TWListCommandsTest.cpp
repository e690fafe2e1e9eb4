#include "TWProgramTest.h"

#include "cli/TWCommandLine.h"
#include "cli/TWCommandRunner.h"
#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeApplication.h"

#include <csignal>

namespace {

const std::string Rules = "home/.local/share/Tidewell/FilesRules.plist";

constexpr auto OneRule
    = R"(<plist version="1.0"><array><dict><key>Active</key><true/><key>Description</key><string>mine</string>)"
      R"(<key>FilePath</key><string>~/mine</string><key>WhatToDelete</key><integer>0</integer></dict></array></plist>)";

class TWListCommandsTest : public TWProgramTest {
protected:
    std::string out(const Words& words)
    {
        const auto result = run(words);
        EXPECT_EQ(std::to_string(result.status) + result.err, "0");
        return result.out;
    }
};

TEST_F(TWListCommandsTest, WrongUseIsOneLineAndStatus2)
{
    const std::vector<Words> table{ { "nonsense" }, { "--nonsense" }, { "clean", "extra" }, { "clean", "--only" },
        { "clean", "--only", "nonsense" }, { "clean", "--only", "clipboard" }, { "clean", "clean" },
        { "clean", "--only", "trash", "--sandbox", "" }, { "settings" }, { "settings", "get", "\xff\n" },
        { "settings", "set", "TrashCleaner", "maybe" }, { "settings", "set", "AutoQuitMode", "99999999999" },
        { "settings", "set", "ApplicationsTimeout", "-1" }, { "words", "add", "\xff" }, { "files", "add", "" },
        { "files", "add", "x", "--what", "nonsense" }, { "keep", "add" }, { "keep", "add", "x", "--pattern", "y" },
        { "keep", "add", "--pattern", "y", "--inside" }, { "keep", "add", "--pattern", "a/b" },
        { "keep", "add", "--pattern", "[z-a]" }, { "keep", "add", "" }, { "logs", "check" },
        { "logs", "uncheck", "x", "--user" }, { "keep", "remove", "99" }, { "applications", "add", "" },
        { "applications", "remove", "1" }, { "volumes", "on", "" }, { "volumes", "off" }, { "files", "remove", "0" },
        { "files", "off", "99999999999999999999" }, { "files", "off", "4000" }, { "demo", home_ } };
    folder_.write("home/not empty", "");
    for (const auto& words : table)
        expectRefused(run(words), words.back());
    EXPECT_NE(run({ "files", "add" }).err.find("\"tidewell files add --help\""), std::string::npos);
    EXPECT_FALSE(folder_.exists(Rules) || folder_.exists(Data + std::string("Dictionary.plist")));
}

TEST_F(TWListCommandsTest, WordsStayExactlyAsTheyWereGiven)
{
    EXPECT_EQ(out({ "words", "list", "--json" }), "");
    out({ "words", "add", "[a,b]", "x,y", "clear", "\xC3\x84rger", "-5" });
    out({ "words", "add", "--", "--json" });
    EXPECT_EQ(out({ "words", "list" }), "[a,b]\nx,y\nclear\n\xC3\x84rger\n-5\n--json\n");
    out({ "words", "remove", "clear", "[a,b]" });
    EXPECT_EQ(run({ "words", "remove", "x,y", "absent" }).status, 1);
    EXPECT_EQ(out({ "--json", "words", "list" }),
        "{\"word\":\"x,y\"}\n{\"word\":\"\xC3\x84rger\"}\n{\"word\":\"-5\"}\n{\"word\":\"--json\"}\n");
    out({ "words", "clear" });
    EXPECT_EQ(out({ "words", "list", "--json" }), "");
}

TEST_F(TWListCommandsTest, LogsAreCheckedByTheirPaths)
{
    const auto logs = home_ + "/.local/state/log/";
    folder_.write("home/.local/state/log/program/a.log", "x");
    folder_.write("home/precious/file", "x");
    folder_.link("home/.local/state/log/link", home_ + "/precious");
    const auto list = [&] {
        auto all = lines(out({ "logs", "list" }));
        std::erase_if(all, [](const auto& line) { return line.find("System Logs") != line.npos; });
        return all;
    };
    const auto before = list();
    EXPECT_EQ(before.size(), 2U);
    out({ "logs", "check", logs + "program/a.log" });
    EXPECT_EQ(list().back(), "on           a.log  ~/.local/state/log/program/a.log");
    EXPECT_EQ(lines(out({ "logs", "list", "--json" }))[3],
        R"({"Item":"a.log","ItemPath":"~/.local/state/log/program/a.log","Active":1})");
    out({ "logs", "check", logs + "program" });
    EXPECT_NE(out({ "logs", "check", logs + "program/a.log" }).find("checked already"), std::string::npos);
    EXPECT_NE(run({ "logs", "uncheck", logs + "program/a.log" }).err.find("folder around it"), std::string::npos);
    for (const auto& path : { home_ + "/precious", logs + "link/file", logs + "nothing", home_ })
        EXPECT_EQ(run({ "logs", "check", path }).status, 1) << path;
    out({ "clean", "--only", "logs", "--yes" });
    EXPECT_TRUE(list().back().ends_with("program  (no longer there)"));
    EXPECT_NE(out({ "preview", "--only", "logs" }).find("is not there now: "), std::string::npos);
    EXPECT_NE(out({ "preview", "--only", "logs" }).find("0 items, 0 bytes would be deleted"), std::string::npos);
    folder_.write("home/.local/state/log/program/a.log", "x");
    out({ "logs", "uncheck", logs + "program" });
    EXPECT_EQ(list(), before);
    EXPECT_EQ(run({ "logs", "uncheck", logs + "program" }).status, 1);
    EXPECT_EQ(run({ "logs", "check", "ALL_USER_LOGS" }).status, 1) << "a file of that name";
    out({ "logs", "check", "--user" });
    EXPECT_TRUE(list().front().starts_with("on "));
    out({ "clean", "--only", "logs", "--yes" });
    EXPECT_TRUE(folder_.exists("home/.local/state/log") && folder_.exists("home/precious/file"));
    EXPECT_FALSE(folder_.exists("home/.local/state/log/program") || folder_.exists("home/.local/state/log/link"));
}

TEST_F(TWListCommandsTest, ApplicationsAreAddedByTheirFiles)
{
    const auto editor = folder_.write("home/.local/share/applications/editor.desktop",
        "[Desktop Entry]\nType=Application\nName=Editor\nExec=/bin/true %U\n");
    for (const auto& path : { editor, editor, std::string("/bin/true") })
        out({ "applications", "add", path });
    out({ "applications", "remove", "2" });
    EXPECT_EQ(run({ "applications", "add", folder_.write("home/text", "") }).status, 1);
    std::filesystem::remove(editor);
    EXPECT_EQ(out({ "applications", "list" }),
        "1   Editor  ~/.local/share/applications/editor.desktop  (not installed any more)\n2   true  /bin/true\n");
    EXPECT_EQ(out({ "applications", "list", "--json" }),
        R"({"Path":"~/.local/share/applications/editor.desktop","Name":"Editor","state":"gone"})"
        "\n"
        R"({"Path":"/bin/true","Name":"true"})"
        "\n");
}

TEST_F(TWListCommandsTest, VolumesAreCheckedByTheirMountPoints)
{
    const auto box = folder_.folder("box");
    const auto stick = folder_.folder("box/a stick");
    const auto list = [&](const std::function<bool()>& prepare) {
        return lines(start({ "volumes", "list", "--sandbox", box }, prepare).wait().out);
    };
    const auto mount = [&] { return TWProgram::mountPrivately(folder_.folder("other"), stick); };
    const auto nothing = [] { return true; };
    EXPECT_EQ(run({ "volumes", "on", stick, "--sandbox", box }).status, 1) << "not mounted";
    const auto checked = start({ "volumes", "on", stick + "/", "--sandbox", box }, mount).wait();
    if (checked.status == TWProgram::CannotPrepare)
        GTEST_SKIP() << "mounting is not permitted here";
    EXPECT_EQ(checked.status, 0) << checked.err;
    EXPECT_EQ(list(mount), Lines{ "on   ROOT/box/a stick" });
    EXPECT_EQ(list(nothing), Lines{ "on   ROOT/box/a stick  (no volume there now)" });
    const auto cleaned = start({ "clean", "--only", "volumes", "--yes", "--sandbox", box }, mount).wait();
    EXPECT_EQ(cleaned.status, 0) << cleaned.out << cleaned.err;
    EXPECT_NE(cleaned.out.find("Unmounting a stick..."), std::string::npos) << cleaned.out;
    EXPECT_EQ(lines(run({ "volumes", "list", "--json", "--sandbox", box }).out),
        Lines{ R"({"Active":true,"VolumeName":"a stick","VolumePath":"ROOT/box/a stick","mounted":false})" });
    EXPECT_EQ(run({ "volumes", "off", stick, "--sandbox", box }).status, 0);
    EXPECT_EQ(list(mount), Lines{ "off  ROOT/box/a stick" });
    EXPECT_EQ(list(nothing), Lines{});
    EXPECT_EQ(run({ "volumes", "off", stick, "--sandbox", box }).status, 1) << "not checked";
}

TEST_F(TWListCommandsTest, RulesAndSettingsAreKept)
{
    folder_.write(Rules, OneRule);
    out({ "files", "add", home_ + "/[a,b]/", "--what", "keywords-deep", "--description", "two\nlines", "--off" });
    out({ "files", "add", "--", "-rf" });
    out({ "files", "off", "1" });
    out({ "files", "on", "2" });
    out({ "files", "remove", "3" });
    EXPECT_EQ(out({ "files", "list" }),
        "1   off  item          ~/mine  (mine)\n2   on   keywords-deep ~/[a,b]  (two\u240Alines)\n");
    EXPECT_EQ(lines(out({ "files", "list", "--json" })).back(),
        R"({"Active":true,"Description":"two\nlines","FilePath":"~/[a,b]","WhatToDelete":3})");

    out({ "settings", "set", "TrashCleaner", "On" });
    out({ "settings", "set", "AutoQuitMode", "3" });
    EXPECT_EQ(out({ "settings", "get", "TrashCleaner" }) + out({ "settings", "get", "AutoQuitMode" }), "true\n3\n");
    EXPECT_NE(run({ "settings", "set", "ClipboardCleaner", "true" }).err.find("later version"), std::string::npos);
    out({ "settings", "reset", "TrashCleaner" });
    EXPECT_EQ(out({ "settings", "get", "TrashCleaner" }), "false\n");
    // Only the window's start is a launch.
    EXPECT_EQ(
        out({ "settings", "get", "LastLaunchedVersion" }) + out({ "settings", "get", "FirstLaunchDone" }), "\nfalse\n");
}

TEST_F(TWListCommandsTest, WhatIsOnTheKeepListStaysAndADamagedListStopsEveryCleaning)
{
    const std::string keepList = Data + std::string("KeepList.plist");
    folder_.write("home/.ssh/key", "");
    folder_.write("home/notes/a", "");
    for (const Words& path : { Words{ ".ssh/key" }, { "notes" } })
        out({ "files", "add", home_ + "/" + path[0] });
    EXPECT_EQ(run({ "clean", "--only", "files" }).status, 1) << "the defaults count before a list is saved";
    EXPECT_TRUE(folder_.exists("home/.ssh/key") && !folder_.exists("home/notes"));
    while (run({ "keep", "remove", "1" }).status == 0) { }
    EXPECT_EQ(out({ "keep", "add", home_ + "/.ssh/" }),
        "Kept: \"~/.ssh\" itself. What is in it can still be deleted; add it with --inside to keep that too.\n");
    EXPECT_EQ(out({ "keep", "add", "$XDG_DATA_HOME/x", "--inside" }),
        "Kept: \"$XDG_DATA_HOME/x\" with everything in it. It does not exist now.\n");
    EXPECT_EQ(out({ "keep", "add", "--pattern", "[a,b]" }), "Kept: everything with a name like \"[a,b]\".\n");
    EXPECT_EQ(out({ "keep", "list" }), "1   path     ~/.ssh\n2   inside   $XDG_DATA_HOME/x\n3   pattern  [a,b]\n");
    EXPECT_EQ(out({ "keep", "list", "--json" }),
        "{\"Path\":\"~/.ssh\",\"Inside\":false}\n{\"Path\":\"$XDG_DATA_HOME/x\",\"Inside\":true}\n"
        "{\"Pattern\":\"[a,b]\"}\n");
    trash("a");
    EXPECT_EQ(run({ "clean", "--only", "trash" }).status, 0) << "never in the Trash";
    trash("b");
    folder_.write(keepList, "damaged");
    const auto refused = run({ "clean", "--only", "trash" });
    EXPECT_EQ(refused.status, 3);
    EXPECT_EQ(refused.out, "");
    EXPECT_NE(refused.err.find(keepList), std::string::npos) << refused.err;
    EXPECT_TRUE(folder_.exists("home" + std::string(Trash) + "/files/b"));
    const auto listed = run({ "keep", "list" });
    EXPECT_EQ(std::to_string(listed.status) + listed.out, "1") << "the defaults are not in force";
    EXPECT_EQ(folder_.read(keepList), "damaged");
}

// As a window carries it out.
TEST(TWHandedOverCommandsTest, AWindowsUnsavedEditsStayUnsaved)
{
    TWFakeApplication machine;
    machine.root.write(Rules, OneRule);
    const auto delegate = machine.start();
    auto& files = delegate->editors().get<TWFilesWindowController>();
    auto& dictionary = delegate->editors().dictionary();
    const auto host = TWMakeHost();
    files.sheetOpened();
    EXPECT_EQ(files.applyDefaults(), "");
    dictionary.setWordDictionary({ "unsaved" });
    const auto run = [&](const Lines& words) {
        return TWRunCommand({ *host, machine.places, delegate->dataFolder(), delegate.get() },
            *TWParseCommandLine(words, "/folder").invocation);
    };
    for (const auto& words : { Lines{ "files", "add", "added" }, { "files", "off", "1" }, { "words", "add", "w" } })
        EXPECT_EQ(run(words).status, 0) << words[1];
    EXPECT_EQ(run({ "files", "remove", "3" }).status, 2);
    EXPECT_EQ(run({ "files", "list" }).out,
        "1   off  item          ~/mine  (mine)\n2   on   item          /folder/added  (added)\n");
    EXPECT_EQ(run({ "words", "list" }).out, "w\n");
    ASSERT_EQ(files.rules().size(), 2U);
    EXPECT_EQ(files.rules()[0].filePath + files.rules()[1].filePath, "~/default/folder/added");
    EXPECT_EQ(dictionary.wordDictionary(), (Lines{ "unsaved", "w" }));
    EXPECT_TRUE(files.hasUnsavedEdits() && dictionary.hasUnsavedEdits());
}

TEST_F(TWListCommandsTest, CommandsAtTheSameTimeLoseNothing)
{
    std::vector<TWProgram> children;
    for (int number = 0; number < 8; ++number)
        children.push_back(start({ "words", "add", "word" + std::to_string(number) }));
    for (const auto& child : children) {
        const auto result = child.wait();
        EXPECT_EQ(result.status, 0) << result.err;
    }
    auto words = lines(out({ "words", "list" }));
    std::sort(words.begin(), words.end());
    EXPECT_EQ(words, (Lines{ "word0", "word1", "word2", "word3", "word4", "word5", "word6", "word7" }));
}

TEST_F(TWListCommandsTest, DamagedFilesAreNamedAndKept)
{
    folder_.write(Rules, "damaged rules");
    folder_.write(Settings, "]\nTrashCleaner=true\n");
    const auto listed = run({ "files", "list" });
    EXPECT_NE(listed.err.find(Rules), std::string::npos) << listed.err;
    EXPECT_NE(listed.err.find(Settings), std::string::npos) << listed.err;
    EXPECT_EQ(listed.out.find("  on  "), std::string::npos) << listed.out;
    EXPECT_EQ(run({ "clean", "--only", "files", "--yes" }).status, 1);
    EXPECT_EQ(folder_.read(Rules) + folder_.read(Settings), "damaged rules]\nTrashCleaner=true\n");
    EXPECT_EQ(run({ "settings", "set", "FilesCleaner", "true" }).status, 0);
    EXPECT_NE(run({ "files", "add", "/x" }).err.find(Rules + ".damaged\""), std::string::npos);
    EXPECT_EQ(folder_.read(Rules + ".damaged"), "damaged rules");
    EXPECT_EQ(folder_.read(Settings + std::string(".damaged")), "]\nTrashCleaner=true\n");
    EXPECT_EQ(out({ "settings", "get", "TrashCleaner" }) + out({ "settings", "get", "FilesCleaner" }), "false\ntrue\n");
}

TEST_F(TWListCommandsTest, AFullDiskAndAnImpossibleHomeLeaveWhatWasThere)
{
    folder_.write(
        Settings, "<plist><dict><key>UUID</key><string>" + std::string(5000, 'u') + "</string></dict></plist>");
    out({ "words", "add", "first" });
    const auto settings = folder_.read(Settings);
    trash("a");
    const auto full = [](rlim_t room) { return [room] { return TWProgram::limit(RLIMIT_FSIZE, room); }; };
    const auto expectRefused = [&](rlim_t room) {
        for (const Words& words :
            { Words{ "words", "add", std::string(9000, 'w') }, { "settings", "set", "TrashCleaner", "true" } }) {
            const auto result = start(words, full(room)).wait();
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(lines(result.err).size(), 1U) << result.err;
        }
    };
    expectRefused(1); // with 0 the thread sanitizer could not start
    expectRefused(1000); // a write that stops in the middle
    EXPECT_EQ(out({ "words", "list" }), "first\n");
    EXPECT_EQ(folder_.read(Settings), settings);
    EXPECT_EQ(start({ "clean", "--only", "trash" }, full(1000)).wait().status, 0);
    EXPECT_FALSE(folder_.exists("home" + std::string(Trash) + "/files/a"));
    home_ = "/dev/null/home"; // can hold nothing at all
    expectRefused(1000);
    EXPECT_EQ(run({ "words", "list" }).status + run({ "clean" }).status, 3);
}

}
