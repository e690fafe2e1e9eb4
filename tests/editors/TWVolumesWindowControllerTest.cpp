#include "editors/TWVolumesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "fakes/TWFakeMachine.h"

namespace {

struct RecordingVolumesView final : TWVolumesView {
    Lines messages;

    void reloadTable() override { }
    void notesChanged() override { }
    void showMessage(const std::string& message) override { messages.push_back(message); }
    void closeSheet() override { }
    void openHelpAnchor(const std::string&) override { }
};

class TWVolumesWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    static constexpr auto Saved = "home/.local/share/Tidewell/Volumes.plist";

    TWVolumesWindowControllerTest() { controller.setView(&view); }

    // "+stick -disk" for a checked and an unchecked one, with "?" if it is not mounted.
    std::string list() const
    {
        std::string text;
        for (int row = 0; row < static_cast<int>(controller.volumesArray().size()); ++row) {
            const auto& volume = controller.volumesArray()[static_cast<std::size_t>(row)];
            text += (volume.active ? " +" : " -") + volume.volumeName + (controller.isMounted(row) ? "" : "?");
        }
        return text;
    }

    TWDictionaryWindowController dictionary{ listFolder };
    TWVolumesWindowController controller{
        TWEditorContext{ settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes }, dictionary
    };
    RecordingVolumesView view;
};

TEST_F(TWVolumesWindowControllerTest, FollowsTheMountTableAndSavesEveryTick)
{
    volumes.mount("/media/one");
    volumes.mount("/media/two");
    controller.awakeFromNib(TWLaunchKind::Window);
    const auto live = controller.settings().volumesArray;
    EXPECT_EQ(list(), " -one -two");
    EXPECT_TRUE(controller.setActive(1, true));
    EXPECT_NE(root.read(Saved).find("/media/two"), std::string::npos);
    EXPECT_EQ(root.read(Saved).find("/media/one"), std::string::npos);
    volumes.mount("/media/three");
    EXPECT_EQ(list(), " -one +two");
    runLoop.advance(1s);
    EXPECT_EQ(list(), " +two -one -three");
    volumes.unmount("/media/two");
    volumes.unmount("/media/one");
    runLoop.advance(1s);
    EXPECT_EQ(list(), " +two? -three");
    volumes.readable = false;
    controller.updateVolumesList();
    EXPECT_EQ(list(), " +two? -three") << "what was known last";
    EXPECT_NE(controller.problem(), "");
    volumes.readable = true;
    volumes.unknown = { "/media" };
    volumes.unmount("/media/three");
    controller.updateVolumesList();
    EXPECT_EQ(list(), " +two? -three") << "the same where nobody can tell";
    EXPECT_NE(controller.problem(), "");
    volumes.unknown.clear();
    volumes.mount("/media/three");
    EXPECT_TRUE(controller.setActive(0, false));
    EXPECT_NE(root.read(Saved).find("<array/>"), std::string::npos) << root.read(Saved);
    controller.updateVolumesList();
    EXPECT_EQ(list() + controller.problem(), " -three");
    EXPECT_EQ(live, controller.settings().volumesArray);
}

TEST_F(TWVolumesWindowControllerTest, ATickThatCannotBeSavedIsSaidAndStays)
{
    volumes.mount("/media/\xff");
    volumes.mount("/media/stick");
    controller.awakeFromNib(TWLaunchKind::Window);
    EXPECT_FALSE(controller.setActive(0, true));
    EXPECT_NE(view.messages.back().find("not valid UTF-8"), std::string::npos);
    root.write("home/.local/share/Tidewell", "in the place of the folder");
    EXPECT_TRUE(controller.setActive(1, true));
    EXPECT_NE(view.messages.back().find("Volumes.plist"), std::string::npos);
    controller.updateVolumesList();
    EXPECT_TRUE(controller.hasUnsavedEdits());
    EXPECT_TRUE(list().starts_with(" +stick")) << list();
}

TEST_F(TWVolumesWindowControllerTest, ADamagedListUnmountsNothing)
{
    volumes.mount("/media/stick");
    for (const auto* damaged : { "<dict/>", "<array><string>/media/stick</string></array>",
             "<array><dict><key>Active</key><true/></dict></array>",
             "<array><dict><key>VolumePath</key><integer>1</integer></dict></array>" }) {
        root.write(Saved, std::string("<plist version=\"1.0\">") + damaged + "</plist>");
        controller.awakeFromNib(TWLaunchKind::Window);
        EXPECT_EQ(list(), " -stick") << damaged;
        EXPECT_EQ(controller.settings().problems, Lines{ controller.problem() });
        EXPECT_NE(controller.problem(), "") << damaged;
    }
    controller.setActive(0, true);
    EXPECT_EQ(controller.problem() + controller.keptAs(), root.path(Saved + std::string(".damaged")));
}

TEST_F(TWVolumesWindowControllerTest, LooksAtTheVolumesOnlyWhileTheSheetIsOpen)
{
    volumes.mount("/media/stick", "/dev/sdb1");
    volumes.uses["/media/stick"] = { { "player (7)" }, true };
    volumes.space["/media/stick"] = 1000;
    controller.awakeFromNib(TWLaunchKind::Window);
    runLoop.runUntilIdle();
    EXPECT_EQ(controller.facts(0), nullptr);
    controller.sheetOpened();
    runLoop.runUntilIdle();
    ASSERT_NE(controller.facts(0), nullptr);
    EXPECT_EQ(controller.facts(0)->use.holders, Lines{ "player (7)" });
    EXPECT_EQ(controller.facts(0)->freeBytes, 1000U);
    EXPECT_EQ(controller.device(0), "/dev/sdb1");
    volumes.unmount("/media/stick");
    volumes.mount("/media/stick", "/dev/sdc1");
    controller.updateVolumesList();
    EXPECT_EQ(controller.facts(0), nullptr) << "those of another stick";
    runLoop.runUntilIdle();
    EXPECT_NE(controller.facts(0), nullptr);
    controller.sheetClosed();
    EXPECT_EQ(controller.facts(0), nullptr);
}

}
