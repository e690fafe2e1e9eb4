#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "builders/TWTemporaryFolder.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWPosixFileSystem.h"
#include "platform/posix/TWPosixLocks.h"
#include "platform/qt/TWQtRunLoop.h"
#include "platform/qt/TWQtUserDefaults.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QLabel>
#include <QTest>

// A user's machine below a throwaway folder, with a real run loop and real files. Its deletion tool deletes only when it is told to.
namespace TWUITest {

class Tool final : public TWProcessLauncher {
public:
    std::unique_ptr<TWChildProcess> launch(const std::string&, const std::vector<std::string>& arguments, Terminated end) override
    {
        path = arguments.back();
        terminated = std::move(end);
        return std::make_unique<Child>(*this);
    }

    // Deletes what it was launched for, and ends.
    void finish()
    {
        std::filesystem::remove(path);
        std::exchange(terminated, nullptr)({});
    }

    std::string path;
    Terminated terminated; // while it runs

private:
    struct Child final : TWChildProcess {
        explicit Child(Tool& given)
            : tool(given)
        {
        }
        void terminate() override { QMetaObject::invokeMethod(qApp, [this] { tool.finish(); }, Qt::QueuedConnection); }
        void kill() override { }
        Tool& tool;
    };
};

struct NoMounts final : TWMountTable {
    std::vector<std::string> points {"/"};
    const std::vector<std::string>& mountPoints() override { return points; }
};

struct NoNotifier final : TWNotifier {
    void post(const TWNotification&) override { }
    void setClicked(std::function<void()>) override { }
};

struct OpenAlerts final : TWAlerts {
    std::vector<TWAlert> alerts;
    std::function<void(TWAnswer)> answer;
    void show(const TWAlert& alert, std::function<void(TWAnswer)> answered) override
    {
        alerts.push_back(alert);
        answer = std::move(answered);
    }
};

inline QString resourceFolder()
{
    return QCoreApplication::applicationDirPath() + "/../share/tidewell";
}

struct Machine {
    TWTemporaryFolder root;
    TWPosixFileSystem fileSystem;
    TWQtRunLoop runLoop;
    Tool tool;
    NoMounts mountTable;
    NoNotifier notifier;
    OpenAlerts alerts;
    TWPosixLocks locks;
    TWFileBundle bundle {fileSystem, resourceFolder().toStdString()};
    TWQtUserDefaults userDefaults {fileSystem, root.path("settings.conf")};
    TWPlaces places;

    Machine()
    {
        places.home = root.folder("home");
        places.dataHome = root.folder("home/.local/share");
        places.trash = places.dataHome + "/Trash";
        places.temporaryFolder = root.folder("tmp");
        root.write("home/.local/share/Tidewell/FilesRules.plist", "<plist><array/></plist>");
    }
    TWPlatform platform()
    {
        return {runLoop, tool, fileSystem, mountTable, places, userDefaults, bundle, locks, alerts, notifier};
    }
};

template <typename Widget>
Widget* child(const QWidget& parent, const char* name)
{
    auto* found = parent.findChild<Widget*>(name);
    if (!found)
        ADD_FAILURE() << "no widget " << name;
    return found;
}

}
