#include "cleaners/TWFilesCleaner.h"

#include "builders/TWHostileTree.h"
#include "cleaners/TWFilesPlanner.h"
#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

class TWFilesCleanerTest : public TWCleanerTest<TWFilesCleaner> {
protected:
    void give(std::vector<TWFilesRule> rules, Lines words = { "secret" })
    {
        info.filesArray = std::make_shared<std::vector<TWFilesRule>>(std::move(rules));
        info.wordDictionary = std::move(words);
        cleaner.setInfo(info);
    }
    TWFilesRule rule(const std::string& name, int kind) const
    {
        return { true, "", name[0] == '~' ? name : root.path(name), kind };
    }
    TWPlan plan(const TWFilesCleaner& planned)
    {
        TWPlan result;
        const auto planning = planned.makePlan([](const TWPlan&) {}, [&](TWPlan made) { result = std::move(made); });
        runLoop.runUntilIdle();
        return result;
    }
    Lines sortedPaths(const TWPlan& planned) const
    {
        Lines paths;
        for (const auto& item : planned.items)
            paths.push_back(launcher.shown(planned.path(item)));
        std::sort(paths.begin(), paths.end());
        return paths;
    }

    TWFilesCleanerInfo info;
};

// The real one, while another program changes the tree: after a top folder is opened, before an item's folder is.
struct ChangingFileSystem final : TWFileSystem {
    using Path = const std::string&;
    TWLinuxFileSystem real;
    std::function<void(Path)> opened, holding;

    TWFileLook look(Path path, TWLinkAtEnd link) const override { return real.look(path, link); }
    std::optional<std::string> linkTarget(Path path) const override { return real.linkTarget(path); }
    std::optional<std::string> realPath(Path path, TWLinkAtEnd link, int* error) const override
    {
        return real.realPath(path, link, error);
    }
    std::unique_ptr<TWOpenFolder> openFolder(Path path, int& error, const TWCancellation* cancellation) const override
    {
        auto folder = real.openFolder(path, error, cancellation);
        opened(path);
        return folder;
    }
    std::unique_ptr<TWHeldFolder> holdFolder(Path path, int& error) const override
    {
        holding(path);
        return real.holdFolder(path, error);
    }
};

constexpr auto Started = "started: Deleting files and folders...";
constexpr auto Failure = "failure: Some files and/or folders could not be deleted!";
constexpr auto Terminated = "failure: The cleaner was terminated before its job was finished!";
constexpr auto Success = "success: All files and folders have been deleted.";

}

TEST_F(TWFilesCleanerTest, EachKindDeletesWhatItSays)
{
    for (const auto* name :
        { "home/item/inside", "contents/.hidden", "top/Top SECRET.txt", "top/x/secret2", "deep/x/Secret3", "other" })
        root.write(name, "x");
    root.folder("empty");
    auto off = rule("other", TWItemItself);
    off.active = false;
    give({ rule("empty", 1), rule("~/item", 0), rule("contents", 1), rule("top", 2), off, rule("deep", 3),
        rule("other", 7), rule("home/no", 0) });
    EXPECT_EQ(cleaner.validate(), "");
    EXPECT_EQ(run(),
        (Lines{ Started, "- No files to delete in ROOT/empty", "- This kind of rule does nothing: ROOT/other",
            "- Item ROOT/home/no already deleted", "- Delete ROOT/home/item ...", "- Delete ROOT/contents/.hidden ...",
            "- Delete ROOT/top/Top SECRET.txt ...", "- Delete ROOT/deep/x/Secret3 ...", Success, "finished" }));
    EXPECT_TRUE(root.exists("top/x/secret2") && root.exists("other") && root.exists("contents"));
}

TEST_F(TWFilesCleanerTest, AFolderRuleWithoutAFolderEndsTheRunBeforeAnythingIsDeleted)
{
    root.write("item", "x");
    give({ rule("item", 0), rule("none", 1) });
    EXPECT_EQ(run(), (Lines{ Started, "failure: Folder ROOT/none does not exist!", "finished" }));
    give({ rule("item", 0), rule("item", 3) });
    EXPECT_EQ(run(), (Lines{ Started, "failure: The specified path (ROOT/item) is not a folder!", "finished" }));
    EXPECT_EQ(launcher.records, Lines());
}

