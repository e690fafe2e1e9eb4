#include "editors/TWRecentItemsWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"
#include "plist/TWPropertyList.h"

namespace {

// Chooses at once, and records what it is told to show.
struct RecentItemsView final : TWRecordView, TWRecentItemsView {
    std::optional<TWApplication> chosen;
    std::vector<int> selected;
    Lines calls;

    void closeSheet() override { calls.emplace_back("close"); }
    void openHelpAnchor(const std::string& anchor) override { calls.push_back("help " + anchor); }
    void reloadTable() override { }
    void notesChanged() override { }
    int selectedRow() const override { return -1; }
    void selectRow(int row) override { calls.push_back("select " + std::to_string(row)); }
    void choosePath(const std::string&, const std::string&, std::function<void(std::optional<std::string>)>) override {
    }
    void selectApplication(
        const ApplicationPanel& panel, std::function<void(std::optional<TWApplication>)> answered) override
    {
        calls.push_back(panel.title + ": " + panel.prompt);
        answered(chosen);
    }
    void lookingChanged() override { }
    void showFoundKeys(const std::string& title, const std::string&) override { calls.push_back(title); }
    void closeFoundKeys() override { calls.emplace_back("close keys"); }
    std::vector<int> selectedFoundKeys() const override { return selected; }
    void showFile(const std::string& path) override { calls.push_back("show " + path); }
};

class TWRecentItemsWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    static constexpr auto Select = "Select an application: Choose";
    static constexpr auto Saved = "home/.local/share/Tidewell/RecentItemsRules.plist";

    TWRecentItemsWindowControllerTest()
    {
        bundle.infos["CFBundleVersion"] = "2";
        userDefaults.values["LastLaunchedVersion"] = "1";
        applications.dataHome = places.dataHome;
        applications.preferences["org.prog"]
            = { places.home + "/.config/none", places.home + "/.config/progrc", places.home + "/.config/prog.json" };
        ship("resources/RecentItemsRules.plist", { { true, "Old", "~/shipped", false, "Recent" } });
    }
    void ship(const char* path, const std::vector<TWRecentItemsRule>& rules)
    {
        TWValue::Array values;
        for (const auto& rule : rules)
            values.push_back(rule.value());
        root.write(path, *TWPropertyList::write(std::move(values), TWPropertyListFormat::XML));
    }
    void load(TWRecentItemsView* recentItemsView = nullptr)
    {
        controller.emplace(
            TWEditorContext{ settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes },
            dictionary);
        controller->setView(&view);
        controller->setRecentItemsView(recentItemsView ? recentItemsView : &view);
        controller->awakeFromNib(TWLaunchKind::Window);
    }
    // The rules after the first, as "Source FilePath keys", and what happened.
    Lines add()
    {
        view.chosen = TWApplication{ "org.prog", "", "prog", "My Program", "", "/prog.desktop", "" };
        controller->add();
        runLoop.runUntilIdle();
        Lines lines = std::exchange(view.calls, {});
        for (std::size_t row = 1; row < controller->rules().size(); ++row)
            lines.push_back(line(controller->rules()[row]));
        return lines;
    }
    static std::string line(const TWRecentItemsRule& rule)
    {
        return (rule.active ? "on " : "off ") + rule.source + " " + rule.filePath + " "
            + (rule.deleteFile ? "whole" : "keys:" + rule.keys);
    }

    TWDictionaryWindowController dictionary{ listFolder };
    RecentItemsView view;
    std::optional<TWRecentItemsWindowController> controller;
};

}

TEST_F(TWRecentItemsWindowControllerTest, AnApplicationWithAListOfItsOwnGetsARuleForThatWholeFile)
{
    root.write("home/.local/share/org.prog/recently-used.xbel", "<xbel/>");
    root.write("home/.config/progrc", "[Recent]\n1=a\n");
    load();
    EXPECT_EQ(add(), (Lines{ Select, "select 1", "on prog ~/.local/share/org.prog/recently-used.xbel whole" }));
    ASSERT_EQ(alerts.alerts.size(), 1U);
    EXPECT_EQ(alerts.alerts[0].title, "Before we begin...");
    EXPECT_EQ(alerts.alerts[0].text,
        "Please make sure there is at least one recent item listed in the Recent Items menu of prog. If there is none, "
        "open a file with prog, then close prog and press Continue.");
    userDefaults.values["ManualRecentItemsRuleCreation"] = 1;
    controller->add();
    EXPECT_EQ(controller->rules().back(), TWRecentItemsRule());
}

