#include "editors/TWLogsWindowController.h"

#include "builders/TWLogsText.h"
#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"

#include <random>

namespace {

struct RecordingLogsView final : TWLogsView {
    std::string selected; // by path
    Lines calls;
    TWLogsWindowController* controller = nullptr;

    void treeWillChange() override { ASSERT_FALSE(std::exchange(changing, true)); }
    void treeChanged() override { ASSERT_TRUE(std::exchange(changing, false)); }
    void nodesChanged() override { }
    TWLogsNode* selectedItem() const override { return controller->find(selected); }
    void showMessage(const std::string& message) override
    {
        if (!message.empty())
            calls.push_back("message: " + message);
    }
    void openFile(const std::string& path) override { calls.push_back("open: " + path); }
    void showPreview(const std::string& path) override { calls.push_back("preview: " + path); }
    void closeSheet() override { calls.emplace_back("close"); }
    void openHelpAnchor(const std::string& anchor) override { calls.push_back("help: " + anchor); }

    bool changing = false;
};

class TWLogsWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    static constexpr auto File = "home/.local/share/Tidewell/Logs.plist";

    TWLogsWindowControllerTest() { view.controller = &controller; }

    TWEditorContext context{ settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes };

    // The sheet of somebody who opens it now.
    void open(TWLogsWindowController& editor)
    {
        editor.awakeFromNib(TWLaunchKind::Window);
        editor.sheetOpened();
        runLoop.runUntilIdle();
    }
    static std::string textOf(const TWLogsWindowController& editor)
    {
        std::string text;
        TWLogsText::add(editor.logsRoot(), 0, text);
        return text;
    }
    std::string source(const std::string& name) { return root.path("home/" + name); }
    void click(const std::string& path, std::int64_t value)
    {
        controller.setObjectValue(*controller.find(path), value);
    }
    void report(const TWFolderChanges& changes)
    {
        for (const auto& folder : changes.folders)
            folderWatcher.change(folder);
        for (const auto& tree : changes.trees)
            folderWatcher.changeTree(tree);
        runLoop.advance(2s);
    }

    TWDictionaryWindowController dictionary{ listFolder };
    TWLogsWindowController controller{ context, dictionary };
    RecordingLogsView view;
};

TEST_F(TWLogsWindowControllerTest, TheLogFoldersAreReadWithLinksAsLeavesAndClicksAreSavedAtOnce)
{
    root.write("home/logs/b", "12345");
    root.write("home/logs/.DS_Store", "x");
    root.write("home/logs/.DS_Store.d/.hidden", "x");
    root.link("home/logs/link", "..");
    root.write("home/.xsession-errors", "x");
    root.write("var/log/syslog", "x");
    root.write("var/log/bad\xFF", "x");
    logSources.sources = { { "A program", source("logs"), true }, { "X", source(".xsession-errors"), false },
        { "Gone", source("gone"), true } };
    controller.setView(&view);
    open(controller);
    constexpr auto Fresh = "[ ] User Logs/\n"
                           "  [ ] .xsession-errors\n"
                           "  [ ] A program/\n"
                           "    [ ] .DS_Store.d/\n"
                           "      [ ] .hidden\n"
                           "    [ ] b\n"
                           "    [ ] link\n"
                           "  [ ] Gone/\n"
                           "[ ] System Logs/\n"
                           "  [ ] bad\xFF\n"
                           "  [ ] syslog\n";
    EXPECT_EQ(textOf(controller), Fresh);
    EXPECT_GE(controller.find("~/logs")->bytes, 5U);
    EXPECT_EQ(folderWatcher.folders().added,
        (std::set{ source("logs"), source("gone"), root.path("var/log"), source("logs/.DS_Store.d") }));

    click(places.systemLogs + "/bad\xFF", 1);
    EXPECT_EQ(view.calls.size(), 1U) << "a property list holds no such name";
    click("~/logs/.DS_Store.d/.hidden", 1);
    click(places.systemLogs, 1);
    TWLogsWindowController other(context, dictionary);
    open(other);
    EXPECT_EQ(textOf(other),
        "[-] User Logs/\n"
        "  [-] A program/\n"
        "    [-] .DS_Store.d/\n"
        "      [x] .hidden\n"
        "    [ ] b\n"
        "    [ ] link\n"
        "  [ ] .xsession-errors\n"
        "  [ ] Gone/\n"
        "[x] System Logs/\n"
        "  [ ] bad\xFF\n"
        "  [ ] syslog\n");
    EXPECT_FALSE(TWLogsWindowController::isEnabled(*other.find(places.systemLogs + "/syslog")));

    view.calls.clear();
    for (const auto* path : { "~/logs/b", "ALL_USER_LOGS", "ALL_SYSTEM_LOGS", "nothing" }) {
        view.selected = path;
        controller.doubleClick();
        controller.outlineViewSpaceKeyDown();
    }
    controller.help();
    controller.ok();
    EXPECT_EQ(view.calls,
        (Lines{ "open: " + source("logs/b"), "preview: " + source("logs/b"), "preview: " + places.systemLogs,
            "help: Logs", "close" }));
    view.calls.clear();
    std::filesystem::remove(root.path(File));
    std::filesystem::create_directory(root.path(File));
    click("~/logs/b", 1);
    EXPECT_EQ(view.calls.size(), 1U) << "the save failed";
    EXPECT_TRUE(controller.hasUnsavedEdits());
}

