#include "TWProgramTest.h"

#include "fakes/TWFakeApplication.h"
#include "platform/posix/TWPosixLocks.h"
#include "support/TWText.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto Beginning = "Cleaning up NOW! (DATE)";
constexpr auto Emptying = "Emptying the Trash...";
constexpr auto Empty = "The Trash is now empty.";
constexpr auto Deleting = "Deleting files and folders...";
constexpr auto Ending = "Done Cleaning! (DATE)";

class TWCleanCommandTest : public TWProgramTest {
protected:
    // Sorted, since lines of single deletions come in the order of the folder's entries.
    void expectLines(const TWProgramResult& result, int status, Lines expected) const
    {
        EXPECT_EQ(result.status, status) << result.err;
        auto shown = lines(result.out);
        std::sort(shown.begin(), shown.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(shown, expected);
    }

    std::size_t count(const std::string& name) const
    {
        std::filesystem::directory_iterator entries(folder_.path(name));
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    const std::string trashedA_ = "home" + std::string(Trash) + "/files/a";
};

TEST_F(TWCleanCommandTest, RunsNothingThatWasNotAskedFor)
{
    trash("a");
    expectRefused(run({ "clean" }), "no cleaner is on", 3);

    // A warning, and nobody to ask.
    EXPECT_EQ(run({ "files", "add", "~/precious", "--what", "keywords" }).status, 0);
    folder_.write("home/precious/file", "");
    const auto warned = run({ "clean", "--only", "trash,files" });
    expectLines(warned, 3, { Beginning });
    EXPECT_NE(warned.err.find("--yes"), std::string::npos) << warned.err;
    EXPECT_TRUE(folder_.exists(trashedA_));

    EXPECT_EQ(run({ "clean", "--only", "trash,files", "--yes" }).status, 0);
    EXPECT_FALSE(folder_.exists(trashedA_));
    EXPECT_TRUE(folder_.exists("home/precious/file"));
}

TEST_F(TWCleanCommandTest, RealProgramsAreAskedToQuitAndThenEndedOnlyIfThatIsSwitchedOn)
{
    const auto polite = folder_.path("polite");
    std::filesystem::copy_file("/bin/sleep", polite);
    const auto stubborn = folder_.write("stubborn", "#!/bin/sh\ntrap '' TERM\necho ready\nwhile :; do sleep 1; done\n");
    std::filesystem::permissions(stubborn, std::filesystem::perms::owner_all);
    const TWProgram first(folder_, { polite, "60" });
    const TWProgram second(folder_, { stubborn }, { "PATH=/bin" });
    while (second.out().empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    for (const auto& each : { polite, stubborn })
        run({ "applications", "add", each });
    run({ "settings", "set", "ApplicationsTimeout", "1" });

    const std::string quit = "Quitting applications...";
    const auto begun = Clock::now();
    expectLines(run({ "clean", "--only", "applications" }), 1,
        { Beginning, quit, "  • Quitting polite...", "  • Quitting stubborn...",
            "  • stubborn could not be terminated!", "Some applications could not be quit!", Ending });
    EXPECT_GT(Clock::now() - begun, std::chrono::seconds(1));
    EXPECT_EQ(first.wait().status, 1000 + SIGTERM);
    run({ "settings", "set", "ApplicationsForceQuit", "true" });
    expectLines(run({ "clean", "--only", "applications" }), 0,
        { Beginning, quit, "  • Quitting stubborn...", "  • stubborn was force quit.", "All applications were quit.",
            Ending });
    EXPECT_EQ(second.wait().status, 1000 + SIGKILL);
}

TEST_F(TWCleanCommandTest, LinesAreValidAndExactWhateverTheNames)
{
    for (const auto* name : { "bad\xff", "-rf", "new\nline" })
        trash(name);
    EXPECT_EQ(run({ "settings", "set", "TrashCleaner", "true" }).status, 0);
    const auto result = run({ "clean", "--json" });
    EXPECT_EQ(result.status, 0) << result.err;
    std::vector<int> types;
    for (const auto& line : lines(result.out)) {
        const auto object = nlohmann::json::parse(line, nullptr, false);
        ASSERT_TRUE(object.is_object() && object.contains("type") && object.contains("text")) << line;
        types.push_back(object["type"]);
        EXPECT_EQ(object.contains("textBytes"), line.find("bad\uFFFD") != std::string::npos) << line;
    }
    EXPECT_EQ(types, (std::vector{ 0, 0, 0, 0, 0, 1, 0 }));
    EXPECT_EQ(count("home" + std::string(Trash) + "/files") + count("home" + std::string(Trash) + "/info"), 0U);
}

TEST_F(TWCleanCommandTest, ARequestToEndStopsTheRunWithTheTruth)
{
    constexpr std::size_t Many = 1000;
    const auto files = "home" + std::string(Trash) + "/files";
    // A terminal that is closed tells twice.
    for (const auto& signals : { std::vector{ SIGINT }, std::vector{ SIGHUP, SIGHUP } }) {
        for (std::size_t number = 0; number < Many; ++number)
            trash(std::to_string(number));
        const auto child = start({ "clean", "--only", "trash" });
        const auto deadline = Clock::now() + 30s;
        while (count(files) == Many && Clock::now() < deadline)
            std::this_thread::sleep_for(1ms);
        const auto asked = Clock::now();
        for (const int signal : signals)
            kill(child.process(), signal);
        const auto result = child.wait();
        EXPECT_LT(Clock::now() - asked, 1s); // usually a few hundredths
        EXPECT_EQ(result.status, 130);
        const auto left = count(files);
        EXPECT_GT(left, 0U);
        EXPECT_LT(left, Many);
        // The item at which the deletion was ended is named when it stayed; the others are counted.
        const std::size_t named = result.out.find("Could not delete") != std::string::npos;
        const auto counted = "Stopped: " + TWText::count(left - named, "item was", "items were") + " not deleted.\n";
        const auto ending = result.out.substr(std::min(result.out.find("Stopped"), result.out.size()));
        EXPECT_EQ(lines(ending), lines(counted + "The cleaner was terminated before its job was finished!\n" + Ending));
        EXPECT_EQ(count("home" + std::string(Trash) + "/info"), Many); // what was not gone through keeps its records
    }
}

TEST_F(TWCleanCommandTest, AReaderThatStandsStillHoldsUpNeitherTheRunNorItsEnd)
{
    for (const bool interrupted : { false, true }) {
        for (int number = 0; number < 200; ++number)
            trash(std::to_string(number));
        int ends[2];
        ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
        fcntl(ends[1], F_SETPIPE_SZ, 4096); // a fraction of the lines
        const auto child
            = start({ "clean", "--only", "trash" }, [&] { return dup2(ends[1], STDOUT_FILENO) == STDOUT_FILENO; });
        close(ends[1]);
        const auto deadline = Clock::now() + 30s;
        while (count("home" + std::string(Trash) + "/info") > 0 && Clock::now() < deadline)
            std::this_thread::sleep_for(1ms);
        EXPECT_EQ(count("home" + std::string(Trash) + "/info"), 0U);
        std::string text;
        char piece[4096];
        if (interrupted)
            kill(child.process(), SIGINT);
        else
            for (ssize_t length = 0; (length = read(ends[0], piece, sizeof piece)) > 0;)
                text.append(piece, static_cast<std::size_t>(length));
        EXPECT_EQ(child.wait().status, interrupted ? 130 : 0);
        EXPECT_EQ(lines(text).size(), interrupted ? 0U : 204U);
        close(ends[0]);
    }
}

// A window's run takes a lock that a command in another process respects.
TEST_F(TWCleanCommandTest, OneCleaningAtATime)
{
    TWFakeApplication window;
    const auto delegate = window.start();
    window.userDefaults.values["TrashCleaner"] = true;
    TWRunChoice checked{};
    checked[2] = true;
    delegate->prepareForCommand();
    delegate->clean(checked);
    ASSERT_EQ(window.locks.paths.size(), 1U);
    auto held = TWPosixLocks().tryLock(window.locks.paths[0]);
    ASSERT_TRUE(held.lock);
    home_ = window.places.home;
    expectLines(run({ "clean", "--only", "trash" }), 3, {});
    held.lock.reset();
    EXPECT_EQ(run({ "clean", "--only", "trash" }).status, 0);
}

TEST_F(TWCleanCommandTest, NothingOutsideASandboxChanges)
{
    folder_.write("outside/word", "alive");
    trash("a"); // the real home's
    const auto sandbox = folder_.folder("sandbox");
    // The link is removed, a folder behind a link is not entered, and a rule that leads out is refused.
    trash("b", "sandbox/home");
    folder_.link("sandbox/home/.local/share/Trash/files/link", folder_.path("outside"));
    folder_.link("sandbox/home/way out", folder_.path("outside"));
    folder_.folder("sandbox/home/search");
    folder_.link("sandbox/home/search/link", folder_.path("outside"));
    const auto inSandbox = [&](Words words) {
        words.insert(words.end(), { "--sandbox", sandbox });
        return run(words);
    };
    EXPECT_EQ(inSandbox({ "words", "add", "word" }).status, 0);
    const std::pair<std::string, const char*> rules[]
        = { { folder_.path("outside"), "item" }, { folder_.path("outside"), "contents" }, { "~/way out/word", "item" },
              { "~/way out", "contents" }, { "~/search", "keywords-deep" }, { sandbox, "item" } };
    folder_.write("sandbox/" + std::string(Data) + "FilesRules.plist", "<plist><array/></plist>");
    for (const auto& [path, what] : rules)
        EXPECT_EQ(inSandbox({ "files", "add", path, "--what", what }).status, 0);

    const auto result = inSandbox({ "clean", "--only", "trash,files" });
    Lines expected{ Beginning, Emptying, "  \u2022 Delete ROOT/sandbox/home/.local/share/Trash/files/b ...",
        "  \u2022 Delete ROOT/sandbox/home/.local/share/Trash/files/link ...", Empty, Deleting,
        "Some files and/or folders could not be deleted!", Ending };
    const std::string bullet = "  \u2022 ";
    for (const std::string path :
        { "outside", "outside/word", "sandbox/home/way out/word", "sandbox/home/way out/word", "sandbox" }) {
        const auto* why = path == "sandbox" ? "it is the sandbox itself." : "it lies outside the sandbox.";
        expected.push_back(bullet + "Delete ROOT/" + path + " ...");
        expected.push_back(bullet + "Refused to delete \"ROOT/" + path + "\": " + why);
        expected.push_back(bullet + "Could not delete ROOT/" + path);
    }
    expectLines(result, 1, expected);
    EXPECT_EQ(folder_.read("outside/word"), "alive");
    EXPECT_TRUE(folder_.exists(trashedA_));
    EXPECT_TRUE(folder_.exists("sandbox/home/search/link"));
}

TEST_F(TWCleanCommandTest, DemonstrationCleansAWorldOfItsOwn)
{
    trash("a");
    const auto result = run({ "demo", folder_.path("demo") });
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("All files and folders have been deleted."), std::string::npos);
    EXPECT_EQ(count("demo/home/Documents"), 2U); // the recipe, and a folder
    EXPECT_TRUE(folder_.exists("demo/home/Pictures/cat.jpg"));
    EXPECT_TRUE(folder_.exists(trashedA_));
    EXPECT_EQ(count("home/.local/share"), 1U); // no data folder was made in the real home
}

}