TEST_F(TWFilesCleanerTest, WarnsOfRulesThatCannotDoAnything)
{
    give({}, {});
    EXPECT_TRUE(cleaner.validate().starts_with("The Files cleaner is checked but there are no active rules."));
    auto off = rule("x", 2);
    off.active = false;
    give({ rule("x", 0), off }, {});
    EXPECT_TRUE(cleaner.validate().starts_with("\n\nThe Files cleaner is setup"))
        << "also for a rule that is switched off";
}

TEST_F(TWFilesCleanerTest, TheSearchEntersNeitherLinksNorPackages)
{
    const TWHostileTree tree(root);
    for (const auto* name :
        { "Foo.app/secret", "Foo.app/folder/secret", "secret \xFF name", "a secret folder/secret inside" })
        root.write(std::string("hostile/") + name, "x");
    root.link("hostile/link to secret", root.path("canary"));
    give({ rule("hostile", 3) }, { "folder", "secret", "inside" });
    auto planned = plan(cleaner);
    std::erase_if(planned.items, [](const auto& item) { return item.word != 1; });
    EXPECT_EQ(sortedPaths(planned), (Lines{ "ROOT/hostile/link to secret", "ROOT/hostile/secret \xFF name" }));
    EXPECT_EQ(planned.lines.size(), geteuid() == 0 ? 2U : 3U) << "and the unreadable folder, if it is one";
    for (const auto& line : planned.lines)
        EXPECT_TRUE(launcher.shown(line).starts_with("Skipping Bundle ROOT/hostile/Foo.app/") || planned.incomplete);
    // A link that a rule itself names is followed, once.
    give({ rule("hostile/link to secret", 3) }, { "inside" });
    planned = plan(cleaner);
    EXPECT_EQ(sortedPaths(planned), Lines{ "ROOT/hostile/link to secret/folder/inside" });
    EXPECT_EQ(launcher.shown(planned.folders[0]->realPath), "ROOT/canary/folder");
}

TEST_F(TWFilesCleanerTest, WhatCouldNotBeLookedAtHasNotSucceeded)
{
    root.write("good", "x");
    root.write("documents/file", "x");
    root.write("elsewhere/inner/file", "x");
    root.link("link", "elsewhere/inner");
    root.link("stick", "nowhere");
    info.problems = { "", "The list could not be read." };
    places.cacheHome = root.folder("big/cache");
    give({ rule("good", 0), rule("link/../documents/file", 0), rule("~/.cache/../kept", 0), rule("stick/private", 0) });
    EXPECT_EQ(run(),
        (Lines{ Started, "- The list could not be read.",
            "- Refused to delete \"ROOT/link/../documents/file\": its \"..\" follows a link or a moved folder, so "
            "it means one place to the shell and another one here.",
            "- Refused to delete \"~/.cache/../kept\": its \"..\" follows a link or a moved folder, so it means one "
            "place "
            "to the shell and another one here.",
            "- Whether ROOT/stick/private exists is not known, because a link on the way to it leads nowhere.",
            "- Delete ROOT/good ...", Failure, "finished" }));
    EXPECT_TRUE(root.exists("documents/file") && root.exists("elsewhere/inner/file"));
    info.problems.clear();
    root.write("good", "x");
    root.folder("locked/inside");
    give({ rule("good", 0), rule("locked/inside/file", 0), rule("locked", 1), rule("elsewhere/../good", 0) });
    chmod(root.path("locked").c_str(), 0);
    const auto lines = run();
    chmod(root.path("locked").c_str(), 0700);
    EXPECT_EQ(lines[lines.size() - 2], geteuid() == 0 ? Success : Failure) << "root may look everywhere";
}

TEST_F(TWFilesCleanerTest, WhatVanishesDuringASearchIsFineButNotWhatIsMoved)
{
    ChangingFileSystem changing;
    changing.opened = [&](const std::string& path) { std::filesystem::remove_all(path + "/unopened"); };
    changing.holding = [&](const std::string& path) {
        if (path == root.path("top/deleted"))
            std::filesystem::remove_all(path);
        if (path == root.path("top/moved"))
            std::filesystem::rename(path, root.path("away"));
    };
    const TWPathPlanner planner(changing, guard.rules());
    for (const std::string name : { "unopened", "deleted", "moved" }) {
        root.write("top/" + name + "/secret", "x");
        TWPlan whole;
        const std::vector rules{ rule("top", 3) };
        const TWCancellation never;
        TWFilesPlanner(
            planner, places, rules, { "secret" }, [&](TWPlan part) { whole.append(std::move(part)); }, never)
            .plan();
        EXPECT_EQ(whole.incomplete, name == "moved") << name;
        EXPECT_TRUE(whole.items.empty()) << name;
    }
}

