#include "app/TWPreviewWindowController.h"

#include "app/TWFolderListing.h"
#include "editors/TWApplicationsWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "editors/TWKeepWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "editors/TWVolumesWindowController.h"
#include "fakes/TWFakeApplication.h"

namespace {

using enum TWPreviewOrder;
using enum TWPreviewDirection;
using enum TWPreviewFate;

// A plan of files without a disk. The last item of each is a quiet one.
struct MadePlan {
    std::shared_ptr<TWPlan> plan = std::make_shared<TWPlan>();
    std::shared_ptr<std::vector<std::uint64_t>> bytes = std::make_shared<std::vector<std::uint64_t>>();

    void add(const std::string& folder, const std::string& name, std::uint64_t size, std::int64_t modified)
    {
        if (plan->folders.empty() || plan->folders.back()->path != folder)
            plan->folders.push_back(std::make_shared<TWPlannedFolder>(TWPlannedFolder{ folder, folder, {} }));
        auto& item = plan->addItem(name);
        item.folder = static_cast<std::uint32_t>(plan->folders.size() - 1);
        item.facts.modified = modified;
        item.quiet = name == "quiet";
        bytes->push_back(size);
    }
    TWPreviewShare share(std::uint32_t cleaner) const
    {
        return { plan, bytes, std::vector<bool>(plan->items.size()), bytes->size(), cleaner };
    }
};

class TWPreviewRowsTest : public testing::Test {
protected:
    TWPreviewRowsTest()
    {
        one.add("/b", "x", 1, 300);
        one.add("/a", "\xFF", 7, 100);
        one.add("/a", "quiet", 99, 1);
        one.add("/a", "X", 7, -5);
        two.add("/", "a-", 7, 300);
        two.add("/a/x", "y", 3, 300);
        source.overlaps = std::make_shared<std::vector<TWPreviewOverlap>>();
        source.shares = { one.share(0), two.share(2) };
    }
    Lines found(const TWPreviewWish& wish)
    {
        Lines paths;
        for (const auto& row : TWFindPreviewRows(source, wish, {})) {
            const auto& plan = *(row.cleaner == 0 ? one : two).plan;
            paths.push_back(plan.path(plan.items[row.item]));
        }
        return paths;
    }

    MadePlan one;
    MadePlan two;
    TWPreviewSource source;
};

}

TEST_F(TWPreviewRowsTest, SortsByBytesSizeAndAgeWithTiesInTheOrderOfARun)
{
    EXPECT_EQ(found({}), (Lines{ "/b/x", "/a/\xFF", "/a/X", "/a-", "/a/x/y" }));
    EXPECT_EQ(found({ .direction = Descending }), (Lines{ "/a/x/y", "/a-", "/a/X", "/a/\xFF", "/b/x" }));
    EXPECT_EQ(found({ .order = Path }), (Lines{ "/a-", "/a/X", "/a/x/y", "/a/\xFF", "/b/x" }));
    EXPECT_EQ(found({ .order = Size, .direction = Descending }), (Lines{ "/a/\xFF", "/a/X", "/a-", "/a/x/y", "/b/x" }));
    EXPECT_EQ(found({ .order = Age }), (Lines{ "/b/x", "/a-", "/a/x/y", "/a/\xFF", "/a/X" }));
    source.shares[0].sized = 1;
    EXPECT_EQ(found({ .order = Size }), (Lines{ "/a/\xFF", "/a/X", "/b/x", "/a/x/y", "/a-" }));
}

TEST_F(TWPreviewRowsTest, ShowsOnlyWhatIsWished)
{
    EXPECT_EQ(found({ .text = "/X" }), (Lines{ "/b/x", "/a/X", "/a/x/y" })) << "across folder and name";
    EXPECT_EQ(found({ .text = "//" }), Lines{});
    EXPECT_EQ(found({ .cleaner = 2 }), (Lines{ "/a-", "/a/x/y" }));
    EXPECT_EQ(found({ .cleaner = 0, .begin = 1, .end = 3 }), Lines{ "/a/\xFF" });
    EXPECT_EQ(found({ .about = { "/a/x", "/b" } }), (Lines{ "/b/x", "/a/x/y" }));
    EXPECT_EQ(found({ .about = { "/a/X/deeper" } }), Lines{ "/a/X" });
    one.plan->object(one.plan->items[3], TWObjection("because"));
    source.shares[0].unticked[0] = source.shares[0].unticked[1] = true;
    source.overlaps = std::make_shared<std::vector<TWPreviewOverlap>>(1, TWPreviewOverlap{ { 0, 1 }, { 2, 0 } });
    source.kept = { { 2, 1 } };
    EXPECT_EQ(found({ .shown = TWPreviewShown::WouldBeDeleted }), (Lines{ "/a/\xFF", "/a-" }));
    EXPECT_EQ(found({ .shown = TWPreviewShown::WouldStay }), (Lines{ "/b/x", "/a/X", "/a/x/y" }));
}

