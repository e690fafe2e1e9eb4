#include "TWProgramTest.h"

#include "support/TWText.h"

#include <nlohmann/json.hpp>
#include <sys/file.h>

namespace {

using namespace std::chrono_literals;
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

    static std::string deleted(const std::string& path) { return "  \u2022 Delete ROOT/home" + path + " ..."; }

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
    const auto nothingOn = run({"clean"});
    EXPECT_EQ(nothingOn.status, 3);
    EXPECT_EQ(nothingOn.out, "");
    EXPECT_EQ(lines(nothingOn.err).size(), 1U) << nothingOn.err;

    // A warning, and nobody to ask.
    EXPECT_EQ(run({"files", "add", "~/precious", "--what", "keywords"}).status, 0);
    folder_.write("home/precious/file", "");
    const auto warned = run({"clean", "--only", "trash,files"});
    expectLines(warned, 3, {Beginning});
    EXPECT_NE(warned.err.find("--yes"), std::string::npos) << warned.err;
    EXPECT_TRUE(folder_.exists(trashedA_));

    EXPECT_EQ(run({"clean", "--only", "trash,files", "--yes"}).status, 0);
    EXPECT_FALSE(folder_.exists(trashedA_));
    EXPECT_TRUE(folder_.exists("home/precious/file"));
}

TEST_F(TWCleanCommandTest, EmptiesTheTrashWhateverTheNames)
{
    const std::string trashed = "/.local/share/Trash/files/";
    const std::string longest(245, 'l'); // 255 bytes as a record
    for (const auto& name : {std::string("-rf"), std::string("new\nline"), std::string("bad\xff"), longest, std::string("%@")})
        trash(name);
    folder_.write("canary", "alive");
    folder_.link("home" + trashed + "link", "../../../../../canary");
    folder_.write("home" + trashed + "folder/below", "");
    folder_.write("home" + std::string(Trash) + "/directorysizes", "");
    EXPECT_EQ(run({"settings", "set", "TrashCleaner", "true"}).status, 0);

    expectLines(run({"clean"}), 0,
        {Beginning, Emptying, deleted(trashed + "-rf"), deleted(trashed + "new\u240Aline"), deleted(trashed + "bad\uFFFD"),
            deleted(trashed + longest), deleted(trashed + "%@"), deleted(trashed + "link"), deleted(trashed + "folder"), Empty, Ending});
    EXPECT_EQ(count("home" + trashed), 0U);
    EXPECT_EQ(count("home" + std::string(Trash) + "/info"), 0U);
    EXPECT_FALSE(folder_.exists("home" + std::string(Trash) + "/directorysizes"));
    EXPECT_EQ(folder_.read("canary"), "alive");
    expectLines(run({"clean"}), 0, {Beginning, Emptying, Empty, Ending});
}

