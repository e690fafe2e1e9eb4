#include "cleaners/TWFilesCleaner.h"

#include "builders/TWHostileTree.h"
#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

class TWFilesCleanerTest : public TWCleanerTest<TWFilesCleaner> {
protected:
    static constexpr auto Started = "started: Deleting files and folders...";
    static constexpr auto Failure = "failure: Some files and/or folders could not be deleted!";
    static constexpr auto Terminated = "failure: The cleaner was terminated before its job was finished!";
    static constexpr auto Success = "success: All files and folders have been deleted.";

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
    TWPlan plan() { return TWPlanOf(cleaner, runLoop); }
    // A plan of the same rules on another file system.
    TWPlan planOn(const TWFileSystem& other)
    {
        TWFilesCleaner onOther(
            { { runLoop, launcher, other, guard, places }, settings, programs, logs, workspace, volumes });
        onOther.setInfo(info);
        return TWPlanOf(onOther, runLoop);
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

// The real one, while another program changes the tree before or after a folder is opened.
struct ChangingFileSystem final : TWFileSystem {
    using Path = const std::string&;
    TWLinuxFileSystem real;
    std::function<void(Path)> opening = [](Path) {}; // to be listed or held
    std::function<void(Path)> opened = opening; // to be listed

    TWFileLook look(Path path, TWLinkAtEnd link) const override { return real.look(path, link); }
    std::optional<std::string> linkTarget(Path path) const override { return real.linkTarget(path); }
    std::optional<std::string> realPath(Path path, TWLinkAtEnd link, int* error) const override
    {
        return real.realPath(path, link, error);
    }
    std::unique_ptr<TWOpenFolder> openFolder(Path path, int& error, const TWCancellation* cancellation) const override
    {
        opening(path);
        auto folder = real.openFolder(path, error, cancellation);
        opened(path);
        return folder;
    }
    std::unique_ptr<TWHeldFolder> holdFolder(Path path, int& error) const override
    {
        opening(path);
        return real.holdFolder(path, error);
    }
    std::unique_ptr<TWOpenFile> openFile(Path path, int& error) const override { return real.openFile(path, error); }
};

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
    give({ rule("x", 2) }, {});
    EXPECT_TRUE(cleaner.validate().starts_with("\n\nThe Files cleaner is setup"));
}

TEST_F(TWFilesCleanerTest, TheSearchEntersNeitherLinksNorPackages)
{
    const TWHostileTree tree(root);
    for (const auto* name :
        { "Foo.app/secret", "Foo.app/folder/secret", "secret \xFF name", "a secret folder/secret inside" })
        root.write(std::string("hostile/") + name, "x");
    root.link("hostile/link to secret", root.path("canary"));
    give({ rule("hostile", 3) }, { "folder", "secret", "inside" });
    auto planned = plan();
    std::erase_if(planned.items, [](const auto& item) { return item.word != 1; });
    EXPECT_EQ(sortedPaths(planned), (Lines{ "ROOT/hostile/link to secret", "ROOT/hostile/secret \xFF name" }));
    EXPECT_EQ(planned.lines.size(), geteuid() == 0 ? 2U : 3U) << "and the unreadable folder, if it is one";
    for (const auto& line : planned.lines)
        EXPECT_TRUE(
            launcher.shown(line.text).starts_with("Skipping Bundle ROOT/hostile/Foo.app/") || planned.incomplete);
    // A link that a rule itself names is followed, once.
    give({ rule("hostile/link to secret", 3) }, { "inside" });
    planned = plan();
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
    changing.opening = [&](const std::string& path) {
        if (path == root.path("top/deleted"))
            std::filesystem::remove_all(path);
        if (path == root.path("top/moved"))
            std::filesystem::rename(path, root.path("away"));
    };
    give({ rule("top", 3) });
    for (const std::string name : { "unopened", "deleted", "moved" }) {
        root.write("top/" + name + "/secret", "x");
        const auto whole = planOn(changing);
        EXPECT_EQ(whole.incomplete, name == "moved") << name;
        EXPECT_TRUE(whole.items.empty()) << name;
    }
}

TEST_F(TWFilesCleanerTest, CancelReportsAtOnceAndOnceMoreAtTheEnd)
{
    cleaner.cancel();
    EXPECT_EQ(reports.take(), (Lines{ Terminated, "finished" })) << "without a job as well";
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
    for (const auto& [kind, opened] : { std::pair(TWFolderContents, 2), std::pair(TWItemsWithKeywords, 3) }) {
        root.write("folder/secret", "x");
        int left = opened;
        ChangingFileSystem replacing;
        replacing.opening = [&](const std::string&) {
            if (--left != 0)
                return;
            std::filesystem::rename(root.path("folder"), root.path("away" + std::to_string(kind)));
            root.write("folder/secret", "another one");
        };
        give({ rule("folder", kind) });
        const auto planned = planOn(replacing);
        EXPECT_LE(left, 0) << kind;
        EXPECT_TRUE(planned.items.empty() && planned.incomplete) << kind;
    }
    guard.rules(); // as an earlier job has left them
    root.folder("home/.local/share/Tidewell");
    root.link("link", ".");
    give({ rule("home/.local/share/Tidewell", 0), rule("link/home", 0), rule("folder/../home", 0) });
    const auto planned = plan();
    EXPECT_EQ(planned.items.size(), 3U);
    for (const auto& item : planned.items)
        EXPECT_NE(item.objection, nullptr) << planned.path(item);
}

TEST_F(TWFilesCleanerTest, APlanSaysWhatIsKept)
{
    for (const auto* name : { "home/dir/secret/x/a.kdbx", "home/dir/secret2/x", "home/dir/b.kdbx", "home/dir/mail/1",
             "home/.local/share/Trash/files/x/a.kdbx" })
        root.write(name, "x");
    guard.setKeepList(
        TWKeepList({ { TWKeepEntry::Kind::Names, "*.kdbx" }, { TWKeepEntry::Kind::Path, "~/dir/mail" } }));
    give({ rule("~/dir", TWItemItself), rule("~/dir", TWFolderContents), rule("~/dir", TWItemsWithKeywordsDeep),
        rule("~/.local/share/Trash/files/x", TWItemItself) });
    const auto planned = plan();
    Lines reasons;
    for (const auto& item : planned.items)
        reasons.push_back(std::string(item.name) + ": " + (item.objection ? item.objection : "none"));
    std::sort(reasons.begin(), reasons.end());
    const std::string holds = "it holds \"a.kdbx\", and names like \"*.kdbx\" are on the keep list.";
    EXPECT_EQ(reasons,
        (Lines{ "b.kdbx: names like \"*.kdbx\" are on the keep list.",
            "dir: it holds \"~/dir/mail\", which is on the keep list.",
            "mail: it is on the keep list (\"~/dir/mail\").", "secret2: none", "secret2: none", "secret: " + holds,
            "secret: " + holds, "x: none" }));
}

TEST(TWFilesRuleTest, TakesOnlyRulesAndKeepsWhatItDoesNotUnderstand)
{
    const auto from = [](const char* key, TWValue value) {
        return TWFilesRule::from(TWDictionary::fromEntries({ { "FilePath", "~/x" }, { key, std::move(value) } }));
    };
    EXPECT_EQ(from("Active", 1), (TWFilesRule{ true, "", "~/x", 0 }));
    EXPECT_FALSE(
        from("Active", "yes") || from("FilePath", 1) || from("Description", false) || from("WhatToDelete", "0"));
    EXPECT_FALSE(TWFilesRule::from(TWDictionary::fromEntries({ { "Active", true }, { "Unknown", 1 } })));
    std::vector<TWDictionary::Entry> entries{ { "Color", "red" }, { "FilePath", "~/x" },
        { "Tags", TWValue::Array{ 1, 2.5 } }, { "WhatToDelete", (std::int64_t(1) << 32) + 1 } };
    auto rule = TWFilesRule::from(TWDictionary::fromEntries(entries));
    EXPECT_EQ(rule, TWFilesRule::from(rule->value()));
    rule->filePath = "~/y";
    entries[1].second = "~/y";
    entries.insert(entries.end(), { { "Active", false }, { "Description", "" } });
    EXPECT_EQ(rule->value(), TWDictionary::fromEntries(entries));
}

TEST_F(TWFilesCleanerTest, CancelNeedsNoJobAndItsReportMayStopRestartOrDestroy)
{
    for (const char act : { 's', 'r', 'd' }) {
        auto cancelled
            = std::make_unique<TWFilesCleaner>(TWCleanerContext{ tools, settings, programs, logs, workspace, volumes });
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
