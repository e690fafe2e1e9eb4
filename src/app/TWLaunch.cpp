// The part of TWTidewellAppDelegate that runs before the first cleaning.

#include "app/TWTidewellAppDelegate.h"
#include "editors/TWFilesWindowController.h"
#include "plist/TWPropertyList.h"
#include "support/TWLog.h"
#include "support/TWText.h"

#include <cstdio>
#include <random>

namespace {

constexpr auto WelcomeTitle = "Welcome to Tidewell!";
constexpr auto WelcomeButton = "I Understand";
constexpr std::size_t LongestResource = 1 << 20;

// Makes a random (version 4) UUID in the usual form, with upper-case digits.
std::string newUUID()
{
    std::random_device random;
    std::uint32_t words[4] = { random(), random(), random(), random() };
    words[1] = (words[1] & 0xFFFF0FFFU) | 0x4000U; // version: random
    words[2] = (words[2] & 0x3FFFFFFFU) | 0x80000000U; // variant
    char text[37];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%04X-%04X%08X", words[0], words[1] >> 16, words[1] & 0xFFFF,
        words[2] >> 16, words[2] & 0xFFFF, words[3]);
    return text;
}

}

void TWTidewellAppDelegate::registerDefaults()
{
    const auto path = platform_.bundle.resourcePath(platform_.bundle.identifier() + ".plist");
    const auto list = TWPropertyList::read(platform_.ownFiles.read(path, LongestResource).bytes);
    if (list.value && list.value->dictionary())
        settings_.registerDefaults(*list.value->dictionary());
    else
        TWLog::write(
            TWText::fill("TWTidewellAppDelegate: Could not read %@. Please install Tidewell again.", { path }));
}

void TWTidewellAppDelegate::stampUUID()
{
    if (settings_.string(TWKey::UUID).empty())
        settings_.set(TWKey::UUID, newUUID());
}

void TWTidewellAppDelegate::applicationDidFinishLaunching()
{
    // A damaged settings file must stay untouched until the user changes a setting.
    const bool damaged = !platform_.userDefaults.problem().empty();
    dataFolder_.make();
    if (!damaged)
        stampUUID();
    // If the rules could not be read, a later launch still has to merge new default rules into them, so the old version
    // stays.
    if (!damaged && editors_.get<TWFilesWindowController>().problem().empty())
        settings_.set(TWKey::LastLaunchedVersion, platform_.bundle.info("CFBundleVersion"));
    platform_.notifier.setClicked([this] { growlNotificationWasClicked(); });
    if (!windows_->isKeyWindow(TWWindow::QuickCleanup))
        windows_->bringToFront(TWWindow::Main);
    if (!damaged && !settings_.boolean(TWKey::FirstLaunchDone)) {
        // Stored first, so that the greeting is shown only once even if the program ends while it is open.
        settings_.set(TWKey::FirstLaunchDone, true);
        greet();
    }
}

void TWTidewellAppDelegate::prepareForCommand()
{
    dataFolder_.make();
    // A damaged settings file must stay untouched here too.
    if (platform_.userDefaults.problem().empty())
        stampUUID();
}

void TWTidewellAppDelegate::greet()
{
    const auto text = platform_.ownFiles.read(platform_.bundle.resourcePath("Welcome.txt"), LongestResource).bytes;
    platform_.alerts.show({ WelcomeTitle, text, WelcomeButton, "" }, [](TWAnswer) {});
}

void TWTidewellAppDelegate::applicationWillTerminate()
{
    if (const auto problem = settings_.userDefaults().synchronize(); !problem.empty())
        TWLog::write(problem);
}
