#include "platform/posix/TWFileUserDefaults.h"

#include "contracts/TWUserDefaultsContract.h"
#include "fakes/TWFakeMachine.h"
#include "plist/TWPropertyList.h"

namespace {

struct Body : TWFakeMachine {
    TWUserDefaults& defaults() { return body; }

    TWFileUserDefaults body{ ownFiles, runLoop, root.path("config/Tidewell.plist") };
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(File, TWUserDefaultsContract, Body);

class TWFileUserDefaultsTest : public testing::Test, protected TWFakeMachine {
protected:
    std::string put(const std::string& text) { return root.write("home/config/Tidewell.plist", text); }
    std::string get() { return root.read("home/config/Tidewell.plist"); }
    static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

    const std::string file = root.path("home/config/Tidewell.plist");
    Lines failures;
};

TEST_F(TWFileUserDefaultsTest, KeepsEverythingItDoesNotKnow)
{
    const TWDictionary stored = TWDictionary::fromEntries({ { "z", TWValue::Array{ 1, 2.5, TWData{ "\xFF" } } },
        { "AutoQuit", TWDate{ 0.25 } }, { "a", TWDictionary() }, { "control", "\x01" }, { "gone", 1 } });
    put(*TWPropertyList::write(stored, TWPropertyListFormat::Binary));
    TWFileUserDefaults defaults(ownFiles, runLoop, file);
    defaults.setValue("new", "text");
    defaults.setValue("z", 7);
    defaults.removeValue("gone");
    runLoop.runUntilIdle();
    TWDictionary expected = stored;
    expected.set("z", 7);
    expected.remove("gone");
    expected.set("new", "text");
    EXPECT_EQ(TWPropertyList::read(get()).value, TWValue(expected));
    // Another process has changed it.
    expected.set("a", "theirs");
    put(*TWPropertyList::write(expected, TWPropertyListFormat::Binary));
    defaults.setValue("b", 1);
    EXPECT_EQ(defaults.synchronize(), "");
    EXPECT_EQ(defaults.value("a"), TWValue("theirs"));
}

TEST_F(TWFileUserDefaultsTest, LostSettingsStayAProblemUntilTheEnd)
{
    put("<plist><array/></plist>");
    TWFileUserDefaults defaults(ownFiles, runLoop, file);
    EXPECT_TRUE(has(defaults.problem(), "could not be read (it does not hold settings)")) << defaults.problem();
    EXPECT_EQ(get(), "<plist><array/></plist>");
    for (const int value : { 1, 2 }) {
        defaults.setValue("a", value);
        EXPECT_EQ(defaults.synchronize(), "");
        EXPECT_TRUE(has(defaults.problem(), "kept as \"" + file + ".damaged\"")) << defaults.problem();
    }
    EXPECT_EQ(root.read("home/config/Tidewell.plist.damaged"), "<plist><array/></plist>");
    EXPECT_FALSE(root.exists("home/config/Tidewell.plist.damaged.2"));
    EXPECT_EQ(TWFileUserDefaults(ownFiles, runLoop, file).problem(), "");

    put("again");
    TWFileUserDefaults second(ownFiles, runLoop, file);
    EXPECT_NE(second.problem(), "");
    put("<plist><dict><key>a</key><integer>3</integer></dict></plist>"); // repaired
    second.setValue("b", 1);
    EXPECT_EQ(second.synchronize(), "");
    EXPECT_EQ(second.problem(), "");
    EXPECT_EQ(second.value("a"), TWValue(3));

    std::filesystem::remove(file);
    root.link("home/config/Tidewell.plist", "/nowhere/settings");
    TWFileUserDefaults third(ownFiles, runLoop, file);
    EXPECT_TRUE(has(third.problem(), "a link to something that is not there")) << third.problem();
    third.setValue("a", 1);
    EXPECT_TRUE(has(third.synchronize(), "(No such file or directory)"));
}

TEST_F(TWFileUserDefaultsTest, AWriteThatFailsIsReportedOnceUntilOneSucceeds)
{
    TWFileUserDefaults defaults(ownFiles, runLoop, file);
    defaults.setWriteFailed([&](const std::string& problem) { failures.push_back(problem); });
    for (std::size_t round = 1; round <= 2; round++) {
        std::filesystem::remove_all(file);
        root.folder("home/config/Tidewell.plist");
        for (const int value : { 1, 2 }) {
            defaults.setValue("a", value);
            runLoop.runUntilIdle();
            EXPECT_EQ(failures.size(), round);
        }
        EXPECT_TRUE(has(failures.back(), "Is a directory")) << failures.back();
        EXPECT_EQ(defaults.value("a"), TWValue(2)) << "holds all the same";
        std::filesystem::remove(file);
        EXPECT_EQ(defaults.synchronize(), "");
        EXPECT_TRUE(has(get(), "<integer>2</integer>"));
    }
}
