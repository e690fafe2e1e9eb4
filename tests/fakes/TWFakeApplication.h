#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "fakes/TWFakeApplicationView.h"
#include "fakes/TWFakeMachine.h"

// A machine on which Tidewell is installed: empty registered defaults, a greeting, one default rule.
struct TWFakeApplication : TWFakeMachine {
    TWFakeApplicationView view;
    TWPlatform platform {runLoop, launcher, fileSystem, mountTable, places, userDefaults, bundle, locks, alerts, notifier};

    TWFakeApplication()
    {
        root.write("resources/org.tidewell.Tidewell.plist", "<plist version=\"1.0\"><dict/></plist>");
        root.write("resources/Welcome.txt", "Welcome.");
        root.write("resources/FilesRules.plist",
            "<plist version=\"1.0\"><array><dict><key>Active</key><true/><key>FilePath</key><string>~/default</string></dict></array></plist>");
    }
    std::unique_ptr<TWTidewellAppDelegate> start(TWLaunchKind kind = TWLaunchKind::Window)
    {
        auto delegate = std::make_unique<TWTidewellAppDelegate>(platform, kind);
        delegate->setView(&view);
        return delegate;
    }
};
