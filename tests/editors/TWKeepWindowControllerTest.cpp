#include "editors/TWKeepWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"

namespace {

using enum TWKeepEntry::Kind;
using Records = std::vector<TWKeepRecord>;

constexpr auto Saved = "home/.local/share/Tidewell/KeepList.plist";
constexpr auto Unreadable = "the keep list could not be read.";

class TWKeepWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    TWKeepWindowControllerTest()
    {
        write("resources/KeepList.plist", "<dict><key>Path</key><string>~/a</string></dict>");
    }
    void write(const std::string& name, const std::string& entries) const
    {
        root.write(name, "<plist version=\"1.0\"><array>" + entries + "</array></plist>");
    }
    // Loads as at launch.
    void load()
    {
        controller.emplace(
            TWEditorContext{ settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes },
            dictionary);
        controller->awakeFromNib(TWLaunchKind::Command);
    }
    // What the guard says about ~/a, ~/b and ~/c: "kept " for each that is kept, or the one reason for all.
    std::string kept()
    {
        std::string names;
        for (const std::string name : { "a", "b", "c" }) {
            const auto objection = objectionTo(places.home + "/" + name, guard);
            if (objection == Unreadable)
                return objection;
            names += objection.empty() ? "" : name;
        }
        return names;
    }

    TWDictionaryWindowController dictionary{ listFolder };
    std::optional<TWKeepWindowController> controller;
};

TEST_F(TWKeepWindowControllerTest, TheDefaultsAreInForceUntilAListIsSavedAndThenTheListAlone)
{
    load();
    EXPECT_EQ(kept() + controller->problem(), "a");
    controller->edit([](Records& records) { records.emplace_back(TWKeepEntry{ FolderWithContents, "~/b" }); });
    EXPECT_EQ(kept(), "ab") << "unsaved additions are in force";
    controller->setText(0, "a");
    EXPECT_EQ(kept(), "ab") << "a mistyped entry must not weaken the saved one";
    controller->setText(0, "~/a");
    // As a command does while edits are not saved.
    EXPECT_EQ(*controller->list().changeSaved([](Records& records) {
        records = { TWKeepRecord({ Names, "c" }) };
        return true;
    }),
        "");
    EXPECT_EQ(kept(), "c");
    EXPECT_EQ(controller->entries().size(), 1U);
    controller->edit([](Records& records) { records.clear(); });
    EXPECT_EQ(kept(), "c") << "removed, but not saved yet";
    EXPECT_EQ(controller->write(), "");
    EXPECT_EQ(kept(), "");
    load();
    EXPECT_TRUE(controller->entries().empty()) << "a default that was removed never comes back";
    EXPECT_EQ(kept(), "");
}

TEST_F(TWKeepWindowControllerTest, OnePathIsKeptAtOnceAndSavedWithoutTheEdits)
{
    load();
    root.write("home/b/in", "");
    controller->edit([](Records& records) { records.emplace_back(TWKeepEntry{ Names, "c" }); });
    for (const auto* path : { "/b", "/b", "/x" })
        EXPECT_EQ(controller->keep(places.home + path), "");
    EXPECT_NE(controller->keep(places.home + "/\xff").find("\"?\""), std::string::npos);
    root.write("home/.local/share/Trash/files/t", "");
    EXPECT_NE(controller->keep(places.trash + "/files/t").find("in the Trash"), std::string::npos);
    EXPECT_EQ(kept(), "abc");
    load();
    EXPECT_EQ(kept(), "ab");
    ASSERT_EQ(controller->entries().size(), 3U);
    EXPECT_EQ(controller->entries()[1].entry(), (TWKeepEntry{ FolderWithContents, "~/b" }));
    EXPECT_EQ(controller->entries()[2].entry(), (TWKeepEntry{ Path, "~/x" }));

    write(Saved, "damaged");
    load();
    const auto before = root.read(Saved);
    EXPECT_EQ(controller->keep(places.home + "/b"), controller->problem());
    EXPECT_EQ(root.read(Saved), before) << "what it would keep must not be replaced by the defaults";
}