TEST_F(TWFilesCleanerTest, CancelReportsAtOnceAndOnceMoreAtTheEnd)
{
    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    root.write("one", "x");
    root.write("two", "x");
    info.securelyDeleteFiles = true;
    give({ rule("one", 0), rule("home", 0), rule("two", 0) });
    cleaner.clean();
    runLoop.runUntilIdle();
    cleaner.cancel();
    EXPECT_TRUE(cleaner.cancelled());
    EXPECT_EQ(reports.take(), (Lines{ Started, "- One-pass secure delete ROOT/one ...", Terminated, "finished" }));
    launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    runLoop.advance(1s);
    EXPECT_EQ(reports.take(),
        (Lines{ "- One-pass secure delete ROOT/home ...", "- One-pass secure delete ROOT/two ...",
            "- The deletion tool /libexec/srm was ended by signal 15.", "- Could not delete ROOT/one",
            "- Refused to delete \"ROOT/home\": it is the home folder.", "- Could not delete ROOT/home", Failure,
            "finished" }));
    EXPECT_FALSE(root.exists("two"));
}

TEST_F(TWFilesCleanerTest, CancelNeedsNoJobAndItsReportMayStopRestartOrDestroy)
{
    for (const char act : { 's', 'r', 'd' }) {
        auto cancelled = std::make_unique<TWFilesCleaner>(TWCleanerContext{ tools, settings });
        cancelled->setDelegate(&reports);
        cancelled->cancel();
        EXPECT_TRUE(cancelled->cancelled());
        cancelled->verify();
        EXPECT_EQ(reports.take(), (Lines{ Terminated, "finished", Failure, "finished" }));
        give({ rule("one", 0), rule("two", 0) });
        for (const auto* name : { "one", "two" })
            root.write(name, "x");
        cancelled->setInfo(info);
        launcher.ending = TWRecordingLauncher::Ending::ByTest;
        cancelled->clean();
        runLoop.runUntilIdle();
        launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
        reports.onReport = [&, once = false]() mutable {
            if (std::exchange(once, true))
                return;
            if (act == 's')
                cancelled->stop();
            else if (act == 'r')
                cancelled->clean();
            else
                cancelled.reset();
        };
        cancelled->cancel();
        runLoop.advance(1s);
        EXPECT_EQ(root.exists("two"), act != 'r') << act;
        EXPECT_EQ(reports.count("finished"), act == 's' ? 2U : act == 'r' ? 1U : 0U) << act;
        reports.take();
    }
}

TEST_F(TWFilesCleanerTest, WhatDisappearedBeforeItsTurnIsNamed)
{
    for (const auto* name : { "one", "two", "three/inner" })
        root.write(name, "x");
    const auto renameFor = [this](const char* name) {
        launcher.atLaunch = [this, name, once = false]() mutable {
            if (!std::exchange(once, true))
                std::filesystem::rename(root.path(name), root.path("elsewhere"));
        };
    };
    renameFor("two");
    give({ rule("one", 0), rule("two", 0), rule("one", 0), rule("two", 0) });
    EXPECT_EQ(run(),
        (Lines{ Started, "- Delete ROOT/one ...", "- Delete ROOT/two ...", "- Delete ROOT/one ...",
            "- Delete ROOT/two ...", "- \"ROOT/two\" was gone before its turn came; if it was moved, it still exists.",
            Success, "finished" }));
    root.write("one", "x");
    std::filesystem::remove(root.path("elsewhere"));
    renameFor("three");
    give({ rule("one", 0), rule("three", 0), rule("three/inner", 0) });
    const auto lines = run();
    EXPECT_EQ(lines.at(lines.size() - 2), Failure) << "a folder that had disappeared took nothing along";
}

