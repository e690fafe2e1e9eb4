#include "platform/linux/TWLinuxLogSources.h"

#include "builders/TWTemporaryFolder.h"
#include "platform/linux/TWLinuxPlaces.h"

#include <gtest/gtest.h>

namespace {

// Names and paths below the folder, a line each.
std::string sources(const TWTemporaryFolder& folder, const TWPlaces& places)
{
    std::string text;
    for (const auto& source : TWLinuxLogSources().userSources(places))
        text += source.name + ": " + source.path.substr(folder.path().size() + 1) + (source.isFolder ? "/\n" : "\n");
    return text;
}

}

TEST(TWLinuxLogSourcesTest, AreFoldersAndFilesThatHoldNothingButLogs)
{
    const TWTemporaryFolder folder;
    auto places = TWLinuxSandboxPlaces(folder.path(), TWPlaces());
    EXPECT_EQ(sources(folder, places), "");
    for (const auto* logs : { "home/.config/Code/logs/day", "home/.var/app/com.visualstudio.code/config/Code/logs",
             "home/.cache/JetBrains/B\n/log", "home/.cache/JetBrains/A/log", "home/.cache/JetBrains/C/caches",
             "home/.local/share/Steam/logs", "home/.local/state/log/zed", "data/DaVinciResolve/logs" })
        folder.folder(logs);
    for (const auto* file : { "home/.xsession-errors", "home/.xsession-errors.old", "home/.cache/JetBrains/log" })
        folder.write(file, "");
    folder.link("home/.local/share/zed/logs", "../../state/log/zed"); // inside another source
    // Not logs, or not those of a known program
    for (const auto* other : { "home/.purple/logs", "home/.config/hexchat/logs", "home/.config/unknown/logs",
             "home/.local/state/wireplumber", "home/.cache/shotwell/shotwell.log", "home/.xsession-errors.d" })
        folder.folder(other);
    for (const auto* file : { "home/.local/share/gvfs-metadata/home.log", "home/.npm/_logs", "home/.config/log" })
        folder.write(file, "");
    const std::string expected = "JetBrains (A): home/.cache/JetBrains/A/log/\n"
                                 "JetBrains (B\xE2\x90\x8A): home/.cache/JetBrains/B\n/log/\n"
                                 "Services and programs: home/.local/state/log/\n"
                                 "Steam: home/.local/share/Steam/logs/\n"
                                 "Visual Studio Code: home/.config/Code/logs/\n"
                                 "Visual Studio Code (Flatpak): home/.var/app/com.visualstudio.code/config/Code/logs/\n"
                                 "X session (.xsession-errors): home/.xsession-errors\n"
                                 "X session (.xsession-errors.old): home/.xsession-errors.old\n";
    EXPECT_EQ(sources(folder, places), expected);
    places.dataHome = folder.path("data"); // moved by a variable
    EXPECT_EQ(sources(folder, places), "DaVinci Resolve: data/DaVinciResolve/logs/\n" + expected);
}

TEST(TWLinuxLogSourcesTest, LinksLeadNowhereElseAndAPatternHasABound)
{
    const TWTemporaryFolder folder;
    const auto places = TWLinuxSandboxPlaces(folder.path("box"), TWPlaces());
    auto unboxed = places;
    unboxed.sandboxRoot = "";
    for (const auto* target : { "outside/npm", "outside/zoom/logs", "box/home/.config/Code/logs", "box/var/log/own",
             "box/home/real/minecraft/logs" })
        folder.folder(target);
    folder.link("box/home/.npm/_logs", folder.path("outside/npm"));
    folder.link("box/home/.zoom", folder.path("outside/zoom"));
    folder.link("box/home/.minecraft", "real/minecraft");
    folder.link("box/home/.gitkraken/logs", "../..");
    folder.link("box/home/.azure/logs", "../.config");
    folder.link("box/home/.azure/commands", "../.config/Code/logs");
    folder.link("box/home/.minikube/logs", "logs");
    folder.link("box/home/.local/state/log", folder.path("box/var/log/own"));
    folder.link("box/home/.xsession-errors", folder.write("box/home/real/errors", ""));
    const std::string inside = "Minecraft: box/home/.minecraft/logs/\n";
    const std::string code = "Visual Studio Code: box/home/.config/Code/logs/\n";
    EXPECT_EQ(sources(folder, unboxed), inside + code);
    EXPECT_EQ(sources(folder, places), inside + code);

    for (int number = 0; number < 1010; ++number)
        folder.write("box/home/.cache/gdm/session.log." + std::to_string(number), "");
    EXPECT_EQ(TWLinuxLogSources().userSources(places).size(), 1002U);
}
