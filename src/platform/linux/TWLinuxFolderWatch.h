#pragma once

#include "platform/TWFolderWatch.h"
#include "platform/linux/TWLinuxWatchedFolders.h"

class TWLinuxFolderWatch final : public TWFolderWatch {
public:
    TWLinuxFolderWatch(TWRunLoop&, TWFolderWatcher::Changed);

    std::shared_ptr<TWWatchedFolders> folders() const override { return folders_; }
    std::string problem() const override { return folders_->problem(); }

private:
    void poll();
    void gather();
    void report();

    TWRunLoop& runLoop_;
    const TWFolderWatcher::Changed changed_;
    const std::shared_ptr<TWLinuxWatchedFolders> folders_ = std::make_shared<TWLinuxWatchedFolders>();
    std::unique_ptr<TWRunLoopHandle> events_;
    std::unique_ptr<TWRunLoopHandle> polls_;
    std::unique_ptr<TWRunLoopHandle> polling_;
    std::unique_ptr<TWRunLoopHandle> gathering_;
};
