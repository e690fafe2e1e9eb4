#include "editors/TWFilesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"
#include "plist/TWPropertyList.h"

namespace {

struct FilesView final : TWRecordView {
    int selected = -1;
    Lines calls;
    std::optional<std::string> chosen;

    void closeSheet() override { calls.emplace_back("close"); }
    void openHelpAnchor(const std::string&) override { }
    void reloadTable() override { }
    void notesChanged() override { }
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
        TWValue::Array rules;
        for (const auto& path : paths)
            rules.push_back(TWFilesRule{ true, description, path, TWItemItself }.value());
        return *TWPropertyList::write(std::move(rules), TWPropertyListFormat::XML);
    }
    void ship(const Lines& paths) { root.write("resources/FilesRules.plist", list(paths, "shipped")); }
    void save(const Lines& paths) { root.write(Saved, list(paths, "mine")); }
    // Loads as at launch; the rules as "description path", with "off" before those that are switched off.
    Lines load()
    {
        controller.emplace(
            TWEditorContext{ settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes },
            dictionary);
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

    TWDictionaryWindowController dictionary{ listFolder };
    FilesView view;
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
}

TEST_F(TWFilesWindowControllerTest, ADamagedListShowsTheDefaultsSwitchedOff)
{
    bundle.infos["CFBundleVersion"] = "3";
    for (const auto* damaged :
        { "broken", "<plist><array><dict><key>FilePath</key><string>~/x</string></dict><dict/></array></plist>" }) {
        root.write(Saved, damaged);
        EXPECT_EQ(load(), (Lines{ "off shipped ~/a", "off shipped ~/b" }));
        EXPECT_TRUE(controller->problem().starts_with("The list \"")) << controller->problem();
        EXPECT_EQ(root.read(Saved), damaged);
    }
    EXPECT_EQ(controller->write(), "");
    EXPECT_EQ(controller->problem(), "");
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
    const char* expected[]
        = { "1 item,", "1 item,", "Nothing there now", "! Folder ", "! No path yet", "! Will be refused" };
    for (int row = 0; row < 6; ++row) {
        const auto note = controller->note(row);
        EXPECT_TRUE(((note.warning ? "! " : "") + note.text).starts_with(expected[row])) << note.text;
    }
}