// As by another process during a run.
TEST_F(TWKeepWindowControllerTest, AFileThatHasChangedCountsForTheNextPath)
{
    load();
    controller->edit([](Records& records) { records.emplace_back(TWKeepEntry{ Names, "c" }); });
    write(Saved, "<dict><key>Path</key><string>~/b</string></dict>");
    EXPECT_EQ(kept(), "abc");
    EXPECT_EQ(controller->entries().size(), 2U) << "the sheet shows what it has shown";
    write(Saved, "damaged");
    EXPECT_EQ(kept(), Unreadable);
    write(Saved, "<dict><key>Path</key><string>~/b</string></dict>");
    EXPECT_EQ(kept(), "abc");
}

TEST_F(TWKeepWindowControllerTest, WhileTheListCannotBeReadEverythingIsRefused)
{
    for (const auto* damaged : { "<string>~/a</string>", "<dict/>", "<dict><key>Path</key><integer>1</integer></dict>",
             "<dict><key>Path</key><string>~/a</string><key>Pattern</key><string>a</string></dict>",
             "<dict><key>Path</key><string>~/a</string><key>Inside</key><string>yes</string></dict>",
             "<dict><key>Path</key><string>a</string></dict>", "<dict><key>Path</key><string>$HOME/a</string></dict>",
             "<dict><key>Path</key><string></string></dict>", "<dict><key>Pattern</key><string></string></dict>",
             "<dict><key>Pattern</key><string>a/b</string></dict>", "<" }) {
        write(Saved, damaged);
        const auto before = root.read(Saved);
        load();
        EXPECT_EQ(kept(), Unreadable) << damaged;
        EXPECT_NE(controller->problem().find(root.path(Saved)), std::string::npos) << damaged;
        EXPECT_EQ(root.read(Saved), before);
    }
    controller->edit([](Records& records) { records.emplace_back(TWKeepEntry{ Path, "relative" }); });
    EXPECT_NE(controller->write().find("(entry 2 has a path that does not begin with"), std::string::npos);
    EXPECT_EQ(kept(), Unreadable);
    controller->edit([](Records& records) { records.pop_back(); });
    EXPECT_EQ(controller->write(), "");
    EXPECT_EQ(kept() + controller->problem(), "a");
    EXPECT_EQ(controller->keptAs(), root.path(std::string(Saved) + ".damaged"));
    // A program that is not completely installed.
    std::filesystem::remove(root.path(Saved));
    std::filesystem::remove(root.path("resources/KeepList.plist"));
    load();
    EXPECT_EQ(kept(), Unreadable);
    EXPECT_NE(controller->problem(), "");
    EXPECT_EQ(controller->write(), "");
    EXPECT_EQ(controller->problem() + kept(), "") << "a saved list needs no defaults";
}

TEST_F(TWKeepWindowControllerTest, WhatIsNotUnderstoodIsKeptUnlessThePathBecomesAPattern)
{
    const auto entry = [](const char* key, const char* more) {
        return TWKeepRecord::from(TWDictionary::fromEntries({ { more, 7 }, { key, "~" }, { "Added", "x" } }));
    };
    auto path = *entry("Path", "Order");
    path.setEntry({ FolderWithContents, "~/z" });
    EXPECT_EQ(path.value(),
        TWDictionary::fromEntries({ { "Order", 7 }, { "Path", "~/z" }, { "Added", "x" }, { "Inside", true } }));
    EXPECT_EQ(TWKeepRecord::from(path.value()), path);
    auto pattern = *entry("Pattern", "Inside");
    EXPECT_EQ(TWKeepRecord::from(pattern.value()), pattern);
    for (auto* record : { &path, &pattern }) {
        record->setEntry({ record == &path ? Names : Path, "/x" });
        EXPECT_EQ(*record, TWKeepRecord(record->entry()));
    }
}

}
