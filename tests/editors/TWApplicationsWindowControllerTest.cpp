#include "editors/TWApplicationsWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"

namespace {

class TWApplicationsWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    using Records = std::vector<TWApplicationsRecord>;

    static constexpr auto Saved = "home/.local/share/Tidewell/Applications.plist";

    TWApplicationsWindowControllerTest()
    {
        for (const auto& path : { editor, viewer, odd })
            applications.applications.push_back(
                { path, path == editor ? "Editor" : "", "program", path, "icon", path, "" });
    }

    const std::string editor = root.write("home/.local/share/applications/editor.desktop", "");
    const std::string viewer = root.write("usr/bin/viewer", "");
    const std::string odd = root.path("odd\xff");
    TWDictionaryWindowController dictionary{ listFolder };
    TWApplicationsWindowController controller{
        TWEditorContext{ settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes }, dictionary
    };
};

TEST_F(TWApplicationsWindowControllerTest, AddsInOrderAndTheCleanerSeesTheListBeforeItIsSaved)
{
    controller.awakeFromNib(TWLaunchKind::Window);
    const auto seen = controller.settings().applicationsArray;
    controller.addPaths({ editor, "/no/program", odd });
    controller.addPaths({ viewer }); // while the first are read
    controller.addPath(editor);
    runLoop.runUntilIdle();
    const TWApplicationsRecord first{ "~/.local/share/applications/editor.desktop", "Editor" };
    EXPECT_EQ(*seen, (Records{ first, { viewer, "program" }, first }));
    ASSERT_EQ(alerts.alerts.size(), 1U);
    EXPECT_EQ(std::count(alerts.alerts[0].text.begin(), alerts.alerts[0].text.end(), '\n'), 1) << "two problems";
    EXPECT_EQ(controller.occurrences(2), 2U);
    controller.removeEntry(0);
    EXPECT_TRUE(controller.hasUnsavedEdits() && !root.exists(Saved));
    controller.ok();
    controller.removeEntry(0);
    controller.awakeFromNib(TWLaunchKind::Window);
    EXPECT_EQ(*seen, (Records{ { viewer, "program" }, first }));
}

TEST_F(TWApplicationsWindowControllerTest, KeepsWhatItDoesNotUnderstandAndQuitsNothingForADamagedList)
{
    const std::string entries = "<array><string>/usr/bin/viewer</string></array>"
                                "<array><string>/b</string><string>B</string><integer>3</integer></array>";
    const auto load = [&](const std::string& text) {
        root.write(Saved, "<plist version=\"1.0\">" + text + "</plist>");
        controller.awakeFromNib(TWLaunchKind::Window);
    };
    load("<array>" + entries + "</array>");
    ASSERT_EQ(controller.recordCount(), 2);
    EXPECT_EQ(controller.applicationsArray()[0].shownName(), "viewer");
    controller.removeEntry(0);
    EXPECT_EQ(controller.write(), "");
    EXPECT_NE(root.read(Saved).find("<integer>3</integer>"), std::string::npos);
    for (const auto* damaged : { "<dict/>", "<array><string>/b</string></array>", "<array><array/></array>",
             "<array><array><integer>1</integer></array></array>",
             "<array><array><string>/b</string><true/></array></array>", "<" }) {
        load(damaged);
        EXPECT_TRUE(controller.applicationsArray().empty()) << damaged;
        EXPECT_EQ(controller.settings().problems, Lines{ controller.problem() });
        EXPECT_NE(controller.problem().find(root.path(Saved)), std::string::npos) << damaged;
    }
}

TEST_F(TWApplicationsWindowControllerTest, NotesSayWhatIsAtThePathsWhileTheSheetIsOpen)
{
    const auto gone = root.path("usr/bin/gone");
    const auto text = root.write("home/text", "");
    controller.list().edit([&](Records& records) { records = { { viewer, "" }, { gone, "" }, { text, "" } }; });
    controller.sheetOpened();
    controller.insertEntry(3, { editor, "" });
    EXPECT_EQ(controller.note(0).icon, "") << "nothing is read on the main thread";
    runLoop.runUntilIdle();
    EXPECT_EQ(controller.note(0).icon + controller.note(3).icon + controller.note(0).problem, "iconicon");
    EXPECT_EQ(controller.note(1).problem, "Not installed any more");
    EXPECT_NE(controller.note(2).problem.find("does not describe"), std::string::npos);
    controller.sheetClosed();
    EXPECT_EQ(controller.note(1).problem, "");
}

}