TEST_F(TWFilesCleanerTest, APlanHoldsNothingOfAFolderThatWasReplacedMeanwhileAndKnowsNewProtectedFolders)
{
    // Replaces a folder just before the program opens it for the nth time.
    struct ReplacingFileSystem final : TWFileSystem {
        explicit ReplacingFileSystem(std::function<void()> given)
            : opening(std::move(given))
        {
        }
        TWFileLook look(const std::string& path, TWLinkAtEnd end) const override { return real.look(path, end); }
        std::optional<std::string> realPath(const std::string& path, TWLinkAtEnd end, int* error) const override
        {
            return real.realPath(path, end, error);
        }
        std::optional<std::string> linkTarget(const std::string& path) const override { return real.linkTarget(path); }
        std::unique_ptr<TWOpenFolder> openFolder(
            const std::string& path, int& error, const TWCancellation* cancellation) const override
        {
            opening();
            return real.openFolder(path, error, cancellation);
        }
        std::unique_ptr<TWHeldFolder> holdFolder(const std::string& path, int& error) const override
        {
            opening();
            return real.holdFolder(path, error);
        }
        TWLinuxFileSystem real;
        std::function<void()> opening;
    };
    for (const auto& [kind, opened] : { std::pair(TWFolderContents, 2), std::pair(TWItemsWithKeywords, 3) }) {
        root.write("folder/secret", "x");
        int left = opened;
        const ReplacingFileSystem replacing([&] {
            if (--left != 0)
                return;
            std::filesystem::rename(root.path("folder"), root.path("away" + std::to_string(kind)));
            root.write("folder/secret", "another one");
        });
        TWFilesCleaner onReplacing({ { runLoop, launcher, replacing, guard, places }, settings });
        give({ rule("folder", kind) });
        onReplacing.setInfo(info);
        const auto planned = plan(onReplacing);
        EXPECT_LE(left, 0) << kind;
        EXPECT_TRUE(planned.items.empty() && planned.incomplete) << kind;
    }
    guard.rules(); // as an earlier job has left them
    root.folder("home/.local/share/Tidewell");
    give({ rule("home/.local/share/Tidewell", 0) });
    EXPECT_NE(plan(cleaner).items.at(0).objection, nullptr);
}

TEST_F(TWFilesCleanerTest, ReportsALongListInSeveralTurns)
{
    give(std::vector<TWFilesRule>(2500, rule("no", 0)));
    std::size_t most = 0;
    for (cleaner.clean(); reports.count("finished") == 0;) {
        const auto before = reports.count("- ");
        runLoop.turn(0ms);
        most = std::max(most, reports.count("- ") - before);
    }
    EXPECT_EQ(reports.count("- "), 2500U);
    EXPECT_LE(most, 1000U);
}

TEST(TWFilesRuleTest, TakesOnlyRulesAndKeepsWhatItDoesNotUnderstand)
{
    const auto from = [](const char* key, TWValue value) {
        return TWFilesRule::from(TWDictionary::fromEntries({ { "FilePath", "~/x" }, { key, std::move(value) } }));
    };
    EXPECT_EQ(from("Active", 1), (TWFilesRule{ true, "", "~/x", 0 }));
    EXPECT_EQ(from("WhatToDelete", true)->whatToDelete, 1);
    EXPECT_FALSE(
        from("Active", "yes") || from("FilePath", 1) || from("Description", false) || from("WhatToDelete", "0"));
    EXPECT_FALSE(TWFilesRule::from(TWDictionary::fromEntries({ { "Active", true }, { "Unknown", 1 } })));
    EXPECT_FALSE(TWFilesRule::from("~/x"));
    std::vector<TWDictionary::Entry> entries{ { "Color", "red" }, { "FilePath", "~/x" },
        { "Tags", TWValue::Array{ 1, 2.5 } }, { "WhatToDelete", (std::int64_t(1) << 32) + 1 } };
    auto rule = TWFilesRule::from(TWDictionary::fromEntries(entries));
    EXPECT_EQ(rule, TWFilesRule::from(rule->value()));
    rule->filePath = "~/y";
    entries[1].second = "~/y";
    entries.insert(entries.end(), { { "Active", false }, { "Description", "" } });
    EXPECT_EQ(rule->value(), TWDictionary::fromEntries(entries));
}