TEST_F(TWRecentItemsWindowControllerTest, FoundKeysBecomeARule)
{
    root.write("home/.config/progrc", "[View]\nsize=3\n");
    root.write("home/.config/prog.json",
        R"({"a": {"MyHistoryList": [1, {"Recent": [2]}]}, "Recent, too": [1], "recentitems": [1], "Recent": "text",
            "list": [{"NSRecentDocuments": {"x": "one", "y": "two"}}], "RecentItems": ["b"]})");
    load();
    EXPECT_EQ(add(), (Lines{ Select, "Found keys for prog" })) << "no rule yet";
    const std::vector<TWFoundKey> expected{ { "MyHistoryList", { "1", R"({"Recent": [2]})" } },
        { "NSRecentDocuments", { "one", "two" } }, { "RecentItems", { "b" } } };
    ASSERT_EQ(controller->foundKeysArray().size(), expected.size());
    for (std::size_t each = 0; each < expected.size(); ++each)
        EXPECT_EQ(controller->foundKeysArray()[each].key, expected[each].key);
    EXPECT_EQ(controller->foundKeysArray()[1], expected[1]);
    controller->showPreferencesFile();
    view.selected = { 0, 1, 2 };
    controller->createFromSelectedKey();
    view.selected = {};
    controller->createFromSelectedKey();
    EXPECT_EQ(view.calls,
        (Lines{ "show " + places.home + "/.config/prog.json", "select 1", "close keys", "select 2", "close keys" }));
    EXPECT_EQ(
        line(controller->rules()[1]), "on prog ~/.config/prog.json keys:MyHistoryList, NSRecentDocuments, RecentItems");
    EXPECT_EQ(line(controller->rules()[2]), "on prog ~/.config/prog.json keys:");
    EXPECT_TRUE(controller->note(2).warning);
}

TEST_F(TWRecentItemsWindowControllerTest, WithoutKeysTheRuleIsOffAndTheUserIsTold)
{
    load();
    EXPECT_EQ(add(), (Lines{ Select, "select 1", "off prog ~/.config/none keys:" })) << "none of the files exists";
    root.write("home/.config/prog.json", R"({"Recent": "text"})");
    EXPECT_EQ(add().back(), "off prog ~/.config/prog.json keys:") << "the file that there is";
    ASSERT_EQ(alerts.alerts.size(), 4U);
    EXPECT_EQ(alerts.alerts[3].title, "Tidewell did not find recent items for prog.");
    EXPECT_NE(
        alerts.alerts[3].text.find("will result in the deletion of all of prog's preferences"), std::string::npos);
    alerts.leavesOpen = true;
    controller->add();
    controller->add(); // while the question about the first one is still open
    EXPECT_FALSE(controller->isLooking());
    alerts.answer(TWAnswer::Default);
    EXPECT_TRUE(controller->isLooking());
    controller->sheetClosed();
    runLoop.runUntilIdle();
    EXPECT_EQ(controller->recordCount(), 3) << "the sheet has closed meanwhile";
}

TEST_F(TWRecentItemsWindowControllerTest, MergesNewDefaultsBySourceAndAsksBeforeItRestoresThem)
{
    ship(Saved, { { false, "Old", "~/mine", true, "" } });
    ship("resources/RecentItemsRules.plist",
        { { true, "Old", "~/shipped", false, "Recent" }, { true, "old", "~/new", false, "Recent" } });
    load();
    const Lines merged{ "off Old ~/mine whole", "on old ~/new keys:Recent" };
    const auto lines = [&] {
        Lines all;
        for (const auto& rule : controller->rules())
            all.push_back(line(rule));
        return all;
    };
    EXPECT_EQ(lines(), merged);
    alerts.script = { TWAnswer::Alternate, TWAnswer::Default };
    controller->restoreDefaults();
    EXPECT_EQ(lines(), merged);
    controller->restoreDefaults();
    EXPECT_EQ(lines(), (Lines{ "on Old ~/shipped keys:Recent", "on old ~/new keys:Recent" }));
}
