#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeApplication.h"

namespace {

class TWLaunchTest : public testing::Test, protected TWFakeApplication {
protected:
    std::string stored(const std::string& key) const
    {
        const auto value = userDefaults.value(key);
        return value && value->string() ? *value->string() : "";
    }
};

}

TEST_F(TWLaunchTest, TheFirstLaunchMakesEverythingAndGreetsOnce)
{
    alerts.leavesOpen = true;
    start()->applicationDidFinishLaunching();
    EXPECT_TRUE(root.exists("home/.local/share/Tidewell"));
    const auto identifier = stored("UUID");
    EXPECT_EQ(identifier.size(), 36U);
    EXPECT_EQ(view.lines, Lines{ "front main" });
    ASSERT_EQ(alerts.alerts.size(), 1U);
    EXPECT_EQ(userDefaults.values.at("FirstLaunchDone"), TWValue(true)) << "while the greeting is open";
    start()->applicationDidFinishLaunching();
    EXPECT_EQ(alerts.alerts.size(), 1U);
    EXPECT_EQ(stored("UUID"), identifier);
}

TEST_F(TWLaunchTest, TheEditorsSeeTheVersionOfTheLaunchBeforeThisOne)
{
    root.write("home/.local/share/Tidewell/FilesRules.plist", "damaged");
    root.write("home/.local/share/Tidewell/Dictionary.plist", "damaged");
    start()->applicationDidFinishLaunching();
    EXPECT_EQ(stored("LastLaunchedVersion"), "") << "new default rules still have to be merged";
    alerts.alerts.clear();
    view.lines.clear();
    root.write("home/.local/share/Tidewell/FilesRules.plist", "<plist version=\"1.0\"><array/></plist>");
    userDefaults.values = { { "LastLaunchedVersion", "0.9" }, { "AutoQuit", true } };
    const auto command = start(TWLaunchKind::Command);
    command->prepareForCommand(); // is no launch
    EXPECT_EQ(command->editors().get<TWFilesWindowController>().rules().size(), 0U);
    EXPECT_TRUE(alerts.alerts.empty() && view.lines.empty());
    EXPECT_NE(stored("UUID"), "");
    const auto window = start();
    EXPECT_EQ(window->editors().get<TWFilesWindowController>().rules().size(), 1U);
    EXPECT_EQ(stored("LastLaunchedVersion"), "0.9");
    window->applicationDidFinishLaunching();
    EXPECT_EQ(stored("LastLaunchedVersion"), "1.0");
    EXPECT_EQ(start()->editors().get<TWFilesWindowController>().rules().size(), 0U) << "once per version";
}
