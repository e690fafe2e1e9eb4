#pragma once

#include "platform/TWAlerts.h"
#include "platform/TWApplications.h"
#include "platform/TWBundle.h"
#include "platform/TWFileManager.h"
#include "platform/TWLock.h"
#include "platform/TWLogSources.h"
#include "platform/TWMountTable.h"
#include "platform/TWNotifier.h"
#include "platform/TWOpenFiles.h"
#include "platform/TWRunLoop.h"
#include "platform/TWUserDefaults.h"
#include "platform/TWWorkspace.h"

#include <sys/stat.h>

#include <algorithm>
#include <deque>
#include <map>
#include <set>

// The small seams, each settable and recording.

struct TWFakeUserDefaults final : TWUserDefaults {
    std::map<std::string, TWValue> values;
    std::string problemLine;
    std::string writeProblem;

    std::optional<TWValue> value(const std::string& key) const override
    {
        return values.count(key) ? std::optional(values.at(key)) : std::nullopt;
    }
    void setValue(const std::string& key, const TWValue& value) override { values[key] = value; }
    void removeValue(const std::string& key) override { values.erase(key); }
    std::string synchronize() override { return writeProblem; }
    void setWriteFailed(std::function<void(const std::string&)>) override { }
    std::string problem() const override { return problemLine; }
    std::string file() const override { return "/settings"; }
};

// Answers at once: by the script while it lasts, then with the default button. Or leaves alerts open until answer().
struct TWFakeAlerts final : TWAlerts {
    std::vector<TWAlert> alerts;
    std::deque<TWAnswer> script;
    bool leavesOpen = false;
    std::deque<std::function<void(TWAnswer)>> open;

    void show(const TWAlert& alert, std::function<void(TWAnswer)> answered) override
    {
        alerts.push_back(alert);
        if (leavesOpen) {
            open.push_back(std::move(answered));
            return;
        }
        const auto given = script.empty() ? TWAnswer::Default : script.front();
        if (!script.empty())
            script.pop_front();
        answered(given);
    }
    void answer(TWAnswer given)
    {
        const auto answered = std::move(open.front());
        open.pop_front();
        answered(given);
    }
};

// Answers on a later turn.
struct TWFakeFileManager final : TWFileManager {
    explicit TWFakeFileManager(TWRunLoop& given)
        : runLoop(given)
    {
    }

    TWRunLoop& runLoop;
    std::vector<std::string> shown;
    bool works = true;

    void showItem(const std::string& path, Done done) override { show("item " + path, std::move(done)); }
    void showFolder(const std::string& path, Done done) override { show("folder " + path, std::move(done)); }
    void open(const std::string& path, Done done) override { show("open " + path, std::move(done)); }
    void show(std::string what, Done done)
    {
        shown.push_back(std::move(what));
        runLoop.post([done = std::move(done), answer = works] { done(answer); });
    }
};

struct TWFakeNotifier final : TWNotifier {
    std::vector<TWNotification> notifications;
    std::function<void()> clicked;

    void post(const TWNotification& notification) override { notifications.push_back(notification); }
    void setClicked(std::function<void()> call) override { clicked = std::move(call); }
};

// Has the applications that a test gives it, with their files below a folder.
struct TWFakeApplications final : TWApplications {
    std::vector<TWApplication> applications;
    std::map<std::string, std::vector<std::string>> preferences; // by identifier
    std::string dataHome = "/data";
    TWRunningApplications runs;

    std::vector<TWApplication> installed() const override
    {
        auto sorted = applications;
        std::sort(sorted.begin(), sorted.end(),
            [](const auto& one, const auto& other) { return one.displayName < other.displayName; });
        return sorted;
    }
    std::optional<TWApplication> open(const std::string& path, std::string& problem) const override
    {
        for (const auto& application : applications) {
            if (application.path == path)
                return application;
        }
        problem = "\"" + path + "\" does not describe an application.";
        return std::nullopt;
    }
    std::string sharedFileList(const TWApplication& application) const override
    {
        return dataHome + "/" + application.identifier + "/recently-used.xbel";
    }
    std::vector<std::string> preferenceFiles(const TWApplication& application) const override
    {
        const auto found = preferences.find(application.identifier);
        return found == preferences.end() ? std::vector<std::string>() : found->second;
    }
    TWRunningApplications running() const override { return runs; }
};