TEST_F(TWLogsWindowControllerTest, NodesOutsideOfTheLogFoldersAreMarkedAndCanBeUnchecked)
{
    root.write("home/logs/a", "x");
    root.write("home/precious", "x");
    logSources.sources = { { "A program", source("logs"), true } };
    const auto node = [](const std::string& path) {
        return "<dict><key>Active</key><integer>1</integer><key>Item</key><string>hand-made</string><key>ItemPath</key>"
               "<string>"
            + path + "</string></dict>";
    };
    root.write(File,
        "<plist version=\"1.0\"><array>" + node("~/precious") + node("~/logs/../precious") + node("~/logs/gone")
            + "</array></plist>");
    controller.setView(&view);
    open(controller);
    constexpr auto Rest = "[ ] User Logs/\n  [ ] A program/\n    [ ] a\n[ ] System Logs/\n";
    EXPECT_EQ(
        textOf(controller), std::string("[x] hand-made outside\n[x] hand-made outside\n[x] hand-made gone\n") + Rest);
    click("~/precious", 0);
    click("~/logs/gone", 0);
    report({ false, { source("logs") }, {} });
    EXPECT_EQ(textOf(controller), std::string("[x] hand-made outside\n") + Rest);
    std::string deep;
    for (int level = 0; level < 10000; ++level)
        deep += "<dict><key>ItemPath</key><string>a</string><key>Children</key><array>";
    root.write(File, "<plist><array>" + deep);
    for (int level = 0; level < 10000; ++level)
        std::ofstream(root.path(File), std::ios::app) << "</array></dict>";
    std::ofstream(root.path(File), std::ios::app) << "</array></plist>";
    controller.list().load();
    EXPECT_NE(controller.problem(), "");
    EXPECT_EQ(controller.settings()->size(), 0U);
}

TEST_F(TWLogsWindowControllerTest, TheFilterShowsWhatMatchesWithEverythingAroundIt)
{
    for (const auto* name : { "a/deep/match.log", "a/deep/other", "a/x", "Matching/inside/x", "b/y" })
        root.write("var/log/" + std::string(name), "x");
    controller.setView(&view);
    open(controller);
    controller.setFilter("MATCH");
    runLoop.runUntilIdle();
    std::string shown;
    const auto add = [&](auto& self, const TWLogsNode* item) -> void {
        for (std::size_t row = 0; row < controller.numberOfChildren(item); ++row) {
            const auto* const child = controller.child(row, item);
            EXPECT_EQ(controller.rowOf(*child), row);
            shown += child->item + (child->isFolder() ? "/ " : " ");
            self(self, child);
        }
    };
    add(add, nullptr);
    EXPECT_EQ(shown, "System Logs/ Matching/ inside/ x a/ deep/ match.log ");
    root.write("var/log/b/match too", "x");
    report({ false, { root.path("var/log/b") }, {} });
    EXPECT_EQ(controller.numberOfChildren(controller.find(places.systemLogs)), 3U);
    controller.setFilter("");
    EXPECT_EQ(controller.numberOfChildren(nullptr), 2U);
}

