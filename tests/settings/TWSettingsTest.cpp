#include "settings/TWSettings.h"

#include "fakes/TWFakeMachine.h"
#include "plist/TWPropertyList.h"

TEST(TWSettingsTest, ReadsWhatIsStoredByTheTypeOfTheKey)
{
    TWFakeUserDefaults defaults;
    TWSettings settings(defaults);
    TWDictionary registered;
    registered.set("AutoQuit", true);
    registered.set("AutoQuitMode", 7);
    settings.registerDefaults(registered);
    // What does not fit the type counts as absent: the registered default holds.
    const std::tuple<TWValue, bool, std::int32_t> rows[]
        = { { true, true, 1 }, { false, false, 0 }, { 0, false, 0 }, { 2, true, 2 }, { -1, true, 7 },
              { "true", true, 7 }, { "false", false, 7 }, { "0", false, 0 }, { "2", true, 2 }, { " 2", true, 7 },
              { "99999999999", true, 7 }, { 2.5, true, 7 }, { TWValue::Array{}, true, 7 } };
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