TEST_F(TWCleanCommandTest, JSONLinesAreValidAndExact)
{
    trash("bad\xff");
    const auto result = run({"clean", "--only", "trash", "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    std::vector<int> types;
    for (const auto& line : lines(result.out)) {
        const auto object = nlohmann::json::parse(line, nullptr, false);
        ASSERT_TRUE(object.is_object() && object.contains("type") && object.contains("text")) << line;
        types.push_back(object["type"]);
        EXPECT_EQ(object.contains("textBytes"), line.find("bad\uFFFD") != std::string::npos) << line;
    }
    EXPECT_EQ(types, (std::vector {0, 0, 0, 1, 0}));
}

TEST_F(TWCleanCommandTest, WhatStaysIsNamedAndKeepsItsRecord)
{
    trash("gone");
    trash("stays");
    const auto file = folder_.path("home" + std::string(Trash) + "/files/stays");
    if (std::system(("chattr +i " + file + " 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "NOT TESTED: no file can be made undeletable here";
    const auto result = run({"clean", "--only", "trash"});
    std::system(("chattr -i " + file).c_str());
    const std::string shown = "ROOT/home/.local/share/Trash/files/stays";
    expectLines(result, 1,
        {Beginning, Emptying, deleted("/.local/share/Trash/files/gone"), deleted("/.local/share/Trash/files/stays"),
            "  \u2022 The deletion tool said: /bin/rm: cannot remove '" + shown + "': Operation not permitted",
            "  \u2022 Could not delete " + shown, "Some files could not be removed from the Trash!", Ending});
    EXPECT_EQ(count("home" + std::string(Trash) + "/info"), 1U);
    EXPECT_TRUE(folder_.exists("home" + std::string(Trash) + "/info/stays.trashinfo"));
}

TEST_F(TWCleanCommandTest, InterruptEndsTheRunWithTheTruth)
{
    constexpr std::size_t Many = 3000;
    for (std::size_t number = 0; number < Many; ++number)
        trash(std::to_string(number));
    const auto child = start({"clean", "--only", "trash"});
    while (folder_.read(child.output).find("Delete ") == std::string::npos)
        std::this_thread::sleep_for(1ms);
    const auto asked = Clock::now();
    kill(child.process, SIGINT);
    const auto result = wait(child);
    EXPECT_LT(Clock::now() - asked, 1s); // usually a few hundredths
    EXPECT_EQ(result.status, 130);
    const auto left = count("home" + std::string(Trash) + "/files");
    EXPECT_GT(left, 0U);
    EXPECT_LT(left, Many);
    // The item at which the deletion was ended is named when it stayed; the others are counted.
    const std::size_t named = result.out.find("Could not delete") != std::string::npos;
    const auto counted = "Stopped: " + TWText::count(left - named, "item was", "items were") + " not deleted.\n";
    const auto ending = result.out.substr(std::min(result.out.find("Stopped"), result.out.size()));
    EXPECT_EQ(lines(ending), lines(counted + "The cleaner was terminated before its job was finished!\n" + Ending));
    EXPECT_EQ(count("home" + std::string(Trash) + "/info"), Many); // what was not gone through keeps its records
}

TEST_F(TWCleanCommandTest, OneCleaningAtATime)
{
    trash("a");
    const auto lock = open(folder_.write(Data + std::string(".cleaning.lock"), "").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const auto refused = run({"clean", "--only", "trash"});
    EXPECT_EQ(refused.status, 3);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(lines(refused.err).size(), 1U) << refused.err;
    EXPECT_TRUE(folder_.exists(trashedA_));
    close(lock); // as when the other process is killed
    EXPECT_EQ(run({"clean", "--only", "trash"}).status, 0);
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
        words.insert(words.end(), {"--sandbox", sandbox});
        return run(words);
    };
    EXPECT_EQ(inSandbox({"words", "add", "word"}).status, 0);
    const std::pair<std::string, const char*> rules[] = {{folder_.path("outside"), "item"}, {folder_.path("outside"), "contents"},
        {"~/way out/word", "item"}, {"~/way out", "contents"}, {"~/search", "keywords-deep"}, {sandbox, "item"}};
    EXPECT_EQ(inSandbox({"files", "defaults"}).status, 0);
    while (inSandbox({"files", "remove", "1"}).status == 0) { }
    for (const auto& [path, what] : rules)
        EXPECT_EQ(inSandbox({"files", "add", path, "--what", what}).status, 0);

    const auto result = inSandbox({"clean", "--only", "trash,files"});
    Lines expected {Beginning, Emptying, "  \u2022 Delete ROOT/sandbox/home/.local/share/Trash/files/b ...",
        "  \u2022 Delete ROOT/sandbox/home/.local/share/Trash/files/link ...", Empty, Deleting,
        "Some files and/or folders could not be deleted!", Ending};
    const std::string bullet = "  \u2022 ";
    for (const std::string path : {"outside", "outside/word", "sandbox/home/way out/word", "sandbox/home/way out/word", "sandbox"}) {
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
    const auto result = run({"demo", folder_.path("demo")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find(Empty), std::string::npos);
    EXPECT_NE(result.out.find("All files and folders have been deleted."), std::string::npos);
    EXPECT_EQ(count("demo/home/Documents"), 2U); // the recipe, and a folder
    EXPECT_TRUE(folder_.exists("demo/home/Pictures/cat.jpg"));
    EXPECT_TRUE(folder_.exists(trashedA_));
    EXPECT_EQ(count("home/.local/share"), 1U); // no data folder was made in the real home
}

}
