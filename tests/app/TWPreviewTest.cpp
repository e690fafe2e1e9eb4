#include "app/TWPreview.h"

#include "builders/TWHostileTree.h"
#include "cleaners/TWPlanSummary.h"
#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeApplication.h"

namespace {

struct PreviewView final : TWPreviewDelegate {
    std::function<void()> onCall = [] {};
    std::size_t changes = 0;
    std::size_t ends = 0;

    void previewChanged() override
    {
        ++changes;
        onCall();
    }
    void previewEnded() override
    {
        ++ends;
        onCall();
    }
};

class TWPreviewTest : public testing::Test, protected TWFakeApplication {
protected:
    static constexpr std::size_t Trash = 2;
    static constexpr std::size_t Files = 5;

    TWPreviewTest()
    {
        delegate->applicationDidFinishLaunching();
        chosen[Trash] = chosen[Files] = true;
        files().setActive(0, false);
        view.lines.clear();
        alerts.alerts.clear();
    }
    void make()
    {
        shown = PreviewView();
        preview = std::make_unique<TWPreview>(delegate->cleanerContext(), delegate->settingsSources(), chosen, shown);
    }
    void makeAll()
    {
        make();
        runLoop.runUntilIdle();
        ASSERT_EQ(shown.ends, 1U);
    }
    // Returns the results without those that every run has.
    Lines cleanPreview()
    {
        delegate->cleanPreview(*preview);
        runLoop.advance(1s);
        Lines lines;
        for (const auto& message : delegate->resultsWindowController().messages()) {
            if (!message.text.ends_with("...") && !message.text.ends_with(")"))
                lines.push_back(launcher.shown(message.text));
        }
        return lines;
    }
    TWFilesWindowController& files() { return delegate->editors().get<TWFilesWindowController>(); }
    void addRule(const std::string& path, TWWhatToDelete what = TWItemItself)
    {
        files().addRule({ true, "", path, what });
    }
    std::string trash(const std::string& name)
    {
        root.write("home/.local/share/Trash/info/" + name + ".trashinfo", "x");
        return root.write("home/.local/share/Trash/files/" + name, "x");
    }
    // The item of a cleaner of the preview with that path.
    std::size_t item(std::size_t cleaner, const std::string& path) const
    {
        const auto& plan = *preview->cleaners()[cleaner]->plan();
        const auto found = std::ranges::find_if(plan.items, [&](const auto& each) { return plan.path(each) == path; });
        return static_cast<std::size_t>(found - plan.items.begin());
    }
    // What find prints about everything below the throwaway folder.
    Lines find(const std::string& format) const
    {
        std::unique_ptr<FILE, int (*)(FILE*)> output(
            popen(("find '" + root.path() + "' -printf '" + format + "\\0'").c_str(), "r"), pclose);
        std::string text;
        for (int byte = 0; (byte = std::fgetc(output.get())) != EOF;)
            text += static_cast<char>(byte);
        Lines lines;
        for (std::size_t at = 0; at < text.size(); at += lines.back().size() + 1)
            lines.emplace_back(text.c_str() + at);
        std::ranges::sort(lines);
        return lines;
    }
    // The paths that the preview says would be deleted.
    Lines listed() const
    {
        Lines paths;
        for (const auto& cleaner : preview->cleaners()) {
            for (const auto& each : cleaner->plan()->items) {
                if (cleaner->refusal(each).empty())
                    paths.push_back(cleaner->plan()->path(each));
            }
        }
        return paths;
    }

    std::unique_ptr<TWTidewellAppDelegate> delegate = start();
    TWRunChoice chosen{};
    PreviewView shown;
    std::unique_ptr<TWPreview> preview;
};

constexpr auto AllFacts = "%p %y %i %n %m %s %b %C@ %T@ %l";
constexpr auto Gone = "Everything that was ticked in the preview is gone.";
constexpr auto NotAllTrash = "Some files could not be removed from the Trash!";

std::string leftAlone(const std::string& path)
{
    return "  \u2022 \"" + path + "\" was left alone, because it has changed since the preview.";
}

}

