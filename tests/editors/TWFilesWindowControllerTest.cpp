#include "editors/TWFilesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"

namespace {

using Lines = std::vector<std::string>;

struct View final : TWFilesView {
    int selected = -1;
    int notes = 0;
    Lines calls;
    std::optional<std::string> chosen;

    void closeSheet() override { calls.emplace_back("close"); }
    void openHelpAnchor(const std::string&) override { }
    void reloadTable() override { }
    void notesChanged() override { ++notes; }
    int selectedRow() const override { return selected; }
    void selectRow(int row) override { calls.push_back("select " + std::to_string(row)); }
    void choosePath(
        const std::string&, const std::string&, std::function<void(std::optional<std::string>)> answer) override
    {
        answer(chosen);
    }
};

class TWFilesWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    TWFilesWindowControllerTest()
    {
        bundle.infos["CFBundleVersion"] = "2";
        userDefaults.values["LastLaunchedVersion"] = "2";
        ship({ "~/a", "~/b" });
    }
    static std::string list(const Lines& paths, const std::string& description)
    {
        std::string text = "<plist version=\"1.0\"><array>";
        for (const auto& path : paths)
            text += "<dict><key>Active</key><true/><key>Description</key><string>" + description
                + "</string><key>FilePath</key><string>" + path
                + "</string><key>WhatToDelete</key><integer>0</integer></dict>";
        return text + "</array></plist>";
    }
    void ship(const Lines& paths) { root.write("resources/FilesRules.plist", list(paths, "shipped")); }
    void save(const Lines& paths) { root.write(Saved, list(paths, "mine")); }
    // Loads as at launch; the rules as "description path", with "off" before those that are switched off.
    Lines load()
    {
        controller.emplace(TWEditorContext{ settings, folder, bundle, alerts, tools }, dictionary);
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

    TWSettings settings{ userDefaults };
    TWDataFolder folder{ ownFiles, places, bundle };
    TWDictionaryWindowController dictionary{ folder };
    View view;
    std::optional<TWFilesWindowController> controller;
};

}

TEST_F(TWFilesWindowControllerTest, LoadsTheDefaultsUntilAListIsSavedAndMergesAfterAnUpdate)
{
    EXPECT_EQ(load(), (Lines{ "shipped ~/a", "shipped ~/b" }));
    const auto live = controller->settings();
    controller->setDescription(0, "edited");
    EXPECT_EQ(live->front().description, "edited") << "the list that a run reads";
    controller->removeRule(1);
    controller->ok();
    EXPECT_EQ(load(), Lines{ "edited ~/a" });
    ship({ "~/c", "~/b", "~/a", "~/a/", "~/b" });
    EXPECT_EQ(load(), Lines{ "edited ~/a" }) << "the version is the same";
    bundle.infos["CFBundleVersion"] = "3";
    EXPECT_EQ(load(), (Lines{ "edited ~/a", "shipped ~/c", "shipped ~/b", "shipped ~/a/" }));
    userDefaults.values.clear();
    bundle.infos["CFBundleVersion"] = "1.0";
    EXPECT_EQ(load(), Lines{ "edited ~/a" }) << "no version counts as 1.0";
}

TEST_F(TWFilesWindowControllerTest, ADamagedListShowsTheDefaultsSwitchedOffAndIsKept)
{
    const auto good = list({ "~/x" }, "mine");
    for (const auto& damaged : { std::string("broken"),
             good.substr(0, good.size() - 16) + "<dict><key>Active</key><true/></dict></array></plist>" }) {
        root.write(Saved, damaged);
        bundle.infos["CFBundleVersion"] = "3";
        EXPECT_EQ(load(), (Lines{ "off shipped ~/a", "off shipped ~/b" }));
        EXPECT_EQ(controller->problem().substr(0, 10), "The list \"");
        EXPECT_EQ(root.read(Saved), damaged);
        EXPECT_EQ(controller->write(), "");
        EXPECT_EQ(controller->problem(), "");
        EXPECT_EQ(root.read(Saved + std::string(".damaged")), damaged);
        std::filesystem::remove(root.path(Saved) + ".damaged");
    }
    std::filesystem::remove(root.path(Saved));
    root.link(Saved, "/nowhere/FilesRules.plist");
    EXPECT_EQ(load(), (Lines{ "off shipped ~/a", "off shipped ~/b" })) << "as on a stick that is not plugged in";
    EXPECT_NE(controller->problem(), "");
}

TEST_F(TWFilesWindowControllerTest, AddsRemovesAndRestoresWhenAsked)
{
    save({ "~/x" });
    load();
    controller->add(); // nothing chosen
    controller->remove(); // nothing selected
    view.chosen = places.home + "/Documents/Old";
    controller->add();
    userDefaults.values["ManualFilesRuleCreation"] = true;
    controller->add();
    EXPECT_EQ(rules(), (Lines{ "mine ~/x", "Old ~/Documents/Old", " " }));
    view.selected = 0;
    controller->remove();
    controller->ok();
    EXPECT_EQ(view.calls, (Lines{ "select 1", "select 2", "close" }));
    alerts.script = { TWAnswer::Alternate, TWAnswer::Default };
    controller->restoreDefaults();
    EXPECT_EQ(rules(), (Lines{ "Old ~/Documents/Old", " " }));
    controller->restoreDefaults();
    EXPECT_EQ(rules(), (Lines{ "shipped ~/a", "shipped ~/b" }));
    controller->setDescription(0, "\x1B\x01\xEF\xBF\xBE");
    EXPECT_EQ(controller->write(), "");
    EXPECT_EQ(load()[0], "\x1B\x01\xEF\xBF\xBE ~/a");
    controller->setDescription(0, "\xFF");
    view.calls.clear();
    controller->ok();
    EXPECT_EQ(alerts.alerts.back().title, "The rules could not be saved.");
    EXPECT_EQ(view.calls, Lines()) << "the sheet stays open";
    controller->sheetOpened();
    EXPECT_TRUE(controller->hasUnsavedEdits());
    EXPECT_EQ(load()[1], "shipped ~/b");
}

TEST_F(TWFilesWindowControllerTest, NotesSayWhatARuleFindsAndWhatIsWrongWithIt)
{
    for (const auto* name : { "secret", "other" })
        root.write(std::string("home/folder/") + name, "x");
    save({ "~/folder", "~/folder", "~/none", "~/none", "", "~" });
    load();
    controller->setWhatToDelete(1, TWItemsWithKeywords);
    controller->setWhatToDelete(3, TWFolderContents);
    dictionary.setWordDictionary({ "secret" });
    EXPECT_EQ(controller->note(0).text, "") << "nothing is counted while the sheet is closed";
    controller->sheetOpened();
    runLoop.runUntilIdle();
    EXPECT_GT(view.notes, 0);
    const char* expected[]
        = { "3 items,", "1 item,", "Nothing there now", "! Folder ", "! No path yet", "! Will be refused" };
    for (int row = 0; row < 6; ++row) {
        const auto note = controller->note(row);
        EXPECT_TRUE(((note.warning ? "! " : "") + note.text).starts_with(expected[row])) << note.text;
    }
    dictionary.setWordDictionary({});
    EXPECT_TRUE(controller->note(1).warning && controller->note(1).text.starts_with("There are no words"));
    controller->sheetOpened();
    controller->sheetClosed();
    const int before = view.notes;
    runLoop.runUntilIdle();
    EXPECT_EQ(view.notes, before);
}
