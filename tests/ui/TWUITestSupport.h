#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "builders/TWQtApplication.h"
#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeMachine.h"
#include "platform/qt/TWQtRunLoop.h"

#include <QApplication>
#include <QLabel>
#include <QTest>

namespace TWUITest {

[[maybe_unused]] inline const auto* const Application
    = testing::AddGlobalTestEnvironment(new TWQtApplication<QApplication>);

// As they lie in the build tree.
inline QString resourceFolder()
{
    return QCoreApplication::applicationDirPath() + "/../share/tidewell";
}

// A machine with the real resources, and no rules. Alerts stay open and deletion tools stay at work until the test ends
// them.
struct Machine : TWFakeMachine {
    Machine()
    {
        bundle.resources = resourceFolder().toStdString();
        userDefaults.values["FirstLaunchDone"] = true;
        launcher.ending = TWRecordingLauncher::Ending::ByTest;
        alerts.leavesOpen = true;
        root.write("home/.local/share/Tidewell/FilesRules.plist", "<plist><array/></plist>");
    }

    // Lets Qt's events and ours come until the condition holds.
    template <typename Condition>
    bool waitFor(Condition condition)
    {
        return QTest::qWaitFor([&] {
            runLoop.runUntilIdle();
            return condition();
        });
    }
};

// The two editors on that machine, with the run loop and the threads that users have. Alerts are answered at once.
struct Editors : Machine {
    Editors() { alerts.leavesOpen = false; }

    TWQtRunLoop qtRunLoop;
    TWDeletionTools qtTools{ qtRunLoop, launcher, fileSystem, guard, places };
    TWEditors editors{ { settings, listFolder, bundle, alerts, qtTools, programs, logs, workspace, volumes } };
    TWDictionaryWindowController& dictionary = editors.dictionary();
    TWFilesWindowController& files = editors.get<TWFilesWindowController>();
};

template <typename Widget>
Widget* child(const QWidget& parent, const std::string& name)
{
    auto* found = parent.findChild<Widget*>(QString::fromStdString(name));
    if (!found)
        ADD_FAILURE() << "no widget " << name;
    return found;
}

}