TEST_F(TWPreviewTest, ChangesNothingAndListsExactlyWhatARunDeletes)
{
    const TWHostileTree hostile(root);
    const TWTemporaryFolder other;
    const TWHostileTree otherHostile(other);
    root.folder("home/.local/share/Trash");
    std::filesystem::rename(otherHostile.path(), places.trash + "/files");
    for (const auto* name : { "folder", "fifo", "of nothing" })
        root.write("home/.local/share/Trash/info/" + std::string(name) + ".trashinfo", "x");
    addRule(hostile.path(), TWFolderContents);
    addRule("~");
    mountTable.points.push_back(places.trash + "/files/folder");
    mountTable.points.push_back(hostile.path() + "/folder");
    const auto before = find(AllFacts);
    makeAll();
    EXPECT_EQ(find(AllFacts), before);
    EXPECT_TRUE(launcher.records.empty() && alerts.alerts.empty() && view.lines.empty() && locks.paths.empty());
    EXPECT_TRUE(delegate->resultsWindowController().messages().empty());
    EXPECT_EQ(preview->total().refused, 3U);

    // Whoever runs the test must be able to delete these.
    for (const auto& folder : { hostile.path(), places.trash + "/files" }) {
        for (const auto* name : { "/unreadable", "/read-only" })
            chmod((folder + name).c_str(), 0700);
    }
    makeAll();
    auto expected = find("%p");
    for (const auto& path : listed())
        std::erase_if(expected, [&](const auto& each) { return TWPath::isAtOrBelow(each, path); });
    EXPECT_LT(expected.size() + 20, find("%p").size());
    delegate->cleanPreview(*preview);
    runLoop.advance(1s);
    EXPECT_EQ(find("%p"), expected);
    EXPECT_EQ(view.lines.back(), "ended: succeeded") << "what was shown as refused is not tried";
}

TEST_F(TWPreviewTest, ListsWhatAnOrdinaryRunDeletesToo)
{
    trash("a");
    root.write("home/work/bank", "x");
    root.write("home/work/kept", "x");
    delegate->editors().dictionary().setWordDictionary({ "", "bank" });
    addRule("~/work", TWItemsWithKeywordsDeep);
    makeAll();
    auto expected = find("%p");
    for (const auto& path : listed())
        std::erase(expected, path);
    const auto& cleaner = *preview->cleaners()[1];
    const auto& planned = cleaner.plan()->items.at(0);
    // The lists may change while the preview is open.
    files().setActive(1, false);
    delegate->editors().dictionary().setWordDictionary({});
    EXPECT_EQ(cleaner.rule(planned) + cleaner.word(planned), "rule 2: names with a word in and below ~/workbank");
    files().setActive(1, true);
    delegate->editors().dictionary().setWordDictionary({ "", "bank" });
    delegate->cleanForCommand(chosen);
    runLoop.advance(1s);
    EXPECT_EQ(find("%p"), expected);
}

