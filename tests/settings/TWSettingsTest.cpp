#include "settings/TWSettings.h"
#include "settings/TWDataFolder.h"

#include "fakes/TWFakeMachine.h"
#include "plist/TWPropertyList.h"

#include <sys/stat.h>

TEST(TWSettingsTest, ReadsWhatIsStoredByTheTypeOfTheKey)
{
    TWFakeUserDefaults defaults;
    TWSettings settings(defaults);
    TWDictionary registered;
    registered.set("AutoQuit", true);
    registered.set("AutoQuitMode", 7);
    settings.registerDefaults(registered);
    // What does not fit the type counts as absent: the registered default holds.
    const std::tuple<TWValue, bool, std::int32_t> rows[] = { { true, true, 1 }, { false, false, 0 }, { 0, false, 0 },
        { 2, true, 2 }, { -1, true, -1 }, { "true", true, 7 }, { "false", false, 7 }, { "1", true, 1 },
        { "0", false, 0 }, { "2", true, 2 }, { " 2", true, 7 }, { "", true, 7 }, { "99999999999", true, 7 },
        { 2.5, true, 7 }, { TWValue::Array{}, true, 7 }, { TWDictionary(), true, 7 } };
    for (const auto& [stored, boolean, integer] : rows) {
        defaults.values["AutoQuit"] = defaults.values["AutoQuitMode"] = stored;
        const auto shown = stored.string() ? *stored.string() : "no text";
        EXPECT_EQ(settings.boolean(TWKey::AutoQuit), boolean) << shown;
        EXPECT_EQ(settings.integer(TWKey::AutoQuitMode), integer) << shown;
    }
}

TEST(TWSettingsTest, EveryKeyHasAShippedDefaultThatDeletesNothing)
{
    const auto file = TWPosixOwnFiles().read(TIDEWELL_RESOURCES "/org.tidewell.Tidewell.plist", 1 << 20);
    const auto list = TWPropertyList::read(file.bytes);
    ASSERT_TRUE(list.value && list.value->dictionary()) << TIDEWELL_RESOURCES << ": " << list.problem;
    TWFakeUserDefaults defaults;
    TWSettings settings(defaults);
    settings.registerDefaults(*list.value->dictionary());
    std::size_t position = 0;
    for (const auto& row : TWSettings::keys()) {
        EXPECT_EQ(static_cast<std::size_t>(row.key), position++) << row.name;
        EXPECT_TRUE(settings.hasValue(row.key)) << row.name;
        EXPECT_FALSE(std::string_view(row.name).ends_with("Cleaner") && settings.boolean(row.key)) << row.name;
    }
    EXPECT_EQ(list.value->dictionary()->size(), TWSettings::keys().size());
}

class TWDataFolderTest : public testing::Test, protected TWFakeMachine {
protected:
    void put(const std::string& text) { root.write("home/.local/share/Tidewell/L.plist", text); }
    std::string get(const std::string& name) { return root.read("home/.local/share/Tidewell/" + name); }
    TWListFile read() { return folder.read(folder.file("L.plist")); }

    TWDataFolder folder{ ownFiles, places, bundle };
};

TEST_F(TWDataFolderTest, TellsAMissingListFromOneThatCannotBeRead)
{
    EXPECT_EQ(folder.path(), dataFolder);
    const auto problem = [&](const std::string& text) {
        put(text);
        const auto file = read();
        EXPECT_FALSE(file.missing || file.records);
        EXPECT_EQ(file.problem.substr(0, 10 + dataFolder.size()), "The list \"" + dataFolder);
        EXPECT_EQ(get("L.plist"), text) << "left untouched";
        return file.problem;
    };
    EXPECT_TRUE(read().missing);
    problem("");
    EXPECT_NE(problem("<plist version=\"1.0\"><dict/></plist>").find("it does not hold a list"), std::string::npos);
    std::string deep;
    for (int level = 0; level < 100'000; ++level)
        deep += "<array>";
    problem("<plist version=\"1.0\">" + deep);
    std::filesystem::remove(folder.file("L.plist"));
    std::filesystem::create_directory(folder.file("L.plist"));
    EXPECT_FALSE(read().problem.empty());
}

TEST_F(TWDataFolderTest, AWriteKeepsEveryDamagedFileAndAFailedOneTheOldFile)
{
    for (const auto* name : { "L.plist.damaged", "L.plist.damaged.2" }) {
        put(name);
        EXPECT_EQ(folder.write("L.plist", { 1, "two" }, TWOldFile::KeepAsDamaged).keptAs, dataFolder + "/" + name);
        EXPECT_EQ(get(name), name);
    }
    EXPECT_EQ(read().records, (TWValue::Array{ 1, "two" }));
    put("old");
    EXPECT_NE(folder.write("L.plist", { "not \xFF text" }, TWOldFile::Replace).problem.find("is not valid UTF-8"),
        std::string::npos);
    EXPECT_EQ(get("L.plist"), "old");
    std::filesystem::create_directories(folder.file("folder/x"));
    EXPECT_NE(folder.write("folder", {}, TWOldFile::Replace).problem.find("could not be saved (Is a directory)"),
        std::string::npos);
}
