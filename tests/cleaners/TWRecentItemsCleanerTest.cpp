#include "cleaners/TWRecentItemsCleaner.h"

#include "fakes/TWRecordingCleanerDelegate.h"

#include <fstream>
#include <sys/stat.h>

namespace {

class TWRecentItemsCleanerTest : public TWCleanerTest<TWRecentItemsCleaner> {
protected:
    static constexpr auto Started = "started: Clearing recent items...";
    static constexpr auto Success = "success: All recent items were removed.";
    static constexpr auto Failure = "failure: Some recent items could not be removed!";

    TWRecentItemsCleanerTest() { cleaner.setInfo({ rules, {} }); }

    void keysRule(const std::string& path, const std::string& keys)
    {
        rules->push_back({ true, "Prog", path, false, keys });
    }
    void fileRule(const std::string& path) { rules->push_back({ true, "Prog", path, true, "ignored" }); }
    std::string contents(const std::string& path) const
    {
        std::ifstream file(root.path(path), std::ios::binary);
        return { std::istreambuf_iterator<char>(file), {} };
    }
    // Carries out a frozen plan, after something has happened to the files.
    Lines carryOutAfter(const std::function<void(TWPlannedJob&)>& change)
    {
        TWPlannedJob job;
        job.plan = std::make_shared<const TWPlan>(TWPlanOf(cleaner, runLoop));
        job.check = std::make_shared<TWPreviewCheck>();
        job.unticked.resize(job.plan->items.size());
        change(job);
        cleaner.carryOut(std::move(job));
        runLoop.advance(1s);
        return reports.take();
    }

    std::optional<TWOtherPrograms> programs_;
    const TWRecentItemsRuleList rules = std::make_shared<std::vector<TWRecentItemsRule>>();
};

constexpr auto Settings = "# kept\n[Recent]\n1=a\n[View]\nRecent=b\nsize=3\n";

}

TEST_F(TWRecentItemsCleanerTest, RulesAreAppliedInOrderAndSaidAsTheyStand)
{
    root.write("home/.config/progrc", Settings);
    root.write("home/.config/list", "x");
    keysRule("~/.config/progrc", "Recent , Other");
    fileRule("~/.config/none");
    keysRule("~/.config/missing", "Recent");
    fileRule("~/.config/list");
    rules->push_back({ false, "Off", "~/.config/progrc", true, "" });
    EXPECT_EQ(run(),
        (Lines{ Started, "- Removed key \"Recent\" from ~/.config/progrc.",
            "- Key \"Other\" already removed from ~/.config/progrc.",
            "- File ~/.config/none does not exist, skipping deletion.", "- Could not open ~/.config/missing",
            "- Delete~/.config/list ...", Success, "finished" }));
    EXPECT_EQ(contents("home/.config/progrc"), "# kept\n[View]\nsize=3\n");
    EXPECT_EQ(cleaner.outcome().gone, 2U) << "a key and a file";
}

TEST_F(TWRecentItemsCleanerTest, ADeletionMakesUpForEarlierFailures)
{
    root.write("home/list", "x");
    root.write("home/damaged.json", R"({"Recent": [)");
    rules->push_back({ true, "Prog", "", false, "a" });
    keysRule("~/progrc", "");
    keysRule("~/damaged.json", ",");
    const Lines failing{ Started, "- No file specified for Prog!",
        "- No keys specified for Prog while the file isn't marked for deletion!" };
    auto lines = run();
    EXPECT_EQ(lines.at(lines.size() - 3), "- Could not open ~/damaged.json");
    EXPECT_EQ(lines.at(lines.size() - 2), Failure);
    EXPECT_TRUE(std::equal(failing.begin(), failing.end(), lines.begin()));
    fileRule("~/list");
    lines = run();
    EXPECT_EQ(lines.at(lines.size() - 2), Success);
    EXPECT_EQ(contents("home/damaged.json"), R"({"Recent": [)");
}

TEST_F(TWRecentItemsCleanerTest, AFileThatStaysAlthoughItWasDeletedFailsTheJob)
{
    root.write("home/list", "x");
    fileRule("~/list");
    fileRule("~");
    launcher.failures[root.path("home/list")] = { TWTermination::Kind::Exited, 1, "rm: not permitted" };
    const auto lines = run();
    EXPECT_EQ(lines.at(1), "- Delete~/list ...");
    EXPECT_EQ(lines.at(2), "- The deletion tool said: rm: not permitted");
    EXPECT_EQ(lines.at(3), "- Could not delete ~/list");
    EXPECT_EQ(lines.at(lines.size() - 2), Failure);
    EXPECT_TRUE(std::filesystem::exists(places.home));
}

