#include "platform/linux/TWLinuxFolderWatch.h"

namespace {

constexpr TWRunLoop::Duration GatheringTime = std::chrono::seconds(1);
constexpr TWRunLoop::Duration PollInterval = std::chrono::seconds(5);

}

TWLinuxFolderWatch::TWLinuxFolderWatch(TWRunLoop& runLoop, TWFolderWatcher::Changed changed)
    : runLoop_(runLoop)
    , changed_(std::move(changed))
    , polls_(runLoop.every(PollInterval, [this] { poll(); }))
{
    if (folders_->descriptor() < 0)
        return;
    events_ = runLoop.whenReadable(folders_->descriptor(), [this] {
        folders_->readEvents();
        gather();
    });
}

void TWLinuxFolderWatch::poll()
{
    if (polling_)
        return; // a slow file system
    polling_ = runLoop_.inBackground([folders = folders_](const auto& cancellation) { folders->poll(*cancellation); },
        [this] {
            polling_.reset();
            gather();
        });
}

void TWLinuxFolderWatch::gather()
{
    if (!gathering_ && folders_->hasChanges())
        gathering_ = runLoop_.after(GatheringTime, [this] { report(); });
}

void TWLinuxFolderWatch::report()
{
    gathering_.reset();
    const auto changes = folders_->takeChanges();
    const auto changed = changed_; // the call may destroy this object
    if (changes != TWFolderChanges())
        changed(changes);
}