TEST_F(TWPreviewTest, AddsUpWhatIsTickedAndCountsNothingTwice)
{
    const auto size = [this](const std::string& path) { return fileSystem.look(path).facts.bytes; };
    const auto big = root.write("home/folder/inner/big", std::string(50'000, 'x'));
    root.write("home/folder/small", "x");
    std::filesystem::create_hard_link(trash("a"), places.trash + "/files/b");
    addRule("~/folder", TWFolderContents);
    addRule("~/folder/inner");
    addRule("~/folder/inner", TWFolderContents);
    makeAll();
    ASSERT_EQ(preview->cleaners()[1]->groups().size(), 3U);
    const auto trashed = size(places.trash + "/files/a");
    const auto inner = size(root.path("home/folder/inner")) + size(big);
    const auto small = size(root.path("home/folder/small"));
    using Numbers = std::pair<std::uint64_t, std::uint64_t>;
    const auto total = [this] {
        runLoop.runUntilIdle();
        return Numbers(preview->total().items, preview->total().bytes);
    };
    EXPECT_EQ(total(), Numbers(4, trashed + inner + small));
    const auto groups = preview->cleaners()[1]->groups();
    preview->setTicked(1, groups[0], TWTick::Off);
    EXPECT_EQ(total(), Numbers(3, trashed + inner)) << "the second rule names it as well";
    preview->setTicked(1, groups[1], TWTick::Off);
    EXPECT_EQ(total(), Numbers(3, trashed + size(big)));
    preview->setTicked(0, item(0, places.trash + "/files/a"), TWTick::Off);
    EXPECT_EQ(total(), Numbers(2, trashed + size(big))) << "the other name still holds the file";
    preview->setAllTicked(1, TWTick::Off);
    EXPECT_EQ(total(), Numbers(1, trashed));
    EXPECT_FALSE(preview->jobs()[Files].plan);
    preview->setAllTicked(1, TWTick::On);
    EXPECT_EQ(total(), Numbers(3, trashed + inner + small));
    EXPECT_EQ(shown.ends, 1U);
}

TEST_F(TWPreviewTest, MayBeStoppedOrDestroyedAtAnyMoment)
{
    trash("a");
    root.write("home/folder/file", "x");
    addRule("~/folder");
    bool over = false;
    for (int turns = 0; !over; ++turns) {
        SCOPED_TRACE("after turn " + std::to_string(turns));
        for (const bool destroyed : { true, false }) {
            make();
            for (int turn = 0; turn < turns; ++turn)
                runLoop.turn(0ms);
            over = shown.ends > 0;
            const auto changes = shown.changes;
            destroyed ? preview.reset() : preview->stop();
            runLoop.advance(1s);
            EXPECT_EQ(shown.ends, destroyed && !over ? 0U : 1U);
            EXPECT_TRUE(!destroyed || shown.changes == changes);
        }
        // What the user was not shown in full is not carried out.
        EXPECT_EQ(preview->jobs()[Files].plan != nullptr, preview->cleaners()[1]->isComplete());
    }
    for (std::size_t call = 1; shown.ends == 0 || call == 1; ++call) {
        make();
        shown.onCall = [&] {
            if (shown.changes + shown.ends == call)
                preview.reset();
        };
        runLoop.runUntilIdle();
        EXPECT_EQ(shown.changes + shown.ends, call) << "silent from then on";
    }
}

TEST_F(TWPreviewTest, ShowsTheFirstItemsEarlyAndKeepsTheirTicks)
{
    constexpr std::size_t Count = 10'000; // more parts than one turn takes
    for (std::size_t number = 0; number < Count; ++number)
        root.write("home/.local/share/Trash/files/" + std::to_string(number), "");
    chosen[Files] = false;
    make();
    const auto& cleaner = *preview->cleaners()[0];
    while (!cleaner.plan())
        runLoop.turn(0ms);
    ASSERT_FALSE(cleaner.isPlanned());
    const auto first = cleaner.plan();
    EXPECT_LT(first->items.size(), Count / 2);
    preview->setAllTicked(0, TWTick::Off);
    preview->setTicked(0, 3, TWTick::On);
    preview->setTicked(0, cleaner.groups()[0], TWTick::On); // of which not all is known
    runLoop.runUntilIdle();
    ASSERT_EQ(cleaner.plan()->items.size(), Count);
    EXPECT_TRUE(std::ranges::equal(first->items, std::span(cleaner.plan()->items).first(first->items.size()), {},
        &TWPlannedItem::name, &TWPlannedItem::name));
    EXPECT_EQ(preview->total().items, 1U);
    EXPECT_TRUE(cleaner.isTicked(3));
}

TEST_F(TWPreviewTest, ARunOfItLeavesAloneWhatHasChangedSince)
{
    const std::string folder = "home/.local/share/Trash/files/";
    for (const auto* name : { "same", "written", "replaced", "retyped", "touched", "vanished", "mounted", "named" })
        trash(name);
    root.write(folder + "grown/inside", "x");
    root.write(folder + "deep/inner/inside", "x");
    std::filesystem::create_hard_link(root.path(folder + "named"), root.path("home/name"));
    chosen[Files] = false;
    mountTable.points.push_back(places.trash + "/files/mounted");
    makeAll();
    std::this_thread::sleep_for(20ms); // longer than the clock of the file system takes to go on
    root.write(folder + "written", "y");
    root.write("new", "x");
    std::filesystem::rename(root.path("new"), root.path(folder + "replaced"));
    std::filesystem::remove(root.path(folder + "retyped"));
    root.folder(folder + "retyped");
    chmod(root.path(folder + "touched").c_str(), 0400);
    std::filesystem::remove(root.path(folder + "vanished"));
    root.write(folder + "grown/later", "x");
    root.write(folder + "deep/inner/later", "x");
    const auto modified = std::filesystem::last_write_time(root.path("home/name"));
    root.write("home/name", "y");
    std::filesystem::last_write_time(root.path("home/name"), modified);
    mountTable.points.pop_back();
    trash("late");
    auto lines = cleanPreview();
    Lines expected{ "  \u2022 \"ROOT/" + folder
            + "vanished\" was gone before its turn came; if it was moved, it still exists.",
        "  \u2022 1 item stayed, because the preview showed it as refused.", NotAllTrash };
    for (const std::string name : { "written", "replaced", "retyped", "touched", "grown", "deep", "named" }) {
        expected.push_back(leftAlone("ROOT/" + folder + name));
        expected.push_back("  \u2022 Could not delete ROOT/" + folder + name);
        EXPECT_TRUE(root.exists(folder + name)) << name;
    }
    std::ranges::sort(lines);
    std::ranges::sort(expected);
    EXPECT_EQ(lines, expected);
    EXPECT_TRUE(root.exists(folder + "late") && !root.exists(folder + "same"));
    EXPECT_TRUE(root.exists("home/.local/share/Trash/info/written.trashinfo"));
    EXPECT_TRUE(root.exists(folder + "mounted") && view.freed.left == 8);
}

TEST_F(TWPreviewTest, ARunOfItIsNotMisledByItsOwnDeletions)
{
    root.write("home/folder/a", "x");
    root.write("home/folder/b", "x");
    std::filesystem::create_hard_link(root.path("home/folder/a"), root.path("home/name"));
    addRule("~/folder", TWFolderContents);
    addRule("~/folder");
    addRule("~/name");
    chosen[Trash] = false;
    makeAll();
    EXPECT_EQ(cleanPreview(), Lines{ Gone });
    EXPECT_FALSE(root.exists("home/folder") || root.exists("home/name"));

    // Somebody else's change before them is still found.
    root.write("home/folder/a", "x");
    files().setActive(3, false);
    makeAll();
    std::this_thread::sleep_for(20ms);
    root.write("home/folder/late", "x");
    EXPECT_EQ(cleanPreview().front(), leftAlone("ROOT/home/folder"));
    EXPECT_TRUE(!root.exists("home/folder/a") && root.exists("home/folder/late"));

    // So is one that comes while something else in the folder is deleted.
    root.write("home/F/slow/file", "x");
    addRule("~/F/slow");
    addRule("~/F");
    makeAll();
    files().setActive(1, false);
    launcher.atLaunch = [this] { root.write("home/F/new", "x"); };
    EXPECT_EQ(cleanPreview().front(), leftAlone("ROOT/home/F"));
    EXPECT_TRUE(!root.exists("home/F/slow") && root.exists("home/F/new"));
    launcher.atLaunch = [] {};

    // What goes with a folder that an earlier cleaner deletes is gone, unless the folder was moved away before.
    addRule("~/.local/share/Trash/files/d", TWFolderContents);
    for (const bool moved : { false, true }) {
        trash("other");
        root.write("home/.local/share/Trash/files/d/in", "x");
        chosen[Trash] = true;
        makeAll();
        if (moved)
            std::filesystem::rename(root.path("home/.local/share/Trash/files/d"), root.path("home/d"));
        const auto lines = cleanPreview();
        EXPECT_EQ(lines.back() == Gone, !moved) << testing::PrintToString(lines);
    }
}

TEST_F(TWPreviewTest, OnlyWhatIsTickedIsCarriedOutAndAgainIfAsked)
{
    const auto kept = trash("kept");
    trash("gone");
    for (const auto* name : { "a", "b", "c" }) {
        root.write(std::string("home/") + name, "x");
        addRule(std::string("~/") + name);
    }
    makeAll();
    preview->setTicked(0, item(0, kept), TWTick::Off);
    preview->setTicked(1, preview->cleaners()[1]->groups()[0], TWTick::Off);
    preview->setTicked(1, item(1, root.path("home/b")), TWTick::Off);
    files().setActive(3, false); // a rule changes nothing any more
    EXPECT_EQ(cleanPreview(), (Lines{ Gone, Gone }));
    EXPECT_TRUE(root.exists("home/a") && root.exists("home/b") && !root.exists("home/c"));
    EXPECT_TRUE(std::filesystem::exists(kept) && root.exists("home/.local/share/Trash/info/kept.trashinfo"));
    EXPECT_FALSE(root.exists("home/.local/share/Trash/info/gone.trashinfo"));

    preview->setTicked(1, item(1, root.path("home/a")), TWTick::On);
    EXPECT_EQ(cleanPreview().size(), 4U) << "two that are gone are named";
    EXPECT_TRUE(!root.exists("home/a") && root.exists("home/b"));
    EXPECT_EQ(view.lines.back(), "ended: succeeded");

    preview->setAllTicked(0, TWTick::Off);
    view.lines.clear();
    EXPECT_EQ(cleanPreview().size(), 3U);
    EXPECT_EQ(std::ranges::count(view.lines, "yellow 2"), 0) << "the Trash cleaner takes no part";
    preview->setAllTicked(1, TWTick::Off);
    delegate->cleanPreview(*preview);
    EXPECT_EQ(alerts.alerts.back().title, "Nothing is ticked.");
}

TEST_F(TWPreviewTest, WarningsFailuresAndWhatCannotBeReadAreThoseOfTheRun)
{
    addRule("~/words", TWItemsWithKeywords);
    root.folder("home/words");
    addRule("~/here");
    root.write("home/here", "x");
    addRule("~/missing", TWFolderContents);
    makeAll();
    const auto& cleaner = *preview->cleaners()[1];
    EXPECT_TRUE(cleaner.hasProblem() && !preview->cleaners()[0]->hasProblem());
    EXPECT_EQ(preview->total().items, 0U);
    EXPECT_NE(cleaner.refusal(cleaner.plan()->items.at(0)).find("does not exist"), std::string::npos);
    delegate->editors().dictionary().setWordDictionary({ "word" });
    EXPECT_EQ(cleanPreview().back(), "Folder ROOT/home/missing does not exist!");
    EXPECT_EQ(alerts.alerts.back().text, cleaner.warning()) << "what the preview warned about, not the list of today";
    EXPECT_NE(cleaner.warning(), "");
    EXPECT_TRUE(root.exists("home/here"));
}

TEST_F(TWPreviewTest, ARunOfItSaysOnlyWhatItHasFreedItself)
{
    root.write("home/d/sub/big", std::string(50'000, 'x'));
    root.write("home/d/file", "x");
    std::filesystem::create_hard_link(root.write("home/d/name", "x"), root.path("home/name"));
    addRule("~/d/sub");
    addRule("~/d/sub/big");
    addRule("~/d", TWFolderContents);
    view.measures = true;
    makeAll();
    const auto free = preview->total().bytes - fileSystem.look(root.path("home/name")).facts.bytes;
    TWPlanSummary summary;
    auto cleaner = TWCleanerTable()[Files].make(delegate->cleanerContext());
    TWCleanerTable()[Files].giveInfo(*cleaner, delegate->settingsSources());
    const TWPlanSummarizer summarizer(
        std::move(cleaner), runLoop, fileSystem, [&](const TWPlanSummary& made) { summary = made; });
    runLoop.runUntilIdle();
    EXPECT_EQ(std::pair(summary.items, summary.bytes), std::pair(preview->total().items, preview->total().bytes));
    cleanPreview();
    EXPECT_EQ(view.freed.bytes, free);
    EXPECT_FALSE(root.exists("home/d/name"));
    cleanPreview();
    EXPECT_EQ(view.freed.bytes, 0U) << "everything was gone before";
}

TEST_F(TWPreviewTest, ARunOfItHeedsWhatTheUserHasChosenMeanwhile)
{
    const auto kept = trash("kept");
    trash("gone");
    addRule("~/words", TWItemsWithKeywords); // warns, because there are no words
    root.folder("home/words");
    makeAll();
    alerts.leavesOpen = true;
    delegate->cleanPreview(*preview);
    preview->setTicked(0, item(0, kept), TWTick::Off);
    delegate->settings().set(TWKey::SecurelyDeleteFiles, true);
    alerts.answer(TWAnswer::Default);
    runLoop.advance(1s);
    EXPECT_TRUE(std::filesystem::exists(kept) && !root.exists("home/.local/share/Trash/files/gone"));
    EXPECT_TRUE(launcher.records.at(0).starts_with(places.srm)) << launcher.records.at(0);

    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    trash("later");
    makeAll();
    delegate->cleanPreview(*preview);
    preview.reset();
    alerts.answer(TWAnswer::Default);
    runLoop.advance(1s);
    EXPECT_TRUE(std::filesystem::exists(kept) && !delegate->running()) << "the preview is gone";

    // A run is never replaced by one of a preview, and says what it has not begun.
    alerts.leavesOpen = false;
    makeAll();
    delegate->cleanPreview(*preview);
    runLoop.advance(1s);
    delegate->cleanPreview(*preview);
    EXPECT_EQ(alerts.alerts.back().title, "A cleaning is running.");
    delegate->stop();
    launcher.endAll();
    runLoop.advance(1s);
    EXPECT_EQ(view.freed.notStarted, 1U);

    // What stays anyway is nothing to run.
    mountTable.points.push_back(kept);
    trash("last");
    chosen[Files] = false;
    makeAll();
    for (std::size_t each = 0; each < preview->cleaners()[0]->plan()->items.size(); ++each) {
        if (preview->cleaners()[0]->plan()->wouldDelete(preview->cleaners()[0]->plan()->items[each]))
            preview->setTicked(0, each, TWTick::Off);
    }
    EXPECT_FALSE(preview->jobs()[Trash].plan);
}