TEST_F(TWRecentItemsCleanerTest, KeepsLinksModesAndWhatTheKeepListNames)
{
    root.write("home/dotfiles/rc", Settings);
    root.link("home/rc", "dotfiles/rc");
    chmod(root.path("home/dotfiles/rc").c_str(), 0640);
    keysRule("~/rc", "Recent");
    EXPECT_EQ(run().at(1), "- Removed key \"Recent\" from ~/rc.");
    EXPECT_TRUE(std::filesystem::is_symlink(root.path("home/rc")));
    EXPECT_EQ(std::filesystem::status(root.path("home/dotfiles/rc")).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(contents("home/dotfiles/rc"), "# kept\n[View]\nsize=3\n");
    guard.setKeepList(
        TWKeepList(std::in_place, { TWKeepEntry{ TWKeepEntry::Kind::Path, root.path("home/dotfiles/rc") } }));
    root.write("home/dotfiles/rc", Settings);
    const auto lines = run();
    EXPECT_TRUE(lines.at(1).starts_with("- \"~/rc\" was left alone: ")) << lines.at(1);
    EXPECT_EQ(lines.at(2), Failure);
    EXPECT_EQ(contents("home/dotfiles/rc"), Settings);
}

TEST_F(TWRecentItemsCleanerTest, AnyFolderStandsForEachThatHasTheFile)
{
    for (const auto* folder : { "b2", "a1", "without" })
        root.folder(std::string("home/ide/") + folder);
    root.write("home/ide/b2/rc", Settings);
    root.write("home/ide/a1/rc", Settings);
    root.link("home/ide/met", "a1");
    keysRule("~/ide/*/rc", "Recent");
    EXPECT_EQ(run(),
        (Lines{ Started, "- Removed key \"Recent\" from ~/ide/a1/rc.", "- Removed key \"Recent\" from ~/ide/b2/rc.",
            Success, "finished" }));
    root.write("home/ide/*/rc", Settings);
    EXPECT_EQ(run().at(1), "- Removed key \"Recent\" from ~/ide/*/rc.") << "a literal path comes first";
}

TEST_F(TWRecentItemsCleanerTest, AFrozenPlanLeavesUntickedKeysAndChangedFilesAlone)
{
    root.write("home/rc", Settings);
    keysRule("~/rc", "Recent, size, none");
    EXPECT_EQ(carryOutAfter([](TWPlannedJob& job) {
        ASSERT_EQ(job.plan->items.size(), 3U);
        EXPECT_EQ(job.plan->change(job.plan->items[0]).entries, 2U);
        EXPECT_TRUE(job.plan->items[2].quiet);
        job.unticked[0] = true;
    }),
        (Lines{ Started, "- Removed key \"size\" from ~/rc.", "- Key \"none\" already removed from ~/rc.",
            "success: Everything that was ticked in the preview is gone.", "finished" }));
    EXPECT_EQ(contents("home/rc"), "# kept\n[Recent]\n1=a\n[View]\nRecent=b\n");
    const auto lines = carryOutAfter([this](TWPlannedJob&) { root.write("home/rc", "[Recent]\n9=new\n"); });
    EXPECT_TRUE(lines.at(1).starts_with("- \"~/rc\" was left alone: it has changed since the preview, "))
        << lines.at(1);
    EXPECT_EQ(contents("home/rc"), "[Recent]\n9=new\n");
}

TEST_F(TWRecentItemsCleanerTest, WhatIsNotTickedStaysAlsoIfAnotherRuleOrKeyNamesIt)
{
    root.write("home/rc", Settings);
    keysRule("~/rc", "Recent, size");
    keysRule("~/rc", "Recent");
    carryOutAfter([](TWPlannedJob& job) { job.unticked[0] = true; });
    EXPECT_EQ(contents("home/rc"), "# kept\n[Recent]\n1=a\n[View]\nRecent=b\n");
    // Without the group around it, the key would take more than its row said.
    root.write("home/rc", Settings);
    rules->clear();
    keysRule("~/rc", "View, Recent");
    const auto lines = carryOutAfter([](TWPlannedJob& job) { job.unticked[0] = true; });
    EXPECT_TRUE(lines.at(1).starts_with("- \"~/rc\" was left alone: it has changed since the preview, or "))
        << lines.at(1);
    EXPECT_EQ(contents("home/rc"), Settings);
}

TEST_F(TWRecentItemsCleanerTest, AFileThatCannotBeWrittenIsNoFailureButNeverCalledGone)
{
    struct Failing final : TWPreferenceFiles {
        TWLinuxPreferenceFiles real;
        Contents read(const TWHeldFolder& folder, const std::string& name, std::size_t limit) const override
        {
            return real.read(folder, name, limit);
        }
        Contents readBeginning(const TWHeldFolder& folder, const std::string& name, std::size_t length) const override
        {
            return real.readBeginning(folder, name, length);
        }
        Replaced replace(const TWHeldFolder&, const std::string&, const TWFileFacts&, std::string_view) const override
        {
            return { ENOSPC, {} };
        }
    } const failing;
    programs_.emplace(TWOtherPrograms{ applications, failing });
    TWRecentItemsCleaner onFullDisk({ tools, settings, *programs_, logs, workspace, volumes });
    onFullDisk.setDelegate(&reports);
    onFullDisk.setInfo({ rules, {} });
    root.write("home/rc", Settings);
    keysRule("~/rc", "Recent");
    onFullDisk.clean();
    runLoop.advance(1s);
    EXPECT_EQ(reports.take(),
        (Lines{ Started, "- Removed key \"Recent\" from ~/rc.",
            "- \"~/rc\" cannot be written: No space left on device.", "- Could not write modifications to ~/rc.",
            Success, "finished" }));
    TWPlannedJob job;
    job.plan = std::make_shared<const TWPlan>(TWPlanOf(onFullDisk, runLoop));
    job.check = std::make_shared<TWPreviewCheck>();
    onFullDisk.carryOut(std::move(job));
    runLoop.advance(1s);
    EXPECT_EQ(reports.count(Failure), 1U);
}

TEST_F(TWRecentItemsCleanerTest, WhatNamesNothingIsRefused)
{
    fileRule("/");
    fileRule("relative");
    keysRule("relative", "Recent");
    const auto lines = run();
    EXPECT_EQ(reports.lines.size(), 0U);
    EXPECT_EQ(lines.at(lines.size() - 2), Failure);
    EXPECT_EQ(std::ranges::count_if(lines, [](const auto& line) { return line.starts_with("- Could not "); }), 3);
}

TEST_F(TWRecentItemsCleanerTest, TwoRulesForOneFileInAFrozenPlanBothCount)
{
    root.write("home/rc", Settings);
    keysRule("~/rc", "Recent");
    keysRule("~/rc", "size");
    const auto lines = carryOutAfter([](TWPlannedJob&) {});
    EXPECT_EQ(lines.at(2), "- Removed key \"size\" from ~/rc.");
    EXPECT_EQ(contents("home/rc"), "# kept\n[View]\n");
}

TEST_F(TWRecentItemsCleanerTest, SaysThatAProgramRunsAndThatOtherNamesKeepTheEntries)
{
    applications.runs.addProgram("prog");
    root.write("home/rc", Settings);
    std::filesystem::create_hard_link(root.path("home/rc"), root.path("home/other"));
    keysRule("~/rc", "Recent, size");
    keysRule("~/missing", "Recent");
    EXPECT_EQ(run(),
        (Lines{ Started, "- Prog is running. It may write its recent items back when it quits.",
            "- Removed key \"Recent\" from ~/rc.", "- Removed key \"size\" from ~/rc.",
            "- \"~/rc\" has other names (hard links), under which the removed entries are still there.",
            "- Prog is running. It may write its recent items back when it quits.", "- Could not open ~/missing",
            Success, "finished" }));
    EXPECT_EQ(contents("home/other"), Settings);
}

TEST_F(TWRecentItemsCleanerTest, StoppedBetweenFilesItBeginsNoOther)
{
    root.write("home/one", Settings);
    root.write("home/two", Settings);
    keysRule("~/one", "Recent");
    keysRule("~/two", "Recent");
    reports.onReport = [this] {
        if (reports.lines.back().starts_with("- Removed"))
            cleaner.stop();
    };
    EXPECT_EQ(run().at(2), "failure: The cleaner was terminated before its job was finished!");
    EXPECT_NE(contents("home/one"), Settings);
    EXPECT_EQ(contents("home/two"), Settings);
}
