#pragma once

#include "builders/TWTemporaryFolder.h"
#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWPosixFileSystem.h"
#include "platform/qt/TWQtRunLoop.h"
#include "platform/qt/TWQtUserDefaults.h"
#include "ui/TWHelpWindow.h"

#include <QApplication>

// The one application of all tests in this program, made by whoever comes first.
inline QApplication& sheetTestApplication()
{
    if (!QCoreApplication::instance()) {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "tests_ui";
        static char* arguments[] = {name, nullptr};
        static QApplication application(count, arguments);
    }
    return *static_cast<QApplication*>(QCoreApplication::instance());
}

// The two editors over real files in a throwaway home.
struct TWSheetTestWorld {
    // Remembers what was asked, and answers at once.
    struct Alerts final : TWAlerts {
        TWAnswer answer = TWAnswer::Default;
        std::vector<std::string> titles;
        void show(const TWAlert& alert, std::function<void(TWAnswer)> answered) override
        {
            titles.push_back(alert.title);
            answered(answer);
        }
    };

    // Every look of the guard at a path comes by here.
    struct MountTable final : TWMountTable {
        int asked = 0;
        std::vector<std::string> points {"/"};
        const std::vector<std::string>& mountPoints() override
        {
            ++asked;
            return points;
        }
    };

    static TWPlaces placesIn(const TWTemporaryFolder& folder)
    {
        TWPlaces places;
        places.home = folder.folder("home");
        places.configHome = places.home + "/.config";
        places.dataHome = places.home + "/.local/share";
        places.stateHome = places.home + "/.local/state";
        places.cacheHome = places.home + "/.cache";
        return places;
    }

    // Resources as they lie in the build tree, with an information file of our own.
    static std::string resourcesIn(const TWTemporaryFolder& folder)
    {
        folder.write("resources/Info.plist", "<plist version=\"1.0\"><dict>"
                                             "<key>CFBundleHelpBookName</key><string>Tidewell Help</string>"
                                             "<key>TWApplicationSupportFolder</key><string>~/.config/Tidewell</string>"
                                             "</dict></plist>");
        const auto built = QCoreApplication::applicationDirPath().toStdString() + "/../share/tidewell/";
        folder.link("resources/help", built + "help");
        folder.link("resources/FilesRules.plist", built + "FilesRules.plist");
        return folder.path("resources");
    }

    QApplication& application = sheetTestApplication();
    TWTemporaryFolder folder;
    TWPosixFileSystem fileSystem;
    TWPlaces places = placesIn(folder);
    TWFileBundle bundle {fileSystem, resourcesIn(folder)};
    MountTable mountTable;
    Alerts alerts;
    TWQtRunLoop runLoop;
    TWQtUserDefaults userDefaults {fileSystem, folder.path("settings.ini")};
    TWSettings settings {userDefaults};
    TWDataFolder dataFolder {fileSystem, places, bundle};
    TWDeletionGuard guard {places, fileSystem, mountTable, dataFolder.path()};
    TWDictionaryWindowController dictionary {dataFolder};
    TWFilesWindowController files {
        {settings, dataFolder, bundle, fileSystem, places, runLoop, alerts, guard, dictionary}};
    TWHelpWindow help {bundle};
};