// Runs the copies that a test gives it. One ends when it is told to, a stubborn one only when it is forced to.
struct TWFakeWorkspace final : TWWorkspace {
    mutable std::vector<TWRunningCopy> copies; // in the order of their processes
    std::set<std::int64_t> stubborn; // by process
    bool canLook = true;
    bool answers = true;
    mutable std::vector<std::string> requests; // "quit 12", "force 12"

    std::unique_ptr<TWRunningCopies> runningCopies(const std::vector<std::string>& paths) const override
    {
        return std::make_unique<Copies>(*this, paths);
    }

private:
    struct Copies final : TWRunningCopies {
        Copies(const TWFakeWorkspace& given, std::vector<std::string> givenPaths)
            : workspace(given)
            , paths(std::move(givenPaths))
        {
        }
        std::optional<std::vector<TWRunningCopy>> runningApplications(const TWCancellation& cancellation) override
        {
            if (!workspace.canLook || cancellation.cancelled())
                return std::nullopt;
            auto found = workspace.copies;
            std::erase_if(found, [this](const TWRunningCopy& copy) {
                return std::find(paths.begin(), paths.end(), copy.application) == paths.end();
            });
            return found;
        }
        bool terminate(const TWRunningCopy& copy) override
        {
            workspace.requests.push_back("quit " + std::to_string(copy.process));
            if (!workspace.stubborn.contains(copy.process))
                end(copy);
            return workspace.answers;
        }
        void forceTerminate(const TWRunningCopy& copy) override
        {
            workspace.requests.push_back("force " + std::to_string(copy.process));
            end(copy);
        }
        void end(const TWRunningCopy& copy) const
        {
            std::erase_if(workspace.copies, [&](const TWRunningCopy& each) { return each.isSame(copy); });
        }

        const TWFakeWorkspace& workspace;
        const std::vector<std::string> paths;
    };
};

struct TWFakeLogSources final : TWLogSources {
    std::vector<TWLogSource> sources; // the identities are those that the disk shows

    std::vector<TWLogSource> userSources(const TWPlaces&) const override
    {
        auto now = sources;
        for (auto& source : now) {
            struct stat facts { };
            stat(source.path.c_str(), &facts);
            source.identity = { facts.st_dev, facts.st_ino };
        }
        return now;
    }
};

struct TWFakeOpenFiles final : TWOpenFiles {
    std::vector<TWDeletedFile> files;

    std::vector<TWDeletedFile> deletedFiles(const TWCancellation&) const override { return files; }
};

struct TWFakeMountTable final : TWMountTable {
    std::vector<std::string> points{ "/" };

    // The same list until the points change, as the real table.
    std::shared_ptr<const TWMountPoints> mountPoints() override
    {
        std::sort(points.begin(), points.end());
        if (!given_ || *given_ != points)
            given_ = std::make_shared<const TWMountPoints>(points);
        return given_;
    }

private:
    std::shared_ptr<const TWMountPoints> given_;
};

struct TWFakeLocks final : TWLocks {
    bool heldByAnother = false;
    int error = 0;
    std::set<std::string> held; // by this process, at this moment
    std::vector<std::string> paths;

    TWLockResult tryLock(const std::string& path) override
    {
        paths.push_back(path);
        if (heldByAnother || error != 0 || held.contains(path))
            return { nullptr, error == 0, error };
        return { std::make_unique<Held>(*this, path), false, 0 };
    }

private:
    struct Held final : TWHeldLock {
        Held(TWFakeLocks& given, std::string givenPath)
            : locks(given)
            , path(std::move(givenPath))
        {
            locks.held.insert(path);
        }
        ~Held() override { locks.held.erase(path); }
        TWFakeLocks& locks;
        const std::string path;
    };
};

struct TWFakeBundle final : TWBundle {
    std::string resources; // the folder
    std::map<std::string, std::string> infos{ { "CFBundleVersion", "1.0" },
        { "TWApplicationSupportFolder", "~/.local/share/Tidewell" } };

    explicit TWFakeBundle(std::string folder)
        : resources(std::move(folder))
    {
    }
    std::string info(const std::string& key) const override { return infos.count(key) ? infos.at(key) : ""; }
    std::string resourcePath(const std::string& name) const override { return resources + "/" + name; }
    std::string identifier() const override { return "org.tidewell.Tidewell"; }
};
