#include "editors/TWFilesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeDeletion.h"

namespace {

using Lines = std::vector<std::string>;

struct View final : TWFilesView {
    int selected = -1;
    int notes = 0;
    Lines calls;
    std::optional<std::string> chosen;

    void closeSheet() override { calls.emplace_back("close"); }
    void openHelpAnchor(const std::string& anchor) override { calls.push_back("help " + anchor); }
    void reloadTable() override { calls.emplace_back("reload"); }
    void notesChanged() override { ++notes; }
    int selectedRow() const override { return selected; }
    void selectRow(int row) override { calls.push_back("select " + std::to_string(row)); }
    void choosePath(const std::string&, const std::string&, std::function<void(std::optional<std::string>)> answer) override
    {
        answer(chosen);
    }
};

class TWFilesWindowControllerTest : public testing::Test, protected TWFakeDeletion {
protected:
    TWFilesWindowControllerTest()
    {
        bundle.infos = {{"TWApplicationSupportFolder", "~/.local/share/Tidewell"}, {"CFBundleVersion", "2"}};
        userDefaults.values["LastLaunchedVersion"] = "2";
        ship({"~/a", "~/b"});
    }
    static std::string list(const Lines& paths, const std::string& description)
    {
        std::string text = "<plist version=\"1.0\"><array>";
        for (const auto& path : paths)
            text += "<dict><key>Active</key><true/><key>Description</key><string>" + description + "</string><key>FilePath</key><string>"
                + path + "</string><key>WhatToDelete</key><integer>0</integer></dict>";
        return text + "</array></plist>";
    }
    void ship(const Lines& paths) { root.write("resources/FilesRules.plist", list(paths, "shipped")); }
    void save(const Lines& paths) { root.write(Saved, list(paths, "mine")); }
    // Loads as at launch; the rules as "description path", with "off" before those that are switched off.
    Lines load()
    {
        controller.emplace(TWFilesWindowController::Context {
            settings, *folder, bundle, fileSystem, places, runLoop, alerts, guard, *dictionary});
        controller->setView(&view);
        controller->awakeFromNib(TWLaunchKind::Window);
        return rules();
    }
    Lines rules() const
    {
        Lines lines;
        for (const auto& rule : controller->rules())
            lines.push_back((rule.active ? "" : "off ") + rule.description + " " + rule.filePath);
        return lines;
    }
    static constexpr auto Saved = "home/.local/share/Tidewell/FilesRules.plist";

    TWSettings settings {userDefaults};
    std::unique_ptr<TWDataFolder> folder = [this] {
        bundle.infos["TWApplicationSupportFolder"] = "~/.local/share/Tidewell";
        return std::make_unique<TWDataFolder>(fileSystem, places, bundle);
    }();
    std::unique_ptr<TWDictionaryWindowController> dictionary = std::make_unique<TWDictionaryWindowController>(*folder);
    View view;
    std::optional<TWFilesWindowController> controller;
};

}

TEST_F(TWFilesWindowControllerTest, LoadsTheDefaultsUntilAListIsSavedAndMergesAfterAnUpdate)
{
    EXPECT_EQ(load(), (Lines {"shipped ~/a", "shipped ~/b"}));
    const auto live = controller->settings();
    controller->setDescription(0, "edited");
    EXPECT_EQ(live->front().description, "edited") << "the list that a run reads";
    controller->removeRule(1);
    controller->ok();
    EXPECT_EQ(load(), Lines {"edited ~/a"});
    ship({"~/c", "~/b", "~/a", "~/a/", "~/b"});
    EXPECT_EQ(load(), Lines {"edited ~/a"}) << "the version is the same";
    bundle.infos["CFBundleVersion"] = "3";
    EXPECT_EQ(load(), (Lines {"edited ~/a", "shipped ~/c", "shipped ~/b", "shipped ~/a/"}));
    userDefaults.values.clear();
    bundle.infos["CFBundleVersion"] = "1.0";
    EXPECT_EQ(load(), Lines {"edited ~/a"}) << "no version counts as 1.0";
}

TEST_F(TWFilesWindowControllerTest, ADamagedListShowsTheDefaultsSwitchedOffAndIsKept)
{
    const auto good = list({"~/x"}, "mine");
    for (const auto& damaged : {std::string("broken"), good.substr(0, good.size() - 16) + "<string>no rule</string></array></plist>"}) {
        root.write(Saved, damaged);
        bundle.infos["CFBundleVersion"] = "3";
        EXPECT_EQ(load(), (Lines {"off shipped ~/a", "off shipped ~/b"}));
        EXPECT_EQ(controller->problem().substr(0, 10), "The list \"");
        EXPECT_EQ(root.read(Saved), damaged);
        EXPECT_EQ(controller->write(), "");
        EXPECT_EQ(controller->problem(), "");
        EXPECT_EQ(root.read(Saved + std::string(".damaged")), damaged);
        std::filesystem::remove(root.path(Saved) + ".damaged");
    }
}