TEST_F(TWPreviewRowsTest, SortsManyRowsAndForgetsAWishThatHasChanged)
{
    MadePlan many;
    for (std::uint64_t number = 0; number < 20'000; ++number)
        many.add("/many", std::to_string(number * 7919 % 20'000), number * 6007 % 1000, 0);
    source.shares = { many.share(0) };
    for (const auto order : { Path, Size }) {
        auto rows = TWFindPreviewRows(source, { .order = order }, {});
        ASSERT_EQ(rows.size(), 20'000U);
        EXPECT_TRUE(std::ranges::is_sorted(rows, {}, [&](const auto& row) {
            return std::tuple(order == Size ? (*many.bytes)[row.item] : 0,
                order == Path ? many.plan->items[row.item].name : "", order == Size ? row.item : 0);
        }));
    }
    TWFakeRunLoop runLoop;
    int calls = 0;
    TWPreviewRows rows(runLoop, [&] { ++calls; });
    rows.find(source, { .order = Path });
    rows.find(source, { .text = "1234" });
    runLoop.runUntilIdle();
    EXPECT_EQ(calls, 1);
    ASSERT_EQ(rows.size(), 12U);
    EXPECT_EQ(rows.position(rows[3]), 3U);
    rows.find(source, {});
    rows.clear();
    runLoop.runUntilIdle();
    EXPECT_TRUE(calls == 1 && rows.size() == 0);
}

namespace {

class TWPreviewWindowControllerTest : public testing::Test, protected TWFakeApplication {
protected:
    TWPreviewWindowControllerTest()
    {
        delegate->applicationDidFinishLaunching();
        delegate->settings().set(TWKey::FilesCleaner, true);
        files().setActive(0, false);
        root.write("home/folder/kept/inside", "x");
        root.write("home/folder/other", "x");
        for (const auto* path : { "~/folder", "~/folder/kept", "~/folder/kept", "~/folder/other" })
            files().addRule({ true, files().rules().size() == 3 ? "Mine" : "", path, TWItemItself });
        controller.refresh();
        runLoop.advance(1s);
    }
    TWFilesWindowController& files() { return delegate->editors().get<TWFilesWindowController>(); }
    std::vector<TWPreviewFate> fates() const
    {
        std::vector<TWPreviewFate> fates;
        for (std::size_t row = 0; row < controller.rows().size(); ++row)
            fates.push_back(controller.fate(controller.rows()[row]));
        return fates;
    }
    void untick(std::size_t row)
    {
        controller.tick({ &controller.rows().all()[row], 1 }, TWTick::Off);
        runLoop.advance(1s);
    }
    std::string why(std::size_t row) const { return controller.why(controller.rows()[row]); }

    std::unique_ptr<TWTidewellAppDelegate> delegate = start();
    TWPreviewWindowController controller{ *delegate };
};

}

TEST_F(TWPreviewWindowControllerTest, SaysWhatDeletesAnUntickedItemAllTheSame)
{
    EXPECT_EQ(fates(), std::vector(4, Deleted));
    untick(1);
    EXPECT_EQ(fates(), (std::vector{ Deleted, DeletedAnyway, Deleted, Deleted }));
    EXPECT_EQ(why(1), "Still deleted with ~/folder (rule \"~/folder\")");
    untick(0);
    EXPECT_EQ(fates(), (std::vector{ Unticked, DeletedAnyway, Deleted, Deleted }));
    EXPECT_EQ(why(1), "Still deleted by the rule \"Mine\"");
    EXPECT_EQ(controller.counts().all().ticked, 2U);
    untick(2);
    EXPECT_EQ(fates(), (std::vector{ Unticked, Unticked, Unticked, Deleted }));
    controller.tickAll(TWTick::On);
    runLoop.advance(1s);
    EXPECT_EQ(fates(), std::vector(4, Deleted));
}

TEST_F(TWPreviewWindowControllerTest, KeepsWithEverythingThatStaysBecauseOfIt)
{
    EXPECT_TRUE(controller.keep({ controller.rows()[1] }).starts_with("Kept from now on: 1 item."));
    runLoop.advance(1s);
    EXPECT_EQ(fates(), (std::vector{ Kept, Kept, Kept, Deleted }));
    EXPECT_EQ(why(0), "Stays, because something in it is kept from now on");
    EXPECT_EQ(why(2), "Kept from now on");
    EXPECT_EQ(controller.notice(), "") << "the window's own change does not make it out of date";
    controller.tickAll(TWTick::On);
    controller.clean();
    runLoop.advance(1s);
    EXPECT_TRUE(root.exists("home/folder/kept/inside") && !root.exists("home/folder/other"));
    EXPECT_EQ(view.lines.back(), "ended: succeeded") << "nothing was refused";
    EXPECT_NE(controller.notice(), "");
    controller.refresh();
    EXPECT_EQ(controller.notice(), "");
    delegate->settings().set(TWKey::TrashCleaner, true);
    runLoop.advance(1s);
    EXPECT_NE(controller.notice(), "");
    root.write("home/.local/share/Trash/files/a", "x");
    controller.refresh();
    runLoop.advance(1s);
    EXPECT_TRUE(!controller.canKeep(controller.rows()[0]) && controller.canKeep(controller.rows()[3]));
    const auto both = controller.keep({ controller.rows()[0], controller.rows()[1] });
    EXPECT_TRUE(both.starts_with("Kept from now on: 1 of 2 items.") && both.find("in the Trash") != std::string::npos);
    EXPECT_EQ(controller.shortPath(controller.rows()[0]), "Trash/a");
}

TEST_F(TWPreviewWindowControllerTest, KeepsWhatComesAfterTheKeptItem)
{
    for (int number = 0; number < 10'000; ++number)
        root.write("home/many/" + std::to_string(number), "");
    files().addRule({ true, "", "~/many", TWFolderContents });
    files().addRule({ true, "", "~/folder/other", TWItemItself });
    controller.refresh();
    while (!controller.preview()->cleaners()[0]->plan())
        runLoop.turn(0ms);
    ASSERT_FALSE(controller.preview()->cleaners()[0]->isPlanned());
    controller.keep({ TWPreviewRow() });
    runLoop.advance(1s);
    ASSERT_EQ(fates().size(), 10'005U);
    EXPECT_EQ(fates().back(), Kept);
}

TEST_F(TWPreviewWindowControllerTest, CleansOnceAndOnlyWhatIsStillSwitchedOn)
{
    const auto refuses = [&](const char* reason) {
        controller.clean();
        runLoop.advance(1s);
        return controller.obstacle().find(reason) != std::string::npos && root.exists("home/folder/other");
    };
    delegate->settings().set(TWKey::FilesCleaner, false);
    EXPECT_TRUE(refuses("have changed since")) << "Clean itself looks, before the window has shown it";
    delegate->settings().set(TWKey::FilesCleaner, true);
    delegate->settings().set(TWKey::SecurelyDeleteFiles, true);
    EXPECT_TRUE(refuses("have changed since"));
    delegate->settings().set(TWKey::SecurelyDeleteFiles, false);
    auto& toQuit = delegate->editors().get<TWApplicationsWindowController>();
    toQuit.insertEntry(0, { "/bin/true", "true" });
    EXPECT_TRUE(refuses("have changed since"));
    toQuit.removeEntry(0);
    delegate->settings().set(TWKey::ApplicationsForceQuit, true);
    EXPECT_TRUE(refuses("have changed since"));
    delegate->settings().set(TWKey::ApplicationsForceQuit, false);
    runLoop.advance(1s);
    EXPECT_TRUE(controller.canClean());
    const auto change = [](auto& list, const auto& records) {
        list.changeSaved([&](auto& saved) {
            saved = records;
            return true;
        });
    };
    auto& checkedLogs = delegate->editors().get<TWLogsWindowController>().list();
    change(checkedLogs, std::vector<TWLogsRecord>{ { "log", "~/log", TWLogChecked, std::nullopt } });
    EXPECT_TRUE(refuses("have changed since"));
    change(checkedLogs, std::vector<TWLogsRecord>());
    auto& checkedVolumes = delegate->editors().get<TWVolumesWindowController>().list();
    change(checkedVolumes, std::vector<TWVolumesRecord>{ { true, "stick", "/media/stick" } });
    EXPECT_TRUE(refuses("have changed since"));
    change(checkedVolumes, std::vector<TWVolumesRecord>());
    runLoop.advance(1s);
    EXPECT_TRUE(controller.canClean());
    controller.tickAll(TWTick::Off);
    runLoop.advance(1s);
    EXPECT_TRUE(refuses("Nothing is ticked"));
    controller.tickAll(TWTick::On);
    EXPECT_TRUE(controller.ticksChanged());
    controller.clean();
    EXPECT_FALSE(controller.canClean()) << "a run goes on";
    runLoop.advance(1s);
    EXPECT_TRUE(!root.exists("home/folder") && controller.cleaned() && !controller.canClean());
    EXPECT_TRUE(controller.sentence().starts_with("Clean was started from this preview at "));
}

TEST_F(TWPreviewWindowControllerTest, IsCleanedOnlyWhenTheQuestionIsConfirmed)
{
    files().setWhatToDelete(3, TWItemsWithKeywordsDeep);
    delegate->editors().dictionary().setWordDictionary({});
    controller.refresh();
    runLoop.advance(1s);
    alerts.leavesOpen = true;
    for (const auto answer : { TWAnswer::Alternate, TWAnswer::Default }) {
        controller.clean();
        ASSERT_EQ(alerts.open.size(), 1U);
        EXPECT_TRUE(!controller.canClean() && !controller.canChange() && !controller.cleaned());
        alerts.answer(answer);
        runLoop.advance(1s);
        EXPECT_EQ(controller.cleaned(), answer == TWAnswer::Default);
    }
}

TEST(TWPreviewMoment, NamesTheDayUnlessItIsToday)
{
    std::tm parts{};
    parts.tm_min = 2;
    parts.tm_hour = 14;
    parts.tm_mday = 1;
    parts.tm_mon = 2;
    parts.tm_year = 126;
    parts.tm_isdst = -1;
    const auto time = std::mktime(&parts);
    EXPECT_EQ(TWPreviewWindowController::moment(time, time + 3600), "at 14:02");
    EXPECT_EQ(TWPreviewWindowController::moment(time, time + 15 * 3600), "yesterday at 14:02");
    EXPECT_EQ(TWPreviewWindowController::moment(time, time + 60 * 3600), "on 2026-03-01 at 14:02");
}

TEST_F(TWPreviewWindowControllerTest, LeavesOutWhatAStopLeftIncomplete)
{
    controller.refresh();
    EXPECT_FALSE(controller.canClean());
    controller.stop();
    runLoop.advance(1s);
    EXPECT_FALSE(controller.canClean());
    EXPECT_EQ(controller.sentence(), "Stopped before anything was found.");
    EXPECT_EQ(controller.emptyText(), "Stopped before anything was found.");
    controller.refresh();
    while (!controller.preview()->cleaners()[0]->isPlanned())
        runLoop.turn(0ms);
    controller.stop();
    runLoop.advance(1s);
    EXPECT_EQ(fates(), std::vector(4, NotLookedAt));
    EXPECT_TRUE(controller.sentence().starts_with("Stopped before a cleaner was complete."));
    controller.setWish({ .shown = TWPreviewShown::WouldBeDeleted });
    runLoop.advance(1s);
    EXPECT_EQ(controller.rows().size(), 0U);
    controller.clean();
    runLoop.advance(1s);
    EXPECT_TRUE(root.exists("home/folder/other"));
    controller.refresh();
    controller.close(); // while it fills
    runLoop.advance(1s);
    EXPECT_FALSE(controller.preview());
}

TEST_F(TWPreviewWindowControllerTest, ExportsTheShownRowsOrSaysWhyNot)
{
    root.write("home/=\"odd\"\n", "x");
    files().addRule({ true, "", "~/=\"odd\"\n", TWItemItself });
    files().addRule({ true, "", "~", TWItemItself });
    controller.refresh();
    controller.setWish({ .order = Path, .text = "home" });
    runLoop.advance(1s);
    untick(1); // the home folder itself is refused and comes first
    std::string problem = "none";
    controller.exportRows(root.path("list.csv"), [&](const auto& said) { problem = said; });
    runLoop.advance(1s);
    EXPECT_EQ(problem, "");
    const auto text = root.read("list.csv");
    EXPECT_EQ(std::ranges::count(text, '\n'), 7);
    EXPECT_NE(text.find("\"would be refused\",\"" + places.home + "\""), std::string::npos) << text;
    EXPECT_NE(text.find("\r\n\"not ticked\",\"" + places.home + "/=\"\"odd\"\"\u240A\",\""), std::string::npos) << text;
    controller.exportRows(root.path("missing/list.csv"), [&](const auto& said) { problem = said; });
    runLoop.advance(1s);
    EXPECT_NE(problem.find("missing/list.csv\" could not be saved (No such file"), std::string::npos) << problem;
}

TEST_F(TWPreviewWindowControllerTest, ListsAFolderWithoutFollowingLinks)
{
    root.write("home/folder/b\xFF/inside", std::string(9000, 'x'));
    root.link("home/folder/a", "/");
    TWFolderListing listing(runLoop, fileSystem, root.path("home/folder"), [] {});
    runLoop.advance(1s);
    Lines names;
    for (const auto& entry : listing.entries())
        names.push_back(entry.name + (entry.look.isFolder() ? "/" : ""));
    EXPECT_EQ(names, (Lines{ "a", "b\xFF/", "kept/", "other" }));
    EXPECT_GE(listing.entries()[1].bytes.value(), 9000U);
    EXPECT_LT(listing.entries()[0].bytes.value(), 9000U);
    const TWFolderListing missing(runLoop, fileSystem, root.path("home/folder/a"), [] {});
    runLoop.advance(1s);
    EXPECT_TRUE(missing.ended() && missing.error() != 0) << "a link is not entered";
}