// Also a folder of which a change is reported.
TEST_F(TWLogsWindowControllerTest, DeepFoldersAreNotLookedInto)
{
    const auto deep = root.deepFolder("var/log/deep", 230, 1000);
    open(controller);
    const auto whole = textOf(controller);
    EXPECT_EQ(std::count(whole.begin(), whole.end(), '\n'), static_cast<int>(TWLogsScan::MaximumDepth) + 4);
    std::string path = deep;
    for (int level = 0; level < 150; ++level)
        path += "/down";
    report({ false, { path }, { path + "/down" } });
    EXPECT_EQ(textOf(controller), whole);
}

// Whatever happens to the folders and the check boxes, the tree is always as if it had just been read as a whole.
TEST_F(TWLogsWindowControllerTest, AfterEveryChangeTheTreeEqualsOneThatIsReadAsAWhole)
{
    logSources.sources = { { "One", source("one"), true }, { "Two", source("two"), true } };
    Lines tops{ root.folder("home/one"), root.folder("home/two"), places.systemLogs };
    TWFakeFolderWatcher otherWatcher;
    const TWLogKnowledge otherLogs{ logSources, otherWatcher, openFiles };
    const TWEditorContext otherContext{ settings, listFolder, bundle, alerts, tools, programs, otherLogs, workspace,
        volumes };
    controller.setView(&view);
    open(controller);
    std::mt19937 random(20261122);
    const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random() % limit); };
    const auto anyFolder = [&] {
        Lines folders = tops;
        for (const auto& top : tops) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
                if (entry.is_directory() && !entry.is_symlink())
                    folders.push_back(entry.path().string());
            }
        }
        return folders[below(folders.size())];
    };
    std::error_code error; // of what cannot be done just then
    for (int round = 0; round < 200; ++round) {
        TWFolderChanges changes{ false, { places.systemLogs }, {} };
        for (auto step = below(3); step-- > 0;) {
            const auto folder = anyFolder();
            const auto path = folder + "/" + "abcdef"[below(6)];
            const bool isFolder = std::filesystem::is_directory(path);
            const auto other = anyFolder();
            changes.folders.push_back(folder);
            switch (below(4)) {
            case 0:
                std::filesystem::create_directories(path + "/new", error);
                changes.trees.push_back(path);
                break;
            case 1:
                std::ofstream(path) << "x";
                break;
            case 2:
                std::filesystem::remove_all(path);
                break;
            default:
                if (!std::filesystem::exists(path) || TWPath::isAtOrBelow(other, path))
                    break;
                std::filesystem::remove_all(other + "/moved", error);
                std::filesystem::rename(path, other + "/moved", error);
                changes.folders.push_back(other);
                if (isFolder)
                    changes.trees.push_back(other + "/moved");
            }
        }
        for (auto clicks = below(3); clicks-- > 0;) {
            std::vector<TWLogsNode*> nodes;
            const auto collect = [&](auto& self, const TWLogsTree::Level& level) -> void {
                for (const auto& node : level) {
                    nodes.push_back(node.get());
                    if (node->children)
                        self(self, *node->children);
                }
            };
            collect(collect, controller.logsRoot());
            controller.setObjectValue(*nodes[below(nodes.size())], static_cast<std::int64_t>(below(3)) - 1);
        }
        report(changes);
        TWLogsWindowController whole(otherContext, dictionary);
        open(whole);
        ASSERT_EQ(textOf(controller), textOf(whole)) << "round " << round;
        ASSERT_EQ(controller.find("ALL_USER_LOGS")->bytes, whole.find("ALL_USER_LOGS")->bytes);
        ASSERT_EQ(controller.checkedBytes(), whole.checkedBytes());
    }
}

}