TEST_F(TWFilesWindowControllerTest, RestoringTheDefaultsIsAsked)
{
    save({"~/x"});
    load();
    alerts.script = {TWAnswer::Alternate, TWAnswer::Default};
    controller->restoreDefaults();
    EXPECT_EQ(rules(), Lines {"mine ~/x"});
    controller->restoreDefaults();
    EXPECT_EQ(rules(), (Lines {"shipped ~/a", "shipped ~/b"}));
    EXPECT_EQ(alerts.alerts[0].title + "|" + alerts.alerts[0].text + "|" + alerts.alerts[0].defaultButton + "|" + alerts.alerts[0].alternateButton,
        "Are you sure you want to apply the default set of rules?|The current set of rules will be overwritten. This operation is not "
        "undoable.|Yes|No");
    EXPECT_EQ(load(), Lines {"mine ~/x"}) << "not saved yet";
}

TEST_F(TWFilesWindowControllerTest, AddsRemovesAndCloses)
{
    save({"~/x"});
    load();
    view.calls.clear();
    controller->add(); // nothing chosen
    controller->remove(); // nothing selected
    EXPECT_EQ(view.calls, Lines());
    view.chosen = places.home + "/Documents/Old";
    controller->add();
    userDefaults.values["ManualFilesRuleCreation"] = true;
    controller->add();
    EXPECT_EQ(rules(), (Lines {"mine ~/x", "Old ~/Documents/Old", " "}));
    view.selected = 0;
    controller->remove();
    controller->help();
    controller->ok();
    EXPECT_EQ(view.calls, (Lines {"reload", "select 1", "reload", "select 2", "reload", "help Files", "close"}));
    EXPECT_EQ(load(), (Lines {"Old ~/Documents/Old", " "}));
    // A failed save is said, and the sheet closes all the same.
    controller->setDescription(0, "\xFF");
    controller->ok();
    EXPECT_EQ(alerts.alerts.back().title, "The rules could not be saved.");
}

TEST_F(TWFilesWindowControllerTest, NotesSayWhatARuleFindsAndWhatIsWrongWithIt)
{
    root.write("home/folder/secret", std::string(5000, 'x'));
    root.write("home/folder/other", "x");
    save({"~/folder", "~/none", "", "~", "relative", "~/folder", "~/folder", "~/none"});
    load();
    for (const auto& [row, kind] : std::vector<std::pair<int, int>> {{5, 2}, {6, 9}, {7, 1}})
        controller->setWhatToDelete(row, kind);
    const auto notes = [&] {
        Lines lines;
        for (int row = 0; row < static_cast<int>(controller->rules().size()); ++row)
            lines.push_back((controller->note(row).warning ? "! " : "") + launcher.shown(controller->note(row).text));
        return lines;
    };
    EXPECT_EQ(notes()[0], "") << "nothing is counted while the sheet is closed";
    dictionary->setWordDictionary({"secret"});
    controller->sheetOpened();
    runLoop.runUntilIdle();
    EXPECT_GT(view.notes, 0);
    const auto found = notes();
    EXPECT_EQ(found[0].substr(0, 7), "3 items");
    EXPECT_EQ(found[5].substr(0, 7), "1 item,");
    EXPECT_EQ((Lines {found[1], found[2], found[3], found[4], found[6], found[7]}),
        (Lines {"Nothing there now", "! No path yet: this rule finds nothing.", "! Will be refused: it is the home folder.",
            "! Will be refused: the path does not begin with \"/\" or \"~\".", "! This kind of rule does nothing.",
            "! Folder ROOT/home/none does not exist! The whole Files cleaning would stop here."}));
    dictionary->setWordDictionary({"it", "secret"});
    EXPECT_EQ(notes()[5].substr(0, 15), "! The word \"it\"");
    dictionary->setWordDictionary({});
    EXPECT_EQ(notes()[5], "! There are no words in the dictionary: this rule finds nothing.");
    controller->sheetOpened();
    controller->sheetClosed();
    const int before = view.notes;
    runLoop.runUntilIdle();
    EXPECT_EQ(view.notes, before);
}
