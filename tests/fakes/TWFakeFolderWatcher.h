#pragma once

#include "platform/TWFolderWatch.h"
#include "support/TWPath.h"

#include <algorithm>
#include <mutex>
#include <set>

// The folders that a fake watch was told of.
struct TWFakeWatchedFolders final : TWWatchedFolders {
    std::mutex mutex;
    std::vector<std::string> roots;
    std::set<std::string> added;

    void setRoots(const std::vector<std::string>& paths) override
    {
        const std::lock_guard lock(mutex);
        roots = paths;
    }
    void add(const std::string& folder) override
    {
        const std::lock_guard lock(mutex);
        added.insert(folder);
    }
    void remove(const std::string& folder) override
    {
        const std::lock_guard lock(mutex);
        std::erase_if(added, [&](const auto& path) { return TWPath::isAtOrBelow(path, folder); });
    }
    bool knows(const std::string& folder)
    {
        const std::lock_guard lock(mutex);
        return added.contains(folder);
    }
};

// The latest watch reports, a second later, what the test says has changed.
class TWFakeFolderWatcher final : public TWFolderWatcher {
    struct Watch;

public:
    std::string problemLine;

    std::unique_ptr<TWFolderWatch> watch(TWRunLoop& runLoop, Changed changed) const override
    {
        return std::make_unique<Watch>(latest_, runLoop, problemLine, std::move(changed));
    }
    void change(const std::string& folder) // counts only if it was added
    {
        if (latest_ && latest_->watched->knows(folder))
            gathered().folders.push_back(folder);
    }
    void changeTree(const std::string& path) { gathered().trees.push_back(path); }
    void changeEverything() { gathered() = { true, {}, {} }; }
    TWFakeWatchedFolders& folders() { return *latest_->watched; }

private:
    struct Watch final : TWFolderWatch {
        Watch(Watch*& givenLatest, TWRunLoop& givenRunLoop, const std::string& givenProblem, Changed call)
            : latest(givenLatest)
            , runLoop(givenRunLoop)
            , problemLine(givenProblem)
            , changed(std::move(call))
        {
            latest = this;
        }
        ~Watch() override { latest = nullptr; }
        std::shared_ptr<TWWatchedFolders> folders() const override { return watched; }
        std::string problem() const override { return problemLine; }
        void report()
        {
            gathering.reset();
            for (auto* paths : { &changes.folders, &changes.trees }) {
                std::sort(paths->begin(), paths->end());
                paths->erase(std::unique(paths->begin(), paths->end()), paths->end());
            }
            const auto call = changed; // may destroy this object
            call(std::exchange(changes, {}));
        }

        Watch*& latest;
        TWRunLoop& runLoop;
        const std::string& problemLine;
        const Changed changed;
        const std::shared_ptr<TWFakeWatchedFolders> watched = std::make_shared<TWFakeWatchedFolders>();
        TWFolderChanges changes;
        std::unique_ptr<TWRunLoopHandle> gathering;
    };

    TWFolderChanges& gathered()
    {
        auto& watch = *latest_;
        if (!watch.gathering)
            watch.gathering = watch.runLoop.after(std::chrono::seconds(1), [&watch] { watch.report(); });
        return watch.changes;
    }

    mutable Watch* latest_ = nullptr;
};
